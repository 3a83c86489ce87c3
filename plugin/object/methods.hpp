// object/methods.hpp: the methods that a script can call on an array

#pragma once

#include "array/xt_object.hpp"
#include "host/host_operations.hpp"

namespace arrayfold {

/// Serves `dump`, `shape` and `reshape`; false for any other name, with the result record as it was. `args` are `nargs`
/// pointers to records. Exceptions pass, but for the std::runtime_error of a `reshape` to another element count.
template <class Array>
bool call_method(Array& receiver, HostContext ctx, const char* name, HostValue** args, int nargs, HostValue* result,
                 int flag);

extern template bool call_method(ArrayOf<XTBool>&, HostContext, const char*, HostValue**, int, HostValue*, int);
extern template bool call_method(ArrayOf<XTInt>&, HostContext, const char*, HostValue**, int, HostValue*, int);
extern template bool call_method(ArrayOf<XTInt64>&, HostContext, const char*, HostValue**, int, HostValue*, int);
extern template bool call_method(ArrayOf<XTDouble>&, HostContext, const char*, HostValue**, int, HostValue*, int);

}  // namespace arrayfold
