// script/text/number_text.hpp: numbers as text

#pragma once

#include <cstddef>
#include <string>

#include "kernel/kernel.hpp"

namespace hvm {

/// How much of a value is shown.
enum class Detail {
  brief,  // `print`: reals with six significant digits, large arrays by head and tail
  full,   // `str`: reals so that they read back, arrays with all their elements
};

/// A real number, always with a point, an exponent, or as `inf` or `nan`.
std::string real_text(double x, Detail detail);

/// A number as `print` shows it. Requires: `number` is one.
std::string number_text(const Value& number);

/// `1 argument`, `2 arguments`.
std::string counted(std::size_t count, const char* one, const char* many);

}  // namespace hvm
