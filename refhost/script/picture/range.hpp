// script/picture/range.hpp: from the smallest to the largest number of a picture

#pragma once

#include <cmath>
#include <limits>

#include "script/picture/figure.hpp"

namespace hvm {

/// The range of the finite numbers that it takes.
struct PictureRange {
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();

  void take(double value) {
    if (!std::isfinite(value)) return;
    low = std::fmin(low, value);
    high = std::fmax(high, value);
  }
  /// Throws `PictureError` when no number is finite, or when they lie too far apart to be computed with.
  void require_drawable() const {
    constexpr double farthest = 1e300;
    if (low > high) throw PictureError("there is no finite point to draw");
    if (std::fabs(low) > farthest || std::fabs(high) > farthest)
      throw PictureError("numbers beyond 1e300 cannot be drawn");
  }
  /// Whether an axis over the range can be divided.
  bool has_length() const { return high - low > 1e-290; }
  /// A range of one number is widened around it, so that an axis has a length.
  void widen() {
    if (has_length()) return;
    const double around = std::fabs(low) < 1e-280 ? 1 : std::fabs(low) / 10;
    low -= around;
    high += around;
  }
};

}  // namespace hvm
