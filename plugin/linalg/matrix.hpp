// linalg/matrix.hpp: from operands to what LAPACK takes
//
// LAPACK reads a matrix by columns and overwrites it, so each routine gets a copy. Operands for which LAPACK would read
// out of bounds or not return (NaN, infinities) are detected here.

#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <type_traits>

#include <xtensor/xexception.hpp>

#include "kernels/folds.hpp"
#include "linalg/result.hpp"

namespace arrayfold {

template <class T>
using ColumnMajor = xt::xarray<T, xt::layout_type::column_major>;

/// Throws std::runtime_error when the last two extents differ, or when there are fewer than two.
template <class T>
void require_square(const xarray_of<T>& array) {
  const Shape& extents = array.shape();
  const std::size_t n = extents.size();
  if (n < 2 || extents[n - 1] != extents[n - 2])
    throw std::runtime_error("Last 2 dimensions of the array must be square.");
}

/// Throws std::bad_alloc when an array with elements has more of them along an axis than LAPACK can count in 32 bits.
template <class T>
void require_counts(const xarray_of<T>& array) {
  constexpr std::size_t most = std::numeric_limits<std::int32_t>::max();
  if (array.storage().size() > most)
    for (const std::size_t extent : array.shape())
      if (extent > most) throw std::bad_alloc();
}

/// Throws xt::broadcast_error for any number of dimensions but two, as a conversion to a matrix does, and
/// std::bad_alloc when the product of the extents is not the number of stored elements.
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
  // A row-major matrix is its transposed matrix in column-major order.
  transpose(matrix.storage().data(), columns, rows, copy.storage().data());
  return copy;
}

/// A copy of a square matrix by columns. Throws as `require_square` and `require_matrix` do.
template <class T>
ColumnMajor<T> square_by_columns(const xarray_of<T>& array) {
  require_square(array);
  require_matrix(array);
  return by_columns<T>(array);
}

/// True when there is neither NaN nor an infinity.
template <class T>
bool all_finite(const xarray_of<T>& array) {
  return folds<T>().are_finite(array.storage().data(), array.storage().size());
}

/// A new array of the kind in which results of `Kind` are stored, each element `value`.
template <class Kind>
auto filled(Kind, const Shape& extents, StoredElement<Kind> value) {
  auto made = make_array<typename Kind::stored>(extents);
  auto& elements = made->array->storage();
  std::fill(elements.begin(), elements.end(), value);
  return made;
}

}  // namespace arrayfold
