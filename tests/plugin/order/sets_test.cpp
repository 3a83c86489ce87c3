// order/sets_test.cpp: xunique, xdiff, xargmin and xargmax beside the array library's own, bit for bit

#include <algorithm>
#include <cmath>

#include "ordering.hpp"
#include "reference.hpp"

namespace arrayfold::test {
namespace {

TestArray position(std::size_t place) { return TestArray(Kind::int32, {}, {place}); }

class Sets : public OverKinds<OrderingTest> {
 protected:
  void expect_unique(const Value& operand, const TestArray& array, const std::string& what) const {
    EXPECT_EQ(difference(given(call("xunique", {operand}), kind()), library_result("xunique", array)), "") << what;
  }
  void expect_positions(const Value& operand, const TestArray& array, const std::string& what) const {
    for (const char* name : {"xargmin", "xargmax"})
      EXPECT_EQ(given(call(name, {operand}), Kind::int32), library_result(name, array)) << what;
  }

  TestArray of_kind(const Extents& extents, const Numbers& numbers) const {
    return TestArray(kind(), extents, numbers);
  }
  TestArray given_by(const char* name, const Extents& extents, const Numbers& x) const {
    return OrderingTest::given_by(name, of_kind(extents, x), kind());
  }
  TestArray position_by(const char* name, const Extents& extents, const Numbers& x) const {
    return OrderingTest::given_by(name, of_kind(extents, x), Kind::int32);
  }

