// object/copies.cpp: this program's own copy of the operators

#include "copies.hpp"

#include <stdexcept>

#include "array/boxing.hpp"
#include "object/operators.hpp"

namespace arrayfold::test {

bool apply_copy(HostContext ctx, Value& self, Opcode opcode, HostValue* left, HostValue* right, HostValue* result) {
  const HostAny* any = hvm::object_of(self.record());
  const auto apply = [&](auto kind, auto* array) {
    return operator_handlers.of<decltype(kind)>()(*array, ctx, self.address(), opcode, left, right, result);
  };
  if (auto* array = unbox_array<XTInt>(any)) return apply(XTInt{}, array);
  if (auto* array = unbox_array<XTInt64>(any)) return apply(XTInt64{}, array);
  if (auto* array = unbox_array<XTDouble>(any)) return apply(XTDouble{}, array);
  throw std::invalid_argument("no array of numbers");
}

}  // namespace arrayfold::test
