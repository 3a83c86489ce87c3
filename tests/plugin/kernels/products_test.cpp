// kernels/products_test.cpp: products of matrices and vectors, on every target, against their formulas

#include "kernels/products.hpp"

#include "memory.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

/// Counts around each number of rows that share a register, and around each width.
const std::vector<std::size_t> row_counts = {1, 3, 4, 5, 9};
const std::vector<std::size_t> inner_counts = {0, 1, 5};
const std::vector<std::size_t> column_counts = {1, 2, 3, 4, 8, 15, 16, 31, 33, 70};

template <class B, class R>
void expect_sum_of_products(std::size_t rows, std::size_t inner, std::size_t columns) {
  SCOPED_TRACE(testing::Message() << rows << " by " << inner << " times " << columns);
  const std::size_t out_step = columns + 3;
  const auto factors = mixed_values<R>(rows * inner, 1);
  const auto elements = mixed_values<B>(inner * columns, 2);
  const auto before = mixed_values<R>(rows * out_step, 3);
  auto expected = before;
  for (std::size_t i = 0; i < rows; ++i)
    for (std::size_t j = 0; j < columns; ++j)
      for (std::size_t k = 0; k < inner; ++k)
        expected[i * out_step + j] += factors[i * inner + k] * static_cast<R>(elements[k * columns + j]);
  Memory<R> a(factors, 1), out(before, 2);
  Memory<B> b(elements, 3);
  products<B, R>().add(a.data(), rows, inner, b.data(), columns, out.data(), out_step);
  EXPECT_TRUE(same_bits(out.values(), expected));
  EXPECT_TRUE(out.is_intact());
}

template <class B, class R>
void expect_spread(std::size_t count, std::size_t length) {
  SCOPED_TRACE(testing::Message() << count << " times " << length);
  const auto factors = mixed_values<R>(count, 1);
  const auto row = mixed_values<B>(length, 2);
  std::vector<R> expected;
  for (const R factor : factors)
    for (const B x : row) expected.push_back(factor * static_cast<R>(x));
  Memory<R> a(factors, 1), out(count * length, 2);
  Memory<B> b(row, 3);
  products<B, R>().spread(a.data(), count, b.data(), length, out.data());
  EXPECT_TRUE(same_bits(out.values(), expected));
  EXPECT_TRUE(out.is_intact());
}

template <class B, class R>
void expect_products() {
  for (const std::size_t columns : column_counts)
    for (const std::size_t rows : row_counts) {
      for (const std::size_t inner : inner_counts) expect_sum_of_products<B, R>(rows, inner, columns);
      expect_spread<B, R>(rows, columns);
    }
  for (const std::size_t length : lengths()) expect_spread<B, R>(1, length);
}

TEST(Products, OfDoubles_AddUpInTheOrderOfTheInnerIndex) {
  on_each_target([] {
    expect_products<double, double>();
    expect_products<float, double>();
    expect_products<std::int32_t, double>();
    expect_products<std::int64_t, double>();
  });
}

TEST(Products, OfFloats_AddUpInTheOrderOfTheInnerIndex) {
  on_each_target([] {
    expect_products<float, float>();
    expect_products<std::int32_t, float>();
    expect_products<std::int64_t, float>();
  });
}

TEST(Products, OfIntegers_Wrap) {
  on_each_target([] {
    expect_products<std::int32_t, std::int32_t>();
    expect_products<std::int32_t, std::int64_t>();
    expect_products<std::int64_t, std::int64_t>();
  });
}

template <class T>
void expect_integer_products() {
  for (const std::size_t length : lengths()) {
    SCOPED_TRACE(length);
    const auto left = mixed_values<T>(length, 1);
    const auto right = mixed_values<T>(length, 2);
    T expected = 0;
    for (std::size_t i = 0; i < length; ++i) expected += left[i] * right[i];
    Memory<T> a(left, 1), b(right, 2);
    EXPECT_EQ((products<T, T>().inner(a.data(), b.data(), length)), expected);
  }
}

TEST(IntegerProduct, OfEveryLength_IsTheSumOfProducts) {
  on_each_target([] {
    expect_integer_products<std::int32_t>();
    expect_integer_products<std::int64_t>();
  });
}

}  // namespace
}  // namespace arrayfold::test
