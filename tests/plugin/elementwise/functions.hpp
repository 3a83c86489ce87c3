// elementwise/functions.hpp: the functions of one array as tests expect them, and operands of every kind

#pragma once

#include <cstdint>
#include <vector>

#include "support/hand_made.hpp"
#include "support/module_test.hpp"
#include "support/same.hpp"

namespace arrayfold::test {

/// What becomes of integer operands.
enum class Integers {
  converted,  // to double, then as doubles
  own_width,  // computed as they are, wrapping, then converted
  kept,       // computed as they are, and the result is of their kind
  known,      // the result is the same for all
  no_value,   // the call returns no value
};

/// How close doubles are to the C library's functions.
enum class Closeness {
  same,        // bit for bit
  few_places,  // at most 4 units in the last place, and the same for special values
};

struct Function {
  const char* name;
  double (*of_double)(double);
  float (*of_float)(float);
  Integers integers;
  Closeness closeness;
};

/// All 26.
const std::vector<Function>& functions();

/// The distance of two doubles in steps from one double to the next; huge when one is NaN and the other is not.
std::uint64_t steps_between(double a, double b);

/// Special doubles: NaN, infinities, zeros, subnormals, the ends of the range, halfway points, where results overflow.
const std::vector<double>& special_values();

}  // namespace arrayfold::test
