// script/library/numbers.hpp: the numbers of a script, as the host computes with them

#pragma once

#include <cstdint>
#include <string_view>

#include "script/text/integer_value.hpp"

namespace hvm {

/// A number of any kind.
struct Number {
  ValueTag tag = ValueTag::integer;  // integer, integer64 or real
  std::int64_t whole = 0;            // of an int or int64
  double real = 0;                   // of every kind

  bool is_real() const noexcept { return tag == ValueTag::real; }
  /// A long double holds every real and every 64-bit integer, so that comparisons between them are exact.
  long double exact() const noexcept { return is_real() ? static_cast<long double>(real) : whole; }
};

/// Requires: the record holds a number.
inline Number number_of(const HostValue& record) noexcept {
  if (record.tag == ValueTag::real) return {ValueTag::real, 0, arrayfold::load<double>(record.payload)};
  const std::int64_t whole = record.tag == ValueTag::integer ? arrayfold::load<std::int32_t>(record.payload)
                                                             : arrayfold::load<std::int64_t>(record.payload);
  return {record.tag, whole, static_cast<double>(whole)};
}
inline Number number_of(const Value& value) noexcept { return number_of(value.record()); }

/// Whether `a` is less than `b`, exactly. With NaN, nothing is.
inline bool is_less(const Number& a, const Number& b) noexcept {
  return a.is_real() || b.is_real() ? a.exact() < b.exact() : a.whole < b.whole;
}

/// What a text says as a number.
struct NumberInText {
  Value value;                    // an int, an int64 when it needs one, or a real; nil when there is no number
  const char* problem = nullptr;  // why there is none: "is not a number"
};

/// The value of the number that a text spells.
NumberInText number_in(std::string_view text);

}  // namespace hvm
