// object/type_callbacks.hpp: the object types, as they are registered with the host

#pragma once

#include <array>

#include "array/element_kind.hpp"

namespace arrayfold {

/// A type's name and its four callbacks.
struct ObjectType {
  const char* name;
  CreateCallback create;
  DestroyCallback destroy;
  MethodCallback method;
  OperatorCallback op;
};

/// In the order of registration.
extern const std::array<ObjectType, kind_count(registered_kinds{})> object_types;

}  // namespace arrayfold
