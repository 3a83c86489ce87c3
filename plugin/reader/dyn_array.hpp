// reader/dyn_array.hpp: a growable array in the host's memory

#pragma once

#include <cstring>
#include <new>
#include <type_traits>

#include "host/host_operations.hpp"

namespace arrayfold {

/// Plain elements in memory of the host, whose capacity doubles when it is exceeded. Throws std::bad_alloc without
/// memory.
template <class T>
class DynArray {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  explicit DynArray(std::int64_t byte_capacity, bool clear_new_memory = false)
      : byte_capacity_(byte_capacity),
        data_(static_cast<T*>(HVM_Malloc(byte_capacity))),
        clear_new_memory_(clear_new_memory) {
    if (data_ == nullptr) throw std::bad_alloc();
  }
  virtual ~DynArray() { HVM_Free(data_); }
  /// Called after the memory has grown, for derived classes that keep a parallel structure.
  virtual void grown(std::int64_t /*old_bytes*/, std::int64_t /*new_bytes*/) {}

  DynArray(const DynArray&) = delete;
  DynArray& operator=(const DynArray&) = delete;

  std::int64_t count() const { return count_; }
  std::int64_t byte_capacity() const { return byte_capacity_; }
  T& operator[](std::int64_t index) { return data_[index]; }
  T& back() { return data_[count_ - 1]; }

  void add(T element) {
    if (count_ + 1 > byte_capacity_ / static_cast<std::int64_t>(sizeof(T))) grow();
    data_[count_++] = element;
  }
  /// Removes the element at `index`; the elements after it move down by one.
  void remove(std::int64_t index) {
    std::memmove(data_ + index, data_ + index + 1, static_cast<std::size_t>(count_ - index - 1) * sizeof(T));
    --count_;
  }

 private:
  void grow() {
    const std::int64_t old_bytes = byte_capacity_;
    void* larger = HVM_Realloc2(data_, 2 * old_bytes, old_bytes);
    if (larger == nullptr) throw std::bad_alloc();
    data_ = static_cast<T*>(larger);
    byte_capacity_ = 2 * old_bytes;
    if (clear_new_memory_)
      std::memset(static_cast<std::byte*>(larger) + old_bytes, 0, static_cast<std::size_t>(old_bytes));
    grown(old_bytes, byte_capacity_);
  }

  std::int64_t byte_capacity_;
  std::int64_t count_ = 0;
  T* data_;
  bool clear_new_memory_;
};

}  // namespace arrayfold
