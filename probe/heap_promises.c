// probe/heap_promises.c: records and memory from the host's heap

#include "fixture.h"

#include <string.h>

static void records_hold_nil(void) {
  HostValue* one = HOST(HVM_NewObject)();
  if (one == NULL || one->tag != HOST_TAG_NIL) broken("HVM_NewObject returned no nil record");
  HostValue* many = HOST(HVM_NewObjects)(100);
  if (many == NULL) broken("HVM_NewObjects returned null");
  for (int i = 0; i < 100; ++i)
    if (many[i].tag != HOST_TAG_NIL) broken("record %d of 100, at %d bytes, has tag %d", i, 18 * i, many[i].tag);
  for (int i = 0; i < 100; ++i) HOST(HVM_SetInt64)(context, &many[i], -i);
  for (int i = 0; i < 100; ++i)
    if (many[i].integer64 != -i) broken("record %d of 100 does not keep its number", i);
  HOST(HVM_FreeObjs)(context, many, 100);
  HOST(HVM_FreeObj)(context, one);
}

static void records_end_with_their_content(void) {
  HostValue* one = HOST(HVM_NewObject)();
  HostValue* many = HOST(HVM_NewObjects)(3);
  if (one == NULL || many == NULL) unchecked("the host makes no records");
  const Content* of_one = put_object(one);
  const Content* first = put_object(&many[0]);
  const Content* last = put_object(&many[2]);
  HOST(HVM_FreeObj)(context, one);
  expect_destroyed(of_one, "by HVM_FreeObj");
  expect_alive(first, "by HVM_FreeObj of another record");
  HOST(HVM_FreeObjs)(context, many, 3);
  expect_destroyed(first, "by HVM_FreeObjs");
  expect_destroyed(last, "by HVM_FreeObjs");
}

static void content_is_released(void) {
  HostValue value = nil();
  HostValue* slot = slot_of(table_in(&value), 0);
  const Content* content = put_object(slot);
  HOST(HVM_FreeObjectContent)(context, slot);
  expect_destroyed(content, "by HVM_FreeObjectContent");
  if (slot->lifetime != HOST_LIFETIME_TEMPORARY) broken("it leaves a slot of lifetime %d", slot->lifetime);
}

static void nothing_is_released(void) {
  HostValue values[] = {nil(), integer(16), integer64(16), real(16)};
  for (int i = 0; i < COUNT(values); ++i) {
    HOST(HVM_FreeObjectContent)(context, &values[i]);
    HOST(HVM_FreeObjectContent)(context, &values[i]);
  }
}

static void texts_and_tables_are_copied(void) {
  HostValue text = nil(), text_copy = nil(), value = nil(), copy = nil();
  HOST(HVM_SetString)(context, &text, "source");
  HOST(HVM_DupObject)(context, &text_copy, &text, 1);
  HOST(HVM_SetString)(context, &text, "other");
  expect_text("HVM_DupObject", &text_copy, "source");
  HostHash* table = table_in(&value);
  set_entry(table, 0, 1);
  HOST(HVM_ForceTable)(context, slot_of(table, 1), 4);
  HostHash* inner = slot_of(table, 1)->table;
  set_entry(inner, 0, 2);
  HOST(HVM_DupObject)(context, &copy, &value, 1);
  if (copy.tag != HOST_TAG_TABLE || copy.table == NULL) broken("the copy of a table has tag %d", copy.tag);
  if (copy.table == table) broken("the copy of a table is the same table");
  set_entry(table, 0, -1);
  set_entry(inner, 0, -1);
  HostValue* entry = HOST(HVM_HashGetInt)(copy.table, 0);
  if (is_absent(entry) || entry->integer != 1) broken("the copy of a table changes with its source");
  HostValue* nested = HOST(HVM_HashGetInt)(copy.table, 1);
  if (is_absent(nested) || nested->tag != HOST_TAG_TABLE) broken("the copy of a table lacks the table in it");
  entry = HOST(HVM_HashGetInt)(nested->table, 0);
  if (is_absent(entry) || entry->integer != 2) broken("the copy of a nested table changes with its source");
  HOST(HVM_FreeObjectContent)(context, &value);
  if (is_absent(HOST(HVM_HashGetInt)(copy.table, 0))) broken("the copy of a table ends with its source");
}

