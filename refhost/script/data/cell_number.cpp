// script/data/cell_number.cpp: the number that a cell of a table of data spells

#include "script/data/cell_number.hpp"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <system_error>

namespace hvm {
namespace {

constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

std::string_view without_blanks(std::string_view text) {
  constexpr std::string_view blanks = " \t";
  const std::size_t begin = text.find_first_not_of(blanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }

CellNumber real_in(std::string_view text) {
  double x = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), x);
  // `nan(…)` is a form of C that no data mean.
  if (read.ptr != text.data() + text.size() || text.back() == ')') return {};
  if (read.ec == std::errc{}) return {CellNumber::Kind::real, 0, x};
  if (read.ec != std::errc::result_out_of_range) return {};
  // Too large, or too small, which is a zero.
  x = std::strtod(std::string(text).c_str(), nullptr);
  return {std::isinf(x) ? CellNumber::Kind::beyond_range : CellNumber::Kind::real, 0, x};
}

}  // namespace

CellNumber number_in(std::string_view cell) {
  std::string_view text = without_blanks(cell);
  if (text.empty()) return {CellNumber::Kind::missing, 0, not_a_number};
  if (text.front() == '+') {
    text.remove_prefix(1);
    if (text.empty() || text.front() == '-') return {};
  }
  if (!is_digit(text.back())) return real_in(text);
  std::int64_t integer = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), integer);
  if (read.ptr != text.data() + text.size() || read.ec != std::errc{}) return real_in(text);
  const double real = integer == 0 && text.front() == '-' ? -0.0 : static_cast<double>(integer);
  return {CellNumber::Kind::integer, integer, real};
}

}  // namespace hvm
