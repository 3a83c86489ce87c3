// order/differences_test.cpp: xdiff beside the array library's own, bit for bit

#include "ordering.hpp"
#include "reference.hpp"

namespace arrayfold::test {
namespace {

class Differences : public OverKinds<OrderingTest> {
 protected:
  TestArray of_kind(const Extents& extents, const Numbers& numbers) const {
    return TestArray(kind(), extents, numbers);
  }
  TestArray given_by(const char* name, const Extents& extents, const Numbers& x) const {
    return OrderingTest::given_by(name, of_kind(extents, x), kind());
  }

  FloatKindRegistered registered_;
};

INSTANTIATE_TEST_SUITE_P(Kinds, Differences, ::testing::ValuesIn(numeric_kinds), KindName());

TEST_P(Differences, XdiffOfEveryPatternLengthAndShape_IsTheLibrarys) {
  for_each_array(kind(), [&](const Value& operand, const TestArray& array, const std::string& what) {
    // Which NaN comes of two is the compiler's choice.
    const TestArray found = given(call("xdiff", {operand}), kind()).with_one_nan();
    EXPECT_EQ(difference(found, library_result("xdiff", array).with_one_nan()), "") << what;
  });
}

TEST_P(Differences, XdiffStaysInsideEachRow) {
  EXPECT_EQ(given_by("xdiff", {2, 3}, {1, 2, 4, 10, 9, 20}), of_kind({2, 2}, {1, 2, -1, 11}));
  EXPECT_EQ(given_by("xdiff", {2, 2, 2}, {1, 2, 3, 5, 8, 13, 1, 0}), of_kind({2, 2, 1}, {1, 2, 5, -1}));
}

TEST_P(Differences, XdiffOfRowsOfOneAndOfNothing_IsEmpty) {
  EXPECT_EQ(given_by("xdiff", {1}, {5}), of_kind({0}, {}));
  EXPECT_EQ(given_by("xdiff", {3, 1}, {1, 2, 3}), of_kind({3, 0}, {}));
  EXPECT_EQ(given_by("xdiff", {0}, {}), of_kind({0}, {}));
  EXPECT_EQ(given_by("xdiff", {0, 3}, {}), of_kind({0, 0}, {}));
  EXPECT_EQ(given_by("xdiff", {3, 0}, {}), of_kind({3, 0}, {}));
  EXPECT_EQ(given_by("xdiff", {}, {5}), of_kind({0}, {}));
}

// ---- Single values

TEST_F(OrderingTest, Required_XdiffOfIntegers_Wraps) {
  EXPECT_EQ(given(call("xdiff", {array_of<XTInt>(ctx(), {2}, {INT32_MIN, 1})}), Kind::int32),
            TestArray(Kind::int32, {1}, {-2147483647}));
  EXPECT_EQ(given(call("xdiff", {array_of<XTInt>(ctx(), {3}, {INT32_MAX, INT32_MIN, INT32_MAX})}), Kind::int32),
            TestArray(Kind::int32, {2}, {1, -1}));
  EXPECT_EQ(given(call("xdiff", {array_of<XTInt64>(ctx(), {2}, {INT64_MIN, 1})}), Kind::int64),
            TestArray(Kind::int64, {1}, {INT64_MIN + 1}));
}

}  // namespace
}  // namespace arrayfold::test
