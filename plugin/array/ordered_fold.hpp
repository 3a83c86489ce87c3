// array/ordered_fold.hpp: folds in the order of the array library's reducers
//
// The library walks the dimensions in row-major order: each run along the last one is folded from the start value on,
// strictly from left to right, and the outer dimensions merge the runs, each from its first on: runs into planes,
// planes into the whole. Sums and products of reals round by this order. Runs do not depend on each other, so that
// several are folded side by side. Where the order is of no account, as with integers, which wrap, the elements are cut
// into runs for that.

#pragma once

#include <cstddef>
#include <type_traits>

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
  xt::svector<Level, 4> levels_;  // innermost first
  R whole_{};
};

/// Folds one run. It stays a function of its own: within a larger one the compiler may keep the value in memory, and a
/// step then takes twice as long.
template <class R, class T, class Step>
[[gnu::noinline]] R fold_run(const T* elements, std::size_t length, R value, Step step) {
  for (std::size_t i = 0; i < length; ++i) value = step(value, elements[i]);
  return value;
}

/// Folds `runs` runs of `length` elements, one behind the other, side by side.
template <std::size_t runs, class R, class T, class Step>
void fold_runs(const T* elements, std::size_t length, R start, Step step, R* folded) {
  R chains[runs];
  for (R& chain : chains) chain = start;
  for (std::size_t i = 0; i < length; ++i)
    for (std::size_t run = 0; run < runs; ++run) chains[run] = step(chains[run], elements[run * length + i]);
  for (std::size_t run = 0; run < runs; ++run) folded[run] = chains[run];
}

/// Folds `count` elements, whole runs of `length`, into `merger`: `runs` side by side, then fewer.
template <std::size_t runs, class R, class T, class Step, class Merge>
void merge_runs(const T* elements, std::size_t count, std::size_t length, R start, Step step,
                RunMerger<R, Merge>& merger) {
  R folded[runs];
  for (; count >= runs * length; elements += runs * length, count -= runs * length) {
    fold_runs<runs>(elements, length, start, step, folded);
    for (const R value : folded) merger.add(value);
  }
  if constexpr (runs > 2)
    merge_runs<runs / 2>(elements, count, length, start, step, merger);
  else if (count > 0)
    merger.add(fold_run(elements, length, start, step));
}

/// The elements folded in no particular order. The start changes no value that it is merged with.
template <class R, class T, class Step, class Merge>
R fold_freely(const T* elements, std::size_t count, R start, Step step, Merge merge) {
  constexpr std::size_t runs = 4;
  constexpr std::size_t aligned = storage_alignment / sizeof(T);
  const std::size_t length = count / (runs * aligned) * aligned;
  R folded[runs];
  fold_runs<runs>(elements, length, start, step, folded);
  folded[0] = fold_run(elements + runs * length, count - runs * length, folded[0], step);
  return merge(merge(folded[0], folded[1]), merge(folded[2], folded[3]));
}

/// The elements folded by `step(value, element)`, runs merged by `merge(value, value)`. Without elements it is `start`.
/// With integer values both are one wrapping operation, sum or product. Throws std::bad_alloc when the extents claim
/// other elements than there are.
template <class R, class T, class Step, class Merge>
R ordered_fold(const xarray_of<T>& array, R start, Step step, Merge merge) {
  const auto& elements = array.storage();
  if (elements.empty()) return start;
  check_extents(array);
  if constexpr (std::is_integral_v<R>) {
    return fold_freely(elements.data(), elements.size(), start, step, merge);
  } else {
    const Shape& extents = array.shape();
    if (extents.size() < 2) return fold_run(elements.data(), elements.size(), start, step);
    RunMerger<R, Merge> merger(extents, merge);
    merge_runs<8>(elements.data(), elements.size(), extents.back(), start, step, merger);
    return merger.whole();
  }
}

}  // namespace arrayfold
