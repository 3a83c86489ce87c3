// kernel/numbers.cpp: reading and writing numbers
//
// Numbers are the tags 0, 1 and 20. A real becomes an integer by truncation; beyond the type's range it becomes the
// nearest end, and NaN becomes 0. An integer of 64 bits becomes one of 32 by its low half. Anything else reads
// as 0.

#include <limits>

#include "kernel/recorder.hpp"
#include "kernel/records.hpp"

namespace arrayfold {
namespace {

using namespace hvm::kernel;

template <class Integer>
Integer truncated(double x) noexcept {
  using Limits = std::numeric_limits<Integer>;
  // The minimum is a power of two and exact as a double. The maximum is not, but its successor is.
  constexpr auto minimum = static_cast<double>(Limits::min());
  if (x != x) return 0;
  if (x < minimum) return Limits::min();
  if (x >= -minimum) return Limits::max();
  return static_cast<Integer>(x);
}

template <class Integer>
Integer as_integer(const HostValue* value) noexcept {
  if (!value) return 0;
  switch (value->tag) {
    case ValueTag::integer:
      return payload_of<std::int32_t>(*value);
    case ValueTag::real:
      return truncated<Integer>(payload_of<double>(*value));
    case ValueTag::integer64:
      return static_cast<Integer>(payload_of<std::int64_t>(*value));
    default:
      return 0;
  }
}

double as_double(const HostValue* value) noexcept {
  if (value && value->tag == ValueTag::real) return payload_of<double>(*value);
  return static_cast<double>(as_integer<std::int64_t>(value));
}

bool is_number(const HostValue* value) noexcept {
  return value &&
         (value->tag == ValueTag::integer || value->tag == ValueTag::real || value->tag == ValueTag::integer64);
}

}  // namespace

HostBool HVM_NumberCheck(HostValue* value) {
  note("HVM_NumberCheck", value);
  return is_number(value);
}

int HVM_AsInt(HostValue* value) {
  note("HVM_AsInt", value);
  return as_integer<std::int32_t>(value);
}

std::int64_t HVM_AsInt64(HostValue* value) {
  note("HVM_AsInt64", value);
  return as_integer<std::int64_t>(value);
}

double HVM_AsDouble(HostValue* value) {
  note("HVM_AsDouble", value);
  return as_double(value);
}

// Everything but zero is true, NaN too.
HostBool HVM_AsBool(HostValue* value) {
  note("HVM_AsBool", value);
  return as_double(value) != 0;
}

void HVM_SetInt(HostContext ctx, HostValue* value, int x) {
  note("HVM_SetInt", value, x);
  replace(ctx, value, record_of<std::int32_t>(ValueTag::integer, x));
}

void HVM_SetInt64(HostContext ctx, HostValue* value, std::int64_t x) {
  note("HVM_SetInt64", value, x);
  replace(ctx, value, record_of<std::int64_t>(ValueTag::integer64, x));
}

void HVM_SetReal(HostContext ctx, HostValue* value, double x) {
  note("HVM_SetReal", value);
  replace(ctx, value, record_of<double>(ValueTag::real, x));
}

}  // namespace arrayfold
