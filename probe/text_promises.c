// probe/text_promises.c: reading and writing text, and what setters release

#include "fixture.h"

#include <string.h>

typedef struct Text {
  const char* setter;
  HostValue value;
} Text;

enum { NARROW_TEXTS = 3, TEXTS = 6 };

// "abc" through every setter. The wide texts are the last ones.
static void set_texts(Text* texts) {
  static const HostWide wide[] = {'a', 'b', 'c', 0};
  for (int i = 0; i < TEXTS; ++i) texts[i].value = nil();
#define SET(i, operation, ...)  \
  texts[i].setter = #operation; \
  HOST(operation)(__VA_ARGS__)
  SET(0, HVM_SetString, context, &texts[0].value, "abc");
  SET(1, HVM_SetStringEx, context, &texts[1].value, "abc", 3);
  SET(2, HVM_SetConstStringEx, NULL, &texts[2].value, "abc", 3);
  SET(3, HVM_SetWString, context, &texts[3].value, wide);
  SET(4, HVM_SetWStringEx, context, &texts[4].value, wide, 3);
  SET(5, HVM_SetConstWStringEx, NULL, &texts[5].value, wide, 3);
#undef SET
}

static void texts_are_known(void) {
  Text texts[TEXTS];
  set_texts(texts);
  for (int i = 0; i < TEXTS; ++i)
    if (!HOST(HVM_StringCheckAll)(&texts[i].value)) broken("HVM_StringCheckAll is false after %s", texts[i].setter);
}

static void characters_are_counted(void) {
  Text texts[TEXTS];
  set_texts(texts);
  for (int i = 0; i < TEXTS; ++i) {
    const int length = HOST(HVM_StringLen)(&texts[i].value);
    if (length != 3) broken("HVM_StringLen is %d for three characters of %s", length, texts[i].setter);
  }
  HostValue empty = nil();
  HOST(HVM_SetString)(context, &empty, "");
  if (HOST(HVM_StringLen)(&empty) != 0) broken("HVM_StringLen of an empty text is %d", HOST(HVM_StringLen)(&empty));
}

static void characters_are_given(void) {
  Text texts[TEXTS];
  set_texts(texts);
  for (int i = 0; i < TEXTS; ++i) {
    const char* text = HOST(HVM_AsString)(&texts[i].value);
    if (text == NULL) broken("HVM_AsString is null after %s", texts[i].setter);
    if (memcmp(text, "abc", 3) != 0) broken("HVM_AsString gives other characters than %s got", texts[i].setter);
    if (text[3] != '\0') broken("HVM_AsString gives no terminator after the characters that %s got", texts[i].setter);
  }
}

static void read_to_the_terminator(HostValue* value) {
  const char* text = HOST(HVM_AsString)(value);
  volatile size_t length = text != NULL ? strlen(text) : 0;  // ends the process if the pointer leads nowhere
  (void)length;
}

static void some_text_is_given_for_any_value(void) {
  HostValue values[] = {nil(), integer(16), integer64(16), real(0.25)};
  for (int i = 0; i < COUNT(values); ++i) read_to_the_terminator(&values[i]);
  HostValue value = nil();
  HOST(HVM_ForceTable)(context, &value, 4);
  read_to_the_terminator(&value);
  put_object(&value);
  read_to_the_terminator(&value);
}

static void text_is_at_the_payload(void) {
  Text texts[TEXTS];
  set_texts(texts);
  for (int i = 0; i < TEXTS; ++i) {
    const HostValue* value = &texts[i].value;
    static const HostWide wide[] = {'a', 'b', 'c'};
    const int is_narrow = value->tag == HOST_TAG_STRING;
    if (!is_narrow && value->tag != HOST_TAG_WIDE_STRING) continue;
    if (value->text == NULL) broken("the payload is null after %s", texts[i].setter);
    if (memcmp(value->pointer, is_narrow ? (const void*)"abc" : wide, is_narrow ? 3 : sizeof wide) != 0)
      broken("other characters are at the payload than %s got", texts[i].setter);
  }
}

static void text_is_copied_to_its_terminator(void) {
  char text[] = "before\0behind";
  HostWide wide[] = {'w', 'i', 'd', 'e', 0, 'x'};
  HostValue narrow_value = nil(), wide_value = nil();
  HOST(HVM_SetString)(context, &narrow_value, text);
  HOST(HVM_SetWString)(context, &wide_value, wide);
  memset(text, '?', sizeof text);
  memset(wide, '?', sizeof wide);
  expect_text("HVM_SetString", &narrow_value, "before");
  expect_text("HVM_SetWString", &wide_value, "wide");
  HOST(HVM_SetString)(context, &narrow_value, "");
  expect_text("HVM_SetString", &narrow_value, "");
}

