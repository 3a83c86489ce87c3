// reduce/ordered_fold.hpp: folds in the order of the array library's reducers
//
// The library walks the dimensions in row-major order: each run along the last one is folded from the start value on,
// strictly from left to right, and the outer dimensions merge the runs, each from its first on: runs into planes,
// planes into the whole. Sums and products of reals round by this order. Runs do not depend on each other, so that
// several are folded side by side.

#pragma once

#include <cstddef>
#include <type_traits>
#include <vector>

#include "array/storage.hpp"

namespace arrayfold {

/// Merges the values of runs, in their order, as the outer dimensions nest.
template <class R, class Merge>
class RunMerger {
 public:
  /// For an array of these extents.
  RunMerger(const Shape& extents, Merge merge) : merge_(merge) {
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

  /// The value of the whole, once all runs are added.
  R whole() const { return whole_; }

 private:
  struct Level {
    std::size_t extent;
    std::size_t merged;
    R value;
  };

  Merge merge_;
  std::vector<Level> levels_;  // innermost first
  R whole_{};
};

constexpr std::size_t side_by_side = 8;

/// Folds `runs` runs of `length` elements, one behind the other, side by side.
template <std::size_t runs, class R, class T, class Step>
void fold_runs(const T* elements, std::size_t length, R start, Step step, R* folded) {
  R chains[runs];
  for (R& chain : chains) chain = start;
  for (std::size_t i = 0; i < length; ++i)
    for (std::size_t run = 0; run < runs; ++run) chains[run] = step(chains[run], elements[run * length + i]);
  for (std::size_t run = 0; run < runs; ++run) folded[run] = chains[run];
}

/// The elements folded by `step(value, element)`, runs merged by `merge(value, value)`. Without elements it is `start`.
/// With integer values both are one wrapping operation, sum or product. Throws std::bad_alloc when the extents claim
/// other elements than there are.
template <class R, class T, class Step, class Merge>
R ordered_fold(const xarray_of<T>& array, R start, Step step, Merge merge) {
  const auto& elements = array.storage();
  if (elements.empty()) return start;
  check_extents(array);
  const Shape& extents = array.shape();
  R folded[side_by_side];
  // Integers wrap in any order: they are one run, which the compiler folds with whole registers.
  if (std::is_integral_v<R> || extents.size() < 2) {
    fold_runs<1>(elements.data(), elements.size(), start, step, folded);
    return folded[0];
  }
  const std::size_t length = extents.back();
  RunMerger<R, Merge> merger(extents, merge);
  std::size_t first = 0;
  for (; elements.size() - first >= side_by_side * length; first += side_by_side * length) {
    fold_runs<side_by_side>(elements.data() + first, length, start, step, folded);
    for (const R value : folded) merger.add(value);
  }
  for (; first < elements.size(); first += length) {
    fold_runs<1>(elements.data() + first, length, start, step, folded);
    merger.add(folded[0]);
  }
  return merger.whole();
}

}  // namespace arrayfold
