// array/combination.hpp: a new array of two, element by element, under the broadcasting rule
//
// Operators and the functions of two arrays combine their operands here.

#pragma once

#include <memory>

#include "array/broadcast.hpp"
#include "array/storage.hpp"
#include "kernels/arithmetic.hpp"

namespace arrayfold {

template <class Operation, class T, class R>
void combine_rows(Operation operation, const T* left, const T* right, const BroadcastRows& rows, R* out) {
  const auto advancing = [](const T* elements) { return elements; };
  const auto repeated = [](const T* elements) { return *elements; };
  const auto for_each_row = [&](auto left_of, auto right_of) {
    for (std::size_t row = 0; row < rows.count; ++row)
      combine<T>(operation, left_of(left + rows.left + row * rows.left_stride),
                 right_of(right + rows.right + row * rows.right_stride), out + row * rows.length, rows.length);
  };
  if (rows.left_step != 0 && rows.right_step != 0) return for_each_row(advancing, advancing);
  if (rows.left_step != 0) return for_each_row(advancing, repeated);
  if (rows.right_step != 0) return for_each_row(repeated, advancing);
  for_each_row(repeated, repeated);
}

/// A new array of `operation(left, right)` for each element of the broadcast shape. Throws std::bad_alloc when the
/// product of an operand's extents is not the number of its elements, and xt::broadcast_error when the shapes do not
/// fit.
template <class ResultKind, class T, class Operation>
std::unique_ptr<ArrayOf<ResultKind>> combined(const xarray_of<T>& left, const xarray_of<T>& right,
                                              Operation operation) {
  check_extents(left);
  check_extents(right);
  const T* left_elements = left.storage().data();
  const T* right_elements = right.storage().data();
  if (same_shape(left.shape(), right.shape())) {
    auto made = make_array<ResultKind>(left.shape());
    combine<T>(operation, left_elements, right_elements, made->array->storage().data(), left.storage().size());
    return made;
  }
  const BroadcastWalk walk(left.shape(), right.shape());
  auto made = make_array<ResultKind>(walk.extents());
  auto* out = made->array->storage().data();
  walk.for_each_rows([&](const BroadcastRows& rows) {
    combine_rows(operation, left_elements, right_elements, rows, out);
    out += rows.count * rows.length;
  });
  return made;
}

}  // namespace arrayfold