  FloatKindRegistered registered_;
};

INSTANTIATE_TEST_SUITE_P(Kinds, Sets, ::testing::ValuesIn(numeric_kinds), KindName());

TEST_P(Sets, XuniqueOfEveryPatternLengthAndShape_IsTheLibrarys) {
  for_each_array(kind(), [&](const Value& operand, const TestArray& array, const std::string& what) {
    expect_unique(operand, array, what);
  });
}

TEST_P(Sets, XdiffOfEveryPatternLengthAndShape_IsTheLibrarys) {
  for_each_array(kind(), [&](const Value& operand, const TestArray& array, const std::string& what) {
    // Which NaN comes of two is the compiler's choice.
    const TestArray found = given(call("xdiff", {operand}), kind()).with_one_nan();
    EXPECT_EQ(difference(found, library_result("xdiff", array).with_one_nan()), "") << what;
  });
}

TEST_P(Sets, PositionsOfEveryPatternLengthAndShape_AreTheLibrarys) {
  for_each_array(kind(), [&](const Value& operand, const TestArray& array, const std::string& what) {
    expect_positions(operand, array, what);
  });
}

TEST_P(Sets, OfManyElements_AreTheLibrarys) {
  for (const auto& pattern : patterns(kind())) {
    const TestArray array = pattern.fill({100001});
    Operand operand(ctx(), array);
    expect_unique(operand.value(), array, pattern.name);
    expect_positions(operand.value(), array, pattern.name);
  }
}

TEST_P(Sets, ExtremesAreFoundAtEachPlace) {
  for (const std::size_t length : {3u, 17u, 64u, 300u, 2100u, 5000u})
    for (std::size_t place = 0; place<length; place += length> 1000 ? 13 : 1) {
      TestArray x = of_kind({length}, Numbers(length, 100));
      x.set(place, 7);
      ASSERT_EQ(OrderingTest::given_by("xargmin", x, Kind::int32), position(place));
      x.set(place, 1000);
      if (place + 1 < length) x.set(length - 1, 1000);  // the first of equal ones counts
      ASSERT_EQ(OrderingTest::given_by("xargmax", x, Kind::int32), position(place));
    }
}

TEST_P(Sets, PositionsAreFlatAndZeroDimensional) {
  const Numbers x = {5, 9, 8, 1, 7, 6};
  EXPECT_EQ(position_by("xargmin", {2, 3}, x), position(3));
  EXPECT_EQ(position_by("xargmax", {2, 3}, x), position(1));
  EXPECT_EQ(position_by("xargmin", {6, 1}, x), position(3));
}

TEST_P(Sets, OfEqualExtremes_TheFirstCounts) {
  EXPECT_EQ(position_by("xargmin", {3}, {2, 1, 1}), position(1));
  EXPECT_EQ(position_by("xargmax", {3}, {2, 2, 1}), position(0));
}

TEST_P(Sets, PositionsOfNothingAndOfOne_AreZero) {
  for (const char* name : {"xargmin", "xargmax"}) {
    for (const Extents& extents : {Extents{0}, Extents{3, 0}, Extents{0, 3}})
      EXPECT_EQ(position_by(name, extents, {}), position(0));
    for (const Extents& extents : {Extents{}, Extents{1}, Extents{1, 1, 1, 1, 1, 1}})
      EXPECT_EQ(position_by(name, extents, {42}), position(0));
  }
}

TEST_P(Sets, XuniqueForgetsTheShape) {
  EXPECT_EQ(given_by("xunique", {3, 3}, {3, 1, 2, 2, 1, 3, 9, 1, 1}), of_kind({4}, {1, 2, 3, 9}));
  EXPECT_EQ(given_by("xunique", {}, {42}), of_kind({1}, {42}));
  for (const Extents& extents : {Extents{0}, Extents{3, 0}, Extents{0, 3}})
    EXPECT_EQ(given_by("xunique", extents, {}), of_kind({0}, {}));
}

TEST_P(Sets, XdiffStaysInsideEachRow) {
  EXPECT_EQ(given_by("xdiff", {2, 3}, {1, 2, 4, 10, 9, 20}), of_kind({2, 2}, {1, 2, -1, 11}));
  EXPECT_EQ(given_by("xdiff", {2, 2, 2}, {1, 2, 3, 5, 8, 13, 1, 0}), of_kind({2, 2, 1}, {1, 2, 5, -1}));
}

TEST_P(Sets, XdiffOfRunsOfOneAndOfNothing_IsEmpty) {
  EXPECT_EQ(given_by("xdiff", {1}, {5}), of_kind({0}, {}));
  EXPECT_EQ(given_by("xdiff", {3, 1}, {1, 2, 3}), of_kind({3, 0}, {}));
  EXPECT_EQ(given_by("xdiff", {0}, {}), of_kind({0}, {}));
  EXPECT_EQ(given_by("xdiff", {0, 3}, {}), of_kind({0, 0}, {}));
  EXPECT_EQ(given_by("xdiff", {3, 0}, {}), of_kind({3, 0}, {}));
  EXPECT_EQ(given_by("xdiff", {}, {5}), of_kind({0}, {}));
}

// ---- Single values

TEST_F(OrderingTest, Required_XdiffOfIntegers_Wraps) {
  EXPECT_EQ(given(call("xdiff", {array_of<XTInt>(ctx(), {2}, {INT32_MIN, 1})}), Kind::int32), TestArray(Kind::int32, {1}, {-2147483647}));
  EXPECT_EQ(given(call("xdiff", {array_of<XTInt>(ctx(), {3}, {INT32_MAX, INT32_MIN, INT32_MAX})}), Kind::int32),
            TestArray(Kind::int32, {2}, {1, -1}));
  EXPECT_EQ(given(call("xdiff", {array_of<XTInt64>(ctx(), {2}, {INT64_MIN, 1})}), Kind::int64),
            TestArray(Kind::int64, {1}, {INT64_MIN + 1}));
}

TEST_F(OrderingTest, Required_NaN_StaysInXuniqueEachTime) {
  const double nan = std::nan("");
  const auto found = given(call("xunique", {array_of<XTDouble>(ctx(), {3}, {nan, nan, nan})}), Kind::float64);
  EXPECT_EQ(found.extents(), Extents{3});
}

TEST_F(OrderingTest, XuniqueOfZerosOfBothSigns_IsTheFirstInOrder) {
  for (const std::size_t length : {3u, 300u}) {
    std::vector<double> x(length, -0.0);
    x[1] = 0.0;
    const auto found = given(call("xunique", {array_of<XTDouble>(ctx(), {length}, x)}), Kind::float64);
    ASSERT_EQ(found.extents(), Extents{1});
    std::sort(x.begin(), x.end());
    EXPECT_EQ(std::signbit(found[0].real), std::signbit(x[0]));
  }
}

TEST_F(OrderingTest, Required_NaNInFront_IsTheExtremeAndElsewhereNone) {
  const double nan = std::nan("");
  for (const std::size_t length : {3u, 40u, 300u, 5000u}) {
    std::vector<double> x(length, 2);
    x[1] = 1, x[2] = 3;
    const auto place_of = [&](const char* name) {
      return given(call(name, {array_of<XTDouble>(ctx(), {length}, x)}), Kind::int32)[0];
    };
    x[0] = nan;
    EXPECT_EQ(place_of("xargmin"), 0);
    EXPECT_EQ(place_of("xargmax"), 0);
    x[0] = 2;
    for (std::size_t place = 3; place < length; place += 7) x[place] = nan;
    EXPECT_EQ(place_of("xargmin"), 1);
    EXPECT_EQ(place_of("xargmax"), 2);
  }
}

TEST_F(OrderingTest, ZerosOfBothSigns_AreEqualExtremes) {
  const Value zeros = array_of<XTDouble>(ctx(), {4}, {0.0, -0.0, 0.0, -0.0});
  EXPECT_EQ(given(call("xargmin", {zeros}), Kind::int32), position(0));
  EXPECT_EQ(given(call("xargmax", {zeros}), Kind::int32), position(0));
}

}  // namespace
}  // namespace arrayfold::test
