// order/frame.hpp: what the functions of ordering share

#pragma once

#include <algorithm>
#include <memory>

#include "array/arguments.hpp"
#include "array/runs.hpp"
#include "array/storage.hpp"

namespace arrayfold {

/// A new array of the kind and the elements of `array`, each run along the last dimension changed by
/// `arrange(first, length)`. Throws std::bad_alloc when the extents claim other elements than there are.
template <class T, class Kind, class Arrange>
std::unique_ptr<XTArray<T, Kind>> arranged(const XTArray<T, Kind>& array, Arrange arrange) {
  check_extents(*array.array);
  const auto& elements = array.array->storage();
  auto made = make_array<Kind>(array.array->shape());
  auto& out = made->array->storage();
  std::copy(elements.begin(), elements.end(), out.begin());
  for_each_run(array.array->shape(), out.size(),
               [&](std::size_t first, std::size_t length) { arrange(out.data() + first, length); });
  return made;
}

}  // namespace arrayfold
