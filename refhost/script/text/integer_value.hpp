// script/text/integer_value.hpp: integers of both kinds

#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "kernel/kernel.hpp"

namespace hvm {

inline bool fits_32_bits(std::int64_t x) noexcept {
  return x >= std::numeric_limits<std::int32_t>::min() && x <= std::numeric_limits<std::int32_t>::max();
}

/// Whether a value is an `int` or an `int64`.
inline bool is_integer(const Value& value) noexcept {
  return value.tag() == ValueTag::integer || value.tag() == ValueTag::integer64;
}

/// Whether an integer of 32 bits cannot hold a number without its fraction, as NaN. Requires: `number` is one.
inline bool is_beyond_32_bits(const Value& number) {
  HostValue record = number.record();
  if (number.tag() != ValueTag::real) return !fits_32_bits(HVM_AsInt64(&record));
  const double x = std::trunc(HVM_AsDouble(&record));
  return !(x >= std::numeric_limits<std::int32_t>::min() && x <= std::numeric_limits<std::int32_t>::max());
}

/// An `int` when it fits in 32 bits, otherwise an `int64`.
inline Value integer_value(std::int64_t x) noexcept { return fits_32_bits(x) ? Value(static_cast<int>(x)) : Value(x); }

}  // namespace hvm
