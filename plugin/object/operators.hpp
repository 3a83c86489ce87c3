// object/operators.hpp: the operators that a script can apply to an array

#pragma once

#include "array/xt_object.hpp"

namespace arrayfold {

template <class Kind>
using OperatorHandler = bool (*)(ArrayOf<Kind>& array, HostContext ctx, HostValue* self, Opcode opcode, HostValue* left,
                                 HostValue* right, HostValue* result);

/// For each kind the operators of `array`, the one in `self`, which is `left` or `right`. Returns false, with the
/// result record as it was, for operands that the kind does not combine with.
extern const KindTable<registered_kinds, OperatorHandler> operator_handlers;

template <class Kind>
using OperatorCallbackOf = OperatorCallback;

/// For each kind the callback of its type: calls the handler for the array in the left operand's object or, when that
/// has none, in the right one's. Returns false when neither holds an array.
extern const KindTable<registered_kinds, OperatorCallbackOf> operator_callbacks;

}  // namespace arrayfold
