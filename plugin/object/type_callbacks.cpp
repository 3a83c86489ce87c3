// object/type_callbacks.cpp: create, destroy, method and operator of each type
//
// The host calls these with whatever a script wrote. They find the array behind a record and pass it to the kind's
// method or operator handler; they return false for a record that holds no array.

#include "object/type_callbacks.hpp"

#include <new>

#include "array/xt_object.hpp"
#include "object/methods.hpp"
#include "object/operators.hpp"

namespace arrayfold {
namespace {

/// The content of the object in `value`; null when it is no object or has none.
void* content_of(const HostValue* value) {
  if (value == nullptr || value->tag != ValueTag::object) return nullptr;
  const auto* any = load<const HostAny*>(value->payload);
  return any == nullptr ? nullptr : any->content.get();
}

bool takes_index_list(Opcode opcode) { return opcode == Opcode::read_element || opcode == Opcode::write_element; }

template <class Kind>
struct Callbacks {
  using Object = XTObject<ArrayOf<Kind>>;

  static void* create() { return new (std::nothrow) Object; }

  static void destroy(HostContext, void* content) { delete static_cast<Object*>(content); }

  static HostBool method(HostContext ctx, HostValue* self, const char* name, HostValue** args, int nargs,
                         HostValue* result, int flag) {
    ArrayOf<Kind>* array = array_in(content_of(self));
    return array != nullptr && method_handlers.of<Kind>()(*array, ctx, name, args, nargs, result, flag);
  }

  // The left operand's object comes first. Neither is checked to be of this type: the host calls the callback of the
  // object's type.
  static HostBool op(HostContext ctx, int opcode, HostValue* left, HostValue* right, HostValue* result) {
    const bool on_left = content_of(left) != nullptr;
    if (!on_left && takes_index_list(static_cast<Opcode>(opcode))) return false;  // the right record is no operand
    HostValue* self = on_left ? left : right;
    ArrayOf<Kind>* array = array_in(content_of(self));
    return array != nullptr &&
           operator_handlers.of<Kind>()(*array, ctx, self, static_cast<Opcode>(opcode), left, right, result);
  }

  static ArrayOf<Kind>* array_in(void* content) {
    return content == nullptr ? nullptr : static_cast<Object*>(content)->array.get();
  }
};

constexpr auto types_of = [](auto... kind) {
  return std::array{ObjectType{decltype(kind)::type_name, &Callbacks<decltype(kind)>::create,
                               &Callbacks<decltype(kind)>::destroy, &Callbacks<decltype(kind)>::method,
                               &Callbacks<decltype(kind)>::op}...};
};

}  // namespace

constexpr std::array<ObjectType, kind_count(registered_kinds{})> object_types = for_kinds(registered_kinds{}, types_of);

}  // namespace arrayfold
