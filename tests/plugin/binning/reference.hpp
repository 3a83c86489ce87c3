// binning/reference.hpp: what a slow formula gives, and what the array library gives
//
// All of it is compiled in reference.cpp alone.

#pragma once

#include <random>
#include <vector>

#include "support/test_array.hpp"

namespace arrayfold::test {

/// A histogram by the rule, element by element.
struct ExpectedHistogram {
  TestArray counts;
  bool in_bounds = true;  // every element's bin is in bounds as the formula has it
};
ExpectedHistogram expected_histogram(const TestArray& array, std::size_t bins);

TestArray library_histogram(const TestArray& array, std::size_t bins);
/// The edges of ten bins, as doubles.
TestArray library_edges(const TestArray& array);
TestArray library_bincount(const TestArray& array);
/// The places among edges of any kind, as doubles.
TestArray library_digitize(const TestArray& array, const TestArray& edges);

/// Random bounds, the edges of `bins` bins between them, and the elements just beside all of these.
TestArray elements_on_edges(Kind kind, std::mt19937_64& engine, std::size_t bins);
/// A number as the kind has it, and the `count` elements that follow it upwards.
TestArray successors(Kind kind, double first, std::size_t count);

/// Limits of a kind of floating-point numbers.
struct RealLimits {
  double max, denorm_min;
};
RealLimits limits_of(Kind kind);

}  // namespace arrayfold::test
