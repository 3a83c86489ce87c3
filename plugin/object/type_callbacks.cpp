// object/type_callbacks.cpp: the four callbacks of each type
//
// The host calls these with whatever a script wrote.

#include "object/type_callbacks.hpp"

#include <new>

#include "array/xt_object.hpp"
#include "object/methods.hpp"
#include "object/operators.hpp"

namespace arrayfold {
namespace {

template <class Kind>
void* create() {
  return new (std::nothrow) XTObject<ArrayOf<Kind>>;
}

template <class Kind>
void destroy(HostContext, void* content) {
  delete static_cast<XTObject<ArrayOf<Kind>>*>(content);
}

template <class Kind>
ObjectType object_type(Kind) {
  return {Kind::type_name, &create<Kind>, &destroy<Kind>, method_callbacks.of<Kind>(), operator_callbacks.of<Kind>()};
}

}  // namespace

std::array<ObjectType, kind_count(registered_kinds{})> object_types() {
  return for_kinds(registered_kinds{}, [](auto... kind) { return std::array{object_type(kind)...}; });
}

}  // namespace arrayfold
