// accuracy/functions.hpp: what is measured, and against what

#pragma once

#include <vector>

namespace arrayfold::accuracy {

/// The most units in the last place, on processors that fuse products with sums and on others; 0 where the function
/// called decides.
struct Bound {
  double fused, otherwise;
};

/// A function of the module and its mathematical value in 80 bits.
struct Function {
  const char* name;
  long double (*exact)(long double);
  Bound bound;
};

/// Every function whose value is rounded.
const std::vector<Function>& functions();

/// The distance from the exact value in units in the last place of a double of that size. An infinity counts as 2^1024,
/// and is right where the exact value rounds to it. A NaN for a number, or the other way round, is infinitely far.
double error_in_ulp(double value, long double exact);

}  // namespace arrayfold::accuracy
