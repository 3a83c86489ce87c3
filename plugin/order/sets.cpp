// order/sets.cpp: xunique, xdiff, xargmin, xargmax, xsetdiff1d

#include <algorithm>

#include "array/extremes.hpp"
#include "order/frame.hpp"
#include "order/sorting.hpp"

namespace arrayfold {
namespace {

/// The distinct elements, ascending, as one row. NaN equals nothing, so that each of them stays.
template <class T, class Kind>
std::unique_ptr<XTArray<T, Kind>> distinct(const XTArray<T, Kind>& array) {
  const auto& elements = array.array->storage();
  auto sorted = make_row<Kind>(elements.size());
  T* const first = sorted->array->storage().data();
  T* const end = std::copy(elements.begin(), elements.end(), first);
  sort_run(first, elements.size());
  T* const kept = std::unique(first, end);
  if (kept == end) return sorted;
  auto made = make_row<Kind>(static_cast<std::size_t>(kept - first));
  std::copy(first, kept, made->array->storage().data());
  return made;
}

template <class T>
void subtract_neighbours(const T* elements, std::size_t count, T* __restrict out) {
  for (std::size_t i = 0; i < count; ++i) out[i] = elements[i + 1] - elements[i];
}

/// Each element of a run but the first, less the one before it. Integers wrap. The last extent shrinks by one, and is 0
/// where there is no element; an array of no dimension gives an empty row.
template <class T, class Kind>
std::unique_ptr<XTArray<T, Kind>> differences(const XTArray<T, Kind>& array) {
  check_extents(*array.array);
  const auto& elements = array.array->storage();
  Shape extents = array.array->shape();
  const std::size_t length = run_length(extents);
  if (extents.empty()) extents.push_back(1);
  extents.back() = elements.empty() ? 0 : length - 1;
  auto made = make_array<Kind>(extents);
  T* out = made->array->storage().data();
  for_each_run(array.array->shape(), elements.size(), [&](std::size_t first, std::size_t) {
    subtract_neighbours(elements.data() + first, length - 1, out);
    out += length - 1;
  });
  return made;
}

/// Gives the flat position of the first extreme element, 0 where there is none, as an array of no dimension. A NaN in
/// front is never beaten, and beats nothing elsewhere.
template <class Choose>
Outcome give_position(const Call& call, Choose choose) {
  return visit_first(real_first{}, call, [&](const auto& array) {
    const auto& elements = array.array->storage();
    std::size_t position = 0;
    if (!elements.empty()) {
      const auto* first = elements.data();
      const auto* found = first_extreme(first, elements.size(), *first, choose);
      if (found != nullptr) position = static_cast<std::size_t>(found - first);
    }
    auto made = make_array<XTInt>({});
    made->array->storage()[0] = static_cast<std::int32_t>(position);
    give_array<XTInt>(call.ctx, call.result, std::move(made));
  });
}

}  // namespace

Outcome xunique(const Call& call) {
  return visit_first(real_first{}, call, [&](const auto& array) {
    using Kind = typename std::decay_t<decltype(array)>::tag;
    give_array<Kind>(call.ctx, call.result, distinct(array));
  });
}

Outcome xdiff(const Call& call) {
  return visit_first(real_first{}, call, [&](const auto& array) {
    using Kind = typename std::decay_t<decltype(array)>::tag;
    give_array<Kind>(call.ctx, call.result, differences(array));
  });
}

Outcome xargmin(const Call& call) { return give_position(call, Smaller{}); }
Outcome xargmax(const Call& call) { return give_position(call, Larger{}); }

// required: both arguments are checked, the first is fetched twice, and the answer is 0 on every path.
Outcome xsetdiff1d(const Call& call) {
  if (!is_object(call, 0) || !is_object(call, 1)) return Outcome::failed;
  object(call, 0);
  object(call, 0);
  return Outcome::failed;
}

}  // namespace arrayfold
