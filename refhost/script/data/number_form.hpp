// script/data/number_form.hpp: numbers in files

#pragma once

#include <cstdint>
#include <string>

namespace hvm {

/// Appends an integer.
void append_integer(std::string& out, std::int64_t x);
/// Appends a real in the shortest form that reads back, always with a point or an exponent, or as `nan` or `inf`.
void append_real(std::string& out, double x);

}  // namespace hvm
