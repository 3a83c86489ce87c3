// array/kind_frames.hpp: from an object to the code for its kind
//
// Every family finds the kind of its operands through one of these. A visitor gets the kind and the container of the
// elements. Each frame tells whether it found a kind; what follows when it did not is the entry's to say.

#pragma once

#include "array/boxing.hpp"

namespace arrayfold {

/// Calls `visit(kind, array)` for the array of `any` as the first of the kinds, in their order, that it is. False: none
/// of them.
template <class... Kind, class Visit>
bool visit_kind(kinds<Kind...>, const HostAny* any, Visit visit) {
  const auto try_as = [&](auto kind, auto* boxed) { return boxed != nullptr && (visit(kind, *boxed->array), true); };
  return (try_as(Kind{}, unbox_array<Kind>(any)) || ...);
}

/// Calls `visit(kind, left array, right array)` for two arrays of one kind, the first of the kinds, in their order,
/// that both are. False: they are of different kinds, or of none of these. The second is looked at only when the first
/// matched.
template <class... Kind, class Visit>
bool visit_same_kind(kinds<Kind...>, const HostAny* left, const HostAny* right, Visit visit) {
  const auto try_as = [&](auto kind, auto* first) {
    if (first == nullptr) return false;
    auto* second = unbox_array<decltype(kind)>(right);
    return second != nullptr && (visit(kind, *first->array, *second->array), true);
  };
  return (try_as(Kind{}, unbox_array<Kind>(left)) || ...);
}

/// What `visit(kind, array)` returns for the array that `ref` holds.
template <class Visit>
auto visit_ref(const ArrayRef& ref, Visit visit) {
  return xtl::visit(
      [&](auto* boxed) {
        using Kind = typename std::decay_t<decltype(*boxed)>::tag;
        return visit(Kind{}, *boxed->array);
      },
      ref);
}

}  // namespace arrayfold
