// order/reference.hpp: the array library's own sorts and sets, which the functions must equal bit for bit
//
// The library's templates are compiled in reference.cpp alone.

#pragma once

#include <string>

#include "support/test_array.hpp"

namespace arrayfold::test {

/// Rows of this many elements and more are sorted in another way than the library's.
inline constexpr std::size_t long_run = 256;

/// What the library's function under the name of the module's gives: xsort, xargsort, xunique, xdiff, xargmin, xargmax.
/// Positions are 32-bit integers.
TestArray library_result(const std::string& name, const TestArray& array);
TestArray library_partition(const TestArray& array, std::size_t rank);

/// The positions of xargsort: the library's own, or in long rows those of a stable sort.
TestArray expected_positions(const TestArray& array);
/// Whether positions bring each row into order, and each occurs once.
bool put_in_order(const TestArray& positions, const TestArray& array);
/// The array sorted as one row by std::sort.
TestArray sorted(const TestArray& array);
/// Whether the two hold the same elements, in whatever order.
bool is_permutation(const TestArray& a, const TestArray& b);
/// Whether no element in front of the place is greater than the one there, and none behind it smaller.
bool is_parted_at(const TestArray& array, std::size_t place);

}  // namespace arrayfold::test
