// object/receiver.hpp: the array behind a record that the host passes to a callback

#pragma once

#include "array/xt_object.hpp"

namespace arrayfold {

/// The content of the object in `value`; null when it is no object or has none.
inline void* content_of(const HostValue* value) {
  if (value == nullptr || value->tag != ValueTag::object) return nullptr;
  const auto* any = load<const HostAny*>(value->payload);
  return any == nullptr ? nullptr : any->content.get();
}

/// The array in the content of an object of the type of `Kind`; null without content, and when the content holds none.
/// The type is not checked: the host calls the callback of the object's type.
template <class Kind>
ArrayOf<Kind>* array_in(void* content) {
  return content == nullptr ? nullptr : static_cast<XTObject<ArrayOf<Kind>>*>(content)->array.get();
}

}  // namespace arrayfold
