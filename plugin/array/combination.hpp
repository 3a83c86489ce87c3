// array/combination.hpp: a new array of two, element by element, under the broadcasting rule
//
// Operators and the functions of two arrays combine their operands here.

#pragma once

#include <memory>

#include "array/arithmetic.hpp"
#include "array/broadcast.hpp"
#include "array/storage.hpp"

namespace arrayfold {

template <class Operation, class T, class R>
void combine_row(Operation operation, const T* left, const T* right, const BroadcastRow& row, R* out) {
  left += row.left;
  right += row.right;
  if (row.left_step != 0 && row.right_step != 0) return combine<T>(operation, left, right, out, row.count);
  if (row.left_step != 0) return combine<T>(operation, left, *right, out, row.count);
  if (row.right_step != 0) return combine<T>(operation, *left, right, out, row.count);
  combine<T>(operation, *left, *right, out, row.count);
}

/// A new array of `operation(left, right)` for each element of the broadcast shape. Throws std::bad_alloc when the
/// extents of an operand claim other elements than there are, and xt::broadcast_error when the shapes do not fit.
template <class ResultKind, class T, class Operation>
std::unique_ptr<ArrayOf<ResultKind>> combined(const xarray_of<T>& left, const xarray_of<T>& right,
                                              Operation operation) {
  check_extents(left);
  check_extents(right);
  const T* left_elements = left.storage().data();
  const T* right_elements = right.storage().data();
  if (left.shape() == right.shape()) {
    auto made = make_array<ResultKind>(left.shape());
    combine<T>(operation, left_elements, right_elements, made->array->storage().data(), left.storage().size());
    return made;
  }
  const BroadcastWalk walk(left.shape(), right.shape());
  auto made = make_array<ResultKind>(walk.extents());
  auto* out = made->array->storage().data();
  walk.for_each_row([&](const BroadcastRow& row) {
    combine_row(operation, left_elements, right_elements, row, out);
    out += row.count;
  });
  return made;
}

}  // namespace arrayfold
