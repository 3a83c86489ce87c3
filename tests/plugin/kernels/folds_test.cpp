// kernels/folds_test.cpp: sums, products and counts, on every target, against plain loops, rounding by rounding

#include "kernels/folds.hpp"

#include <cmath>
#include <functional>
#include <limits>

#include "blocks.hpp"
#include "memory.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

/// Elements whose sums and products stay finite and round at almost every step; integers wrap.
template <class T>
std::vector<T> rounding_values(std::size_t count, unsigned seed) {
  auto values = mixed_values<T>(count, seed);
  if constexpr (std::is_floating_point_v<T>)
    for (T& value : values) value = std::isfinite(value) && std::abs(value) < 2000 ? value / 700 : T{1.25};
  return values;
}

/// The rules hold for numbers that round and for those that arithmetic treats in a special way.
template <class T>
std::vector<std::vector<T>> fillings(std::size_t count) {
  return {rounding_values<T>(count, 1), mixed_values<T>(count, 2)};
}

// ---- Rows

template <class R, class T, class Step>
std::vector<R> folded_rows(const std::vector<T>& x, std::size_t rows, std::size_t length, R start, Step step) {
  std::vector<R> folded(rows, start);
  for (std::size_t row = 0; row < rows; ++row)
    for (std::size_t i = 0; i < length; ++i) folded[row] = step(folded[row], x[row * length + i]);
  return folded;
}

template <class T>
void expect_rows(const std::vector<T>& x, std::size_t rows, std::size_t length) {
  SCOPED_TRACE(testing::Message() << rows << " rows of " << length);
  Memory<T> elements(x, 1);
  const auto expect = [&](auto fold, auto start, auto step) {
    using R = decltype(start);
    Memory<R> folded(rows, 1);
    fold(elements.data(), rows, length, folded.data());
    EXPECT_TRUE(same_bits(folded.values(), folded_rows(x, rows, length, start, step)));
    EXPECT_TRUE(folded.is_intact());
  };
  const Folds<T>& all = folds<T>();
  expect(all.sum, T{0}, [](T sum, T element) { return static_cast<T>(sum + element); });
  expect(all.product, T{1}, [](T product, T element) { return static_cast<T>(product * element); });
  expect(all.sum_of_squares, 0.0,
         [](double sum, T element) { return sum + static_cast<double>(element) * static_cast<double>(element); });
  const double from = 0.3;
  const auto squared_distances = [&](const T* first, std::size_t count, std::size_t each, double* sums) {
    all.sum_of_squared_distances(first, count, each, from, sums);
  };
  expect(squared_distances, 0.0, [from](double sum, T element) {
    const double distance = static_cast<double>(element) - from;
    return sum + distance * distance;
  });
  if (rows != 1) return;
  const auto add = [](T folded, T element) { return static_cast<T>(folded + element); };
  const T sum = folded_rows(x, 1, length, T{0}, add)[0];
  const double mean = static_cast<double>(sum) / static_cast<double>(length);
  const auto deviations = folded_rows(x, 1, length, 0.0, [mean](double folded, T element) {
    const double deviation = static_cast<double>(element) - mean;
    return folded + deviation * deviation;
  });
  EXPECT_TRUE(same_bits({all.sum_of_squared_deviations(elements.data(), length)}, deviations));
}

template <class T>
void expect_rows_of_every_length() {
  for (const std::size_t length : lengths())
    for (const auto& x : fillings<T>(length)) expect_rows(x, 1, length);
  for (std::size_t rows = 0; rows <= 20; ++rows)
    for (const std::size_t length : {0u, 1u, 2u, 3u, 7u, 16u, 33u})
      for (const auto& x : fillings<T>(rows * length)) expect_rows(x, rows, length);
}

TEST(RowFolds, OfEveryLength_RoundFromLeftToRight) {
  on_each_target([] {
    expect_rows_of_every_length<double>();
    expect_rows_of_every_length<float>();
    expect_rows_of_every_length<std::int32_t>();
    expect_rows_of_every_length<std::int64_t>();
  });
}

TEST(RowFolds, OfNumbersThatCancel_SeeTheOrder) {
  on_each_target([] {
    std::vector<double> x = {1e16, 1, -1e16, 1};
    double sum = 0;
    folds<double>().sum(x.data(), 1, 4, &sum);
    EXPECT_EQ(sum, 1.0);
    EXPECT_EQ(folds<double>().sum_by_blocks(x.data(), 4, 1), 2.0);
  });
}

