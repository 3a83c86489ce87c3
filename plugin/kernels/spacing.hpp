// kernels/spacing.hpp: evenly spaced numbers

#pragma once

#include <algorithm>
#include <cstddef>

#include "kernels/conversion.hpp"

namespace arrayfold {

/// `count` numbers from `start` to `stop`, both included, the last one by whoever stores them; one number alone is
/// `start`. They are computed in 64-bit reals as start + i * step and stored as T. Between integers the distance wraps
/// in their width.
template <class T>
class Spacing {
 public:
  Spacing(T start, T stop, std::size_t count)
      : first_(static_cast<double>(start)),
        step_(static_cast<double>(stop - start) / std::max(1.0, static_cast<double>(count) - 1.0)) {}

  /// The number at `i`; the last of several is `stop` instead. Indices of 32 bits are taken several at a time.
  template <class Index>
  T operator[](Index i) const {
    return stored_as<T>(first_ + static_cast<double>(i) * step_);
  }

 private:
  double first_;
  double step_;
};

}  // namespace arrayfold
