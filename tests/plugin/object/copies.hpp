// object/copies.hpp: this program's own copy of the operators, compiled for AVX2
//
// The module's loops are as wide as the processor's registers. The copy is for AVX2 everywhere, so that every machine
// tests it; and it takes calls that no host can make through the callbacks.

#pragma once

#include "support/module_test.hpp"

namespace arrayfold::test {

/// Applies an operator of the array in `self` to two records.
bool apply_copy(HostContext ctx, Value& self, Opcode opcode, HostValue* left, HostValue* right, HostValue* result);

}  // namespace arrayfold::test
