// kernel/failing_memory.hpp: how long the allocations of the host fail, beyond `fail_allocation` of kernel.hpp

#pragma once

#include <cstdint>

namespace hvm {
#pragma GCC visibility push(default)

/// What fails with the n-th allocation: that one, or all from there on.
enum class FailureExtent { once, lasting };
/// Lets the n-th allocation from now on fail, or all from there on; 0 takes that back.
void fail_allocation(std::int64_t nth, FailureExtent extent) noexcept;
/// While on, no allocation fails, and none counts towards the n-th: a test makes memory of its own within a call.
void suspend_failures(bool suspend) noexcept;

#pragma GCC visibility pop
}  // namespace hvm
