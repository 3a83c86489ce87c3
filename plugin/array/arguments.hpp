// array/arguments.hpp: arrays among the arguments of a call

#pragma once

#include <optional>
#include <type_traits>

#include "array/kind_frames.hpp"
#include "host/entry.hpp"

namespace arrayfold {

/// Visits the array in the first argument as the first of the kinds, in their order, that it is. Anything but an object
/// is a failure; an object of another kind (bool, foreign) counts as handled and gives nothing.
template <class Kinds, class Visit>
Outcome visit_first(Kinds kinds_in_order, const Call& call, Visit visit) {
  if (!is_object(call, 0)) return Outcome::failed;
  visit_kind(kinds_in_order, object(call, 0), visit);
  return Outcome::handled;
}

/// The numeric array in argument `n`; nothing when it is no object or another one.
inline std::optional<ArrayRef> numeric_argument(const Call& call, int n) {
  if (!is_object(call, n)) return std::nullopt;
  return unbox_numeric(object(call, n));
}

/// Calls `serve(array)` when its elements are reals; other kinds are a failure.
template <class Serve>
Outcome serve_reals(const ArrayRef& array, Serve serve) {
  return xtl::visit(
      [&](const auto* boxed) {
        using T = typename std::decay_t<decltype(*boxed)>::element;
        if constexpr (std::is_floating_point_v<T>) return serve(*boxed), Outcome::handled;
        return Outcome::failed;
      },
      array);
}

/// The same for the first argument.
template <class Serve>
Outcome serve_first_reals(const Call& call, Serve serve) {
  const auto array = numeric_argument(call, 0);
  return array ? serve_reals(*array, serve) : Outcome::failed;
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
