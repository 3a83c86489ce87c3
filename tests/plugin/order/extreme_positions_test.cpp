// order/extreme_positions_test.cpp: xargmin and xargmax beside the array library's own

#include <cmath>

#include "ordering.hpp"
#include "reference.hpp"

namespace arrayfold::test {
namespace {

TestArray position(std::size_t place) { return TestArray(Kind::int32, {}, {place}); }

class ExtremePositions : public OverKinds<OrderingTest> {
 protected:
  void expect_positions(const Value& operand, const TestArray& array, const std::string& what) const {
    for (const char* name : {"xargmin", "xargmax"})
      EXPECT_EQ(given(call(name, {operand}), Kind::int32), library_result(name, array)) << what;
  }

  TestArray of_kind(const Extents& extents, const Numbers& numbers) const {
    return TestArray(kind(), extents, numbers);
  }
  TestArray position_by(const char* name, const Extents& extents, const Numbers& x) const {
    return OrderingTest::given_by(name, of_kind(extents, x), Kind::int32);
  }

  FloatKindRegistered registered_;
};

INSTANTIATE_TEST_SUITE_P(Kinds, ExtremePositions, ::testing::ValuesIn(numeric_kinds), KindName());

TEST_P(ExtremePositions, PositionsOfEveryPatternLengthAndShape_AreTheLibrarys) {
  for_each_array(kind(), [&](const Value& operand, const TestArray& array, const std::string& what) {
    expect_positions(operand, array, what);
  });
}

TEST_P(ExtremePositions, OfManyElements_AreTheLibrarys) {
  for (const auto& pattern : patterns(kind())) {
    const TestArray array = pattern.fill({100001});
    Operand operand(ctx(), array);
    expect_positions(operand.value(), array, pattern.name);
  }
}

TEST_P(ExtremePositions, ExtremesAreFoundAtEachPlace) {
  for (const std::size_t length : {3u, 17u, 64u, 300u, 2100u, 5000u}) {
    const std::size_t step = length > 1000 ? 13 : 1;
    for (std::size_t place = 0; place < length; place += step) {
      TestArray x = of_kind({length}, Numbers(length, 100));
      x.set(place, 7);
      ASSERT_EQ(OrderingTest::given_by("xargmin", x, Kind::int32), position(place));
      x.set(place, 1000);
      if (place + 1 < length) x.set(length - 1, 1000);  // the first of equal ones counts
      ASSERT_EQ(OrderingTest::given_by("xargmax", x, Kind::int32), position(place));
    }
  }
}

TEST_P(ExtremePositions, PositionsAreFlatAndZeroDimensional) {
  const Numbers x = {5, 9, 8, 1, 7, 6};
  EXPECT_EQ(position_by("xargmin", {2, 3}, x), position(3));
  EXPECT_EQ(position_by("xargmax", {2, 3}, x), position(1));
  EXPECT_EQ(position_by("xargmin", {6, 1}, x), position(3));
}

TEST_P(ExtremePositions, OfEqualExtremes_TheFirstCounts) {
  EXPECT_EQ(position_by("xargmin", {3}, {2, 1, 1}), position(1));
  EXPECT_EQ(position_by("xargmax", {3}, {2, 2, 1}), position(0));
}

TEST_P(ExtremePositions, PositionsOfNothingAndOfOne_AreZero) {
  for (const char* name : {"xargmin", "xargmax"}) {
    for (const Extents& extents : {Extents{0}, Extents{3, 0}, Extents{0, 3}})
      EXPECT_EQ(position_by(name, extents, {}), position(0));
    for (const Extents& extents : {Extents{}, Extents{1}, Extents{1, 1, 1, 1, 1, 1}})
      EXPECT_EQ(position_by(name, extents, {42}), position(0));
  }
}

// ---- Single values

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
