// array/broadcast.hpp: two operands walked together under the broadcasting rule
//
// The result's shape and the error for shapes that do not fit are the array library's. The walk is our own: dimensions
// of extent 1 are left out, dimensions that both operands pass contiguously are made one, and what is left is rows in
// which each operand either runs along or stands still. Rows that follow each other evenly are visited together: the
// visitor decides once for all of them how a row is walked.

#pragma once

#include <cstddef>

#include "array/storage.hpp"

namespace arrayfold {

/// Rows of the result and where the operands stand in them: a step of 1 runs along a row, a step of 0 stands still.
struct BroadcastRows {
  std::size_t left, right;            // offsets of the first elements
  std::size_t left_step, right_step;  // 0 or 1
  std::size_t length;                 // of a row
  std::size_t count;
  std::size_t left_stride, right_stride;  // from one row to the next
};

class BroadcastWalk {
 public:
  /// Throws xt::broadcast_error when the shapes do not fit.
  BroadcastWalk(const Shape& left, const Shape& right);

  /// The shape of the result.
  const Shape& extents() const { return extents_; }

  /// Calls `visit(rows)` for all rows, in the order of the result's storage; never when the result has no element.
  template <class Visit>
  void for_each_rows(Visit visit) const {
    if (is_empty_) return;
    const Dimension next = outer_.empty() ? Dimension{} : outer_.front();
    BroadcastRows rows{
        0, 0, inner_.left_stride, inner_.right_stride, inner_.extent, next.extent, next.left_stride, next.right_stride};
    if (outer_.size() <= 1) return visit(rows);
    Shape at(outer_.size(), 0);
    do visit(rows);
    while (advance(at, rows));
  }

 private:
  struct Dimension {
    std::size_t extent = 1;
    std::size_t left_stride = 0, right_stride = 0;
  };

  void add(const Dimension& dimension);
  bool advance(Shape& at, BroadcastRows& rows) const;

  Shape extents_;
  Dimension inner_;                  // the row
  xt::svector<Dimension, 4> outer_;  // from the rows' own outwards
  bool is_empty_ = false;
};

}  // namespace arrayfold
