// linalg/products_test.cpp: xdot, xvdot, xouter and xkron: kinds, shapes, and what is chosen where nothing fits

#include <tuple>

#include "algebra.hpp"

namespace arrayfold::test {
namespace {

class Products : public AlgebraTest {
 protected:
  Value ints(const Extents& extents, const std::vector<std::int32_t>& elements) {
    return made<XTInt>(extents, elements);
  }
  Value longs(const Extents& extents, const std::vector<std::int64_t>& elements) {
    return made<XTInt64>(extents, elements);
  }
  Value floats(const Extents& extents, const std::vector<float>& elements) { return made<XTFloat>(extents, elements); }

  /// 1, 2, 3, ... of a kind.
  template <class Kind>
  Value counted(const Extents& extents) {
    std::vector<typename Kind::element> elements(size_of(extents));
    for (std::size_t i = 0; i < elements.size(); ++i) elements[i] = static_cast<typename Kind::element>(i + 1);
    return made<Kind>(extents, elements);
  }
};

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t lowest64 = std::numeric_limits<std::int64_t>::min();

// ---- The sixteen pairs, each function on small whole numbers

template <class First, class Second>
struct Pair {
  using A = First;
  using B = Second;
};

template <class P>
class PairsOfKinds : public Products {};

using AllPairs =
    ::testing::Types<Pair<XTInt, XTInt>, Pair<XTInt, XTInt64>, Pair<XTInt, XTFloat>, Pair<XTInt, XTDouble>,
                     Pair<XTInt64, XTInt>, Pair<XTInt64, XTInt64>, Pair<XTInt64, XTFloat>, Pair<XTInt64, XTDouble>,
                     Pair<XTFloat, XTInt>, Pair<XTFloat, XTInt64>, Pair<XTFloat, XTFloat>, Pair<XTFloat, XTDouble>,
                     Pair<XTDouble, XTInt>, Pair<XTDouble, XTInt64>, Pair<XTDouble, XTFloat>, Pair<XTDouble, XTDouble>>;
struct PairNames {
  template <class P>
  static std::string GetName(int) {
    return std::string(P::A::dtype) + "_" + P::B::dtype;
  }
};
TYPED_TEST_SUITE(PairsOfKinds, AllPairs, PairNames);

TYPED_TEST(PairsOfKinds, ResultsHaveTheKindOfTheFirst) {
  using A = typename TypeParam::A;
  using B = typename TypeParam::B;
  using R = Contents<ResultElement<A>>;
  const Value row = this->template counted<A>({3}), other = this->template counted<B>({3});
  const Value matrix = this->template counted<A>({2, 3}), tall = this->template counted<B>({3, 2});
  EXPECT_EQ(this->template array<A>("xdot", {row, other}), (R{{1}, {14}}));
  EXPECT_EQ(this->template array<A>("xdot", {matrix, other}), (R{{2}, {14, 32}}));
  EXPECT_EQ(this->template array<A>("xdot", {row, tall}), (R{{2}, {22, 28}}));
  EXPECT_EQ(this->template array<A>("xdot", {matrix, tall}), (R{{2, 2}, {22, 28, 49, 64}}));
  EXPECT_EQ(this->template scalar<A>("xvdot", {row, other}), ResultElement<A>{14});
  EXPECT_EQ(this->template array<A>("xouter", {row, other}), (R{{3, 3}, {1, 2, 3, 2, 4, 6, 3, 6, 9}}));
  EXPECT_EQ(this->template array<A>("xkron", {this->template counted<A>({1, 2}), this->template counted<B>({2, 2})}),
            (R{{2, 4}, {1, 2, 2, 4, 3, 4, 6, 8}}));
}

TYPED_TEST(PairsOfKinds, XdotOfMoreThanTwoDimensions) {
  using A = typename TypeParam::A;
  using B = typename TypeParam::B;
  using R = Contents<ResultElement<A>>;
  const Value deep = this->template counted<A>({2, 1, 2}), other = this->template counted<B>({2, 2, 2});
  EXPECT_EQ(this->template array<A>("xdot", {deep, other}), (R{{2, 1, 2, 2}, {7, 10, 19, 22, 15, 22, 43, 50}}));
  EXPECT_EQ(this->template array<A>("xdot", {deep, this->template counted<B>({2})}), (R{{2, 1}, {5, 11}}));
  EXPECT_EQ(this->template array<A>("xdot", {this->template counted<A>({2}), other}), (R{{2, 2}, {7, 10, 19, 22}}));
  EXPECT_EQ(this->template array<A>("xdot", {deep, this->template counted<B>({2, 1})}), (R{{2, 1, 1}, {5, 11}}));
}

TYPED_TEST(PairsOfKinds, NumbersOfNoDimension_MultiplyWhateverStandsBeside) {
  using A = typename TypeParam::A;
  using B = typename TypeParam::B;
  using R = Contents<ResultElement<A>>;
  const Value two = this->template made<A>({}, {2}), three = this->template made<B>({}, {3});
  for (const Extents& extents : {Extents{}, {0}, {3}, {2, 2}, {2, 0, 2}, {1, 1, 1, 1, 1, 2}}) {
    R doubled{extents, {}}, tripled{extents, {}};
    for (std::size_t i = 1; i <= size_of(extents); ++i) {
      doubled.elements.push_back(static_cast<ResultElement<A>>(2 * i));
      tripled.elements.push_back(static_cast<ResultElement<A>>(3 * i));
    }
    EXPECT_EQ(this->template array<A>("xdot", {two, this->template counted<B>(extents)}), doubled);
    EXPECT_EQ(this->template array<A>("xdot", {this->template counted<A>(extents), three}), tripled);
  }
  EXPECT_EQ(this->template scalar<A>("xvdot", {two, three}), ResultElement<A>{6});
  EXPECT_EQ(this->template scalar<A>("xvdot", {two, this->template counted<B>({3})}), ResultElement<A>{2});
  EXPECT_EQ(this->template array<A>("xouter", {two, three}), (R{{1, 1}, {6}}));
  EXPECT_EQ(this->template array<A>("xouter", {two, this->template counted<B>({3})}), (R{{1, 3}, {2, 4, 6}}));
  EXPECT_EQ(this->template array<A>("xouter", {this->template counted<A>({3}), three}), (R{{3, 1}, {3, 6, 9}}));
  EXPECT_EQ(this->template array<A>("xkron", {two, three}), (R{{1, 1}, {6}}));
  EXPECT_EQ(this->template array<A>("xkron", {two, this->template counted<B>({3})}), (R{{1, 3}, {2, 4, 6}}));
  EXPECT_EQ(this->template array<A>("xkron", {this->template counted<A>({2, 1}), three}), (R{{2, 1}, {3, 6}}));
}

TYPED_TEST(PairsOfKinds, WithoutElements_SumsAreZero) {
  using A = typename TypeParam::A;
  using B = typename TypeParam::B;
  using R = Contents<ResultElement<A>>;
  const auto zeros = [](const Extents& extents) { return R{extents, std::vector<ResultElement<A>>(size_of(extents))}; };
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
  for (const auto& [left, right, result] : dots)
    EXPECT_EQ(this->template array<A>("xdot", {this->template counted<A>(left), this->template counted<B>(right)}),
              zeros(result));
  const std::tuple<Extents, Extents, Extents> outers[] = {
      {{0}, {0}, {0, 0}},    {{3}, {0}, {3, 0}}, {{0}, {3}, {0, 3}}, {{2, 0}, {3}, {2, 3}},
      {{3}, {2, 0}, {3, 2}}, {{}, {0}, {1, 0}},  {{0}, {}, {0, 1}},  {{2, 0}, {2, 0}, {2, 2}}};
  for (const auto& [left, right, result] : outers)
    EXPECT_EQ(this->template array<A>("xouter", {this->template counted<A>(left), this->template counted<B>(right)}),
              zeros(result));
  const std::tuple<Extents, Extents, Extents> krons[] = {
      {{0}, {0}, {1, 0}},          {{3}, {0}, {1, 0}},         {{0}, {3}, {1, 0}}, {{2, 0}, {3, 1}, {6, 0}},
      {{0, 2}, {1, 3}, {0, 6}},    {{2, 2}, {0, 1}, {0, 2}},   {{}, {0}, {1, 0}},  {{0, 0}, {}, {0, 0}},
      {{2, 2, 0}, {1, 1}, {2, 2}}, {{1, 2}, {2, 3, 0}, {2, 6}}};
  for (const auto& [left, right, result] : krons)
    EXPECT_EQ(this->template array<A>("xkron", {this->template counted<A>(left), this->template counted<B>(right)}),
              zeros(result));
}

TYPED_TEST(PairsOfKinds, XvdotThatEndsBefore_IsRefused) {
  using A = typename TypeParam::A;
  using B = typename TypeParam::B;
  const std::pair<Extents, Extents> short_ones[] = {{{3}, {2}},    {{3}, {0}},    {{3}, {}},     {{2}, {1}},
                                                    {{3}, {2, 2}}, {{2, 0}, {3}}, {{1}, {0}},    {{1, 0}, {1}},
                                                    {{}, {0}},     {{1}, {3, 0}}, {{3}, {1, 5}}, {{2, 0}, {2, 0}}};
  for (const auto& [left, right] : short_ones) {
    // A single row of five has a first stride of its own: 0, taken as 1.
    if (right == Extents{1, 5}) {
      EXPECT_EQ(this->template scalar<A>("xvdot", {this->template counted<A>(left), this->template counted<B>(right)}),
                ResultElement<A>{14});
      continue;
    }
    this->expect_nothing(this->call("xvdot", {this->template counted<A>(left), this->template counted<B>(right)}), 0,
                         "xvdot");
  }
}

TYPED_TEST(PairsOfKinds, Required_TheFirstOperandAloneDecidesTheLengthOfXvdot) {
  using A = typename TypeParam::A;
  using B = typename TypeParam::B;
  const auto of = [&](const Extents& left, const Extents& right) {
    return this->template scalar<A>("xvdot", {this->template counted<A>(left), this->template counted<B>(right)});
  };
  EXPECT_EQ(of({2}, {5}), ResultElement<A>{5});
  EXPECT_EQ(of({1}, {5}), ResultElement<A>{1});
  EXPECT_EQ(of({0}, {5}), ResultElement<A>{0});
  EXPECT_EQ(of({0}, {0}), ResultElement<A>{0});
  // The first dimension of either, by its stride: 1 and 3 times 1 and 2; 1 and 2 times 1 and 4.
  EXPECT_EQ(of({2, 2}, {4}), ResultElement<A>{7});
  EXPECT_EQ(of({2}, {2, 3}), ResultElement<A>{9});
  EXPECT_EQ(of({2, 2}, {2, 3}), ResultElement<A>{13});
  EXPECT_EQ(of({2, 1, 2}, {3, 1}), ResultElement<A>{7});
}

TYPED_TEST(PairsOfKinds, XouterWalksTheFirstDimensions) {
  using A = typename TypeParam::A;
  using B = typename TypeParam::B;
  using R = Contents<ResultElement<A>>;
  EXPECT_EQ(this->template array<A>("xouter", {this->template counted<A>({2, 2}), this->template counted<B>({3, 2})}),
            (R{{2, 3}, {1, 3, 5, 3, 9, 15}}));
  EXPECT_EQ(
      this->template array<A>("xouter", {this->template counted<A>({1, 4}), this->template counted<B>({2, 2, 2})}),
      (R{{1, 2}, {1, 5}}));
}

TYPED_TEST(PairsOfKinds, XkronTakesTheFirstTwoDimensionsOfMany_AndVectorsAsRows) {
  using A = typename TypeParam::A;
  using B = typename TypeParam::B;
  using R = Contents<ResultElement<A>>;
  EXPECT_EQ(this->template array<A>("xkron", {this->template counted<A>({2}), this->template counted<B>({2})}),
            (R{{1, 4}, {1, 2, 2, 4}}));
  EXPECT_EQ(this->template array<A>("xkron", {this->template counted<A>({2}), this->template counted<B>({2, 1})}),
            (R{{2, 2}, {1, 2, 2, 4}}));
  EXPECT_EQ(this->template array<A>("xkron", {this->template counted<A>({2, 1}), this->template counted<B>({2})}),
            (R{{2, 2}, {1, 2, 2, 4}}));
  // Two extents from the front, two strides from the back: 1 2 / 3 4 of the eight.
  EXPECT_EQ(this->template array<A>("xkron", {this->template counted<A>({2, 2, 2}), this->template counted<B>({})}),
            (R{{2, 2}, {1, 2, 3, 4}}));
}

// ---- What becomes of results that the first kind cannot hold

TEST_F(Products, Required_IntegersTimesReals_LoseTheFractions) {
  const Value whole = ints({2}, {1, 2}), halves = doubles({2}, {0.5, 0.5});
  EXPECT_EQ((array<XTInt>("xdot", {whole, halves})), (Contents<std::int32_t>{{1}, {1}}));
  EXPECT_EQ((array<XTDouble>("xdot", {halves, whole})), (Contents<double>{{1}, {1.5}}));
  EXPECT_EQ((scalar<XTInt>("xvdot", {whole, halves})), 1);
  EXPECT_EQ((scalar<XTDouble>("xvdot", {halves, whole})), 1.5);
  EXPECT_EQ((array<XTInt>("xouter", {whole, halves})), (Contents<std::int32_t>{{2, 2}, {0, 0, 1, 1}}));
  EXPECT_EQ((array<XTInt>("xkron", {ints({1, 2}, {1, 3}), doubles({1, 1}, {0.5})})),
            (Contents<std::int32_t>{{1, 2}, {0, 1}}));
  EXPECT_EQ((array<XTInt64>("xkron", {longs({1, 2}, {1, 3}), floats({1, 1}, {0.5f})})),
            (Contents<std::int64_t>{{1, 2}, {0, 1}}));
}

TEST_F(Products, FractionsAreCutTowardZero_AfterTheSum) {
  EXPECT_EQ((array<XTInt>("xdot", {ints({2}, {-1, -1}), doubles({2}, {0.9, 0.9})})).elements[0], -1);
  EXPECT_EQ((array<XTInt64>("xdot", {longs({2}, {-1, -1}), floats({2}, {0.9f, 0.9f})})).elements[0], -1);
  EXPECT_EQ((scalar<XTInt>("xvdot", {ints({2}, {1, 1}), floats({2}, {0.6f, 0.6f})})), 1);
  EXPECT_EQ((scalar<XTInt64>("xvdot", {longs({3}, {-1, -1, -1}), doubles({3}, {0.9, 0.9, 0.9})})), -2);
}

TEST_F(Products, Int64IsNarrowedToInt) {
  constexpr std::int64_t wide = (std::int64_t{1} << 40) + 5;
  EXPECT_EQ((array<XTInt>("xdot", {ints({1}, {1}), longs({1}, {wide})})).elements[0], 5);
  EXPECT_EQ((scalar<XTInt>("xvdot", {ints({1}, {-1}), longs({1}, {wide})})), -5);
  EXPECT_EQ((array<XTInt>("xouter", {ints({1}, {1}), longs({1}, {wide})})).elements[0], 5);
  EXPECT_EQ((array<XTInt>("xkron", {ints({1, 1}, {2}), longs({1, 1}, {wide})})).elements[0], 10);
}

TEST_F(Products, IntegersWrap) {
  constexpr std::int32_t top = std::numeric_limits<std::int32_t>::max();
  constexpr std::int64_t top64 = std::numeric_limits<std::int64_t>::max();
  for (const char* name : products) {
    EXPECT_EQ((array<XTInt>(name, {ints({1}, {top}), ints({1}, {2})})).elements[0], -2) << name;
    EXPECT_EQ((array<XTInt64>(name, {longs({1}, {top64}), longs({1}, {2})})).elements[0], -2) << name;
    EXPECT_EQ((array<XTInt64>(name, {longs({1}, {top64}), ints({1}, {2})})).elements[0], -2) << name;
    // In 64 bits where one of them has them.
    EXPECT_EQ((array<XTInt64>(name, {longs({1}, {2}), ints({1}, {top})})).elements[0], 2 * std::int64_t{top}) << name;
  }
  EXPECT_EQ((array<XTInt>("xdot", {ints({2}, {top, 1}), ints({2}, {1, 1})})).elements[0], lowest);
}

TEST_F(Products, WhatNoIntegerHolds_IsTheSmallest) {
  for (const double beyond : {1e300, -1e300, not_a_number, infinity, -infinity, 9.3e18})
    for (const char* name : products) {
      EXPECT_EQ((array<XTInt>(name, {ints({1}, {1}), doubles({1}, {beyond})})).elements[0], lowest) << name << beyond;
      EXPECT_EQ((array<XTInt64>(name, {longs({1}, {1}), doubles({1}, {beyond})})).elements[0], lowest64) << name;
      const auto as_float = static_cast<float>(std::isfinite(beyond) && std::abs(beyond) > 1e38 ? 3e38 : beyond);
      EXPECT_EQ((array<XTInt>(name, {ints({1}, {1}), floats({1}, {as_float})})).elements[0], lowest) << name;
      EXPECT_EQ((array<XTInt64>(name, {longs({1}, {1}), floats({1}, {as_float})})).elements[0], lowest64) << name;
    }
}

TEST_F(Products, PairsWithAFloatAndWithoutADouble_AreComputedIn32Bits) {
  // 2^24 + 1 is no float.
  constexpr int odd = 16777217;
  for (const char* name : products) {
    EXPECT_EQ((array<XTInt>(name, {ints({1}, {odd}), floats({1}, {1})})).elements[0], odd - 1) << name;
    EXPECT_EQ((array<XTInt64>(name, {longs({1}, {odd}), floats({1}, {1})})).elements[0], odd - 1) << name;
    EXPECT_EQ((array<XTFloat>(name, {floats({1}, {1}), ints({1}, {odd})})).elements[0], odd - 1) << name;
    EXPECT_EQ((array<XTFloat>(name, {floats({1}, {1}), longs({1}, {odd})})).elements[0], odd - 1) << name;
    EXPECT_EQ((array<XTFloat>(name, {floats({1}, {0.1f}), floats({1}, {0.1f})})).elements[0],
              static_cast<double>(0.1f * 0.1f))
        << name;
  }
}

TEST_F(Products, PairsWithADouble_AreComputedIn64Bits) {
  constexpr int odd = 16777217;
  const double product = static_cast<double>(0.1f) * 0.1;
  for (const char* name : products) {
    EXPECT_EQ((array<XTInt>(name, {ints({1}, {odd}), doubles({1}, {1})})).elements[0], odd) << name;
    EXPECT_EQ((array<XTFloat>(name, {floats({1}, {0.1f}), doubles({1}, {0.1})})).elements[0], product) << name;
    EXPECT_EQ((array<XTDouble>(name, {doubles({1}, {0.1}), floats({1}, {0.1f})})).elements[0], product) << name;
    EXPECT_EQ((array<XTDouble>(name, {doubles({1}, {1}), ints({1}, {odd})})).elements[0], odd) << name;
  }
  // 2^53 + 1 is no double.
  constexpr std::int64_t large = (std::int64_t{1} << 53) + 1;
  EXPECT_EQ((array<XTInt64>("xdot", {longs({1}, {large}), doubles({1}, {1})})).elements[0], large - 1);
  EXPECT_EQ((array<XTInt64>("xdot", {longs({1}, {large}), longs({1}, {1})})).elements[0], large);
}

TEST_F(Products, Required_TheProductOfTwoVectors_HasOneDimension) {
  EXPECT_EQ((array<XTDouble>("xdot", {ones({3}), ones({3})})), (Contents<double>{{1}, {3}}));
  EXPECT_EQ((array<XTDouble>("xdot", {ones({1}), ones({1})})), (Contents<double>{{1}, {1}}));
}

TEST_F(Products, NaNAndInfinities_SpreadAsInAnySum) {
  const Value a = doubles({2, 2}, {not_a_number, 1, 0, 1}), b = doubles({2, 2}, {1, 2, infinity, 4});
  const auto product = array<XTDouble>("xdot", {a, b});
  EXPECT_TRUE(std::isnan(product.elements[0]) && std::isnan(product.elements[1]));
  EXPECT_EQ(product.elements[2], infinity);
  EXPECT_EQ(product.elements[3], 4);
  const Value zero = doubles({1, 1}, {0}), nan = doubles({1, 1}, {not_a_number});
  EXPECT_TRUE(std::isnan((array<XTDouble>("xkron", {zero, nan})).elements[0]));
  EXPECT_TRUE(std::isnan((array<XTFloat>("xdot", {floats({1}, {0}), doubles({1}, {infinity})})).elements[0]));
}

}  // namespace
}  // namespace arrayfold::test
