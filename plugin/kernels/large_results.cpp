// kernels/large_results.cpp: whether the system has given pages yet

#include "kernels/large_results.hpp"

#include <cstdint>

#include <sys/mman.h>

namespace arrayfold {
namespace {

constexpr std::uintptr_t cache_line = 64;
/// Of every supported system; a larger page begins at a multiple of it, too.
constexpr std::uintptr_t page = 4096;

// Where the system does not say, the page counts as new.
bool is_used(std::uintptr_t address) noexcept {
  unsigned char state = 0;
  void* const start = reinterpret_cast<void*>(address & ~(page - 1));
  return mincore(start, 1, &state) == 0 && (state & 1) != 0;
}

}  // namespace

// The C library may serve a block from memory that was freed and from new memory behind it: the last page is asked,
// too.
bool has_used_pages(const void* result, std::size_t bytes) noexcept {
  const auto address = reinterpret_cast<std::uintptr_t>(result);
  return address % cache_line == 0 && is_used(address + bytes / 2) && is_used(address + bytes - 1);
}

}  // namespace arrayfold
