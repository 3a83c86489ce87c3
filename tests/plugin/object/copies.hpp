// object/copies.hpp: this program's own copy of the operators, for calls that no host can make through the callbacks

#pragma once

#include "support/module_test.hpp"

namespace arrayfold::test {

/// Applies an operator of the array in `self` to two records.
bool apply_copy(HostContext ctx, Value& self, Opcode opcode, HostValue* left, HostValue* right, HostValue* result);

/// Both operands the array's own, `self` on the right: no host can bring this about through the callback, which takes
/// the left object when there is one.
struct RightHanded {
  Value left, right;
  Value* result = nullptr;

  bool operator()(HostContext ctx, Opcode opcode) {
    return apply_copy(ctx, right, opcode, left.address(), right.address(), result->address());
  }
};

}  // namespace arrayfold::test
