// script/text/number_reading.cpp: the number that a text spells

#include "script/text/number_reading.hpp"

#include <locale.h>
#include <stdlib.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <system_error>

#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

using Kind = SpelledNumber::Kind;

constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();
constexpr SpelledNumber no_number{Kind::none, 0, not_a_number};

bool is_digit(char c) { return c >= '0' && c <= '9'; }

/// A number too close to zero or too large, as the nearest that there is: zero or an infinity.
double nearest(const std::string& text) {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return strtod_l(text.c_str(), nullptr, locale);
}

SpelledNumber real_in(std::string_view text, Kind kind) {
  // `from_chars` also reads `nan(...)`.
  if (text.back() == ')') return no_number;
  double x = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), x);
  if (read.ec == std::errc::invalid_argument || read.ptr != text.data() + text.size()) return no_number;
  if (read.ec == std::errc::result_out_of_range) x = nearest(std::string(text));
  const bool is_beyond = read.ec == std::errc::result_out_of_range && std::isinf(x);
  return {is_beyond ? Kind::beyond_range : kind, 0, x};
}

/// Most texts have no blanks at their ends, and need no search for them.
std::string_view without_blanks(std::string_view text) {
  const auto may_be_blank = [](char c) { return c <= ' ' || c > '~'; };
  return !text.empty() && (may_be_blank(text.front()) || may_be_blank(text.back())) ? trimmed(text) : text;
}

}  // namespace

SpelledNumber spelled_number(std::string_view text) {
  text = without_blanks(text);
  if (text.empty()) return {Kind::empty, 0, not_a_number};
  // `from_chars` reads a minus and no plus.
  const bool has_plus = text.size() > 1 && text[0] == '+' && text[1] != '-';
  if (has_plus) text.remove_prefix(1);
  if (!is_digit(text.back())) return real_in(text, Kind::real);
  std::int64_t integer = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), integer);
  if (read.ptr != text.data() + text.size() || read.ec == std::errc::invalid_argument) return real_in(text, Kind::real);
  if (read.ec == std::errc::result_out_of_range) return real_in(text, Kind::wide_integer);
  const double real = integer == 0 && text.front() == '-' ? -0.0 : static_cast<double>(integer);
  return {Kind::integer, integer, real};
}

}  // namespace hvm
