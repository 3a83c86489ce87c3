// script/library/numbers.cpp: numbers in text

#include "script/library/numbers.hpp"

#include "script/text/number_reading.hpp"

namespace hvm {

NumberInText number_in(std::string_view text) {
  const SpelledNumber number = spelled_number(text);
  switch (number.kind) {
    case SpelledNumber::Kind::integer:
      return {integer_value(number.integer)};
    case SpelledNumber::Kind::real:
      return {Value(number.real)};
    case SpelledNumber::Kind::wide_integer:
      return {{}, "does not fit in 64 bits"};
    case SpelledNumber::Kind::beyond_range:
      return {{}, "is beyond the range of 64-bit floating-point numbers"};
    default:
      return {{}, "is not a number"};
  }
}

}  // namespace hvm
