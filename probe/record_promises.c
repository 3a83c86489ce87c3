// probe/record_promises.c: the layout of records, and the context

#include "fixture.h"

#include <string.h>

enum { BACKGROUND = 0xA5, BEFORE = 16, BEHIND = 46 };

typedef struct Guarded {
  uint8_t bytes[BEFORE + sizeof(HostValue) + BEHIND];
} Guarded;

static HostValue* record_in(Guarded* guarded) { return (HostValue*)(void*)(guarded->bytes + BEFORE); }

static HostValue* fresh(Guarded* guarded) {
  memset(guarded->bytes, BACKGROUND, sizeof guarded->bytes);
  const HostValue value = nil();
  memcpy(guarded->bytes + BEFORE, &value, sizeof value);
  return record_in(guarded);
}

// Where some bytes are in a record or behind it; -1: nowhere.
static int offset_of(const Guarded* guarded, const void* bytes, size_t size) {
  for (size_t at = 0; at + size <= sizeof(HostValue) + BEHIND; ++at)
    if (memcmp(guarded->bytes + BEFORE + at, bytes, size) == 0) return (int)at;
  return -1;
}

// The layout is another one only if no setter of numbers stores its number at offset 1.
static void payload_is_in_place(void) {
  static const int64_t large = 0x1122334455667788;
  static const int32_t small = 0x12345678;
  static const double fraction = 0.1;
  Guarded guarded;
  HOST(HVM_SetInt64)(context, fresh(&guarded), large);
  const int of_large = offset_of(&guarded, &large, sizeof large);
  if (of_large == 1) return;
  HOST(HVM_SetInt)(context, fresh(&guarded), small);
  const int of_small = offset_of(&guarded, &small, sizeof small);
  HOST(HVM_SetReal)(context, fresh(&guarded), fraction);
  const int of_fraction = offset_of(&guarded, &fraction, sizeof fraction);
  if (of_small == 1 || of_fraction == 1) return;
  const int first = of_small >= 0 ? of_small : of_fraction;
  const int offset = of_large >= 0 ? of_large : first;
  if (offset >= 0) broken("a number is stored at offset %d of its record, not at 1", offset);
  broken("no setter of numbers stores its number in the record");
}

static void expect_background(const char* operation, const Guarded* guarded) {
  for (int i = 0; i < BEFORE; ++i)
    if (guarded->bytes[i] != BACKGROUND) broken("%s wrote %d bytes before the record", operation, BEFORE - i);
  for (int i = (int)sizeof guarded->bytes - 1; i >= BEFORE + (int)sizeof(HostValue); --i)
    if (guarded->bytes[i] != BACKGROUND) broken("%s wrote %d bytes", operation, i - BEFORE + 1);
}

#define WRITE(operation, ...)                 \
  do {                                        \
    HostValue* const value = fresh(&guarded); \
    HOST(operation)(__VA_ARGS__);             \
    expect_background(#operation, &guarded);  \
  } while (0)

static void eighteen_bytes_are_written(void) {
  Guarded guarded;
  HostValue source = integer(7);
  WRITE(HVM_SetInt, context, value, -1);
  WRITE(HVM_SetInt64, context, value, -1);
  WRITE(HVM_SetReal, context, value, -1);
  WRITE(HVM_SetString, context, value, "text");
  WRITE(HVM_SetStringEx, context, value, "text", 4);
  WRITE(HVM_SetWString, context, value, wide_text);
  WRITE(HVM_SetWStringEx, context, value, wide_text, 3);
  WRITE(HVM_SetConstStringEx, NULL, value, "text", 4);
  WRITE(HVM_SetConstWStringEx, NULL, value, wide_text, 3);
  WRITE(HVM_ForceTable, context, value, 4);
  WRITE(HVM_DupObject, context, value, &source, 1);
  WRITE(HVM_FreeObjectContent, context, value);
  if (registration.verdict == KEPT) WRITE(HVM_SetTypeAny, context, value, new_object());
}

static void own_numbers_are_read(void) {
  HostValue a = integer(-7), b = integer64(INT64_C(-70000000000)), c = real(-0.75);
  if (HOST(HVM_AsInt)(&a) != -7) broken("HVM_AsInt of a record of tag 0 with -7 is %d", HOST(HVM_AsInt)(&a));
  if (HOST(HVM_AsInt64)(&b) != INT64_C(-70000000000))
    broken("HVM_AsInt64 of a record of tag 20 with -70000000000 is %lld", (long long)HOST(HVM_AsInt64)(&b));
  if (HOST(HVM_AsDouble)(&c) != -0.75)
    broken("HVM_AsDouble of a record of tag 1 with -0.75 is %.17g", HOST(HVM_AsDouble)(&c));
  if (!HOST(HVM_NumberCheck)(&a) || !HOST(HVM_NumberCheck)(&b) || !HOST(HVM_NumberCheck)(&c))
    broken("HVM_NumberCheck is false for a record of tag 0, 1 or 20 that the module has written");
}

static void context_is_filled(void) {
  if (context == NULL) broken("the context is null");
  if (context->frame == NULL) broken("`frame`, at offset 56, is null");
  if (context->call_function == NULL) broken("`call_function`, at offset 72, is null");
  if (context->read_slot == NULL) broken("`read_slot`, at offset 80, is null");
  // Reading both fields ends the process if `frame` leads nowhere.
  volatile uint32_t word = context->frame->slot_base;
  word = context->frame->copy_strings;
  (void)word;
}

// clang-format off
static const Promise promises[] = {
    {"A record has its payload at offset 1.", payload_is_in_place, DECIDES_LAYOUT},
    {"An operation that writes a record writes 18 bytes.", eighteen_bytes_are_written, OWN_LAYOUT},
    {"A number that a module itself writes into a record is a number for all operations.",
     own_numbers_are_read, OWN_LAYOUT},
    {"The `frame`, `call_function` and `read_slot` of a context are not null.", context_is_filled, ANY_LAYOUT},
};
// clang-format on
const PromiseGroup record_promises = {promises, COUNT(promises)};
