// probe/number_promises.c: reading and writing numbers

#include "fixture.h"

#include <float.h>
#include <math.h>
#include <string.h>

static const int32_t integers[] = {0, 1, -1, 255, -256, INT32_MAX, INT32_MIN};
static const int64_t integers64[] = {0, -1, INT64_C(1) << 32, INT64_C(-5000000000), INT64_MAX, INT64_MIN};
static const double reals[] = {0.0, -0.0, 0.1, -1e300, DBL_MIN / 4, DBL_MAX, INFINITY, -INFINITY, NAN};

static int is_same_real(double a, double b) { return isnan(a) ? isnan(b) : memcmp(&a, &b, sizeof a) == 0; }

static void integers_are_stored(void) {
  for (int i = 0; i < COUNT(integers); ++i) {
    HostValue value = nil();
    HOST(HVM_SetInt)(context, &value, integers[i]);
    expect_tag("HVM_SetInt", &value, HOST_TAG_INTEGER);
    if (value.integer != integers[i]) broken("HVM_SetInt stored %d instead of %d", value.integer, integers[i]);
  }
}

static void integers64_are_stored(void) {
  for (int i = 0; i < COUNT(integers64); ++i) {
    HostValue value = nil();
    HOST(HVM_SetInt64)(context, &value, integers64[i]);
    expect_tag("HVM_SetInt64", &value, HOST_TAG_INTEGER64);
    if (value.integer64 != integers64[i])
      broken("HVM_SetInt64 stored %lld instead of %lld", (long long)value.integer64, (long long)integers64[i]);
  }
}

static void reals_are_stored(void) {
  for (int i = 0; i < COUNT(reals); ++i) {
    HostValue value = nil();
    HOST(HVM_SetReal)(context, &value, reals[i]);
    expect_tag("HVM_SetReal", &value, HOST_TAG_REAL);
    if (!is_same_real(value.real, reals[i])) broken("HVM_SetReal stored %.17g instead of %.17g", value.real, reals[i]);
  }
}

static void expect_int(HostValue value, int expected) {
  const int answer = HOST(HVM_AsInt)(&value);
  if (answer != expected) broken("HVM_AsInt of %d, in a record of tag %d, is %d", expected, value.tag, answer);
}

static void as_int_gives_whole_numbers(void) {
  for (int i = 0; i < COUNT(integers); ++i) {
    expect_int(integer(integers[i]), integers[i]);
    expect_int(integer64(integers[i]), integers[i]);
    expect_int(real(integers[i]), integers[i]);
  }
}

static void expect_int64(HostValue value, int64_t expected) {
  const int64_t answer = HOST(HVM_AsInt64)(&value);
  if (answer != expected)
    broken("HVM_AsInt64 of %lld, in a record of tag %d, is %lld", (long long)expected, value.tag, (long long)answer);
}

static void as_int64_gives_whole_numbers(void) {
  for (int i = 0; i < COUNT(integers64); ++i) expect_int64(integer64(integers64[i]), integers64[i]);
  for (int i = 0; i < COUNT(integers); ++i) expect_int64(integer(integers[i]), integers[i]);
  expect_int64(real(-9007199254740992.0), INT64_C(-9007199254740992));
}

static void expect_double(HostValue value, double expected) {
  const double answer = HOST(HVM_AsDouble)(&value);
  if (!is_same_real(answer, expected))
    broken("HVM_AsDouble of %.17g, in a record of tag %d, is %.17g", expected, value.tag, answer);
}

static void as_double_gives_every_double(void) {
  for (int i = 0; i < COUNT(reals); ++i) expect_double(real(reals[i]), reals[i]);
  for (int i = 0; i < COUNT(integers); ++i) expect_double(integer(integers[i]), integers[i]);
  expect_double(integer64(INT64_C(-9007199254740991)), -9007199254740991.0);
}

static void as_bool_is_false_for_zero(void) {
  HostValue zeros[] = {integer(0), integer64(0), real(0.0), real(-0.0)};
  HostValue numbers[] = {integer(1), integer(-1), integer(256), integer64(INT64_C(1) << 32), real(0.25), real(-1)};
  for (int i = 0; i < COUNT(zeros); ++i)
    if (HOST(HVM_AsBool)(&zeros[i])) broken("HVM_AsBool is true for the zero of tag %d", zeros[i].tag);
  for (int i = 0; i < COUNT(numbers); ++i)
    if (!HOST(HVM_AsBool)(&numbers[i])) broken("HVM_AsBool is false for number %d of tag %d", i, numbers[i].tag);
}

static void as_int_returns_for_any_value(void) {
  HostValue value = nil();
  HOST(HVM_AsInt)(&value);
  HOST(HVM_SetString)(context, &value, "text");
  HOST(HVM_AsInt)(&value);
  HOST(HVM_ForceTable)(context, &value, 4);
  HOST(HVM_AsInt)(&value);
  put_object(&value);
  HOST(HVM_AsInt)(&value);
}

static void numbers_are_known(void) {
  HostValue value = nil();
  HOST(HVM_SetInt)(context, &value, -3);
  if (!HOST(HVM_NumberCheck)(&value)) broken("HVM_NumberCheck is false after HVM_SetInt");
  HOST(HVM_SetInt64)(context, &value, INT64_MAX);
  if (!HOST(HVM_NumberCheck)(&value)) broken("HVM_NumberCheck is false after HVM_SetInt64");
  HOST(HVM_SetReal)(context, &value, NAN);
  if (!HOST(HVM_NumberCheck)(&value)) broken("HVM_NumberCheck is false after HVM_SetReal");
}

// clang-format off
static const Promise promises[] = {
    {"`HVM_SetInt` stores any 32-bit integer, with tag 0.", integers_are_stored, OWN_LAYOUT},
    {"`HVM_SetInt64` stores any 64-bit integer, with tag 20.", integers64_are_stored, OWN_LAYOUT},
    {"`HVM_SetReal` stores any double, with tag 1.", reals_are_stored, OWN_LAYOUT},
    {"`HVM_AsInt` returns the whole number of 32 bits that a record of tag 0, 1 or 20 holds.",
     as_int_gives_whole_numbers, OWN_LAYOUT},
    {"`HVM_AsInt64` returns the whole number of 64 bits that a record of tag 0, 1 or 20 holds.",
     as_int64_gives_whole_numbers, OWN_LAYOUT},
    {"`HVM_AsDouble` returns every double unchanged, and every integer of up to 53 bits.",
     as_double_gives_every_double, OWN_LAYOUT},
    {"`HVM_AsBool` is false for zero, and true for other numbers.", as_bool_is_false_for_zero, OWN_LAYOUT},
    {"`HVM_AsInt` returns some number for any value.", as_int_returns_for_any_value, OWN_LAYOUT},
    {"`HVM_NumberCheck` is true for every number.", numbers_are_known, OWN_LAYOUT},
};
// clang-format on
const PromiseGroup number_promises = {promises, COUNT(promises)};
