// linalg/names.hpp: the functions of linear algebra by what they take
//
// The lists are subsets of the family; contract/names_test.cpp asserts that, and that every function is in one.

#pragma once

#include <string>
#include <vector>

#include "support/functions.hpp"

namespace arrayfold::test {

using Names = std::vector<std::string>;

inline const Names products = {"xdot", "xvdot", "xouter", "xkron"};
inline const Names solvers = {"xsolve", "xlstsq"};
/// The stub, which takes one object of any kind.
inline const Names stubs = {"xmatrix_power"};
/// A scalar of the diagonal; it takes integers, too.
inline const Names traces = {"xtrace"};

/// The others take one matrix of floating-point numbers. These compare the last two extents.
inline const Names of_squares = {"xcholesky", "xeig", "xeigvals", "xeigh", "xeigvalsh",
                                 "xcond",     "xdet", "xslogdet", "xinv"};
/// These take any matrix, and the norm takes any vector, too.
inline const Names of_any_matrix = {"xqr", "xsvd", "xpinv", "xmatrix_rank"};
inline const Names norms = {"xnorm"};

/// All that take one matrix of floating-point numbers: the family without the other lists.
inline const Names of_one_matrix = without(functions_of("linalg"), {products, solvers, stubs, traces});
/// All that take two operands.
inline const Names of_two = joined({products, solvers});

}  // namespace arrayfold::test
