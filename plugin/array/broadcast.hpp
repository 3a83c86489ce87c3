// array/broadcast.hpp: two operands walked together under the broadcasting rule
//
// The result's shape and the error for shapes that do not fit are the array library's. The walk is our own: axes of
// extent 1 are dropped and neighbouring axes that both operands walk contiguously are merged. The result is walked row
// by row; in a row an operand either advances (step 1) or repeats one element (step 0). Evenly spaced rows are visited
// together, so the visitor decides once for all of them how a row is walked.

#pragma once

#include <cstddef>

#include "array/storage.hpp"

namespace arrayfold {

/// Rows of the result and the operands in them: with a step of 1 an operand advances along a row, with a step of 0 it
/// repeats one element.
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
