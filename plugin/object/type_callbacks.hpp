// object/type_callbacks.hpp: the four object types, as they are registered with the host

#pragma once

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

/// bool, int, int64, double: the order of registration.
extern const ObjectType object_types[4];

}  // namespace arrayfold
