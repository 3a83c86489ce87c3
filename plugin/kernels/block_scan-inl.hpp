// kernels/block_scan-inl.hpp: one pass over the elements, block by block
//
// A scan folds each block of 32 bytes pairwise across its lanes, then the block's value into the accumulator, then the
// elements behind the last whole block one by one. The order is part of the results, on every processor: sums of
// floating-point numbers round by it, and it decides which of two zeros of different sign is returned. Kernel sources
// include this header for each target.

#if defined(ARRAYFOLD_BLOCK_SCAN_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ARRAYFOLD_BLOCK_SCAN_INL
#undef ARRAYFOLD_BLOCK_SCAN_INL
#else
#define ARRAYFOLD_BLOCK_SCAN_INL
#endif

#include <cstddef>

#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

template <class T>
constexpr std::size_t block_length = 32 / sizeof(T);

/// The lanes of D, from a block that is folded halves first until `length` elements are left of it; `b` is where these
/// lanes begin in the first of them.
template <class Fold, std::size_t length, class D>
HWY_INLINE hn::Vec<D> folded_to(D tag, const hn::TFromD<D>* b) {
  if constexpr (length == block_length<hn::TFromD<D>>)
    return hn::LoadU(tag, b);
  else
    return Fold()(tag, folded_to<Fold, 2 * length>(tag, b), folded_to<Fold, 2 * length>(tag, b + length));
}

/// Halves of the block first, then halves of what that leaves: (b0 + b2) + (b1 + b3) for four elements and a sum.
template <class Fold, class T>
HWY_INLINE T fold_block(const T* b) {
  const hn::CappedTag<T, block_length<T>> tag;
  return fold_lanes<Fold>(tag, folded_to<Fold, hn::MaxLanes(tag)>(tag, b), b, 0);
}

/// Folds `count` elements, whole blocks, into `accumulated`: their lanes by `Fold`, their values by `fold`.
template <class Fold, class R, class T, class FoldValue>
HWY_INLINE R fold_blocks(const T* elements, std::size_t count, R accumulated, FoldValue fold) {
  for (std::size_t i = 0; i < count; i += block_length<T>)
    accumulated = fold(accumulated, R{fold_block<Fold>(elements + i)});
  return accumulated;
}

/// The scan: `fold_whole(elements, count, start)` takes the whole blocks, `fold` the elements behind them, which are
/// found `stride` elements apart from each other.
template <class R, class T, class FoldWhole, class Fold>
HWY_INLINE R scan_blocks(const T* elements, std::size_t count, std::size_t stride, R start, FoldWhole fold_whole,
                         Fold fold) {
  const std::size_t whole = count / block_length<T> * block_length<T>;
  R accumulated = fold_whole(elements, whole, start);
  for (std::size_t i = whole; i < count; ++i) accumulated = fold(accumulated, R{elements[i * stride]});
  return accumulated;
}

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
