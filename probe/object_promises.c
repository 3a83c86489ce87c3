// probe/object_promises.c: types, objects, and their end

#include "fixture.h"

#include <string.h>

static void manager_begins_with_its_name(void) {
  if (registration.verdict == BROKEN) broken("%s", registration.finding);
  if (registration.verdict == UNCHECKED) unchecked("%s", registration.finding);
  enter("HVM_NewAnyMan", 1);  // if the pointer leads nowhere
  if (manager->name == NULL) broken("the pointer at offset 0 of the manager is null");
  if (strcmp(manager->name, type_name) != 0) broken("the pointer at offset 0 of the manager leads to another text");
}

static void create_makes_the_content(void) {
  if (registration.verdict != KEPT) unchecked("there is no type: %s", registration.finding);
  HostAny* any = HOST(HVM_NewAny)(context, type_name, 0, 0);
  if (any == NULL) broken("HVM_NewAny returned null for a registered type");
  if (made != 1) broken("HVM_NewAny called the create callback %d times", made);
  if (any->content != &contents[0]) broken("`content` is not what the create callback returned");
  // A type is found by the text of its name, at any address.
  char copy[sizeof other_name];
  memcpy(copy, other_name, sizeof copy);
  any = HOST(HVM_NewAny)(context, copy, 0, 0);
  if (any == NULL || others_made != 1 || any->content != &others[0])
    broken("HVM_NewAny makes no object of a second type, by a copy of its name");
}

static void nothing_is_made_of_nothing(void) {
  if (registration.verdict != KEPT) unchecked("there is no type: %s", registration.finding);
  if (HOST(HVM_NewAny)(context, barren_name, 0, 0) != NULL) broken("it returned an object without content");
}

static void unknown_types_make_nothing(void) {
  static const char* const names[] = {"$xfloatarray", "$probenone", "$prob", "$probes", ""};
  for (int i = 0; i < COUNT(names); ++i)
    if (HOST(HVM_NewAny)(context, names[i], 0, 0) != NULL) broken("it returned an object for \"%s\"", names[i]);
}

static void object_has_its_fields(void) {
  HostAny* any = new_object();
  if (any->manager != manager) broken("another pointer than the manager is at offset 8");
  if (any->content != &contents[made - 1]) broken("another pointer than the content is at offset 16");
  any->state = 200;
  HostValue value = nil();
  HOST(HVM_SetTypeAny)(context, &value, any);
  if (any->state != 200) broken("`state` changed from 200 to %u", any->state);
  HOST(HVM_FreeObjectContent)(context, &value);
  expect_destroyed(&contents[made - 1], "with its record after the module had written `state`");
}

static void record_takes_the_object(void) {
  HostAny* any = new_object();
  HostValue value = nil();
  HOST(HVM_SetTypeAny)(context, &value, any);
  expect_tag("HVM_SetTypeAny", &value, HOST_TAG_OBJECT);
  if (value.object != any) broken("the payload is not the object");
  expect_alive(&contents[made - 1], "by HVM_SetTypeAny");
}

static void record_takes_no_object(void) {
  HostValue value = nil();
  HOST(HVM_SetTypeAny)(context, &value, NULL);
  HOST(HVM_FreeObjectContent)(context, &value);
  value = nil();  // what the record holds now is the caller's to write
  const Content* old = put_object(&value);
  HOST(HVM_SetTypeAny)(context, &value, NULL);
  expect_destroyed(old, "when HVM_SetTypeAny replaced it by null");
}

static void objects_are_known(void) {
  HostValue value = nil();
  if (HOST(HVM_AnyCheck)(&value)) broken("HVM_AnyCheck is true for nil");
  HostValue numbers[] = {integer(16), integer64(16), real(16)};
  for (int i = 0; i < COUNT(numbers); ++i)
    if (HOST(HVM_AnyCheck)(&numbers[i])) broken("HVM_AnyCheck is true for a number of tag %d", numbers[i].tag);
  HOST(HVM_SetString)(context, &value, "text");
  if (HOST(HVM_AnyCheck)(&value)) broken("HVM_AnyCheck is true for text");
  HOST(HVM_ForceTable)(context, &value, 4);
  if (HOST(HVM_AnyCheck)(&value)) broken("HVM_AnyCheck is true for a table");
  put_object(&value);
  if (!HOST(HVM_AnyCheck)(&value)) broken("HVM_AnyCheck is false for an object");
}

static void object_is_given(void) {
  HostAny* any = new_object();
  HostValue value = nil();
  HOST(HVM_SetTypeAny)(context, &value, any);
  if (HOST(HVM_GetAny)(&value) != any) broken("HVM_GetAny returned another pointer");
  if (any->content != &contents[made - 1]) broken("`content` has changed");
}

static void destroy_is_called_once(void) {
  HostValue values[3] = {nil(), nil(), nil()};
  for (int i = 0; i < 3; ++i) put_object(&values[i]);
  HOST(HVM_FreeObjectContent)(context, &values[1]);
  expect_destroyed(&contents[1], "with its record");
  if (destroyed != 1) broken("%d objects were destroyed with a record of one", destroyed);
  HOST(HVM_FreeObjectContent)(context, &values[0]);
  HOST(HVM_FreeObjectContent)(context, &values[2]);
  if (destroyed != 3 || strange > 0) broken("three records ended %d objects", destroyed + strange);
}

// clang-format off
static const Promise promises[] = {
    {"`HVM_NewAnyMan` makes a manager with a pointer to the type's name at offset 0.",
     manager_begins_with_its_name, ANY_LAYOUT},
    {"`HVM_NewAny` calls the create callback of the registered type once, and stores its result as `content`.",
     create_makes_the_content, ANY_LAYOUT},
    {"`HVM_NewAny` returns null if create returns null.", nothing_is_made_of_nothing, ANY_LAYOUT},
    {"`HVM_NewAny` returns null for an unknown name, such as `$xfloatarray`.", unknown_types_make_nothing, ANY_LAYOUT},
    {"An object has its manager at offset 8 and its content at 16, and keeps the `state` that a module writes at 4.",
     object_has_its_fields, OWN_LAYOUT},
    {"`HVM_SetTypeAny` makes a record of tag 16 that owns the object in its payload.",
     record_takes_the_object, OWN_LAYOUT},
    {"`HVM_SetTypeAny` takes null for the object, and releases what the record holds then, too.",
     record_takes_no_object, OWN_LAYOUT},
    {"`HVM_AnyCheck` is true for objects, and false for all other values.", objects_are_known, OWN_LAYOUT},
    {"`HVM_GetAny` returns the object of a record.", object_is_given, OWN_LAYOUT},
    {"Destroy is called once, with the content, when the object dies.", destroy_is_called_once, OWN_LAYOUT},
};
// clang-format on
const PromiseGroup object_promises = {promises, COUNT(promises)};