static void other_values_are_copied(void) {
  HostValue source = real(-0.25), copy = nil();
  HOST(HVM_DupObject)(context, &copy, &source, 1);
  if (copy.tag != HOST_TAG_REAL || copy.real != -0.25) broken("the copy of a number is another value");
  copy = nil();
  put_object(&source);
  HOST(HVM_DupObject)(context, &copy, &source, 1);
  if (!HOST(HVM_AnyCheck)(&copy)) broken("the copy of an object is none");
  HOST(HVM_FreeObjectContent)(context, &source);
  HostAny* any = HOST(HVM_GetAny)(&copy);
  Content* content = any != NULL ? any->content : NULL;
  if (content < contents || content >= contents + made) broken("the copy of an object has another content");
  expect_alive(content, "while a copy of its record holds it");
  HOST(HVM_FreeObjectContent)(context, &copy);
  if (destroyed != made || strange > 0) broken("%d of %d objects were destroyed with all records", destroyed, made);
}

// clang-format off
static const Promise promises[] = {
    {"`HVM_NewObject` returns a record that holds nil, and `HVM_NewObjects` as many as asked for, 18 bytes apart.",
     records_hold_nil, OWN_LAYOUT},
    {"`HVM_FreeObj` and `HVM_FreeObjs` free the records and what they hold.",
     records_end_with_their_content, OWN_LAYOUT},
    {"`HVM_FreeObjectContent` releases what a record holds, and leaves lifetime 1 in a slot.",
     content_is_released, OWN_LAYOUT},
    {"`HVM_FreeObjectContent` accepts a record without content.", nothing_is_released, OWN_LAYOUT},
    {"`HVM_DupObject` makes deep copies of text and tables.", texts_and_tables_are_copied, OWN_LAYOUT},
    {"`HVM_DupObject` copies numbers, and makes a second record of an object.", other_values_are_copied, OWN_LAYOUT},
};
// clang-format on
const PromiseGroup heap_promises = {promises, COUNT(promises)};

// ---- Memory

// No machine has as much memory. A host that uses the lower 32 bits of the size gives a small block.
static void memory_has_any_size(void) {
  const int64_t size = (INT64_C(1) << 46) + 64;
  char* small = HOST(HVM_Malloc)(1000);
  if (small == NULL) broken("HVM_Malloc returned null for 1000 bytes");
  memset(small, 1, 1000);
  HOST(HVM_Free)(small);
  char* large = HOST(HVM_Malloc)(size);
  if (large != NULL) large[size - 1] = 1;  // ends the process if the block is smaller
}

static void expect_kept(const char* operation, const char* block, int size) {
  if (block == NULL) broken("%s returned null", operation);
  for (int i = 0; i < size; ++i)
    if (block[i] != (char)i) broken("%s changed byte %d", operation, i);
}

static void resizing_keeps_the_content(void) {
  enum { SMALL = 100, LARGE = 100000 };
  char* block = HOST(HVM_Malloc)(SMALL);
  if (block == NULL) broken("HVM_Malloc returned null for %d bytes", SMALL);
  for (int i = 0; i < SMALL; ++i) block[i] = (char)i;
  block = HOST(HVM_Realloc2)(block, LARGE, SMALL);
  expect_kept("HVM_Realloc2", block, SMALL);
  block[LARGE - 1] = 0;
  block = HOST(HVM_Realloc2)(block, SMALL / 2, LARGE);
  expect_kept("HVM_Realloc2", block, SMALL / 2);
  block = HOST(HVM_ReallocNoLeak)(block, LARGE);
  expect_kept("HVM_ReallocNoLeak", block, SMALL / 2);
  block[LARGE - 1] = 0;
  HOST(HVM_Free)(block);
}

// clang-format off
static const Promise of_memory[] = {
    {"`HVM_Malloc` takes sizes of 64 bits.", memory_has_any_size, ANY_LAYOUT},
    {"`HVM_Realloc2` and `HVM_ReallocNoLeak` keep the content.", resizing_keeps_the_content, ANY_LAYOUT},
};
// clang-format on
const PromiseGroup memory_promises = {of_memory, COUNT(of_memory)};
