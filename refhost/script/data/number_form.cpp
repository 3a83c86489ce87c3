// script/data/number_form.cpp: numbers in files

#include "script/data/number_form.hpp"

#include <charconv>
#include <cmath>
#include <string_view>

namespace hvm {
namespace {

constexpr std::size_t longest_number = 32;

}  // namespace

void append_integer(std::string& out, std::int64_t x) {
  char digits[longest_number];
  out.append(digits, std::to_chars(digits, digits + longest_number, x).ptr);
}

void append_real(std::string& out, double x) {
  if (std::isnan(x)) return void(out += "nan");
  char digits[longest_number];
  const char* end = std::to_chars(digits, digits + longest_number, x).ptr;
  const std::string_view text(digits, static_cast<std::size_t>(end - digits));
  out += text;
  if (text.find_first_of(".einf") == std::string_view::npos) out += ".0";
}

}  // namespace hvm
