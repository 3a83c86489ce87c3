// order/ordering.cpp: xsort, xargsort, xpartition, xargpartition
//
// All work along the last axis, row by row, on a copy. A zero-dimensional array is one row of one element.

#include <algorithm>

#include "array/arguments.hpp"
#include "array/rows.hpp"
#include "array/storage.hpp"
#include "kernels/conversion.hpp"
#include "order/row_sort.hpp"

namespace arrayfold {
namespace {

/// A new array of the elements of `array`, each row changed by `arrange(first, length)`. Throws std::bad_alloc when the
/// product of the extents is not the number of stored elements.
template <class Kind, class T, class Arrange>
std::unique_ptr<ArrayOf<Kind>> arranged(Kind, const xarray_of<T>& array, Arrange arrange) {
  check_extents(array);
  const auto& elements = array.storage();
  auto made = make_array<Kind>(array.shape());
  auto& out = made->array->storage();
  std::copy(elements.begin(), elements.end(), out.begin());
  for_each_row(array.shape(), out.size(),
               [&](std::size_t first, std::size_t length) { arrange(out.data() + first, length); });
  return made;
}

constexpr auto sorted = [](auto kind, const auto& array) {
  return arranged(kind, array, [](auto* row, std::size_t length) { sort_row(row, length); });
};

/// The positions that sort each row, counted from 0 in the row.
constexpr auto sorted_positions = [](auto, const auto& array) {
  check_extents(array);
  const auto& elements = array.storage();
  auto made = make_array<XTInt>(array.shape());
  auto& positions = made->array->storage();
  for_each_row(array.shape(), positions.size(), [&](std::size_t first, std::size_t length) {
    sort_positions(elements.data() + first, length, positions.data() + first);
  });
  return made;
};

// ---- Partition

/// The rank at which a row is partitioned, unsigned: a negative number is beyond any row. The host reads it in 64 bits
/// for 64-bit elements, else in 32.
/// required: an argument that is no number changes nothing but the rank, which then is 0.
template <class Kind>
std::size_t read_rank(const Call& call, Kind) {
  if (!is_number(call, 1)) return 0;
  if constexpr (std::is_same_v<Kind, XTInt64>)
    return static_cast<std::size_t>(HVM_AsInt64(call.args + 1));
  else
    return extent_of(int_argument(call, 1));
}

/// Partitions each row at the rank in the second argument, where a full sort would put that element, and gives
/// `finish(array)` of the new array. A rank at the end of a row or beyond it leaves the row as it is.
template <class Finish>
Outcome partition_rows(const Call& call, Finish finish) {
  bool is_object_still = true;
  const Outcome outcome = visit_first(double_first{}, call, [&](auto kind, const auto& array) {
    const std::size_t rank = read_rank(call, kind);
    // required: the first argument is checked once more.
    is_object_still = is_object(call, 0);
    if (!is_object_still) return;
    give_array(call, finish(arranged(kind, array, [rank](auto* row, std::size_t length) {
                 if (rank < length) std::nth_element(row, row + rank, row + length);
               })));
  });
  return is_object_still ? outcome : Outcome::failed;
}

constexpr auto as_they_are = [](auto partitioned) { return partitioned; };

/// The partitioned values as 32-bit integers: floating-point numbers without their fraction, 64-bit integers without
/// their upper half.
constexpr auto as_ints = [](auto partitioned) {
  if constexpr (std::is_same_v<decltype(partitioned), std::unique_ptr<ArrayOf<XTInt>>>) {
    return partitioned;
  } else {
    const auto& values = partitioned->array->storage();
    auto made = make_array<XTInt>(partitioned->array->shape());
    convert(values.data(), made->array->storage().data(), values.size());
    return made;
  }
};

}  // namespace

Outcome xsort(const Call& call) { return give_made(double_first{}, call, sorted); }
Outcome xargsort(const Call& call) { return give_made(double_first{}, call, sorted_positions); }
Outcome xpartition(const Call& call) { return partition_rows(call, as_they_are); }
// required: it gives the partitioned values, not their positions.
Outcome xargpartition(const Call& call) { return partition_rows(call, as_ints); }

}  // namespace arrayfold
