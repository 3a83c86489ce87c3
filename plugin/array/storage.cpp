// array/storage.cpp: extents and big memory

#include "array/storage.hpp"

#include <algorithm>
#include <cstdint>
#include <new>
#include <optional>

#include <sys/mman.h>

namespace arrayfold {
namespace {

constexpr std::size_t largest_size = PTRDIFF_MAX;
constexpr std::size_t huge_page = std::size_t{2} << 20;
constexpr std::size_t least_for_huge_pages = std::size_t{4} << 20;

bool has_zero(const Shape& extents) { return std::find(extents.begin(), extents.end(), 0u) != extents.end(); }

/// The product of nonzero extents; nothing when it does not fit.
std::optional<std::size_t> product(const Shape& extents) {
  std::size_t count = 1;
  for (const std::size_t extent : extents)
    if (__builtin_mul_overflow(count, extent, &count)) return std::nullopt;
  return count;
}

}  // namespace

std::size_t checked_size(const Shape& extents, std::size_t element_size) {
  for (const std::size_t extent : extents)
    if (extent > largest_size) throw std::bad_alloc();
  if (has_zero(extents)) return 0;
  const auto count = product(extents);
  if (!count || *count > largest_size / element_size) throw std::bad_alloc();
  return *count;
}

bool extents_cover(const Shape& extents, std::size_t count) noexcept {
  if (has_zero(extents)) return count == 0;
  return product(extents) == count;
}

void advise_huge_pages(void* memory, std::size_t bytes) noexcept {
  if (bytes < least_for_huge_pages) return;
  // madvise takes whole pages only: the part of the block from its first page boundary on.
  void* start = memory;
  std::size_t space = bytes;
  if (std::align(4096, huge_page, start, space)) madvise(start, space & ~std::size_t{4095}, MADV_HUGEPAGE);
}

}  // namespace arrayfold
