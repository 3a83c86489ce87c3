// reduce/reference.hpp: what a slow reading of the rules of the reductions gives, and what the array library gives
//
// The order in which floating-point numbers are added is part of each result. The formulas take one element after the
// other, so that nothing but that order is in them. All of it is compiled in reference.cpp alone.

#pragma once

#include <string>

#include "reductions.hpp"

namespace arrayfold::test {

/// The number that the rules of the function give: xsum, xprod, xamin, xamax, xmean, xvariance, xstddev or xtrapz.
HostNumber expected_number(const std::string& name, const TestArray& array);
/// What the array library's function under this name gives: xprod, xmean, xvariance, xstddev, xtrapz, xcount_nonzero or
/// xmedian.
HostNumber library_number(const std::string& name, const TestArray& array);

/// Elements whose product stays in range.
TestArray random_factors(Kind kind, const Extents& extents, unsigned seed);

/// Limits of a kind, as std::numeric_limits has them.
struct Limits {
  Number lowest, max, min, denorm_min;
};
Limits limits_of(Kind kind);

}  // namespace arrayfold::test
