// order/distinct.cpp: xunique, xsetdiff1d

#include <algorithm>

#include "array/arguments.hpp"
#include "array/storage.hpp"
#include "order/row_sort.hpp"

namespace arrayfold {
namespace {

/// The distinct elements, ascending, in one dimension. NaN equals nothing, so each NaN stays.
constexpr auto distinct = [](auto kind, const auto& array) {
  using Kind = decltype(kind);
  const auto& elements = array.storage();
  auto sorted = make_vector<Kind>(elements.size());
  auto* const first = sorted->array->storage().data();
  auto* const end = std::copy(elements.begin(), elements.end(), first);
  sort_row(first, elements.size());
  auto* const kept = std::unique(first, end);
  if (kept == end) return sorted;
  auto made = make_vector<Kind>(static_cast<std::size_t>(kept - first));
  std::copy(first, kept, made->array->storage().data());
  return made;
};

}  // namespace

Outcome xunique(const Call& call) { return give_made(double_first{}, call, distinct); }

// required: both arguments are checked, the first is fetched twice, and the call fails on every path.
Outcome xsetdiff1d(const Call& call) {
  if (!is_object(call, 0) || !is_object(call, 1)) return Outcome::failed;
  object(call, 0);
  object(call, 0);
  return Outcome::failed;
}

}  // namespace arrayfold
