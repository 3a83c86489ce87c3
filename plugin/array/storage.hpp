// array/storage.hpp: the one place that makes arrays
//
// Extents are checked before memory is allocated. Elements are not initialised; the caller fills them. A container is
// built where it stays: beyond four dimensions its shape lives on the heap, and moving one would allocate in a function
// from which no exception may pass.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

#include "array/xt_object.hpp"

namespace arrayfold {

/// A number of a script as an extent: sign-extended, so that a negative one is far too large for any array.
inline std::size_t extent_of(int number) { return static_cast<std::size_t>(std::int64_t{number}); }

/// Asks for huge pages for memory of any allocator, before its first write. It is advice: a failure changes nothing.
void advise_huge_pages(void* memory, std::size_t bytes) noexcept;

/// Makes room for `count` elements. A large room asks for huge pages.
template <class T>
void reserve_elements(std::vector<T>& elements, std::size_t count) {
  if (count <= elements.capacity()) return;
  elements.reserve(count);
  if constexpr (!std::is_same_v<T, bool>) advise_huge_pages(elements.data(), count * sizeof(T));
}

/// The product of `extents`. Throws std::bad_alloc when an extent is a negative number converted to unsigned, or when
/// that many elements of `element_size` bytes cannot be addressed.
std::size_t checked_size(const Shape& extents, std::size_t element_size);

/// A container of `extents`, its elements not initialised. Throws std::bad_alloc as `checked_size` does, and without
/// memory.
template <class T>
std::shared_ptr<xarray_of<T>> make_container(const Shape& extents) {
  checked_size(extents, sizeof(T));
  return std::make_shared<xarray_of<T>>(extents);
}

/// The same with zeros as elements. Many zeros cost nothing until they are touched; a few are written, which takes less
/// time than the C library's way to zeros.
template <class T>
std::shared_ptr<xarray_of<T>> make_zeros(const Shape& extents) {
  using Storage = typename xarray_of<T>::storage_type;
  constexpr std::size_t few = (std::size_t{128} << 10) / sizeof(T);
  const std::size_t count = checked_size(extents, sizeof(T));
  if (count < few) {
    auto made = std::make_shared<xarray_of<T>>(extents);
    std::fill_n(made->storage().data(), count, T{});
    return made;
  }
  auto made = std::make_shared<xarray_of<T>>();
  made->storage() = Storage(count, typename Storage::allocator_type(Contents::zeros));
  made->resize(extents);
  return made;
}

/// An array with a container of zeros.
template <class Kind>
std::unique_ptr<ArrayOf<Kind>> make_array_of_zeros(const Shape& extents) {
  auto array = std::make_unique<ArrayOf<Kind>>();
  array->array = make_zeros<typename Kind::element>(extents);
  return array;
}

/// An array with such a container.
template <class Kind>
std::unique_ptr<ArrayOf<Kind>> make_array(const Shape& extents) {
  auto array = std::make_unique<ArrayOf<Kind>>();
  array->array = make_container<typename Kind::element>(extents);
  return array;
}

/// A one-dimensional array.
template <class Kind>
std::unique_ptr<ArrayOf<Kind>> make_vector(std::size_t count) {
  Shape extents;
  extents.push_back(count);
  return make_array<Kind>(extents);
}

/// A zero-dimensional array.
template <class Kind>
std::unique_ptr<ArrayOf<Kind>> make_scalar(typename Kind::element value) {
  auto made = make_array<Kind>({});
  made->array->storage()[0] = value;
  return made;
}

/// True when the product of `extents`, without wrapping, is `count`.
inline bool extents_cover(const Shape& extents, std::size_t count) noexcept {
  std::size_t product = 1;
  bool wraps = false, is_empty = false;
  for (const std::size_t extent : extents) {
    is_empty |= extent == 0;
    wraps |= __builtin_mul_overflow(product, extent, &product);
  }
  return is_empty ? count == 0 : !wraps && product == count;
}

/// Whether two shapes are the same. They are short: the C library's comparison of memory takes longer than the loop.
inline bool same_shape(const Shape& left, const Shape& right) noexcept {
  if (left.size() != right.size()) return false;
  for (std::size_t axis = 0; axis < left.size(); ++axis)
    if (left[axis] != right[axis]) return false;
  return true;
}

/// Throws std::bad_alloc when the product of the extents is not the number of stored elements, which `reshape` can
/// cause. Required before any walk along the extents.
template <class T>
void check_extents(const xarray_of<T>& array) {
  if (!extents_cover(array.shape(), array.storage().size())) throw std::bad_alloc();
}

}  // namespace arrayfold
