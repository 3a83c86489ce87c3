// array/broadcast.cpp: how two shapes are walked together

#include "array/broadcast.hpp"

#include <algorithm>

namespace arrayfold {
namespace {

/// The stride of an operand along an axis of the result, counted from the last axis; 0 where it is broadcast. `size` is
/// the number of elements under one index of that axis, and is updated for the next one.
std::size_t stride_from_back(const Shape& extents, std::size_t from_back, std::size_t& size) {
  if (from_back >= extents.size()) return 0;
  const std::size_t extent = extents[extents.size() - 1 - from_back];
  const std::size_t stride = extent == 1 ? 0 : size;
  size *= extent;
  return stride;
}

}  // namespace

BroadcastWalk::BroadcastWalk(const Shape& left, const Shape& right)
    : extents_(xt::uninitialized_shape<Shape>(std::max(left.size(), right.size()))) {
  xt::broadcast_shape(left, extents_);
  xt::broadcast_shape(right, extents_);
  std::size_t left_size = 1, right_size = 1;
  for (std::size_t from_back = 0; from_back < extents_.size(); ++from_back) {
    Dimension dimension;
    dimension.extent = extents_[extents_.size() - 1 - from_back];
    dimension.left_stride = stride_from_back(left, from_back, left_size);
    dimension.right_stride = stride_from_back(right, from_back, right_size);
    is_empty_ = is_empty_ || dimension.extent == 0;
    if (dimension.extent != 1) add(dimension);
  }
}

// An axis is merged into the one inside it when both operands are contiguous across the two.
void BroadcastWalk::add(const Dimension& dimension) {
  Dimension& inside = outer_.empty() ? inner_ : outer_.back();
  if (inside.extent == 1) {
    inside = dimension;
  } else if (dimension.left_stride == inside.left_stride * inside.extent &&
             dimension.right_stride == inside.right_stride * inside.extent) {
    inside.extent *= dimension.extent;
  } else {
    outer_.push_back(dimension);
  }
}

// The first of the outer axes is the one that the rows themselves count.
bool BroadcastWalk::advance(Shape& at, BroadcastRows& rows) const {
  for (std::size_t i = 1; i < outer_.size(); ++i) {
    const Dimension& dimension = outer_[i];
    rows.left += dimension.left_stride;
    rows.right += dimension.right_stride;
    if (++at[i] < dimension.extent) return true;
    at[i] = 0;
    rows.left -= dimension.left_stride * dimension.extent;
    rows.right -= dimension.right_stride * dimension.extent;
  }
  return false;
}

}  // namespace arrayfold
