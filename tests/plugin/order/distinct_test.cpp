// order/distinct_test.cpp: xunique beside the array library's own, bit for bit

#include <algorithm>
#include <cmath>

#include "ordering.hpp"
#include "reference.hpp"

namespace arrayfold::test {
namespace {

class Distinct : public OverKinds<OrderingTest> {
 protected:
  void expect_unique(const Value& operand, const TestArray& array, const std::string& what) const {
    EXPECT_EQ(difference(given(call("xunique", {operand}), kind()), library_result("xunique", array)), "") << what;
  }

  TestArray of_kind(const Extents& extents, const Numbers& numbers) const {
    return TestArray(kind(), extents, numbers);
  }
  TestArray given_by(const char* name, const Extents& extents, const Numbers& x) const {
    return OrderingTest::given_by(name, of_kind(extents, x), kind());
  }

  FloatKindRegistered registered_;
};

INSTANTIATE_TEST_SUITE_P(Kinds, Distinct, ::testing::ValuesIn(numeric_kinds), KindName());

TEST_P(Distinct, XuniqueOfEveryPatternLengthAndShape_IsTheLibrarys) {
  for_each_array(kind(), [&](const Value& operand, const TestArray& array, const std::string& what) {
    expect_unique(operand, array, what);
  });
}

TEST_P(Distinct, OfManyElements_AreTheLibrarys) {
  for (const auto& pattern : patterns(kind())) {
    const TestArray array = pattern.fill({100001});
    Operand operand(ctx(), array);
    expect_unique(operand.value(), array, pattern.name);
  }
}

TEST_P(Distinct, XuniqueForgetsTheShape) {
  EXPECT_EQ(given_by("xunique", {3, 3}, {3, 1, 2, 2, 1, 3, 9, 1, 1}), of_kind({4}, {1, 2, 3, 9}));
  EXPECT_EQ(given_by("xunique", {}, {42}), of_kind({1}, {42}));
  for (const Extents& extents : {Extents{0}, Extents{3, 0}, Extents{0, 3}})
    EXPECT_EQ(given_by("xunique", extents, {}), of_kind({0}, {}));
}

// ---- Single values

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

}  // namespace
}  // namespace arrayfold::test
