// linalg/reference.hpp: the array library's own linear algebra, which the functions must equal to the bit
//
// The library gets the very operand of the module, by rows, and makes its own copies. Its templates are compiled in
// reference.cpp alone.

#pragma once

#include <string>
#include <vector>

#include "support/test_array.hpp"

namespace arrayfold::test {

/// What the library's function under the name of the module's gives: xdot, xvdot, xouter or xkron of two arrays. The
/// elements are those of a result of the first kind.
TestArray library_product(const std::string& name, const TestArray& left, const TestArray& right);

/// The parts that the library's function gives of one matrix of floating-point numbers, as doubles; a scalar is a
/// zero-dimensional part. `xnorm` takes vectors, too; of a matrix the library squares by `pow`.
std::vector<TestArray> library_parts(const std::string& name, const TestArray& matrix);
/// The same of two: xsolve and xlstsq.
std::vector<TestArray> library_parts(const std::string& name, const TestArray& matrix, const TestArray& other);

}  // namespace arrayfold::test
