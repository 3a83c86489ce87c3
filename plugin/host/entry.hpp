// host/entry.hpp: what every script-callable function is written with
//
// An entry is a body over `Call`; `entry` turns it into the host's plain form. Checks and fetches are separate
// functions, because the order and number of host operations is part of what the module promises.

#pragma once

#include "host/host_operations.hpp"

namespace arrayfold {

/// What an entry returns. `handled` promises nothing about the result record.
enum class Outcome : int { failed = 0, handled = 1 };

/// One call of a script: `nargs` records side by side from `args`, and the record for the value.
struct Call {
  HostContext ctx;
  HostValue* args;
  int nargs;
  HostValue* result;
};

using EntryBody = Outcome (*)(const Call& call);

/// The host's form of an entry body: returns 0 below `minimum_nargs`. No catch here: an exception belongs to the host.
template <EntryBody body, int minimum_nargs>
int entry(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  if constexpr (minimum_nargs > 0)
    if (nargs < minimum_nargs) return static_cast<int>(Outcome::failed);
  return static_cast<int>(body({ctx, args, nargs, result}));
}

/// HVM_AnyCheck of argument `n`: is it an object that `object` can fetch?
inline bool is_object(const Call& call, int n) { return HVM_AnyCheck(call.args + n) != 0; }
/// HVM_GetAny of argument `n`, which passed `is_object`.
inline HostAny* object(const Call& call, int n) { return HVM_GetAny(call.args + n); }

/// HVM_NumberCheck of argument `n`.
inline bool is_number(const Call& call, int n) { return HVM_NumberCheck(call.args + n) != 0; }
/// HVM_AsInt of argument `n`: 32 bits, whatever number it is.
inline int int_argument(const Call& call, int n) { return HVM_AsInt(call.args + n); }

/// Stores a number in the result record: 32-bit integers, 64-bit integers and doubles, each by its own operation.
inline void give(const Call& call, int x) { HVM_SetInt(call.ctx, call.result, x); }
inline void give(const Call& call, std::int64_t x) { HVM_SetInt64(call.ctx, call.result, x); }
inline void give(const Call& call, double x) { HVM_SetReal(call.ctx, call.result, x); }

/// The body of most stubs: the first argument is checked and fetched, and nothing is computed.
inline Outcome check_one_object(const Call& call) {
  if (!is_object(call, 0)) return Outcome::failed;
  object(call, 0);
  return Outcome::handled;
}

}  // namespace arrayfold
