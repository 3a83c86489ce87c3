// support/elements.hpp: kinds, extents and elements for tests of functions of arrays

#pragma once

#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "support/module_test.hpp"

namespace arrayfold::test {

using Words = std::vector<std::string>;
using Extents = std::vector<std::size_t>;

/// The kinds that are served, for tests of all of them.
using AllKinds = ::testing::Types<XTDouble, XTFloat, XTInt, XTInt64>;
using RealKinds = ::testing::Types<XTDouble, XTFloat>;
using IntegerKinds = ::testing::Types<XTInt, XTInt64>;
struct KindNames {
  template <class Kind>
  static std::string GetName(int) {
    return Kind::dtype;
  }
};

inline std::size_t size_of(const Extents& extents) {
  std::size_t size = 1;
  for (const std::size_t extent : extents) size *= extent;
  return size;
}

/// The stride of the last dimension: none where its extent is 1.
inline std::size_t last_stride(const Extents& extents) { return extents.empty() || extents.back() == 1 ? 0 : 1; }

/// Reals of either sign over forty binary orders of magnitude: each order of additions rounds in its own way. Integers
/// of all sizes.
template <class T>
std::vector<T> random_elements(std::size_t count, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::vector<T> drawn(count);
  for (T& x : drawn)
    if constexpr (std::is_integral_v<T>)
      x = static_cast<T>(engine());
    else
      x = static_cast<T>(
          std::ldexp(std::uniform_real_distribution(-1.0, 1.0)(engine), static_cast<int>(engine() % 40) - 20));
  return drawn;
}

}  // namespace arrayfold::test
