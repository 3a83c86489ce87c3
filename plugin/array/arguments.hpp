// array/arguments.hpp: arrays among the arguments of a call

#pragma once

#include <optional>
#include <type_traits>

#include "array/kind_frames.hpp"

namespace arrayfold {

/// Calls `visit(kind, array)` for the array in the first argument as the first of the kinds, in their order, that it
/// is. Fails for anything but an object; an object of another kind (bool, foreign) counts as handled and gives no
/// value.
template <class Kinds, class Visit>
Outcome visit_first(Kinds kinds_in_order, const Call& call, Visit visit) {
  if (!is_object(call, 0)) return Outcome::failed;
  visit_kind(kinds_in_order, object(call, 0), visit);
  return Outcome::handled;
}

/// Gives the array `make(kind, array)` for the array in the first argument, as `visit_first` finds it.
template <class Kinds, class Make>
Outcome give_made(Kinds kinds_in_order, const Call& call, Make make) {
  return visit_first(kinds_in_order, call, [&](auto kind, const auto& array) { give_array(call, make(kind, array)); });
}

/// The numeric array in argument `n`; nothing when it is no object or another one.
inline std::optional<ArrayRef> numeric_argument(const Call& call, int n) {
  if (!is_object(call, n)) return std::nullopt;
  return unbox_numeric(object(call, n));
}

/// Calls `visit(kind, array)` for an array whose elements are of a type that `Takes` holds for. Fails for the other
/// kinds, whose arrays are not touched: `xarange` can make one without a container.
template <template <class> class Takes, class Visit>
Outcome visit_taken(const ArrayRef& ref, Visit visit) {
  return xtl::visit(
      [&](auto* boxed) {
        using Kind = typename std::decay_t<decltype(*boxed)>::tag;
        if constexpr (Takes<typename Kind::element>::value) {
          visit(Kind{}, *boxed->array);
          return Outcome::handled;
        }
        return Outcome::failed;
      },
      ref);
}

/// Calls `visit(kind, array)` for an array of floating-point numbers; fails for the other kinds.
template <class Visit>
Outcome visit_floating(const ArrayRef& ref, Visit visit) {
  return visit_taken<std::is_floating_point>(ref, visit);
}

/// Calls `visit(kind, array)` for an array of integers; fails for the other kinds.
template <class Visit>
Outcome visit_integers(const ArrayRef& ref, Visit visit) {
  return visit_taken<std::is_integral>(ref, visit);
}

/// The same as `visit_floating` for the first argument.
template <class Visit>
Outcome visit_first_floating(const Call& call, Visit visit) {
  const auto array = numeric_argument(call, 0);
  return array ? visit_floating(*array, visit) : Outcome::failed;
}

struct ArrayRefs {
  ArrayRef first;
  ArrayRef second;
};

/// The numeric arrays in the first two arguments. Both are checked before either is fetched, and the second is fetched
/// only when the first is one.
inline std::optional<ArrayRefs> two_numeric_arguments(const Call& call) {
  if (!is_object(call, 0) || !is_object(call, 1)) return std::nullopt;
  HostAny* const objects[] = {object(call, 0), object(call, 1)};
  const auto first = unbox_numeric(objects[0]);
  if (!first) return std::nullopt;
  const auto second = unbox_numeric(objects[1]);
  if (!second) return std::nullopt;
  return ArrayRefs{*first, *second};
}

}  // namespace arrayfold