static void length_decides_what_is_copied(void) {
  char text[] = {'f', 'i', 'r', 's', 't', '+'};
  HostWide wide[] = {'o', 'n', 'e', '+'};
  HostValue narrow_value = nil(), wide_value = nil();
  HOST(HVM_SetStringEx)(context, &narrow_value, text, 5);
  HOST(HVM_SetWStringEx)(context, &wide_value, wide, 3);
  memset(text, '?', sizeof text);
  memset(wide, '?', sizeof wide);
  expect_text("HVM_SetStringEx", &narrow_value, "first");
  expect_text("HVM_SetWStringEx", &wide_value, "one");
  HOST(HVM_SetStringEx)(context, &narrow_value, text, 0);
  expect_text("HVM_SetStringEx", &narrow_value, "");
}

static void length_decides_what_is_referred_to(void) {
  static const HostWide wide[] = {'o', 'n', 'e', 0};
  HostValue narrow_value = nil(), wide_value = nil();
  HOST(HVM_SetConstStringEx)(NULL, &narrow_value, "constant", 8);
  HOST(HVM_SetConstWStringEx)(NULL, &wide_value, wide, 3);
  expect_text("HVM_SetConstStringEx", &narrow_value, "constant");
  expect_text("HVM_SetConstWStringEx", &wide_value, "one");
  HOST(HVM_FreeObjectContent)(context, &narrow_value);
  HOST(HVM_FreeObjectContent)(context, &wide_value);
}

static void text_is_freed_by_its_payload(void) {
  Text texts[TEXTS];
  set_texts(texts);
  for (int i = 0; i < TEXTS; ++i) {
    HostValue* value = &texts[i].value;
    const int is_plain = value->tag == HOST_TAG_STRING || value->tag == HOST_TAG_WIDE_STRING;
    const int is_text = is_plain || (value->tag == HOST_TAG_CONVERTED_STRING && value->pointer != NULL);
    if (is_text && value->lifetime == HOST_LIFETIME_TEMPORARY && value->owned != 0) HOST(HVM_Free)(value->pointer);
  }
  set_texts(texts);  // a heap that was damaged ends the process here or earlier
}

#define OVERWRITE(operation, ...)                                                \
  do {                                                                           \
    HostValue value = nil();                                                     \
    const Content* old = put_object(&value);                                     \
    HOST(operation)(__VA_ARGS__);                                                \
    expect_destroyed(old, "when " #operation " replaced it in its only record"); \
  } while (0)

static void setters_release(void) {
  OVERWRITE(HVM_SetInt, context, &value, 1);
  OVERWRITE(HVM_SetInt64, context, &value, 1);
  OVERWRITE(HVM_SetReal, context, &value, 1);
  OVERWRITE(HVM_SetString, context, &value, "text");
  OVERWRITE(HVM_SetStringEx, context, &value, "text", 4);
  OVERWRITE(HVM_SetWString, context, &value, wide_text);
  OVERWRITE(HVM_SetWStringEx, context, &value, wide_text, 3);
  OVERWRITE(HVM_SetConstStringEx, NULL, &value, "text", 4);
  OVERWRITE(HVM_SetConstWStringEx, NULL, &value, wide_text, 3);
  OVERWRITE(HVM_ForceTable, context, &value, 4);
  OVERWRITE(HVM_SetTypeAny, context, &value, new_object());
}

// clang-format off
static const Promise promises[] = {
    {"`HVM_StringCheckAll` is true for every form of text.", texts_are_known, OWN_LAYOUT},
    {"`HVM_StringLen` returns the number of characters, without a terminator.", characters_are_counted, OWN_LAYOUT},
    {"`HVM_AsString` returns the characters of a text and a terminator, which the host still owns.",
     characters_are_given, OWN_LAYOUT},
    {"`HVM_AsString` returns null or some text for any value.", some_text_is_given_for_any_value, OWN_LAYOUT},
    {"A text of tag 2 or 24 has the pointer to its characters in the payload.", text_is_at_the_payload, OWN_LAYOUT},
    {"`HVM_SetString` and `HVM_SetWString` store a copy of the text up to its terminator.",
     text_is_copied_to_its_terminator, OWN_LAYOUT},
    {"`HVM_SetStringEx` and `HVM_SetWStringEx` store a copy of `length` characters.",
     length_decides_what_is_copied, OWN_LAYOUT},
    {"`HVM_SetConstStringEx` and `HVM_SetConstWStringEx` store `length` characters that outlive the record.",
     length_decides_what_is_referred_to, OWN_LAYOUT},
    {"`HVM_Free` frees the payload of a temporary text whose `owned` is set.",
     text_is_freed_by_its_payload, OWN_LAYOUT},
    {"A setter releases what the record holds.", setters_release, OWN_LAYOUT},
};
// clang-format on
const PromiseGroup text_promises = {promises, COUNT(promises)};
