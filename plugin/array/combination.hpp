// array/combination.hpp: a new array of two, element by element, under the broadcasting rule
//
// Operators and the functions of two arrays combine their operands here.

#pragma once

#include <memory>

#include "array/broadcast.hpp"
#include "array/storage.hpp"
#include "kernels/arithmetic.hpp"

namespace arrayfold {

/// Combines rows: `loop` takes the elements of one.
template <class T, class R>
void combine_rows(void (*loop)(const T*, const T*, R*, std::size_t), const T* left, const T* right,
                  const BroadcastRows rows, R* out) {
  // Long rows are cut where a line of the cache begins: of registers as wide as a line, each would otherwise cross into
  // the next.
  constexpr std::size_t line = 64;
  const bool are_long = rows.length * sizeof(R) >= 16 * line;
  for (std::size_t row = 0; row < rows.count; ++row) {
    std::size_t head = 0;
    if (are_long) {
      void* next_line = out;
      std::size_t space = rows.length * sizeof(R);
      std::align(line, 1, next_line, space);
      head = rows.length - space / sizeof(R);
      loop(left, right, out, head);
    }
    loop(left + head * rows.left_step, right + head * rows.right_step, out + head, rows.length - head);
    left += rows.left_stride, right += rows.right_stride, out += rows.length;
  }
}

/// A new array of the operation's result for each element of the broadcast shape. Throws std::bad_alloc when the
/// product of an operand's extents is not the number of its elements, and xt::broadcast_error when the shapes do not
/// fit.
template <class ResultKind, class T>
std::unique_ptr<ArrayOf<ResultKind>> combined(const xarray_of<T>& left, const xarray_of<T>& right,
                                              const Operation<T, typename ResultKind::element>& operation) {
  check_extents(left);
  check_extents(right);
  const T* left_elements = left.storage().data();
  const T* right_elements = right.storage().data();
  if (same_shape(left.shape(), right.shape())) {
    auto made = make_array<ResultKind>(left.shape());
    operation.both_advance(left_elements, right_elements, made->array->storage().data(), left.storage().size());
    return made;
  }
  const BroadcastWalk walk(left.shape(), right.shape());
  auto made = make_array<ResultKind>(walk.extents());
  auto* out = made->array->storage().data();
  walk.for_each_rows([&](const BroadcastRows& rows) {
    // Where neither advances, the result is a single element.
    const auto loop = rows.left_step == rows.right_step ? operation.both_advance
                      : rows.left_step != 0             ? operation.left_advances
                                                        : operation.right_advances;
    combine_rows(loop, left_elements + rows.left, right_elements + rows.right, rows, out);
    out += rows.count * rows.length;
  });
  return made;
}

}  // namespace arrayfold
