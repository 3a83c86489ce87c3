// array/runs.hpp: the runs along the last dimension

#pragma once

#include <cstddef>

#include "array/xt_object.hpp"

namespace arrayfold {

/// Elements side by side along the last dimension; an array of no dimension is one run of one element.
inline std::size_t run_length(const Shape& extents) { return extents.empty() ? 1 : extents.back(); }

/// The stride of the last dimension: 1, but 0 where the last extent is 1 and for an array of no dimension.
template <class T>
std::size_t last_stride(const xarray_of<T>& array) {
  return array.dimension() == 0 ? 0 : static_cast<std::size_t>(array.strides().back());
}

/// Calls `visit(first, length)` for each run of `count` elements with these extents.
template <class Visit>
void for_each_run(const Shape& extents, std::size_t count, Visit visit) {
  const std::size_t length = run_length(extents);
  for (std::size_t first = 0; first < count; first += length) visit(first, length);
}

}  // namespace arrayfold
