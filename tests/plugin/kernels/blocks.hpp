// kernels/blocks.hpp: the order of a scan in blocks of 32 bytes, spelled out

#pragma once

#include <cstddef>
#include <vector>

namespace arrayfold::test {

/// Folds each whole block, halves first, into a value of type R, and then the elements at `stride` behind the last one.
template <class R, class T, class FoldPair, class Fold>
R scanned(const std::vector<T>& x, std::size_t stride, R value, FoldPair fold_pair, Fold fold) {
  constexpr std::size_t block = 32 / sizeof(T);
  const std::size_t whole = x.size() / block * block;
  for (std::size_t i = 0; i < whole; i += block) {
    std::vector<T> left(x.begin() + static_cast<std::ptrdiff_t>(i), x.begin() + static_cast<std::ptrdiff_t>(i + block));
    for (std::size_t half = block / 2; half > 0; half /= 2)
      for (std::size_t lane = 0; lane < half; ++lane) left[lane] = fold_pair(left[lane], left[lane + half]);
    value = fold(value, static_cast<R>(left[0]));
  }
  for (std::size_t i = whole; i < x.size(); ++i) value = fold(value, static_cast<R>(x[i * stride]));
  return value;
}

}  // namespace arrayfold::test
