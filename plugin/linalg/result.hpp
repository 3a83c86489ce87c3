// linalg/result.hpp: what the functions of linear algebra hand over
//
// A result of a float operand is stored in doubles and offered under the float name.

#pragma once

#include <algorithm>
#include <memory>
#include <type_traits>

#include <xtensor/xnoalias.hpp>

#include "array/boxing.hpp"
#include "kernels/conversion.hpp"
#include "array/storage.hpp"
#include "array/table_slots.hpp"
#include "host/entry.hpp"

namespace arrayfold {

/// The kind in which results under the name of `Kind` are stored.
template <class Kind>
using StoredKind = std::conditional_t<std::is_same_v<Kind, XTFloat>, XTDouble, Kind>;

/// A computed number as an element: integers without the fraction of a real, or without their upper half.
template <class T, class Computed>
constexpr T converted(Computed x) {
  if constexpr (std::is_integral_v<T> && std::is_floating_point_v<Computed>)
    return truncated<T>(static_cast<double>(x));
  else
    return static_cast<T>(x);
}

/// An array of no dimension.
template <class Kind>
std::unique_ptr<ArrayOf<Kind>> make_scalar(typename Kind::element value) {
  auto made = make_array<Kind>({});
  made->array->storage()[0] = value;
  return made;
}

/// Writes the rows of a matrix from its columns, which lie one behind the other. The other way round, too, with rows
/// and columns exchanged. Works in squares that fit the first cache on both sides.
template <class From, class To>
void transpose(const From* __restrict columns, std::size_t rows_count, std::size_t columns_count, To* __restrict rows) {
  if (rows_count == 0 || columns_count == 0) return;
  constexpr std::size_t side = 16;
  for (std::size_t i = 0; i < rows_count; i += side) {
    const std::size_t rows_end = std::min(i + side, rows_count);
    for (std::size_t j = 0; j < columns_count; j += side) {
      const std::size_t columns_end = std::min(j + side, columns_count);
      for (std::size_t row = i; row < rows_end; ++row)
        for (std::size_t column = j; column < columns_end; ++column)
          rows[row * columns_count + column] = static_cast<To>(columns[column * rows_count + row]);
    }
  }
}

/// The library's result as an array.
template <class Kind, class Result>
std::unique_ptr<ArrayOf<StoredKind<Kind>>> stored(const Result& result) {
  Shape extents;
  for (const auto extent : result.shape()) extents.push_back(static_cast<std::size_t>(extent));
  auto made = make_array<StoredKind<Kind>>(extents);
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

/// Makes the result record a table for several results, under the keys 0, 1, 2, ...
/// required: the capacity is 4, however many follow.
inline KeySequence give_table(const Call& call) { return {0, force_table(call.ctx, call.result, 4), call.ctx}; }

}  // namespace arrayfold
