// kernels/memory.hpp: memory that kernels read and write in tests

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

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
      : count_(count), first_(guard + offset), bytes_((first_ + count + guard) * sizeof(T), pattern) {}
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
    for (std::size_t i = 0; i < bytes_.size(); ++i)
      if ((i < first_ * sizeof(T) || i >= (first_ + count_) * sizeof(T)) && bytes_[i] != pattern) return false;
    return true;
  }

 private:
  static constexpr std::size_t guard = 64;
  static constexpr unsigned char pattern = 0xA5;

  std::size_t count_;
  std::size_t first_;
  std::vector<unsigned char> bytes_;
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
