// object/operators.hpp: the operators that a script can apply to an array

#pragma once

#include "array/xt_object.hpp"
#include "host/host_operations.hpp"

namespace arrayfold {

/// Serves an operator on `array`, the one in `self`, which is `left` or `right`. False: declined, with the result
/// record as it was.
template <class Array>
bool apply_operator(Array& array, HostContext ctx, HostValue* self, Opcode opcode, HostValue* left, HostValue* right,
                    HostValue* result);

extern template bool apply_operator(ArrayOf<XTBool>&, HostContext, HostValue*, Opcode, HostValue*, HostValue*,
                                    HostValue*);
extern template bool apply_operator(ArrayOf<XTInt>&, HostContext, HostValue*, Opcode, HostValue*, HostValue*,
                                    HostValue*);
extern template bool apply_operator(ArrayOf<XTInt64>&, HostContext, HostValue*, Opcode, HostValue*, HostValue*,
                                    HostValue*);
extern template bool apply_operator(ArrayOf<XTDouble>&, HostContext, HostValue*, Opcode, HostValue*, HostValue*,
                                    HostValue*);

}  // namespace arrayfold
