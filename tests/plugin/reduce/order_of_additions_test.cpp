// reduce/order_of_additions_test.cpp: sums, products, means, spreads and integrals, rounding by rounding
//
// Each result has the bits of a plain loop that takes the elements in the order that is promised, for every length up
// to 100, matrices of up to twenty rows and columns, long rows and columns, and more dimensions.

#include "reference.hpp"

namespace arrayfold::test {
namespace {

class OrderOfAdditions : public OverKinds<ReductionTest> {
 protected:
  /// All that are summed or multiplied, on two fillings of the extents.
  void expect_order(const Extents& extents) const {
    const auto seed = static_cast<unsigned>(extents.size() * 1000 + size_of(extents));
    for (const TestArray& array : {random_array(kind(), extents, seed), random_factors(kind(), extents, seed)}) {
      Operand operand(ctx(), array);
      for (const char* name : {"xsum", "xprod", "xmean", "xvariance", "xstddev", "xtrapz"})
        EXPECT_EQ(number_given(name, operand.value()), expected_number(name, array))
            << name << " of " << ::testing::PrintToString(extents);
    }
  }

  /// The same by the array library's own functions.
  void expect_library(const Extents& extents) const {
    const TestArray array = random_factors(kind(), extents, 7);
    Operand operand(ctx(), array);
    for (const char* name : {"xprod", "xmean", "xvariance", "xstddev", "xtrapz", "xcount_nonzero"})
      EXPECT_EQ(number_given(name, operand.value()), library_number(name, array))
          << name << " of " << ::testing::PrintToString(extents);
  }
};

INSTANTIATE_TEST_SUITE_P(Kinds, OrderOfAdditions, ::testing::ValuesIn(numeric_kinds), KindName());

TEST_P(OrderOfAdditions, OfEveryLength_FollowsTheRule) {
  for (std::size_t length = 0; length <= 100; ++length) expect_order({length});
  for (const std::size_t length : {255u, 256u, 257u, 1000u, 4099u}) expect_order({length});
}

TEST_P(OrderOfAdditions, OfEverySmallMatrix_FollowsTheRule) {
  for (std::size_t rows = 0; rows <= 20; ++rows)
    for (std::size_t columns = 0; columns <= 20; ++columns) expect_order({rows, columns});
}

TEST_P(OrderOfAdditions, OfManyRowsAndManyColumns_FollowsTheRule) {
  for (const Extents& extents : std::vector<Extents>{{2, 1000},
                                                     {3, 1001},
                                                     {7, 333},
                                                     {8, 257},
                                                     {9, 130},
                                                     {17, 99},
                                                     {1000, 2},
                                                     {1001, 3},
                                                     {999, 1},
                                                     {1, 999},
                                                     {64, 64}})
    expect_order(extents);
}

TEST_P(OrderOfAdditions, OfThreeDimensions_FollowsTheRule) {
  for (std::size_t i = 1; i <= 5; ++i)
    for (std::size_t j = 1; j <= 5; ++j)
      for (std::size_t k = 1; k <= 5; ++k) expect_order({i, j, k});
  for (const Extents& extents :
       std::vector<Extents>{{2, 9, 3}, {3, 17, 5}, {11, 2, 100}, {5, 40, 1}, {0, 3, 2}, {3, 2, 0}})
    expect_order(extents);
}

TEST_P(OrderOfAdditions, OfFourDimensionsAndMore_FollowsTheRule) {
  for (std::size_t i = 1; i <= 3; ++i)
    for (std::size_t j = 1; j <= 3; ++j)
      for (std::size_t k = 1; k <= 3; ++k)
        for (std::size_t l = 1; l <= 3; ++l) expect_order({i, j, k, l});
  for (const Extents& extents : std::vector<Extents>{{2, 9, 3, 17},
                                                     {4, 5, 6, 7},
                                                     {2, 3, 1, 2, 3},
                                                     {2, 1, 2, 3, 2, 5},
                                                     {1, 2, 1, 3, 1, 2, 2, 1, 3},
                                                     {2, 2, 2, 2, 2, 2, 2, 2, 2}})
    expect_order(extents);
}

TEST_P(OrderOfAdditions, OfZeroDimensionalArrays_FollowsTheRule) { expect_order({}); }

TEST_P(OrderOfAdditions, OfRandomShapes_IsTheLibrarys) {
  std::mt19937 engine(1);
  for (int round = 0; round < 200; ++round) {
    Extents extents(1 + engine() % 5);
    for (auto& extent : extents) extent = 1 + engine() % (extents.size() > 2 ? 6 : 40);
    expect_library(extents);
  }
  expect_library({2, 1, 2, 1, 3, 1, 2, 1, 4});
}

// ---- That these would see another order

using Roundings = ReductionTest;

TEST_F(Roundings, OfASum_AreThoseOfFours) {
  // In a row 1e16 swallows each 1; in a block the ones come together first.
  EXPECT_EQ((number_of<double, XTDouble>("xsum", {1e16, 1, -1e16, 1})), 2.0);
  EXPECT_EQ((number_of<double, XTDouble>("xsum", {1e16, -1e16, 1, 1})), 0.0);
  EXPECT_EQ((number_of<double, XTDouble>("xsum", {1, 1, 1, 1, 1e16, 1, -1e16, 1})), 6.0);
  EXPECT_EQ((number_of<double, XTDouble>("xmean", {1e16, 1, -1e16, 1})), 0.25);
}

TEST_F(Roundings, OfASumOfFloats_AreThoseOfEightsIn32BitsGatheredIn64) {
  const float big = 0x1p24f;  // whose sum with 1 is itself
  EXPECT_EQ((number_of<double, XTFloat>("xsum", {big, 1})), 16777217.0);
  EXPECT_EQ((number_of<double, XTFloat>("xsum", {big, 0, 0, 0, 1, 0, 0, 0})), 16777216.0);
  EXPECT_EQ((number_of<double, XTFloat>("xsum", {big, 0, 0, 0, 0, 0, 0, 0, 1})), 16777217.0);
  EXPECT_EQ((number_of<double, XTFloat>("xsum", {big, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0})), 16777217.0);
  EXPECT_EQ((number_of<double, XTFloat>("xsum", {big, 1, 0, 0, -big, 1, 0, 0})), 2.0);
}

TEST_F(Roundings, OfAMatrix_StartAfreshInEachRow) {
  EXPECT_EQ((number_of<double, XTDouble>("xmean", {3, 2}, {1e16, -1e16, 1, 1, 1e16, -1e16})), 2.0 / 6);
  EXPECT_EQ((number_of<double, XTDouble>("xmean", {2, 3}, {1e16, -1e16, 1, 1, 1e16, -1e16})), 1.0 / 6);
}

TEST_F(Roundings, OfProductsOfFloats_AreThoseOf32Bits) {
  EXPECT_EQ((number_of<double, XTFloat>("xprod", {1e30f, 1e30f})), INFINITY);
  EXPECT_EQ((number_of<double, XTFloat>("xprod", {0.1f, 3.f})), static_cast<double>(0.1f * 3.f));
  EXPECT_NE(static_cast<double>(0.1f * 3.f), static_cast<double>(0.1f) * 3.0);
}

TEST_F(Roundings, OfMeansOfFloats_AreThoseOfA32BitSumDividedIn64) {
  EXPECT_EQ((number_of<double, XTFloat>("xmean", {0x1p24f, 1, 1})), 0x1p24 / 3);
  EXPECT_EQ((number_of<double, XTFloat>("xmean", {1, 0, 0})), 1.0 / 3);
  EXPECT_EQ((number_of<double, XTFloat>("xmean", {3e38f, 3e38f})), INFINITY);
}

}  // namespace
}  // namespace arrayfold::test
