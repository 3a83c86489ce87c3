// object/type_callbacks.hpp: the four object types, as they are registered with the host

#pragma once

#include <array>

#include "host/host_operations.hpp"

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
extern const std::array<ObjectType, 4> object_types;

}  // namespace arrayfold
