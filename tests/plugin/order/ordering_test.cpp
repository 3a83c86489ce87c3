// order/ordering_test.cpp: xsort and xargsort beside the array library's own, bit for bit
//
// Rows of 256 elements and more are sorted in another way, which must give the same. Only where positions of equal
// elements go is that way's own choice.

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

#include "ordering.hpp"
#include "reference.hpp"

namespace arrayfold::test {
namespace {

class Sorts : public OverKinds<OrderingTest> {
 protected:
  void expect_sorted(const Value& operand, const TestArray& array, const std::string& what) const {
    EXPECT_EQ(difference(given(call("xsort", {operand}), kind()), library_result("xsort", array)), "") << what;
  }
  void expect_positions(const Value& operand, const TestArray& array, const std::string& what) const {
    const TestArray found = given(call("xargsort", {operand}), Kind::int32);
    EXPECT_TRUE(has_nan(array) || put_in_order(found, array)) << what << ": not in order, or no permutation";
    EXPECT_EQ(difference(found, expected_positions(array)), "") << what;
  }

  FloatKindRegistered registered_;
};

INSTANTIATE_TEST_SUITE_P(Kinds, Sorts, ::testing::ValuesIn(numeric_kinds), KindName());

TEST_P(Sorts, OfEveryPatternLengthAndShape_AreTheLibrarys) {
  for_each_array(kind(), [&](const Value& operand, const TestArray& array, const std::string& what) {
    expect_sorted(operand, array, what);
  });
}

TEST_P(Sorts, PositionsOfEveryPatternLengthAndShape_PutInOrder) {
  for_each_array(kind(), [&](const Value& operand, const TestArray& array, const std::string& what) {
    expect_positions(operand, array, what);
  });
}

TEST_P(Sorts, OfManyElements_AreTheLibrarys) {
  for (const auto& pattern : patterns(kind()))
    for (const Extents& extents : {Extents{100001}, Extents{3, 20011}}) {
      const TestArray array = pattern.fill(extents);
      Operand operand(ctx(), array);
      expect_sorted(operand.value(), array, pattern.name);
      expect_positions(operand.value(), array, pattern.name);
    }
}

TEST_P(Sorts, OfElementsOfWhichOneIsOutOfPlace_AreTheLibrarys) {
  for (const std::size_t length : {256u, 1000u})
    for (const std::size_t place : {std::size_t{1}, length / 2, length - 1}) {
      Numbers x;
      for (std::size_t i = 0; i < length; ++i) x.push_back(i == place ? 0 : static_cast<int>(i) + 1);
      const TestArray array(kind(), {length}, x);
      Operand operand(ctx(), array);
      const std::string what = std::to_string(place) + " of " + std::to_string(length);
      expect_sorted(operand.value(), array, what);
      expect_positions(operand.value(), array, what);
    }
}

TEST_P(Sorts, OfZeroDimensionalArrays_AreACopyAndPositionZero) {
  Operand operand(ctx(), kind(), {}, {42});
  EXPECT_EQ(given(call("xsort", {operand.value()}), kind()), TestArray(kind(), {}, {42}));
  EXPECT_EQ(given(call("xargsort", {operand.value()}), Kind::int32), TestArray(Kind::int32, {}, {0}));
}

TEST_P(Sorts, OfNoElements_AreEmptyInTheSameShape) {
  for (const Extents& extents : {Extents{0}, Extents{0, 3}, Extents{3, 0}, Extents{1, 0, 1, 0, 1, 1}}) {
    Operand operand(ctx(), kind(), extents, {});
    EXPECT_EQ(given(call("xsort", {operand.value()}), kind()), TestArray(kind(), extents, {}));
    EXPECT_EQ(given(call("xargsort", {operand.value()}), Kind::int32), TestArray(Kind::int32, extents, {}));
  }
}

TEST_P(Sorts, WorkRowByRow) {
  Operand operand(ctx(), kind(), {2, 3}, {3, 1, 2, 9, 8, 7});
  EXPECT_EQ(given(call("xsort", {operand.value()}), kind()), TestArray(kind(), {2, 3}, {1, 2, 3, 7, 8, 9}));
  EXPECT_EQ(given(call("xargsort", {operand.value()}), Kind::int32),
            TestArray(Kind::int32, {2, 3}, {1, 2, 0, 2, 1, 0}));
}

TEST_P(Sorts, Required_ASecondArgument_IsNoAxis) {
  Operand operand(ctx(), kind(), {2, 2}, {4, 3, 2, 1});
  for (const int axis : {0, 1, -1})
    EXPECT_EQ(given(call("xsort", {operand.value(), Value(axis)}), kind()), TestArray(kind(), {2, 2}, {3, 4, 1, 2}));
}

// The vectorised sort for doubles that others take loses elements here: some become the infinity, others vanish.
TEST_F(OrderingTest, XsortOfFewDistinctDoublesWithInfinities_KeepsEachElement) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const Numbers sets[] = {{infinity, 0, 1},  {infinity, -infinity, 2}, {infinity, 5},
                          {-infinity, 5, 6}, {infinity, -infinity},    {infinity, 1, 2, 3, 4, 5, 6, 7}};
  for (const auto& few : sets)
    for (std::size_t length = 256; length <= 1000; ++length) {
      const TestArray array = drawn_from(Kind::float64, length, few);
      const Value operand = to_host(ctx(), array);
      EXPECT_EQ(difference(given(call("xsort", {operand}), Kind::float64), sorted(array)), "");
    }
}

TEST_F(OrderingTest, XargsortOfZerosOfBothSigns_TakesThemAsEqual) {
  for (const std::size_t length : {256u, 1000u}) {
    std::vector<double> x(length);
    std::vector<std::int32_t> expected(length);
    std::iota(expected.begin(), expected.end(), 0);
    for (std::size_t i = 0; i < length; ++i) x[i] = i % 3 == 0 ? 0.0 : -0.0;
    EXPECT_EQ(given(call("xargsort", {array_of<XTDouble>(ctx(), {length}, x)}), Kind::int32),
              TestArray(Kind::int32, {length}, expected));
  }
}

// Many integers are sorted by their digits if their differences are small.
TEST_F(OrderingTest, XsortOfIntsThatDifferInAnyWidth_IsThatOfTheLibrary) {
  std::mt19937 engine(22);
  for (const std::size_t length : {4095u, 4096u, 5001u})
    for (int width = 0; width <= 32; ++width)
      for (const std::int64_t low : {std::int64_t{INT32_MIN}, std::int64_t{-5}, std::int64_t{INT32_MAX}}) {
        const std::int64_t most = (std::int64_t{1} << width) - 1;
        const std::int64_t first = std::min(low, std::int64_t{INT32_MAX} - most);
        if (first < INT32_MIN) continue;
        std::vector<std::int32_t> x(length);
        for (auto& element : x) element = static_cast<std::int32_t>(first + engine() % (most + 1));
        x[length / 3] = static_cast<std::int32_t>(first);
        x[length / 2] = static_cast<std::int32_t>(first + most);
        std::vector<std::int32_t> sorted = x;
        std::sort(sorted.begin(), sorted.end());
        EXPECT_EQ(given(call("xsort", {array_of<XTInt>(ctx(), {length}, x)}), Kind::int32),
                  TestArray(Kind::int32, {length}, sorted))
            << length << " of " << width << " bits from " << first;
      }
}

// Keys of 64 bits are cut so that a position fits beside them: neighbours may differ in what is cut off alone.
TEST_F(OrderingTest, XargsortOfNeighboursUnderEveryWidthOfKeys_PutsThemInOrder) {
  for (const std::size_t length : {256u, 257u, 1000u})
    for (int width = 50; width < 63; ++width) {
      std::vector<std::int64_t> x(length);
      for (std::size_t i = 0; i < length; ++i) x[i] = static_cast<std::int64_t>(i ^ 1);  // 1, 0, 3, 2, ...
      x.back() = std::int64_t{1} << width;
      const TestArray array(Extents{length}, x);
      const TestArray found = given(call("xargsort", {to_host(ctx(), array)}), Kind::int32);
      EXPECT_TRUE(put_in_order(found, array)) << length << " of " << width << " bits";
      EXPECT_EQ(difference(found, expected_positions(array)), "") << length << " of " << width << " bits";
    }
}

TEST_F(OrderingTest, Required_XargsortOfInt64_Gives32BitPositions) {
  const Value operand = array_of<XTInt64>(ctx(), {3}, {INT64_MAX, INT64_MIN, 0});
  EXPECT_EQ(given(call("xargsort", {operand}), Kind::int32), TestArray(Kind::int32, {3}, {1, 2, 0}));
}

}  // namespace
}  // namespace arrayfold::test
