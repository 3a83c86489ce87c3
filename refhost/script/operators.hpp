// script/operators.hpp: what the operators of the language do
//
// Numbers and strings are the host's own; with an object among the operands the object's type decides. Integers that
// outgrow 32 bits become 64-bit ones; a result beyond 64 bits is an error, never a wrapped number. `/` and `%` of two
// integers truncate toward zero, as those of integer arrays do.

#pragma once

#include "script/module_calls.hpp"
#include "script/syntax.hpp"

namespace hvm {

/// The value of `left op right`. Throws `Failure`.
Value binary(const ModuleCaller& caller, BinaryOperator op, Value& left, Value& right);

/// `variable op= right`. An object gets its own record as the result and may so change in place.
void compound(const ModuleCaller& caller, BinaryOperator op, Value& variable, Value& right);

/// `-operand`; of an object its product with -1.
Value negated(const ModuleCaller& caller, Value& operand);

/// An operator on two values of which none is an object. Throws `Failure`.
Value plain_binary(BinaryOperator op, const Value& left, const Value& right);

}  // namespace hvm
