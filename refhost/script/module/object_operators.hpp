// script/module/object_operators.hpp: operators with an object among their operands

#pragma once

#include "script/module/array_module.hpp"

namespace hvm {

/// The value of `left op right`. Throws `Failure`. Requires: an operand is an object.
Value object_binary(const ModuleCaller& caller, BinaryOperator op, Value& left, Value& right);

/// `variable op= right`: the module gets the variable's own record as the result, and so may change an object in place.
/// Throws `Failure`. Requires: an operand is an object.
void object_compound(const ModuleCaller& caller, BinaryOperator op, Value& variable, Value& right);

/// `-operand`: the product with -1. Throws `Failure`. Requires: the operand is an object.
Value object_negated(const ModuleCaller& caller, Value& operand);

}  // namespace hvm
