// kernels/memory.hpp: memory that kernels read and write in tests

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#ifdef ARRAYFOLD_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#endif

namespace arrayfold::test {

/// The lengths at which loops go wrong: all short ones, and those around blocks.
inline std::vector<std::size_t> lengths() {
  std::vector<std::size_t> all;
  for (std::size_t n = 0; n <= 70; ++n) all.push_back(n);
  for (const std::size_t block : {128u, 256u, 512u, 1024u, 2048u, 4096u})
    for (const std::size_t n : {block - 1, block, block + 1}) all.push_back(n);
  return all;
}

/// Elements at any alignment, with bytes of a pattern before and behind them that have to stay.
template <class T>
class Memory {
 public:
  /// `offset` elements beyond the alignment of registers.
  explicit Memory(std::size_t count, std::size_t offset = 0)
      : count_(count), first_(guard + offset), bytes_((first_ + count + guard) * sizeof(T), pattern) {
    poison(true);
  }
  ~Memory() { poison(false); }
  Memory(const Memory&) = delete;
  Memory& operator=(const Memory&) = delete;
  explicit Memory(const std::vector<T>& values, std::size_t offset = 0) : Memory(values.size(), offset) {
    if (!values.empty()) std::memcpy(data(), values.data(), values.size() * sizeof(T));
  }

  T* data() { return static_cast<T*>(static_cast<void*>(bytes_.data())) + first_; }
  std::vector<T> values() {
    std::vector<T> copy(count_);
    for (std::size_t i = 0; i < count_; ++i) copy[i] = data()[i];
    return copy;
  }
  /// True when nothing around the elements was written.
  bool is_intact() const {
    poison(false);
    bool intact = true;
    for (std::size_t i = 0; i < bytes_.size(); ++i)
      intact &= (i >= begin() && i < end()) || bytes_.data()[i] == pattern;
    poison(true);
    return intact;
  }

 private:
  std::size_t begin() const { return first_ * sizeof(T); }
  std::size_t end() const { return (first_ + count_) * sizeof(T); }

  /// Lets the address sanitizer see what is read or written around the elements.
  void poison(bool around) const {
#ifdef ARRAYFOLD_ADDRESS_SANITIZER
    __asan_unpoison_memory_region(bytes_.data(), bytes_.size());
    if (!around) return;
    __asan_poison_memory_region(bytes_.data(), begin());
    __asan_poison_memory_region(bytes_.data() + end(), bytes_.size() - end());
#else
    (void)around;
#endif
  }

  /// Bytes that begin with a line of the cache, which is a register at its widest.
  class Bytes {
   public:
    Bytes(std::size_t count, unsigned char value)
        : size_(count), bytes_(static_cast<unsigned char*>(::operator new(count, alignment))) {
      std::memset(data(), value, count);
    }

    unsigned char* data() const { return bytes_.get(); }
    std::size_t size() const { return size_; }

   private:
    static constexpr std::align_val_t alignment{64};
    struct Free {
      void operator()(unsigned char* bytes) const { ::operator delete(bytes, alignment); }
    };

    std::size_t size_;
    std::unique_ptr<unsigned char, Free> bytes_;
  };

  static constexpr std::size_t guard = 64;
  static constexpr unsigned char pattern = 0xA5;

  std::size_t count_;
  std::size_t first_;
  Bytes bytes_;
};

/// Elements of all magnitudes, among them those that arithmetic treats in a special way. Equal neighbours are frequent.
template <class T>
std::vector<T> mixed_values(std::size_t count, unsigned seed) {
  using Limits = std::numeric_limits<T>;
  std::mt19937_64 engine(seed);
  std::vector<T> special = {T{0}, T{1}, static_cast<T>(-1), T{2}, Limits::max(), Limits::lowest()};
  if constexpr (std::is_floating_point_v<T>)
    special.insert(special.end(), {-T{0}, Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),
                                   Limits::denorm_min(), Limits::min(), T{0.5}, T{-1.5}});
  std::vector<T> values(count);
  for (T& value : values) {
    const auto bits = engine();
    if (bits % 4 == 0)
      value = special[(bits >> 8) % special.size()];
    else if constexpr (std::is_floating_point_v<T>)
      value = static_cast<T>(std::uniform_real_distribution<double>(-1000.0, 1000.0)(engine));
    else
      value =
          bits % 4 == 1 ? static_cast<T>(bits >> 8) : static_cast<T>(static_cast<std::int64_t>(bits >> 8) % 100 - 50);
  }
  return values;
}

/// Equal bit for bit; any NaN is as good as any other, since its sign and payload are the processor's.
template <class T>
testing::AssertionResult same_bits(const std::vector<T>& actual, const std::vector<T>& expected) {
  if (actual.size() != expected.size()) return testing::AssertionFailure() << "sizes differ";
  for (std::size_t i = 0; i < actual.size(); ++i) {
    const T a = actual[i], b = expected[i];
    if (a != a && b != b) continue;
    if (std::memcmp(&a, &b, sizeof(T)) != 0)
      return testing::AssertionFailure() << "element " << i << " of " << actual.size() << " is " << a << ", not " << b;
  }
  return testing::AssertionSuccess();
}

}  // namespace arrayfold::test
