// array/scratch.hpp: temporary buffers

#pragma once

#include <cstddef>
#include <memory>
#include <type_traits>

#include "array/aligned_storage.hpp"

namespace arrayfold {

/// A temporary buffer for `count` elements, not initialised, from the allocator of array storage. Throws
/// std::bad_alloc.
template <class T>
class Scratch {
 public:
  explicit Scratch(std::size_t count)
      : memory_(static_cast<T*>(allocate_storage(count, sizeof(T), Contents::anything))) {}

  T* data() const { return memory_.get(); }
  T& operator[](std::size_t i) const { return memory_.get()[i]; }

 private:
  static_assert(std::is_trivial_v<T>, "elements are neither constructed nor destroyed");
  struct Release {
    void operator()(T* memory) const noexcept { release_storage(memory); }
  };

  std::unique_ptr<T, Release> memory_;
};

}  // namespace arrayfold
