// object/operators.hpp: the operators that a script can apply to an array

#pragma once

#include "array/xt_object.hpp"
#include "host/host_operations.hpp"

namespace arrayfold {

template <class Kind>
using OperatorHandler = bool (*)(ArrayOf<Kind>& array, HostContext ctx, HostValue* self, Opcode opcode, HostValue* left,
                                 HostValue* right, HostValue* result);

/// For each kind the operators of `array`, the one in `self`, which is `left` or `right`. Returns false, with the
/// result record as it was, for operands that the kind does not combine with.
extern const KindTable<registered_kinds, OperatorHandler> operator_handlers;

}  // namespace arrayfold
