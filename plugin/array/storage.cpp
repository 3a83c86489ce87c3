// array/storage.cpp: extents, and the memory of elements

#include "array/storage.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include <sys/mman.h>

namespace arrayfold {
namespace {

constexpr std::size_t largest_size = PTRDIFF_MAX;
/// Blocks begin with a cache line, so that no register of a whole line crosses into the next.
constexpr std::size_t block_alignment = 64;
static_assert(block_alignment % storage_alignment == 0);
constexpr std::size_t page = 4096;
constexpr std::size_t huge_page = std::size_t{2} << 20;
constexpr std::size_t minimum_for_huge_pages = std::size_t{4} << 20;

}  // namespace

void advise_huge_pages(void* memory, std::size_t bytes) noexcept {
  if (bytes < minimum_for_huge_pages) return;
  // Whole pages only: from the first page boundary in the block on.
  void* start = memory;
  std::size_t space = bytes;
  if (std::align(page, huge_page, start, space)) madvise(start, space & ~(page - 1), MADV_HUGEPAGE);
}

std::size_t checked_size(const Shape& extents, std::size_t element_size) {
  std::size_t count = 1, bytes = 0, bits_of_any = 0;
  bool wraps = false;
  for (const std::size_t extent : extents) {
    bits_of_any |= extent;
    wraps |= __builtin_mul_overflow(count, extent, &count);
  }
  if (bits_of_any > largest_size) throw std::bad_alloc();
  // An array without elements has any other extents: their product may wrap before or behind the extent of 0.
  if (wraps && std::find(extents.begin(), extents.end(), std::size_t{0}) != extents.end()) return 0;
  if (wraps || __builtin_mul_overflow(count, element_size, &bytes) || bytes > largest_size) throw std::bad_alloc();
  return count;
}

namespace {

// Under the address sanitizer blocks have their exact size, so that an access one element beyond the end is seen.
#ifdef ARRAYFOLD_ADDRESS_SANITIZER
void* allocate_aligned(std::size_t bytes, Contents contents) {
  void* memory = ::operator new (bytes, std::align_val_t{block_alignment});
  return contents == Contents::zeros ? std::memset(memory, 0, bytes) : memory;
}
void free_aligned(void* memory) { ::operator delete (memory, std::align_val_t{block_alignment}); }
#else
// The C library's aligned allocation bypasses malloc's thread cache and costs several times a plain one. A plain block
// is allocated instead, larger by one alignment, and its address is kept in the word before the elements. The address
// is odd where the block is one of zeros, which the C library itself frees.
std::uintptr_t& kept_address(void* memory) { return static_cast<std::uintptr_t*>(memory)[-1]; }

void* zeros_of_system(std::size_t bytes) {
  void* block = std::calloc(bytes, 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void* allocate_aligned(std::size_t bytes, Contents contents) {
  const std::size_t size = bytes + block_alignment;
  const bool are_zeros = contents == Contents::zeros;
  const auto block = reinterpret_cast<std::uintptr_t>(are_zeros ? zeros_of_system(size) : ::operator new(size));
  // Blocks begin at a multiple of 16, so the next line of the cache leaves room for a word.
  static_assert(__STDCPP_DEFAULT_NEW_ALIGNMENT__ >= sizeof block);
  void* const memory = reinterpret_cast<void*>((block + block_alignment) & ~(block_alignment - 1));
  kept_address(memory) = block + are_zeros;
  return memory;
}
void free_aligned(void* memory) {
  const std::uintptr_t address = kept_address(memory);
  if (address % 2 == 0)
    ::operator delete(reinterpret_cast<void*>(address));
  else
    std::free(reinterpret_cast<void*>(address - 1));
}
#endif

}  // namespace

void* allocate_storage(std::size_t count, std::size_t element_size, Contents contents) {
  std::size_t bytes = 0;
  if (__builtin_mul_overflow(count, element_size, &bytes) || bytes > largest_size - block_alignment)
    throw std::bad_alloc();
  void* memory = allocate_aligned(bytes, contents);
  advise_huge_pages(memory, bytes);
  return memory;
}

void release_storage(void* memory) noexcept {
  if (memory != nullptr) free_aligned(memory);
}

}  // namespace arrayfold
