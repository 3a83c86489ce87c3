// array/spacing.hpp: evenly spaced numbers

#pragma once

#include <algorithm>
#include <cstddef>

#include "array/element_kind.hpp"

namespace arrayfold {

/// `count` elements of `Kind` from `start` to `stop`, both included; a single one is `start`. They are computed in
/// 64-bit floating-point numbers as start + i * step. Between integers the distance wraps in their width.
template <class Kind>
class Spacing {
 public:
  using Element = typename Kind::element;

  Spacing(Element start, Element stop, std::size_t count)
      : first_(static_cast<double>(start)),
        step_(static_cast<double>(stop - start) / std::max(1.0, static_cast<double>(count) - 1.0)) {}

  /// Element `i`. The caller stores `stop` itself as the last element. Pass a 32-bit index where it suffices: several
  /// of those are converted to double per instruction.
  template <class Index>
  Element operator[](Index i) const {
    return Kind::from_double(first_ + static_cast<double>(i) * step_);
  }

 private:
  double first_;
  double step_;
};

}  // namespace arrayfold
