// linalg/library_operands.hpp: operands for the module and for the library at once

#pragma once

#include "linalg/library.hpp"

#include "algebra.hpp"
#include "kernels/conversion.hpp"

namespace arrayfold::test {

/// Elements that give sums of every rounding; integers small enough for the sums of any kind.
template <class T>
std::vector<T> drawn_elements(std::size_t count, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::vector<T> drawn(count);
  for (T& x : drawn) {
    if constexpr (std::is_integral_v<T>)
      x = static_cast<T>(engine() % 2001) - 1000;
    else
      x = static_cast<T>(std::normal_distribution<double>()(engine));
  }
  return drawn;
}

template <class T>
xarray_of<T> container(const Extents& extents, const std::vector<T>& elements) {
  xarray_of<T> made(Shape(extents.begin(), extents.end()));
  std::copy(elements.begin(), elements.end(), made.storage().begin());
  return made;
}

/// The library's result by rows, as a result of `Kind` holds it.
template <class Kind, class Result>
Contents<ResultElement<Kind>> expected_of(const Result& result) {
  using T = typename Result::value_type;
  const xt::xarray<T, xt::layout_type::row_major> by_rows = result;
  Contents<ResultElement<Kind>> contents{{by_rows.shape().begin(), by_rows.shape().end()}, {}};
  for (const T x : by_rows) contents.elements.push_back(static_cast<ResultElement<Kind>>(x));
  return contents;
}

/// A number as an array of no dimension.
template <class Kind, class T>
Contents<ResultElement<Kind>> expected_number(T number) {
  return {{}, {static_cast<ResultElement<Kind>>(number)}};
}

}  // namespace arrayfold::test
