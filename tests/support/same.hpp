// support/same.hpp: when two results are equal

#pragma once

#include <cmath>
#include <cstring>
#include <type_traits>

namespace arrayfold::test {

/// The two results are equal: bit for bit, or both NaN. The second is converted to the type of the first.
template <class T>
bool same(T a, std::common_type_t<T> b) {
  if constexpr (std::is_floating_point_v<T>)
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace arrayfold::test
