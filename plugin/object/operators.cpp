// object/operators.cpp: the operators of each kind; none is served yet

#include "object/operators.hpp"

namespace arrayfold {

template <class Array>
bool apply_operator(Array&, HostContext, HostValue*, Opcode, HostValue*, HostValue*, HostValue*) {
  return false;
}

template bool apply_operator(ArrayOf<XTBool>&, HostContext, HostValue*, Opcode, HostValue*, HostValue*, HostValue*);
template bool apply_operator(ArrayOf<XTInt>&, HostContext, HostValue*, Opcode, HostValue*, HostValue*, HostValue*);
template bool apply_operator(ArrayOf<XTInt64>&, HostContext, HostValue*, Opcode, HostValue*, HostValue*, HostValue*);
template bool apply_operator(ArrayOf<XTDouble>&, HostContext, HostValue*, Opcode, HostValue*, HostValue*, HostValue*);

}  // namespace arrayfold
