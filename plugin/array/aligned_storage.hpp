// array/aligned_storage.hpp: the memory behind the elements of every array
//
// The allocator is part of the containers' type. The library's allocator is therefore specialised for the alignment of
// our arrays: one check of the size, one way to get memory, huge pages for big blocks. The build makes it the library's
// default, so that temporaries and results of the library get their memory here, too. The specialisation has to be
// seen before any container is made, so every header that names one includes this header first.

#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

#include <xsimd/xsimd.hpp>
#include <xtensor/xstorage.hpp>

namespace arrayfold {

/// In bytes. It is part of what the containers are, on every processor.
inline constexpr std::size_t storage_alignment = 32;

/// What new memory holds: anything, or zeros in every byte.
enum class Contents : unsigned char { anything, zeros };

/// Memory for `count` elements. From 4 MiB on it asks for huge pages. Zeros come from the C library's `calloc`: pages
/// that it gets from the system are zeros already and cost nothing until they are touched. Throws std::bad_alloc when
/// that many bytes cannot be addressed, and without memory.
void* allocate_storage(std::size_t count, std::size_t element_size, Contents contents);
void release_storage(void* memory) noexcept;

}  // namespace arrayfold

namespace xsimd {

template <class T>
class aligned_allocator<T, arrayfold::storage_alignment> {
 public:
  using value_type = T;
  using pointer = T*;
  using const_pointer = const T*;
  using reference = T&;
  using const_reference = const T&;
  using size_type = std::size_t;
  using difference_type = std::ptrdiff_t;

  static constexpr std::size_t alignment = arrayfold::storage_alignment;

  template <class U>
  struct rebind {
    using other = aligned_allocator<U, alignment>;
  };

  aligned_allocator() noexcept = default;
  /// Its memory has these contents; that of a copy of the container has not.
  explicit aligned_allocator(arrayfold::Contents contents) noexcept : contents_(contents) {}
  template <class U>
  aligned_allocator(const aligned_allocator<U, alignment>&) noexcept {}

  pointer allocate(size_type count, const void* = nullptr) {
    return static_cast<pointer>(arrayfold::allocate_storage(count, sizeof(T), contents_));
  }
  void deallocate(pointer memory, size_type) noexcept { arrayfold::release_storage(memory); }

  aligned_allocator select_on_container_copy_construction() const noexcept { return {}; }

  size_type max_size() const noexcept { return static_cast<size_type>(PTRDIFF_MAX) / sizeof(T); }

  template <class U, class... Args>
  void construct(U* place, Args&&... args) {
    new (static_cast<void*>(place)) U(std::forward<Args>(args)...);
  }
  template <class U>
  void destroy(U* place) {
    place->~U();
  }

 private:
  arrayfold::Contents contents_ = arrayfold::Contents::anything;
};

}  // namespace xsimd

namespace xt {

/// What the library does, without a call of the C library for a few entries: every new array resizes its strides twice.
/// A new vector has no entries, and room for four of them.
template <>
inline void svector<std::ptrdiff_t, 4, std::allocator<std::ptrdiff_t>, true>::resize(size_type count) {
  if (count > capacity()) grow(count);
  const size_type before = size();
  m_end = m_begin + count;
  if (before == 0 && count <= 4)
    std::fill_n(m_begin, 4, 0);
  else if (before < count)
    std::fill(m_begin + before, m_end, 0);
}

}  // namespace xt
