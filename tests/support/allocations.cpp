// support/allocations.cpp: replaced allocation functions and the loops over them

#include "support/allocations.hpp"

#include <cerrno>
#include <cstdlib>
#include <new>

#include <gtest/gtest.h>
#include <malloc.h>

#include "kernel/kernel.hpp"

namespace arrayfold::test {
namespace {

AllocationCounts counts;
std::int64_t until_failure = 0;
bool failed = false;

/// True when the allocation at hand is the one to fail.
bool is_due() noexcept {
  if (until_failure == 0 || --until_failure > 0) return false;
  failed = true;
  return true;
}

int fail_each(const std::function<void()>& action, void (*arm)(std::int64_t), bool (*has_failed)()) {
  for (int nth = 1;; ++nth) {
    const auto alive = counts.alive;
    const auto host = hvm::counts();
    arm(nth);
    try {
      action();
    } catch (const std::bad_alloc&) {
    }
    const bool came = has_failed();
    arm(0);
    EXPECT_EQ(counts.alive, alive) << "an allocation outlived the failure of allocation " << nth;
    EXPECT_TRUE(hvm::counts() == host) << "the host holds something after the failure of allocation " << nth;
    if (!came) return nth - 1;
  }
}

}  // namespace

AllocationCounts allocations() noexcept { return counts; }

void fail_allocation(std::int64_t nth) noexcept {
  until_failure = nth;
  failed = false;
}

bool allocation_has_failed() noexcept { return failed; }

int fail_each_allocation(const std::function<void()>& action) {
  return fail_each(action, fail_allocation, allocation_has_failed);
}

int fail_each_host_allocation(const std::function<void()>& action) {
  return fail_each(action, hvm::fail_allocation, hvm::allocation_has_failed);
}

/// The replaced functions' way in.
void* counted(void* memory) noexcept {
  if (memory != nullptr) ++counts.made, ++counts.alive;
  return memory;
}
bool refused() noexcept { return is_due(); }
void uncounted(const void* memory) noexcept {
  if (memory != nullptr) --counts.alive;
}

}  // namespace arrayfold::test

void* operator new(std::size_t size) {
  using namespace arrayfold::test;
  void* memory = refused() ? nullptr : counted(std::malloc(size == 0 ? 1 : size));
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept {
  arrayfold::test::uncounted(memory);
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }

// The storage of arrays. It is given back with `free`, which stays the C library's, so only the making is counted.
extern "C" __attribute__((visibility("default"))) int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  void* made = arrayfold::test::refused() ? nullptr : memalign(alignment, size == 0 ? 1 : size);
  if (made == nullptr) return ENOMEM;
  ++arrayfold::test::counts.made;
  *memory = made;
  return 0;
}
