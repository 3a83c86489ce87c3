// linalg/products_test.cpp: xdot, xvdot, xouter and xkron: kinds, shapes, and what is chosen where nothing fits

#include <tuple>

#include "algebra.hpp"

namespace arrayfold::test {
namespace {

class Products : public AlgebraTest {
 protected:
  /// The one element of a result.
  Number element(Kind kind, const std::string& name, const std::vector<Value>& args) const {
    return array(kind, name, args)[0];
  }
};

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t lowest64 = std::numeric_limits<std::int64_t>::min();

// ---- The sixteen pairs, each function on small whole numbers

class PairsOfKinds : public OverPairs<AlgebraTest> {
 protected:
  /// 1, 2, 3, ... of the first kind, and of the second.
  Value a(const Extents& extents) { return made(first(), extents, counted(size_of(extents), 1)); }
  Value b(const Extents& extents) { return made(second(), extents, counted(size_of(extents), 1)); }
  static Numbers counted(std::size_t count, int step) {
    Numbers numbers;
    for (std::size_t i = 1; i <= count; ++i) numbers.push_back(step * static_cast<int>(i));
    return numbers;
  }

  /// The result of two operands, of the kind of the first.
  TestArray product(const char* name, const Value& left, const Value& right) const {
    return array(first(), name, {left, right});
  }
  Number inner(const Value& left, const Value& right) const { return scalar(first(), "xvdot", {left, right}); }
  static TestArray expected(const Extents& extents, const Numbers& numbers) {
    return TestArray(result_kind(first()), extents, numbers);
  }
};
INSTANTIATE_TEST_SUITE_P(Kinds, PairsOfKinds, ::testing::ValuesIn(pairs_of(numeric_kinds, numeric_kinds)), PairName());

TEST_P(PairsOfKinds, ResultsHaveTheKindOfTheFirst) {
  const Value row = a({3}), other = b({3});
  const Value matrix = a({2, 3}), tall = b({3, 2});
  EXPECT_EQ(product("xdot", row, other), expected({1}, {14}));
  EXPECT_EQ(product("xdot", matrix, other), expected({2}, {14, 32}));
  EXPECT_EQ(product("xdot", row, tall), expected({2}, {22, 28}));
  EXPECT_EQ(product("xdot", matrix, tall), expected({2, 2}, {22, 28, 49, 64}));
  EXPECT_EQ(inner(row, other), 14);
  EXPECT_EQ(product("xouter", row, other), expected({3, 3}, {1, 2, 3, 2, 4, 6, 3, 6, 9}));
  EXPECT_EQ(product("xkron", a({1, 2}), b({2, 2})), expected({2, 4}, {1, 2, 2, 4, 3, 4, 6, 8}));
}

TEST_P(PairsOfKinds, XdotOfMoreThanTwoDimensions_SumsTheLastAndTheLastButOne) {
  const Value deep = a({2, 1, 2}), other = b({2, 2, 2});
  EXPECT_EQ(product("xdot", deep, other), expected({2, 1, 2, 2}, {7, 10, 19, 22, 15, 22, 43, 50}));
  EXPECT_EQ(product("xdot", deep, b({2})), expected({2, 1}, {5, 11}));
  EXPECT_EQ(product("xdot", a({2}), other), expected({2, 2}, {7, 10, 19, 22}));
  EXPECT_EQ(product("xdot", deep, b({2, 1})), expected({2, 1, 1}, {5, 11}));
}

TEST_P(PairsOfKinds, ZeroDimensionalOperands_MultiplyTheOther) {
  const Value two = made(first(), {}, {2}), three = made(second(), {}, {3});
  for (const Extents& extents : {Extents{}, {0}, {3}, {2, 2}, {2, 0, 2}, {1, 1, 1, 1, 1, 2}}) {
    EXPECT_EQ(product("xdot", two, b(extents)), expected(extents, counted(size_of(extents), 2)));
    EXPECT_EQ(product("xdot", a(extents), three), expected(extents, counted(size_of(extents), 3)));
  }
  EXPECT_EQ(inner(two, three), 6);
  EXPECT_EQ(inner(two, b({3})), 2);
  EXPECT_EQ(product("xouter", two, three), expected({1, 1}, {6}));
  EXPECT_EQ(product("xouter", two, b({3})), expected({1, 3}, {2, 4, 6}));
  EXPECT_EQ(product("xouter", a({3}), three), expected({3, 1}, {3, 6, 9}));
  EXPECT_EQ(product("xkron", two, three), expected({1, 1}, {6}));
  EXPECT_EQ(product("xkron", two, b({3})), expected({1, 3}, {2, 4, 6}));
  EXPECT_EQ(product("xkron", a({2, 1}), three), expected({2, 1}, {3, 6}));
}

TEST_P(PairsOfKinds, WithoutElements_SumsAreZero) {
  const auto zeros = [](const Extents& extents) { return expected(extents, Numbers(size_of(extents), 0)); };
  const std::tuple<Extents, Extents, Extents> dots[] = {{{0}, {0}, {1}},
                                                        {{2, 0}, {0}, {2}},
                                                        {{0}, {0, 3}, {3}},
                                                        {{2, 0}, {0, 3}, {2, 3}},
                                                        {{0, 2}, {2, 3}, {0, 3}},
                                                        {{2, 3}, {3, 0}, {2, 0}},
                                                        {{0, 2, 3}, {3}, {0, 2}},
                                                        {{2, 2, 3}, {3, 0}, {2, 2, 0}},
                                                        {{2, 2, 0}, {0}, {2, 2}},
                                                        {{0}, {2, 0, 3}, {2, 3}},
                                                        {{3}, {0, 3, 2}, {0, 2}},
                                                        {{0, 0}, {0, 0}, {0, 0}},
                                                        {{0, 3}, {3}, {0}},
                                                        {{3}, {3, 0}, {0}},
                                                        {{1, 0}, {0, 1}, {1, 1}},
                                                        {{1, 0}, {0}, {1}},
                                                        {{2, 0}, {4, 0, 3}, {2, 4, 3}}};
  for (const auto& [left, right, result] : dots) EXPECT_EQ(product("xdot", a(left), b(right)), zeros(result));
  const std::tuple<Extents, Extents, Extents> outers[] = {
      {{0}, {0}, {0, 0}},    {{3}, {0}, {3, 0}}, {{0}, {3}, {0, 3}}, {{2, 0}, {3}, {2, 3}},
      {{3}, {2, 0}, {3, 2}}, {{}, {0}, {1, 0}},  {{0}, {}, {0, 1}},  {{2, 0}, {2, 0}, {2, 2}}};
  for (const auto& [left, right, result] : outers) EXPECT_EQ(product("xouter", a(left), b(right)), zeros(result));
  const std::tuple<Extents, Extents, Extents> krons[] = {
      {{0}, {0}, {1, 0}},          {{3}, {0}, {1, 0}},         {{0}, {3}, {1, 0}}, {{2, 0}, {3, 1}, {6, 0}},
      {{0, 2}, {1, 3}, {0, 6}},    {{2, 2}, {0, 1}, {0, 2}},   {{}, {0}, {1, 0}},  {{0, 0}, {}, {0, 0}},
      {{2, 2, 0}, {1, 1}, {2, 2}}, {{1, 2}, {2, 3, 0}, {2, 6}}};
  for (const auto& [left, right, result] : krons) EXPECT_EQ(product("xkron", a(left), b(right)), zeros(result));
}

TEST_P(PairsOfKinds, XvdotThatEndsBefore_Fails) {
  const std::pair<Extents, Extents> short_ones[] = {{{3}, {2}},    {{3}, {0}},    {{3}, {}},     {{2}, {1}},
                                                    {{3}, {2, 2}}, {{2, 0}, {3}}, {{1}, {0}},    {{1, 0}, {1}},
                                                    {{}, {0}},     {{1}, {3, 0}}, {{3}, {1, 5}}, {{2, 0}, {2, 0}}};
  for (const auto& [left, right] : short_ones) {
    // A single row of five has a first stride of its own: 0, taken as 1.
    if (right == Extents{1, 5}) {
      EXPECT_EQ(inner(a(left), b(right)), 14);
      continue;
    }
    expect_no_result(call("xvdot", {a(left), b(right)}), 0, "xvdot");
  }
}

TEST_P(PairsOfKinds, Required_TheFirstOperandAloneDecidesTheLengthOfXvdot) {
  const auto of = [&](const Extents& left, const Extents& right) { return inner(a(left), b(right)); };
  EXPECT_EQ(of({2}, {5}), 5);
  EXPECT_EQ(of({1}, {5}), 1);
  EXPECT_EQ(of({0}, {5}), 0);
  EXPECT_EQ(of({0}, {0}), 0);
  // The first dimension of either, by its stride: 1 and 3 times 1 and 2; 1 and 2 times 1 and 4.
  EXPECT_EQ(of({2, 2}, {4}), 7);
  EXPECT_EQ(of({2}, {2, 3}), 9);
  EXPECT_EQ(of({2, 2}, {2, 3}), 13);
  EXPECT_EQ(of({2, 1, 2}, {3, 1}), 7);
}

TEST_P(PairsOfKinds, XouterWalksTheFirstDimensions) {
  EXPECT_EQ(product("xouter", a({2, 2}), b({3, 2})), expected({2, 3}, {1, 3, 5, 3, 9, 15}));
  EXPECT_EQ(product("xouter", a({1, 4}), b({2, 2, 2})), expected({1, 2}, {1, 5}));
}

TEST_P(PairsOfKinds, XkronTakesTheFirstTwoDimensionsOfMany_AndVectorsAsRows) {
  EXPECT_EQ(product("xkron", a({2}), b({2})), expected({1, 4}, {1, 2, 2, 4}));
  EXPECT_EQ(product("xkron", a({2}), b({2, 1})), expected({2, 2}, {1, 2, 2, 4}));
  EXPECT_EQ(product("xkron", a({2, 1}), b({2})), expected({2, 2}, {1, 2, 2, 4}));
  // Two extents from the front, two strides from the back: 1 2 / 3 4 of the eight.
  EXPECT_EQ(product("xkron", a({2, 2, 2}), b({})), expected({2, 2}, {1, 2, 3, 4}));
}

// ---- What becomes of results that the first kind cannot hold

TEST_F(Products, Required_IntegersTimesFloatingPointNumbers_LoseTheFractions) {
  const Value whole = ints({2}, {1, 2}), halves = doubles({2}, {0.5, 0.5});
  EXPECT_EQ(array(Kind::int32, "xdot", {whole, halves}), TestArray(Kind::int32, {1}, {1}));
  EXPECT_EQ(array(Kind::float64, "xdot", {halves, whole}), TestArray(Kind::float64, {1}, {1.5}));
  EXPECT_EQ(scalar(Kind::int32, "xvdot", {whole, halves}), 1);
  EXPECT_EQ(scalar(Kind::float64, "xvdot", {halves, whole}), 1.5);
  EXPECT_EQ(array(Kind::int32, "xouter", {whole, halves}), TestArray(Kind::int32, {2, 2}, {0, 0, 1, 1}));
  EXPECT_EQ(array(Kind::int32, "xkron", {ints({1, 2}, {1, 3}), doubles({1, 1}, {0.5})}),
            TestArray(Kind::int32, {1, 2}, {0, 1}));
  EXPECT_EQ(array(Kind::int64, "xkron", {longs({1, 2}, {1, 3}), floats({1, 1}, {0.5f})}),
            TestArray(Kind::int64, {1, 2}, {0, 1}));
}

TEST_F(Products, FractionsAreCutTowardZero_AfterTheSum) {
  EXPECT_EQ(element(Kind::int32, "xdot", {ints({2}, {-1, -1}), doubles({2}, {0.9, 0.9})}), -1);
  EXPECT_EQ(element(Kind::int64, "xdot", {longs({2}, {-1, -1}), floats({2}, {0.9f, 0.9f})}), -1);
  EXPECT_EQ(scalar(Kind::int32, "xvdot", {ints({2}, {1, 1}), floats({2}, {0.6f, 0.6f})}), 1);
  EXPECT_EQ(scalar(Kind::int64, "xvdot", {longs({3}, {-1, -1, -1}), doubles({3}, {0.9, 0.9, 0.9})}), -2);
}

TEST_F(Products, Int64IsNarrowedToInt) {
  constexpr std::int64_t wide = (std::int64_t{1} << 40) + 5;
  EXPECT_EQ(element(Kind::int32, "xdot", {ints({1}, {1}), longs({1}, {wide})}), 5);
  EXPECT_EQ(scalar(Kind::int32, "xvdot", {ints({1}, {-1}), longs({1}, {wide})}), -5);
  EXPECT_EQ(element(Kind::int32, "xouter", {ints({1}, {1}), longs({1}, {wide})}), 5);
  EXPECT_EQ(element(Kind::int32, "xkron", {ints({1, 1}, {2}), longs({1, 1}, {wide})}), 10);
}

TEST_F(Products, IntegersWrap) {
  constexpr std::int32_t top = std::numeric_limits<std::int32_t>::max();
  constexpr std::int64_t top64 = std::numeric_limits<std::int64_t>::max();
  for (const std::string& name : products) {
    EXPECT_EQ(element(Kind::int32, name, {ints({1}, {top}), ints({1}, {2})}), -2) << name;
    EXPECT_EQ(element(Kind::int64, name, {longs({1}, {top64}), longs({1}, {2})}), -2) << name;
    EXPECT_EQ(element(Kind::int64, name, {longs({1}, {top64}), ints({1}, {2})}), -2) << name;
    // In 64 bits where one of them has them.
    EXPECT_EQ(element(Kind::int64, name, {longs({1}, {2}), ints({1}, {top})}), 2 * std::int64_t{top}) << name;
  }
  EXPECT_EQ(element(Kind::int32, "xdot", {ints({2}, {top, 1}), ints({2}, {1, 1})}), lowest);
}

TEST_F(Products, WhatNoIntegerHolds_IsTheSmallest) {
  for (const double beyond : {1e300, -1e300, not_a_number, infinity, -infinity, 9.3e18})
    for (const std::string& name : products) {
      EXPECT_EQ(element(Kind::int32, name, {ints({1}, {1}), doubles({1}, {beyond})}), lowest) << name << beyond;
      EXPECT_EQ(element(Kind::int64, name, {longs({1}, {1}), doubles({1}, {beyond})}), lowest64) << name;
      const auto as_float = static_cast<float>(std::isfinite(beyond) && std::abs(beyond) > 1e38 ? 3e38 : beyond);
      EXPECT_EQ(element(Kind::int32, name, {ints({1}, {1}), floats({1}, {as_float})}), lowest) << name;
      EXPECT_EQ(element(Kind::int64, name, {longs({1}, {1}), floats({1}, {as_float})}), lowest64) << name;
    }
}

TEST_F(Products, PairsWithAFloatAndWithoutADouble_AreComputedIn32Bits) {
  // 2^24 + 1 is no float.
  constexpr int odd = 16777217;
  for (const std::string& name : products) {
    EXPECT_EQ(element(Kind::int32, name, {ints({1}, {odd}), floats({1}, {1})}), odd - 1) << name;
    EXPECT_EQ(element(Kind::int64, name, {longs({1}, {odd}), floats({1}, {1})}), odd - 1) << name;
    EXPECT_EQ(element(Kind::float32, name, {floats({1}, {1}), ints({1}, {odd})}), odd - 1) << name;
    EXPECT_EQ(element(Kind::float32, name, {floats({1}, {1}), longs({1}, {odd})}), odd - 1) << name;
    EXPECT_EQ(element(Kind::float32, name, {floats({1}, {0.1f}), floats({1}, {0.1f})}),
              static_cast<double>(0.1f * 0.1f))
        << name;
  }
}

TEST_F(Products, PairsWithADouble_AreComputedIn64Bits) {
  constexpr int odd = 16777217;
  const double product = static_cast<double>(0.1f) * 0.1;
  for (const std::string& name : products) {
    EXPECT_EQ(element(Kind::int32, name, {ints({1}, {odd}), doubles({1}, {1})}), odd) << name;
    EXPECT_EQ(element(Kind::float32, name, {floats({1}, {0.1f}), doubles({1}, {0.1})}), product) << name;
    EXPECT_EQ(element(Kind::float64, name, {doubles({1}, {0.1}), floats({1}, {0.1f})}), product) << name;
    EXPECT_EQ(element(Kind::float64, name, {doubles({1}, {1}), ints({1}, {odd})}), odd) << name;
  }
  // 2^53 + 1 is no double.
  constexpr std::int64_t large = (std::int64_t{1} << 53) + 1;
  EXPECT_EQ(element(Kind::int64, "xdot", {longs({1}, {large}), doubles({1}, {1})}), large - 1);
  EXPECT_EQ(element(Kind::int64, "xdot", {longs({1}, {large}), longs({1}, {1})}), large);
}

TEST_F(Products, Required_TheProductOfTwoVectors_HasOneDimension) {
  EXPECT_EQ(array(Kind::float64, "xdot", {ones({3}), ones({3})}), TestArray(Kind::float64, {1}, {3}));
  EXPECT_EQ(array(Kind::float64, "xdot", {ones({1}), ones({1})}), TestArray(Kind::float64, {1}, {1}));
}

TEST_F(Products, NaNAndInfinities_SpreadAsInAnySum) {
  const Value a = doubles({2, 2}, {not_a_number, 1, 0, 1}), b = doubles({2, 2}, {1, 2, infinity, 4});
  const auto product = array(Kind::float64, "xdot", {a, b});
  EXPECT_TRUE(std::isnan(product[0].real) && std::isnan(product[1].real));
  EXPECT_EQ(product[2], infinity);
  EXPECT_EQ(product[3], 4);
  const Value zero = doubles({1, 1}, {0}), nan = doubles({1, 1}, {not_a_number});
  EXPECT_TRUE(std::isnan(element(Kind::float64, "xkron", {zero, nan}).real));
  EXPECT_TRUE(std::isnan(element(Kind::float32, "xdot", {floats({1}, {0}), doubles({1}, {infinity})}).real));
}

}  // namespace
}  // namespace arrayfold::test
