// script/text/number_reading.hpp: the number that a text spells

#pragma once

#include <cstdint>
#include <string_view>

namespace hvm {

struct SpelledNumber {
  enum class Kind {
    none,          // it is no number
    empty,         // there is nothing but blanks
    integer,       // it fits into 64 bits
    wide_integer,  // it does not
    real,          // also nan and inf
    beyond_range   // it is a number, but beyond the range of 64-bit floating-point numbers
  };
  Kind kind = Kind::none;
  std::int64_t integer = 0;
  double real = 0;  // also the value of an integer; NaN when there is none, infinite beyond the range
};

/// Reads digits with a sign, a point and an exponent, or `nan`, `inf` and `infinity`, with blanks around them. The
/// user's locale does not matter.
SpelledNumber spelled_number(std::string_view text);

}  // namespace hvm
