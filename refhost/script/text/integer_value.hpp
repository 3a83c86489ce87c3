// script/text/integer_value.hpp: integers of both kinds

#pragma once

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

/// Whether a value is a number that an integer of 32 bits cannot hold, without its fraction, or NaN. It asks no
/// operation of the kernel: every argument of a call is looked at.
inline bool is_beyond_32_bits(const Value& value) noexcept {
  const std::byte* payload = value.record().payload;
  if (value.tag() == ValueTag::integer64) return !fits_32_bits(arrayfold::load<std::int64_t>(payload));
  if (value.tag() != ValueTag::real) return false;
  const auto x = arrayfold::load<double>(payload);
  return !(x > std::numeric_limits<std::int32_t>::min() - 1.0 && x < std::numeric_limits<std::int32_t>::max() + 1.0);
}

/// An `int` when it fits in 32 bits, otherwise an `int64`.
inline Value integer_value(std::int64_t x) noexcept { return fits_32_bits(x) ? Value(static_cast<int>(x)) : Value(x); }

}  // namespace hvm
