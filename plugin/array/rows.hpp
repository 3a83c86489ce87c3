// array/rows.hpp: the rows of an array, its contiguous runs along the last axis

#pragma once

#include <cstddef>

#include "array/xt_object.hpp"

namespace arrayfold {

/// The number of elements in a row. A zero-dimensional array is one row of one element.
inline std::size_t row_length(const Shape& extents) { return extents.empty() ? 1 : extents.back(); }

/// The stride of the last axis: 1, but 0 where the last extent is 1 and for a zero-dimensional array.
template <class T>
std::size_t last_stride(const xarray_of<T>& array) {
  return array.dimension() == 0 ? 0 : static_cast<std::size_t>(array.strides().back());
}

/// Calls `visit(first, length)` for each row of `count` elements with these extents.
template <class Visit>
void for_each_row(const Shape& extents, std::size_t count, Visit visit) {
  const std::size_t length = row_length(extents);
  for (std::size_t first = 0; first < count; first += length) visit(first, length);
}

}  // namespace arrayfold
