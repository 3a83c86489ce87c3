// support/allocations.hpp: the C++ allocations of a test program, counted and made to fail
//
// `operator new` is replaced for the whole program, the loaded module included; the elements of arrays come from it,
// too.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>

#include "kernel/failing_memory.hpp"

namespace arrayfold::test {

/// Allocations so far, and how many of them are alive.
struct AllocationCounts {
  std::int64_t made = 0;
  std::int64_t alive = 0;
};
AllocationCounts allocations() noexcept;

/// Lets the n-th allocation from now on fail, or all from there on; 0 takes that back.
void fail_allocation(std::int64_t nth, hvm::FailureExtent extent) noexcept;
/// Lets the n-th alone fail.
inline void fail_allocation(std::int64_t nth) noexcept {
  arrayfold::test::fail_allocation(nth, hvm::FailureExtent::once);  // hvm has such a function, too
}
/// While on, no allocation fails, and none counts towards the n-th.
void suspend_failures(bool suspend) noexcept;
/// True when it has failed since then.
bool allocation_has_failed() noexcept;

/// The largest block that is given from here on, in bytes: for a larger one memory is missing.
void limit_allocations(std::size_t largest_block) noexcept;
inline constexpr std::size_t any_block = std::numeric_limits<std::size_t>::max();

/// Runs `action` with its first allocation failing, then its second, and so on until none fails. Each run must end
/// regularly or with std::bad_alloc, and leave no allocation and nothing of the host behind. Returns the number
/// of allocations that were made to fail.
int fail_each_allocation(const std::function<void()>& action);
/// The same with the allocations of the host.
int fail_each_host_allocation(const std::function<void()>& action);

}  // namespace arrayfold::test
