// reduce/reference.hpp: what the array library gives, and elements for comparisons
//
// All of it is compiled in reference.cpp alone.

#pragma once

#include <string>

#include "reductions.hpp"

namespace arrayfold::test {

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
