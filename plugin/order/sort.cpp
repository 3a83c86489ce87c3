// order/sort.cpp: xsort, xargsort, xpartition, xargpartition
//
// All work along the last dimension, run by run, on a copy. An array of no dimension is one run of one element.

#include <algorithm>

#include "kernels/conversion.hpp"
#include "order/frame.hpp"
#include "order/sorting.hpp"

namespace arrayfold {
namespace {

/// The rank at which a run is partitioned, unsigned: a negative number is beyond any run.
/// required: an argument that is no number changes nothing but the rank, which then is 0.
std::size_t read_rank(const Call& call, const ArrayOf<XTInt64>&) {
  return is_number(call, 1) ? static_cast<std::size_t>(HVM_AsInt64(call.args + 1)) : 0;
}
template <class Array>
std::size_t read_rank(const Call& call, const Array&) {
  return is_number(call, 1) ? extent_of(int_argument(call, 1)) : 0;
}

/// Partitions each run at the rank in the second argument, where a full sort would put that element, and
/// hands the new array to `give_partitioned`. A rank at the end of a run or beyond it leaves the run as it is.
template <class Give>
Outcome partition_runs(const Call& call, Give give_partitioned) {
  bool is_object_still = true;
  const Outcome outcome = visit_first(real_first{}, call, [&](const auto& array) {
    const std::size_t rank = read_rank(call, array);
    // required: the first argument is checked once more.
    is_object_still = is_object(call, 0);
    if (!is_object_still) return;
    give_partitioned(arranged(array, [rank](auto* run, std::size_t length) {
      if (rank < length) std::nth_element(run, run + rank, run + length);
    }));
  });
  return is_object_still ? outcome : Outcome::failed;
}

std::int32_t as_int(double x) { return truncated<std::int32_t>(x); }
std::int32_t as_int(std::int64_t x) { return static_cast<std::int32_t>(x); }

}  // namespace

Outcome xsort(const Call& call) {
  return visit_first(real_first{}, call, [&](const auto& array) {
    using Kind = typename std::decay_t<decltype(array)>::tag;
    give_array<Kind>(call.ctx, call.result,
                     arranged(array, [](auto* run, std::size_t length) { sort_run(run, length); }));
  });
}

Outcome xargsort(const Call& call) {
  return visit_first(real_first{}, call, [&](const auto& array) {
    check_extents(*array.array);
    const auto& elements = array.array->storage();
    auto made = make_array<XTInt>(array.array->shape());
    auto& positions = made->array->storage();
    for_each_run(array.array->shape(), positions.size(), [&](std::size_t first, std::size_t length) {
      sort_positions(elements.data() + first, length, positions.data() + first);
    });
    give_array<XTInt>(call.ctx, call.result, std::move(made));
  });
}

Outcome xpartition(const Call& call) {
  return partition_runs(call, [&](auto partitioned) {
    using Kind = typename decltype(partitioned)::element_type::tag;
    give_array<Kind>(call.ctx, call.result, std::move(partitioned));
  });
}

// required: it gives the partitioned values, not their positions, as 32-bit integers: reals without their fraction,
// 64-bit integers without their upper half.
Outcome xargpartition(const Call& call) {
  return partition_runs(call, [&](auto partitioned) {
    using Kind = typename decltype(partitioned)::element_type::tag;
    if constexpr (std::is_same_v<Kind, XTInt>) {
      give_array<XTInt>(call.ctx, call.result, std::move(partitioned));
    } else {
      const auto& values = partitioned->array->storage();
      auto made = make_array<XTInt>(partitioned->array->shape());
      std::transform(values.begin(), values.end(), made->array->storage().begin(), [](auto x) { return as_int(x); });
      give_array<XTInt>(call.ctx, call.result, std::move(made));
    }
  });
}

}  // namespace arrayfold
