// array/spacing.hpp: evenly spaced numbers

#pragma once

#include <algorithm>
#include <cstddef>

#include "array/element_kind.hpp"
#include "kernels/sequences.hpp"

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

  /// Writes elements from the first on. The caller stores `stop` itself as the last element.
  void write(Element* elements, std::size_t count) const { space_evenly(elements, count, first_, step_); }
  /// Element `i`, also where it is the last.
  template <class Index>
  Element operator[](Index i) const {
    return Kind::from_double(first_ + static_cast<double>(i) * step_);
  }

 private:
  double first_;
  double step_;
};

}  // namespace arrayfold
