// fuzz/plain_functions.hpp: slow formulas of functions from arrays to an array

#pragma once

#include "support/test_array.hpp"

namespace arrayfold::fuzz {

using test::TestArray;

// The array is of int32, int64 or double.

/// Each row along the last axis in order. Requires: no NaN.
TestArray plain_sort(const TestArray& array);
/// Each value once, in order. Requires: no NaN.
TestArray plain_unique(const TestArray& array);
/// The differences of neighbours along the last axis, in the kind of the array. Integers wrap.
TestArray plain_differences(const TestArray& array);
/// Each element by itself, in the kind of the array; as doubles.
TestArray plain_squares(const TestArray& array);
/// The smaller of each pair, as doubles: `a < b ? a : b`. The shapes broadcast.
TestArray plain_minimum(const TestArray& a, const TestArray& b);

/// Both are integers or neither is, and they are equal: here NaN is equal to NaN, and zeros of either sign are equal.
bool are_equal(const test::Number& a, const test::Number& b);
/// Same kind, same extents, and equal elements.
bool are_equal(const TestArray& a, const TestArray& b);

}  // namespace arrayfold::fuzz
