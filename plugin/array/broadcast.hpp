// array/broadcast.hpp: two operands walked together under the broadcasting rule
//
// The result's shape and the error for shapes that do not fit are the array library's. The walk is our own: dimensions
// of extent 1 are left out, dimensions that both operands pass contiguously are made one, and what is left is a loop
// over rows in which each operand either runs along or stands still.

#pragma once

#include <cstddef>

#include "array/storage.hpp"

namespace arrayfold {

/// A row of the result and where the operands stand in it: a step of 1 runs along, a step of 0 stands still.
struct BroadcastRow {
  std::size_t left, right;            // offsets of the first elements
  std::size_t left_step, right_step;  // 0 or 1
  std::size_t count;
};

class BroadcastWalk {
 public:
  /// Throws xt::broadcast_error when the shapes do not fit.
  BroadcastWalk(const Shape& left, const Shape& right);

  /// The shape of the result.
  const Shape& extents() const { return extents_; }

  /// Calls `visit(row)` for each row, in the order of the result's storage; never when the result has no element.
  template <class Visit>
  void for_each_row(Visit visit) const {
    if (is_empty_) return;
    BroadcastRow row{0, 0, inner_.left_stride, inner_.right_stride, inner_.extent};
    if (outer_.empty()) return visit(row);
    Shape at(outer_.size(), 0);
    do visit(row);
    while (advance(at, row));
  }

 private:
  struct Dimension {
    std::size_t extent = 1;
    std::size_t left_stride = 0, right_stride = 0;
  };

  void add(const Dimension& dimension);
  bool advance(Shape& at, BroadcastRow& row) const;

  Shape extents_;
  Dimension inner_;                  // the row
  xt::svector<Dimension, 4> outer_;  // from the innermost outwards
  bool is_empty_ = false;
};

}  // namespace arrayfold
