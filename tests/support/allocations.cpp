// support/allocations.cpp: replaced allocation functions and the loops over them

#include "support/allocations.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include "array/aligned_storage.hpp"
#include "kernel/kernel.hpp"

namespace arrayfold::test {
namespace {

AllocationCounts counts;
std::int64_t until_failure = 0;
hvm::FailureExtent failing = hvm::FailureExtent::once;
bool is_suspended = false;
bool failed = false;
std::size_t limit = any_block;

/// True when the allocation at hand is one to fail.
bool withheld(std::size_t size) noexcept {
  if (size > limit) return true;
  if (until_failure == 0 || is_suspended || --until_failure > 0) return false;
  failed = true;
  if (failing == hvm::FailureExtent::lasting) until_failure = 1;
  return true;
}

int fail_each(const std::function<void()>& action, void (*arm)(std::int64_t), bool (*has_failed)()) {
  for (int nth = 1;; ++nth) {
    const auto host = hvm::counts();  // also empties the slot of lost values
    const auto alive = counts.alive;
    arm(nth);
    try {
      action();
    } catch (const std::bad_alloc&) {
    }
    const bool came = has_failed();
    arm(0);
    EXPECT_TRUE(hvm::counts() == host) << "the host holds something after the failure of allocation " << nth;
    EXPECT_EQ(counts.alive, alive) << "an allocation outlived the failure of allocation " << nth;
    if (!came) return nth - 1;
  }
}

}  // namespace

AllocationCounts allocations() noexcept { return counts; }

void fail_allocation(std::int64_t nth, hvm::FailureExtent extent) noexcept {
  until_failure = nth;
  failing = extent;
  failed = false;
}

void suspend_failures(bool suspend) noexcept { is_suspended = suspend; }

bool allocation_has_failed() noexcept { return failed; }

void limit_allocations(std::size_t largest_block) noexcept { limit = largest_block; }

int fail_each_allocation(const std::function<void()>& action) {
  return fail_each(action, fail_allocation, allocation_has_failed);
}

int fail_each_host_allocation(const std::function<void()>& action) {
  return fail_each(action, hvm::fail_allocation, hvm::allocation_has_failed);
}

/// The replaced functions' way in. New memory is full of nonsense, NaN and -1 as elements: what is read without being
/// written shows, also where the same results lay there before. Of large blocks the beginning alone is written.
void* counted(void* memory, std::size_t size) noexcept {
  if (memory == nullptr) return nullptr;
  ++counts.made, ++counts.alive;
  return std::memset(memory, 0xff, std::min(size, std::size_t{1} << 20));
}
void uncounted(const void* memory) noexcept {
  if (memory != nullptr) --counts.alive;
}

}  // namespace arrayfold::test

#ifndef ARRAYFOLD_ADDRESS_SANITIZER
/// Large blocks of zeros, the one thing that the module takes from the C library itself. The next allocation behind the
/// program's is the C library's, or that of a sanitizer that was loaded before it.
extern "C" void* calloc(std::size_t count, std::size_t size) noexcept {
  static const auto next = reinterpret_cast<decltype(&calloc)>(dlsym(RTLD_NEXT, "calloc"));
  constexpr std::size_t large = std::size_t{128} << 10;
  const bool is_large = size != 0 && count >= large / size;
  return is_large && arrayfold::test::withheld(count * size) ? nullptr : next(count, size);
}
#endif

// All forms are replaced, since a sanitizer brings its own of each.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  using namespace arrayfold::test;
  return withheld(size) ? nullptr : counted(std::malloc(size == 0 ? 1 : size), size);
}
void* operator new(std::size_t size) {
  void* memory = operator new(size, std::nothrow);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return operator new(size, std::nothrow); }

void* operator new(std::size_t size, std::align_val_t alignment) {
  using namespace arrayfold::test;
  void* memory =
      withheld(size) ? nullptr : counted(memalign(static_cast<std::size_t>(alignment), size == 0 ? 1 : size), size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept {
  arrayfold::test::uncounted(memory);
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { operator delete(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { operator delete(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { operator delete(memory); }
void operator delete[](void* memory) noexcept { operator delete(memory); }
void operator delete[](void* memory, std::size_t) noexcept { operator delete(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { operator delete(memory); }
