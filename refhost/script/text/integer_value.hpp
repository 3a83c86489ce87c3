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

/// An `int` when it fits in 32 bits, otherwise an `int64`.
inline Value integer_value(std::int64_t x) noexcept { return fits_32_bits(x) ? Value(static_cast<int>(x)) : Value(x); }

}  // namespace hvm
