// object/copies.hpp: this program's own copy of the operators, for calls that no host can make through the callbacks

#pragma once

#include "support/module_test.hpp"

namespace arrayfold::test {

/// Applies an operator of the array in `self` to two records.
bool apply_copy(HostContext ctx, Value& self, Opcode opcode, HostValue* left, HostValue* right, HostValue* result);

}  // namespace arrayfold::test
