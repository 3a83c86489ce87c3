// array/boxing.hpp: from arrays to host objects and back

#pragma once

#include <cstring>
#include <memory>
#include <optional>

#include "array/xt_object.hpp"
#include "host/entry.hpp"

namespace arrayfold {

/// Puts `array` into a new object of the type of `Named`. Null when the host has no such object: the array then stays
/// with the caller. `Named` may differ from the array's kind: double arrays are also boxed under the float name.
template <class Named, class Array>
HostAny* box_array(HostContext ctx, std::unique_ptr<Array>& array) {
  HostAny* any = HVM_NewAny(ctx, Named::type_name, 0, 0);
  if (any == nullptr) return nullptr;
  static_cast<XTObject<Array>*>(any->content.get())->array = std::move(array);
  any->state = 200;
  return any;
}

/// Hands `array` over to the host as the value of `result`, an object of the type of `Named`. If boxing fails, the
/// array is freed here and the result is set to a null object.
template <class Named, class Array>
void hand_over(Named, HostContext ctx, HostValue* result, std::unique_ptr<Array> array) {
  HVM_SetTypeAny(ctx, result, box_array<Named>(ctx, array));
}

/// Gives `array` as the result of a call: under the name of its own kind, or under that of `named`.
template <class Array>
void give_array(const Call& call, std::unique_ptr<Array> array) {
  hand_over(typename Array::tag{}, call.ctx, call.result, std::move(array));
}
template <class Named, class Array>
void give_array(const Call& call, Named named, std::unique_ptr<Array> array) {
  hand_over(named, call.ctx, call.result, std::move(array));
}

/// The array of `any` when its type is that of `Kind`, else null. Foreign objects and other kinds give null.
template <class Kind>
ArrayOf<Kind>* unbox_array(const HostAny* any) {
  const char* name = any->manager.get()->name;
  if (name != Kind::type_name && (name == nullptr || std::strcmp(name, Kind::type_name) != 0)) return nullptr;
  const auto* object = static_cast<XTObject<ArrayOf<Kind>>*>(any->content.get());
  return object == nullptr ? nullptr : object->array.get();
}

/// The numeric array of `any`: the first that it is of int, int64, float, double. Nothing for any other object.
inline std::optional<ArrayRef> unbox_numeric(const HostAny* any) {
  std::optional<ArrayRef> found;
  const auto try_as = [&](auto* array) { return array != nullptr && (found.emplace(array), true); };
  const auto try_all = [&](auto... kind) { return (try_as(unbox_array<decltype(kind)>(any)) || ...); };
  for_kinds(int_first{}, try_all);
  return found;
}

}  // namespace arrayfold
