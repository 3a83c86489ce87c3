// object/methods.hpp: the methods that a script can call on an array

#pragma once

#include "array/xt_object.hpp"
#include "host/host_operations.hpp"

namespace arrayfold {

template <class Kind>
using MethodHandler = bool (*)(ArrayOf<Kind>& receiver, HostContext ctx, const char* name, HostValue** args, int nargs,
                               HostValue* result, int flag);

/// For each kind the methods `dump`, `shape` and `reshape`. Returns false for any other name, with the result record as
/// it was. `args` are `nargs` pointers to records. Exceptions pass, except the std::runtime_error of a `reshape` to
/// another element count.
extern const KindTable<registered_kinds, MethodHandler> method_handlers;

}  // namespace arrayfold
