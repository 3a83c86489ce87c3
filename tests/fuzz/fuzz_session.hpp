// fuzz/fuzz_session.hpp: the module under the reference host, as the fuzzers drive it

#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "kernel/kernel.hpp"

namespace arrayfold::fuzz {

using hvm::Value;

/// Says what is wrong and ends the process, which libFuzzer reports with the input.
[[noreturn]] void give_up(const std::string& words);

/// A function of the module, which is loaded at the first call. Without such a function the process ends.
EntryFunction entry(const char* name);

/// The memory that an input may take.
struct MemoryLimits {
  std::size_t largest_block = std::size_t{1} << 20;  // of a single block of C++ memory, in bytes
  std::size_t host = 0;                              // of all memory of the host, in bytes; 0: any
};

/// Runs `action` under the limits: beyond them memory is missing, as it is beyond that of a machine. The process ends
/// when `action` throws anything but std::bad_alloc or the module's own exception, and when it leaves anything of
/// the host's behind, or an allocation, also in a second run.
void run_checked(const std::function<void()>& action, MemoryLimits limits = {});

/// Calls a function with these arguments; the process ends when it throws and has changed its result. Nil when it
/// failed or gave nothing.
Value call(EntryFunction function, HostContext ctx, std::vector<Value>& args);

/// Calls a method of the object in `self`, if it is one; false when it is not, or when the callback returns false.
bool call_method(HostContext ctx, Value& self, const char* name, std::vector<Value> args, Value& result);

/// A record that looks at something of the caller's.
Value viewing(ValueTag tag, const void* payload);

}  // namespace arrayfold::fuzz
