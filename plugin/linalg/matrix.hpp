// linalg/matrix.hpp: from operands to what the routines take
//
// The routines read a matrix by columns and overwrite it, so that each gets a copy. Operands that they would read out
// of bounds, or never come back from, are told apart here.

#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <type_traits>

#include <xtensor/xexception.hpp>

#include "linalg/result.hpp"

namespace arrayfold {

template <class T>
using ColumnMajor = xt::xarray<T, xt::layout_type::column_major>;

/// Throws std::runtime_error when the last two extents differ, or when there are no two.
template <class T>
void require_square(const xarray_of<T>& array) {
  const Shape& extents = array.shape();
  const std::size_t n = extents.size();
  if (n < 2 || extents[n - 1] != extents[n - 2])
    throw std::runtime_error("Last 2 dimensions of the array must be square.");
}

/// Throws std::bad_alloc when there are elements and the routines, which count in 32 bits, could not count them along a
/// dimension.
template <class T>
void require_counts(const xarray_of<T>& array) {
  constexpr std::size_t most = std::numeric_limits<std::int32_t>::max();
  if (array.storage().size() > most)
    for (const std::size_t extent : array.shape())
      if (extent > most) throw std::bad_alloc();
}

/// Throws xt::broadcast_error for another number of dimensions than two, as a conversion to a matrix does, and
/// std::bad_alloc when the extents claim other elements than there are.
template <class T>
void require_matrix(const xarray_of<T>& array) {
  if (array.dimension() != 2) xt::throw_broadcast_error(array.shape(), Shape{});
  check_extents(array);
  require_counts(array);
}

/// A copy of a matrix by columns, in the element type R.
template <class R, class T>
ColumnMajor<R> by_columns(const xarray_of<T>& matrix) {
  const std::size_t rows = matrix.shape()[0];
  const std::size_t columns = matrix.shape()[1];
  auto copy = ColumnMajor<R>::from_shape({rows, columns});
  // What lies there by rows is the transposed matrix by columns.
  transpose(matrix.storage().data(), columns, rows, copy.storage().data());
  return copy;
}

/// The copy that a routine for square matrices takes.
template <class T>
ColumnMajor<T> square_by_columns(const xarray_of<T>& array) {
  require_square(array);
  require_matrix(array);
  return by_columns<T>(array);
}

/// Is there neither an infinity nor NaN? Some routines do not return from those.
template <class T>
bool all_finite(const xarray_of<T>& array) {
  bool finite = true;
  for (const T x : array.storage()) finite &= std::abs(x) <= std::numeric_limits<T>::max();
  return finite;
}

/// A new array of the kind in which results of `Kind` are stored, each element `value`.
template <class Kind>
auto filled(const Shape& extents, double value) {
  auto made = make_array<StoredKind<Kind>>(extents);
  auto& elements = made->array->storage();
  std::fill(elements.begin(), elements.end(), value);
  return made;
}

}  // namespace arrayfold
