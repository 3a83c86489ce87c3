// script/text/number_text.cpp: numbers as text

#include "script/text/number_text.hpp"

#include <fmt/format.h>

#include <cmath>

namespace hvm {

std::string real_text(double x, Detail detail) {
  if (std::isnan(x)) return "nan";
  std::string text = detail == Detail::brief ? fmt::format("{:.6g}", x) : fmt::format("{}", x);
  const bool looks_whole = text.find_first_not_of("-0123456789") == std::string::npos;
  return looks_whole ? text + ".0" : text;
}

std::string number_text(const Value& number) {
  HostValue record = number.record();
  if (number.tag() == ValueTag::real) return real_text(HVM_AsDouble(&record), Detail::brief);
  return fmt::format("{}", HVM_AsInt64(&record));
}

std::string counted(std::size_t count, const char* one, const char* many) {
  return fmt::format("{} {}", count, count == 1 ? one : many);
}

}  // namespace hvm
