// array/storage.cpp: extents, and the memory of elements

#include "array/storage.hpp"

#include <algorithm>
#include <cstdint>
#include <new>
#include <optional>

#include <sys/mman.h>

// Under the address sanitizer blocks are of their exact size: an access one element beyond the end is then seen.
#if defined(__SANITIZE_ADDRESS__)
#define ARRAYFOLD_EXACT_STORAGE
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ARRAYFOLD_EXACT_STORAGE
#endif
#endif

namespace arrayfold {
namespace {

constexpr std::size_t largest_size = PTRDIFF_MAX;
constexpr std::size_t page = 4096;
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

void advise_huge_pages(void* memory, std::size_t bytes) noexcept {
  if (bytes < least_for_huge_pages) return;
  // Whole pages only: from the first page boundary in the block on.
  void* start = memory;
  std::size_t space = bytes;
  if (std::align(page, huge_page, start, space)) madvise(start, space & ~(page - 1), MADV_HUGEPAGE);
}

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

// The C library's aligned allocation passes its cache of freed blocks by and costs several times a plain one. A plain
// block is taken instead, larger by one alignment, and its address kept in the word before the elements.
void* allocate_storage(std::size_t count, std::size_t element_size) {
  if (count > (largest_size - storage_alignment) / element_size) throw std::bad_alloc();
  const std::size_t bytes = count * element_size;
#ifdef ARRAYFOLD_EXACT_STORAGE
  return ::operator new (bytes, std::align_val_t{storage_alignment});
#else
  void* block = ::operator new(bytes + storage_alignment);
  void* memory = block;
  std::size_t space = bytes + storage_alignment;
  // Behind the block's first word, which a block of the C library's alignment has room for before the next boundary.
  memory = static_cast<std::byte*>(memory) + sizeof(void*);
  space -= sizeof(void*);
  std::align(storage_alignment, bytes, memory, space);
  static_cast<void**>(memory)[-1] = block;
  advise_huge_pages(memory, bytes);
  return memory;
#endif
}

void release_storage(void* memory) noexcept {
  if (memory == nullptr) return;
#ifdef ARRAYFOLD_EXACT_STORAGE
  ::operator delete (memory, std::align_val_t{storage_alignment});
#else
  ::operator delete(static_cast<void**>(memory)[-1]);
#endif
}

}  // namespace arrayfold
