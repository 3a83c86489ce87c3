// support/elements.hpp: elements of one type, for references and generators that are compiled for each

#pragma once

#include <cmath>
#include <cstdint>
#include <random>
#include <type_traits>
#include <vector>

namespace arrayfold::test {

/// What `random_array` holds.
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
