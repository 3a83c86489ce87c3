// kernels/sort_keys_test.cpp: elements as integers that sort like them, on every target

#include "kernels/sort_keys.hpp"

#include <algorithm>
#include <limits>

#include "memory.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

constexpr std::uint64_t sign_bit = std::uint64_t{1} << 63;

std::uint64_t expected_key(std::int32_t x) { return static_cast<std::uint32_t>(x) ^ 0x80000000u; }
std::uint64_t expected_key(std::int64_t x) { return static_cast<std::uint64_t>(x) ^ sign_bit; }
std::uint64_t expected_key(double x) {
  if (x == 0) x = 0;
  std::uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  return (bits & sign_bit) != 0 ? ~bits : bits | sign_bit;
}

/// Mixed values without NaN, which has no key.
template <class T>
std::vector<T> values_with_keys(std::size_t count, unsigned seed) {
  auto values = mixed_values<T>(count, seed);
  for (T& x : values)
    if (x != x) x = T{7};
  return values;
}

TEST(SortKeys, NanAndNegativeZero_AreFoundAtEveryPlace) {
  on_each_target([] {
    for (const std::size_t length : lengths()) {
      SCOPED_TRACE(length);
      Memory<double> row(std::vector<double>(length, 0.0), 1);
      EXPECT_FALSE(has_nan(row.data(), length));
      EXPECT_TRUE(in_total_order(row.data(), length));
      for (const std::size_t at : {std::size_t{0}, length / 2, length - 1}) {
        if (length == 0) break;
        row.data()[at] = -0.0;
        EXPECT_FALSE(has_nan(row.data(), length)) << at;
        EXPECT_FALSE(in_total_order(row.data(), length)) << at;
        row.data()[at] = std::numeric_limits<double>::quiet_NaN();
        EXPECT_TRUE(has_nan(row.data(), length)) << at;
        EXPECT_FALSE(in_total_order(row.data(), length)) << at;
        row.data()[at] = -std::numeric_limits<double>::infinity();
        EXPECT_TRUE(in_total_order(row.data(), length)) << at;
      }
    }
  });
}

TEST(SortKeys, TurnedNegatives_AreOrderedAsIntegersAndTurnBack) {
  on_each_target([] {
    for (const std::size_t length : lengths()) {
      SCOPED_TRACE(length);
      const auto values = values_with_keys<double>(length, 1);
      Memory<double> row(values, 1);
      turn_negatives(row.data(), length);
      std::vector<std::int64_t> turned(length), expected(length);
      if (length > 0) std::memcpy(turned.data(), row.data(), length * sizeof(double));
      for (std::size_t i = 0; i < length; ++i) {
        std::memcpy(&expected[i], &values[i], sizeof(double));
        if (expected[i] < 0) expected[i] ^= std::numeric_limits<std::int64_t>::max();
      }
      EXPECT_TRUE(same_bits(turned, expected));
      turn_negatives(row.data(), length);
      EXPECT_TRUE(same_bits(row.values(), values));
      EXPECT_TRUE(row.is_intact());
    }
  });
}

/// The range of the keys, and packed keys under several widths.
template <class T>
void expect_keys() {
  for (const std::size_t length : lengths()) {
    if (length == 0) continue;
    SCOPED_TRACE(length);
    const auto values = values_with_keys<T>(length, static_cast<unsigned>(length));
    std::vector<std::uint64_t> keys;
    for (const T x : values) keys.push_back(expected_key(x));
    Memory<T> row(values, 1);
    const auto [low, high] = sort_keys<T>().range(row.data(), length);
    EXPECT_EQ(low, *std::min_element(keys.begin(), keys.end()));
    EXPECT_EQ(high, *std::max_element(keys.begin(), keys.end()));

    for (const int left_out : {0, 1, 13, 40}) {
      const KeyPacking packing{low, left_out, 13};
      std::vector<std::uint64_t> expected(length);
      std::vector<std::int32_t> expected_positions(length);
      for (std::size_t i = 0; i < length; ++i) {
        expected[i] = ((keys[i] - low) >> left_out << 13) | i;
        expected_positions[i] = static_cast<std::int32_t>(i);
      }
      Memory<std::uint64_t> numbers(length, 1);
      Memory<std::int32_t> positions(length, 1);
      sort_keys<T>().pack(row.data(), length, packing, numbers.data());
      EXPECT_TRUE(same_bits(numbers.values(), expected));
      unpack_positions(numbers.data(), length, packing, positions.data());
      EXPECT_TRUE(same_bits(positions.values(), expected_positions));
      EXPECT_TRUE(numbers.is_intact() && positions.is_intact());
    }

    std::vector<hwy::uint128_t> whole(length);
    sort_keys<T>().pack_whole(row.data(), length, whole.data());
    for (std::size_t i = 0; i < length; ++i) {
      EXPECT_EQ(whole[i].hi, keys[i]);
      EXPECT_EQ(whole[i].lo, i);
    }
  }
}

TEST(SortKeys, OfEveryLength_AreThoseOfTheirFormula) {
  on_each_target([] {
    expect_keys<double>();
    expect_keys<std::int32_t>();
    expect_keys<std::int64_t>();
  });
}

TEST(SortKeys, OfZerosOfBothSigns_AreEqual) {
  on_each_target([] {
    const std::vector<double> zeros = {-0.0, 0.0, -0.0};
    const auto [low, high] = sort_keys<double>().range(zeros.data(), zeros.size());
    EXPECT_EQ(low, sign_bit);
    EXPECT_EQ(high, sign_bit);
  });
}

TEST(SortKeys, PositionsBeyond32Bits_AreCutToTheirLowBits) {
  on_each_target([] {
    const KeyPacking packing{0, 0, 40};
    const std::uint64_t number = std::uint64_t{3} << 40 | std::uint64_t{5} << 32 | 7;
    std::int32_t position = 0;
    unpack_positions(&number, 1, packing, &position);
    EXPECT_EQ(position, 7);
  });
}

}  // namespace
}  // namespace arrayfold::test
