// array/kind_frames.hpp: from an object to the code for its kind
//
// Every family finds the kind of its operands through one of these. Each tells whether it found one; what follows when
// it did not is the entry's to say.

#pragma once

#include "array/boxing.hpp"

namespace arrayfold {

/// Visits the array of `any` as the first of the kinds, in their order, that it is. False: none of them.
template <class... Kind, class Visit>
bool visit_kind(kinds<Kind...>, const HostAny* any, Visit visit) {
  const auto try_as = [&](auto* boxed) { return boxed != nullptr && (visit(*boxed), true); };
  return (try_as(unbox_array<Kind>(any)) || ...);
}

/// Visits two arrays of one kind, the first of the kinds, in their order, that both are. False: they are of different
/// kinds, or of none of these. The second is looked at only when the first matched.
template <class... Kind, class Visit>
bool visit_same_kind(kinds<Kind...>, const HostAny* left, const HostAny* right, Visit visit) {
  const auto try_as = [&](auto* first, auto unbox) {
    if (first == nullptr) return false;
    auto* second = unbox(right);
    return second != nullptr && (visit(*first, *second), true);
  };
  return (try_as(unbox_array<Kind>(left), &unbox_array<Kind>) || ...);
}

/// Visits the numeric array of `any` through an ArrayRef. False: it is none.
template <class Visit>
bool visit_numeric(const HostAny* any, Visit visit) {
  const auto array = unbox_numeric(any);
  if (!array) return false;
  xtl::visit([&](auto* boxed) { visit(*boxed); }, *array);
  return true;
}

}  // namespace arrayfold
