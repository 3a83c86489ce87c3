// fuzz/fuzz_session.hpp: the module under the reference host, as the fuzzers drive it

#pragma once

#include <functional>
#include <vector>

#include "kernel/kernel.hpp"

namespace arrayfold::fuzz {

using hvm::Value;

/// A function of the module, which is loaded at the first call. Without it the process ends.
EntryFunction entry(const char* name);

/// Runs `action`, in which a single block of C++ memory may take no more than a megabyte: beyond it there is
/// std::bad_alloc, as there is beyond the memory of a machine. The process ends when `action` throws anything but that
/// or the module's own exception, and when it leaves an allocation or anything of the host's behind.
void run_checked(const std::function<void()>& action);

/// Calls a function with these arguments; the process ends when it throws and has changed its result. Nil when it
/// failed or gave nothing.
Value call(EntryFunction function, HostContext ctx, std::vector<Value>& args);

/// Calls a method of the object in `self`, if it is one; false when it is not, or when the callback returns false.
bool call_method(HostContext ctx, Value& self, const char* name, std::vector<Value> args, Value& result);

/// A record that looks at something of the caller's.
Value viewing(ValueTag tag, const void* payload);

}  // namespace arrayfold::fuzz
