// array/ordered_fold.hpp: folds in the order of the array library's reducers
//
// The library walks the axes in row-major order: each row is folded from the start value on, strictly from left to
// right; the values of rows are then combined left to right into planes, planes into volumes, and so on outwards. Sums
// and products of floating-point numbers round by this order. The kernels fold the rows, many at a time; here their
// values are merged. Wrapping integer arithmetic is associative, so all integers are one row.

#pragma once

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "array/storage.hpp"

namespace arrayfold {

/// Merges the values of rows, in their order, as the outer axes nest.
template <class R, class Merge>
class RowMerger {
 public:
  /// For an array of these extents.
  RowMerger(const Shape& extents, Merge merge) : merge_(merge) {
    for (std::size_t n = extents.size() - 1; n-- > 0;) levels_.push_back({extents[n], 0, R{}});
  }

  void add(R value) {
    for (Level& level : levels_) {
      value = level.merged == 0 ? value : merge_(level.value, value);
      level.value = value;
      if (++level.merged < level.extent) return;
      level.merged = 0;
    }
    whole_ = value;
  }

  /// The value of the whole, once all rows are added.
  R whole() const { return whole_; }

 private:
  struct Level {
    std::size_t extent;
    std::size_t merged;
    R value;
  };

  Merge merge_;
  xt::svector<Level, 4> levels_;  // innermost first
  R whole_{};
};

/// The elements folded by `fold_rows(elements, rows, length, values)`, as a RowFold does, rows merged by `merge(value,
/// value)`. Without elements it is `start`. With integer values both are one wrapping operation, sum or product. Throws
/// std::bad_alloc when the product of the extents is not the number of stored elements.
template <class R, class T, class FoldRows, class Merge>
R ordered_fold(const xarray_of<T>& array, R start, FoldRows fold_rows, Merge merge) {
  const auto& elements = array.storage();
  if (elements.empty()) return start;
  check_extents(array);
  constexpr std::size_t most = 64;
  R values[most];
  const Shape& extents = array.shape();
  if (std::is_integral_v<R> || extents.size() < 2) {
    fold_rows(elements.data(), 1, elements.size(), values);
    return values[0];
  }
  RowMerger<R, Merge> merger(extents, merge);
  const std::size_t length = extents.back(), rows = elements.size() / length;
  for (std::size_t row = 0; row < rows; row += most) {
    const std::size_t together = std::min(most, rows - row);
    fold_rows(elements.data() + row * length, together, length, values);
    for (std::size_t i = 0; i < together; ++i) merger.add(values[i]);
  }
  return merger.whole();
}

}  // namespace arrayfold
