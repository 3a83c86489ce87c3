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
  return noted(
      "HVM_NumberCheck", [=] { return HostBool{is_number(value)}; }, value);
}

int HVM_AsInt(HostValue* value) {
  return noted(
      "HVM_AsInt", [=] { return as_integer<std::int32_t>(value); }, value);
}

std::int64_t HVM_AsInt64(HostValue* value) {
  return noted(
      "HVM_AsInt64", [=] { return as_integer<std::int64_t>(value); }, value);
}

double HVM_AsDouble(HostValue* value) {
  return noted(
      "HVM_AsDouble", [=] { return as_double(value); }, value);
}

// Everything but zero is true, NaN too.
HostBool HVM_AsBool(HostValue* value) {
  return noted(
      "HVM_AsBool", [=] { return HostBool{as_double(value) != 0}; }, value);
}

void HVM_SetInt(HostContext ctx, HostValue* value, int x) {
  noted(
      "HVM_SetInt", [=] { replace(ctx, value, record_of<std::int32_t>(ValueTag::integer, x)); }, value, x);
}

void HVM_SetInt64(HostContext ctx, HostValue* value, std::int64_t x) {
  noted(
      "HVM_SetInt64", [=] { replace(ctx, value, record_of<std::int64_t>(ValueTag::integer64, x)); }, value, x);
}

void HVM_SetReal(HostContext ctx, HostValue* value, double x) {
  noted(
      "HVM_SetReal", [=] { replace(ctx, value, record_of<double>(ValueTag::real, x)); }, value, x);
}

}  // namespace arrayfold
