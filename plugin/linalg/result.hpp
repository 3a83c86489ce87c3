// linalg/result.hpp: what the functions of linear algebra give
//
// The result of a float operand is stored in doubles and given under the float name.

#pragma once

#include <algorithm>
#include <memory>
#include <tuple>
#include <type_traits>

#include "linalg/library.hpp"

#include <xtensor/xnoalias.hpp>

#include "array/arguments.hpp"
#include "array/storage.hpp"
#include "array/table_slots.hpp"
#include "kernels/transposition.hpp"

namespace arrayfold {

/// The library's result as an array of the kind in which results of `Kind` are stored.
template <class Kind, class Result>
std::unique_ptr<ArrayOf<typename Kind::stored>> stored(Kind, const Result& result) {
  Shape extents;
  for (const auto extent : result.shape()) extents.push_back(static_cast<std::size_t>(extent));
  auto made = make_array<typename Kind::stored>(extents);
  auto& elements = made->array->storage();
  constexpr bool by_columns = Result::static_layout == xt::layout_type::column_major;
  if (extents.size() < 2 || !by_columns)
    std::copy(result.storage().begin(), result.storage().end(), elements.begin());
  else if (extents.size() == 2)
    transpose(result.storage().data(), extents[0], extents[1], elements.data());
  else
    xt::noalias(*made->array) = result;
  return made;
}

/// A zero-dimensional array of the kind in which results of `Kind` are stored.
template <class Kind>
auto stored_scalar(Kind, StoredElement<Kind> value) {
  return make_scalar<typename Kind::stored>(value);
}

/// Makes the result record a table for several results, under the keys 0, 1 and so on.
/// required: the capacity is 4, whatever their number.
inline KeySequence give_table(const Call& call) { return {0, force_table(call.ctx, call.result, 4), call.ctx}; }

/// Gives one array, or a table of several, under the name of `named`.
template <class Named, class Array>
void give_result(const Call& call, Named named, std::unique_ptr<Array> array) {
  give_array(call, named, std::move(array));
}
template <class Named, class... Array>
void give_result(const Call& call, Named named, std::tuple<std::unique_ptr<Array>...> arrays) {
  auto table = give_table(call);
  std::apply([&](auto&... array) { (hand_over(named, call.ctx, table.next_slot(), std::move(array)), ...); }, arrays);
}

/// Gives the result `compute(kind, array)` for the array of floating-point numbers in the first argument. Fails for
/// anything else.
template <class Compute>
Outcome give_computed(const Call& call, Compute compute) {
  return visit_first_floating(call,
                              [&](auto kind, const auto& array) { give_result(call, kind, compute(kind, array)); });
}

}  // namespace arrayfold