// ---- All elements

template <class T>
void expect_sums_by_blocks() {
  for (const std::size_t length : lengths())
    for (const auto& x : fillings<T>(length))
      for (const std::size_t stride : {std::size_t{1}, std::size_t{0}}) {
        Memory<T> elements(x, 3);
        using R = BlockSum<T>;
        const R expected = scanned(
            x, stride, R{0}, [](T a, T b) { return static_cast<T>(a + b); },
            [](R a, R b) { return static_cast<R>(a + b); });
        const R sum = folds<T>().sum_by_blocks(elements.data(), length, stride);
        EXPECT_TRUE(same_bits(std::vector<R>{sum}, {expected})) << length << " elements, stride " << stride;
      }
}

TEST(BlockSums, OfEveryLength_RoundHalvesFirst) {
  on_each_target([] {
    expect_sums_by_blocks<double>();
    expect_sums_by_blocks<float>();
    expect_sums_by_blocks<std::int32_t>();
    expect_sums_by_blocks<std::int64_t>();
  });
}

TEST(BlockSums, Required_OfFloats_AreKeptIn64BitsAndTheirBlocksIn32) {
  on_each_target([] {
    std::vector<float> x(16, 0);
    x[0] = 0x1p24f, x[1] = 1, x[8] = 1;
    EXPECT_EQ(folds<float>().sum_by_blocks(x.data(), x.size(), 1), 0x1p24 + 1);
  });
}

template <class T>
void expect_trapezoids() {
  for (const std::size_t length : lengths())
    for (const auto& x : fillings<T>(length)) {
      Memory<T> elements(x, 1);
      double expected = 0.0;
      for (std::size_t i = 1; i < length; ++i) expected += static_cast<double>(static_cast<T>(x[i] + x[i - 1])) * 0.5;
      const double integral = folds<T>().trapezoids(elements.data(), length);
      EXPECT_TRUE(same_bits(std::vector<double>{integral}, {expected})) << length;
    }
}

TEST(Trapezoids, OfEveryLength_RoundFromLeftToRight) {
  on_each_target([] {
    expect_trapezoids<double>();
    expect_trapezoids<float>();
    expect_trapezoids<std::int32_t>();
    expect_trapezoids<std::int64_t>();
  });
}

template <class T>
void expect_counts_of_zeros() {
  for (const std::size_t length : lengths())
    for (std::size_t offset = 0; offset < 17; offset += 3) {
      auto x = mixed_values<T>(length, 3);
      for (std::size_t i = 0; i < length; i += 3) x[i] = T{0};
      Memory<T> elements(x, offset);
      std::size_t expected = 0;
      for (const T element : x) expected += element == 0;
      EXPECT_EQ(folds<T>().count_of_zeros(elements.data(), length), expected) << length << " elements at " << offset;
    }
}

TEST(CountsOfZeros, OfEveryLengthAtEveryAlignment_AreThoseOfALoop) {
  on_each_target([] {
    expect_counts_of_zeros<double>();
    expect_counts_of_zeros<float>();
    expect_counts_of_zeros<std::int32_t>();
    expect_counts_of_zeros<std::int64_t>();
  });
}

template <class T>
void expect_finite() {
  using Limits = std::numeric_limits<T>;
  for (const std::size_t length : lengths()) {
    std::vector<T> x(length, Limits::max());
    Memory<T> elements(x, 1);
    EXPECT_TRUE(folds<T>().are_finite(elements.data(), length));
    for (std::size_t at = 0; at<length; at += length> 70 ? 61 : 1)
      for (const T other : {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()}) {
        elements.data()[at] = other;
        EXPECT_FALSE(folds<T>().are_finite(elements.data(), length)) << other << " at " << at << " of " << length;
        elements.data()[at] = Limits::lowest();
        EXPECT_TRUE(folds<T>().are_finite(elements.data(), length)) << at << " of " << length;
      }
  }
}

TEST(AllFinite, SeesEachElement) {
  on_each_target([] {
    expect_finite<double>();
    expect_finite<float>();
  });
}

}  // namespace
}  // namespace arrayfold::test
