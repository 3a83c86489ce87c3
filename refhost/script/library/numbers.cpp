// script/library/numbers.cpp: numbers in text

#include "script/library/numbers.hpp"

#include <locale.h>
#include <stdlib.h>

#include <charconv>
#include <cmath>
#include <string>

#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

constexpr const char* no_number = "is not a number";
constexpr const char* too_wide = "does not fit in 64 bits";
constexpr const char* beyond_reals = "is beyond the range of 64-bit floating-point numbers";

bool is_digit(char c) { return c >= '0' && c <= '9'; }

/// A number too close to zero or too large, as the nearest that there is: zero or an infinity.
double nearest(const std::string& text) {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return strtod_l(text.c_str(), nullptr, locale);
}

NumberInText real_in(std::string_view text) {
  // `from_chars` also reads `nan(...)`.
  if (text.find('(') != std::string_view::npos) return {{}, no_number};
  double x = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), x);
  if (read.ec == std::errc::invalid_argument || read.ptr != text.data() + text.size()) return {{}, no_number};
  if (read.ec == std::errc::result_out_of_range) x = nearest(std::string(text));
  if (read.ec == std::errc::result_out_of_range && std::isinf(x)) return {{}, beyond_reals};
  return {Value(x)};
}

NumberInText integer_in(std::string_view text) {
  std::int64_t x = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), x).ec != std::errc{}) return {{}, too_wide};
  return {fits_32_bits(x) ? Value(static_cast<int>(x)) : Value(x)};
}

}  // namespace

NumberInText number_in(std::string_view text) {
  text = trimmed(text);
  // `from_chars` reads a minus and no plus.
  const bool has_plus = text.size() > 1 && text[0] == '+' && text[1] != '-';
  if (has_plus) text.remove_prefix(1);
  const std::size_t sign = text.size() > 1 && text[0] == '-' ? 1 : 0;
  bool is_integer = text.size() > sign;
  for (const char c : text.substr(sign)) is_integer = is_integer && is_digit(c);
  return is_integer ? integer_in(text) : real_in(text);
}

}  // namespace hvm
