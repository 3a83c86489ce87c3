// array/ordered_fold.hpp: folds in the order of the array library's reducers
//
// The library walks the axes in row-major order: each row is folded from the start value on, strictly from left to
// right; the values of rows are then combined left to right into planes, planes into volumes, and so on outwards. Sums
// and products of floating-point numbers round by this order. Rows do not depend on each other, so several are folded
// side by side. Wrapping integer arithmetic is associative, so integers are folded in any order.

#pragma once

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

/// Folds one row. It stays a function of its own: within a larger one the compiler may keep the value in memory, and a
/// step then takes twice as long.
template <class R, class T, class Step>
[[gnu::noinline]] R fold_row(const T* elements, std::size_t length, R value, Step step) {
  for (std::size_t i = 0; i < length; ++i) value = step(value, elements[i]);
  return value;
}

/// Folds `rows` consecutive rows of `length` elements, interleaved, one accumulator per row.
template <std::size_t rows, class R, class T, class Step>
void fold_rows(const T* elements, std::size_t length, R start, Step step, R* folded) {
  R accumulators[rows];
  for (R& accumulator : accumulators) accumulator = start;
  for (std::size_t i = 0; i < length; ++i)
    for (std::size_t row = 0; row < rows; ++row)
      accumulators[row] = step(accumulators[row], elements[row * length + i]);
  for (std::size_t row = 0; row < rows; ++row) folded[row] = accumulators[row];
}

/// Folds `count` elements, whole rows of `length`, into `merger`: `rows` side by side, then fewer.
template <std::size_t rows, class R, class T, class Step, class Merge>
void merge_rows(const T* elements, std::size_t count, std::size_t length, R start, Step step,
                RowMerger<R, Merge>& merger) {
  R folded[rows];
  for (; count >= rows * length; elements += rows * length, count -= rows * length) {
    fold_rows<rows>(elements, length, start, step, folded);
    for (const R value : folded) merger.add(value);
  }
  if constexpr (rows > 2)
    merge_rows<rows / 2>(elements, count, length, start, step, merger);
  else if (count > 0)
    merger.add(fold_row(elements, length, start, step));
}

/// The elements folded in no particular order: cut into parts, which are folded side by side. Requires: `start` is
/// neutral for `merge`, since every part begins with it.
template <class R, class T, class Step, class Merge>
R fold_freely(const T* elements, std::size_t count, R start, Step step, Merge merge) {
  constexpr std::size_t parts = 4;
  constexpr std::size_t aligned = storage_alignment / sizeof(T);
  const std::size_t length = count / (parts * aligned) * aligned;
  R folded[parts];
  fold_rows<parts>(elements, length, start, step, folded);
  folded[0] = fold_row(elements + parts * length, count - parts * length, folded[0], step);
  return merge(merge(folded[0], folded[1]), merge(folded[2], folded[3]));
}

/// The elements folded by `step(value, element)`, rows merged by `merge(value, value)`. Without elements it is `start`.
/// With integer values both are one wrapping operation, sum or product. Throws std::bad_alloc when the product of the
/// extents is not the number of stored elements.
template <class R, class T, class Step, class Merge>
R ordered_fold(const xarray_of<T>& array, R start, Step step, Merge merge) {
  const auto& elements = array.storage();
  if (elements.empty()) return start;
  check_extents(array);
  if constexpr (std::is_integral_v<R>) {
    return fold_freely(elements.data(), elements.size(), start, step, merge);
  } else {
    const Shape& extents = array.shape();
    if (extents.size() < 2) return fold_row(elements.data(), elements.size(), start, step);
    RowMerger<R, Merge> merger(extents, merge);
    merge_rows<8>(elements.data(), elements.size(), extents.back(), start, step, merger);
    return merger.whole();
  }
}

}  // namespace arrayfold
