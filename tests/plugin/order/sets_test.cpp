// order/sets_test.cpp: xunique, xdiff, xargmin and xargmax beside the array library's own, bit for bit

#include <cmath>

#include <xtensor/xmath.hpp>
#include <xtensor/xsort.hpp>

#include "ordering.hpp"

namespace arrayfold::test {
namespace {

using Position = Elements<std::int32_t>;

template <class Kind>
class Sets : public OrderingTest {
 protected:
  using Element = typename Kind::element;

  std::string unique_difference(const Value& operand) const {
    return difference(given<Kind>(call("xunique", {operand})),
                      elements_in<Element>(xt::unique(*container_of<Kind>(operand))));
  }

  void expect_positions(const Value& operand, const std::string& what) const {
    const auto& array = *container_of<Kind>(operand);
    EXPECT_EQ(given<XTInt>(call("xargmin", {operand})), elements_in<std::int32_t>(xt::argmin(array))) << what;
    EXPECT_EQ(given<XTInt>(call("xargmax", {operand})), elements_in<std::int32_t>(xt::argmax(array))) << what;
  }

  Elements<Element> given_by(const char* name, const Extents& extents, const std::vector<Element>& x) const {
    Operand<Kind> operand(ctx(), extents, x);
    return given<Kind>(call(name, {operand.value()}));
  }
  Position position(const char* name, const Extents& extents, const std::vector<Element>& x) const {
    Operand<Kind> operand(ctx(), extents, x);
    return given<XTInt>(call(name, {operand.value()}));
  }

  FloatKindRegistered registered_;
};

TYPED_TEST_SUITE(Sets, AllKinds, KindNames);

TYPED_TEST(Sets, XuniqueOfEveryPatternLengthAndShape_IsTheLibrarys) {
  this->template for_each_array<TypeParam>([&](const Value& operand, const auto&, const std::string& what) {
    EXPECT_EQ(this->unique_difference(operand), "") << what;
  });
}

TYPED_TEST(Sets, XdiffOfEveryPatternLengthAndShape_IsTheLibrarys) {
  using T = typename TypeParam::element;
  this->template for_each_array<TypeParam>([&](const Value& operand, const auto& array, const std::string& what) {
    auto found = this->template given<TypeParam>(this->call("xdiff", {operand}));
    auto expected = elements_in<T>(xt::diff(array));
    // Which NaN comes of two is the compiler's choice.
    for (auto* all : {&found.elements, &expected.elements})
      for (T& x : *all)
        if (x != x) x = std::numeric_limits<T>::has_quiet_NaN ? std::numeric_limits<T>::quiet_NaN() : x;
    EXPECT_EQ(difference(found, expected), "") << what;
  });
}

TYPED_TEST(Sets, PositionsOfEveryPatternLengthAndShape_AreTheLibrarys) {
  this->template for_each_array<TypeParam>(
      [&](const Value& operand, const auto&, const std::string& what) { this->expect_positions(operand, what); });
}

TYPED_TEST(Sets, OfManyElements_AreTheLibrarys) {
  using T = typename TypeParam::element;
  for (const auto& pattern : patterns<T>()) {
    Operand<TypeParam> operand(this->ctx(), {100001}, pattern.fill(100001));
    EXPECT_EQ(this->unique_difference(operand.value()), "") << pattern.name;
    this->expect_positions(operand.value(), pattern.name);
  }
}

TYPED_TEST(Sets, ExtremesAreFoundAtEachPlace) {
  using T = typename TypeParam::element;
  for (const std::size_t length : {3u, 17u, 64u, 300u, 2100u, 5000u})
    for (std::size_t place = 0; place<length; place += length> 1000 ? 13 : 1) {
      std::vector<T> x(length, 100);
      x[place] = 7;
      ASSERT_EQ(this->position("xargmin", {length}, x), (Position{{}, {static_cast<std::int32_t>(place)}}));
      x[place] = 1000;
      if (place + 1 < length) x[length - 1] = 1000;  // the first of equal ones counts
      ASSERT_EQ(this->position("xargmax", {length}, x), (Position{{}, {static_cast<std::int32_t>(place)}}));
    }
}

TYPED_TEST(Sets, PositionsAreFlatAndOfNoDimension) {
  using T = typename TypeParam::element;
  const std::vector<T> x = {5, 9, 8, 1, 7, 6};
  EXPECT_EQ(this->position("xargmin", {2, 3}, x), (Position{{}, {3}}));
  EXPECT_EQ(this->position("xargmax", {2, 3}, x), (Position{{}, {1}}));
  EXPECT_EQ(this->position("xargmin", {6, 1}, x), (Position{{}, {3}}));
}

TYPED_TEST(Sets, OfEqualExtremes_TheFirstCounts) {
  EXPECT_EQ(this->position("xargmin", {3}, {2, 1, 1}), (Position{{}, {1}}));
  EXPECT_EQ(this->position("xargmax", {3}, {2, 2, 1}), (Position{{}, {0}}));
}

TYPED_TEST(Sets, PositionsOfNothingAndOfOne_AreZero) {
  using T = typename TypeParam::element;
  for (const char* name : {"xargmin", "xargmax"}) {
    for (const Extents& extents : {Extents{0}, Extents{3, 0}, Extents{0, 3}})
      EXPECT_EQ(this->position(name, extents, {}), (Position{{}, {0}}));
    for (const Extents& extents : {Extents{}, Extents{1}, Extents{1, 1, 1, 1, 1, 1}})
      EXPECT_EQ(this->position(name, extents, {T{42}}), (Position{{}, {0}}));
  }
}

TYPED_TEST(Sets, XuniqueForgetsTheShape) {
  using T = typename TypeParam::element;
  EXPECT_EQ(this->given_by("xunique", {3, 3}, {3, 1, 2, 2, 1, 3, 9, 1, 1}), (Elements<T>{{4}, {1, 2, 3, 9}}));
  EXPECT_EQ(this->given_by("xunique", {}, {T{42}}), (Elements<T>{{1}, {T{42}}}));
  for (const Extents& extents : {Extents{0}, Extents{3, 0}, Extents{0, 3}})
    EXPECT_EQ(this->given_by("xunique", extents, {}), (Elements<T>{{0}, {}}));
}

TYPED_TEST(Sets, XdiffStaysInsideEachRow) {
  using T = typename TypeParam::element;
  EXPECT_EQ(this->given_by("xdiff", {2, 3}, {1, 2, 4, 10, 9, 20}), (Elements<T>{{2, 2}, {1, 2, -1, 11}}));
  EXPECT_EQ(this->given_by("xdiff", {2, 2, 2}, {1, 2, 3, 5, 8, 13, 1, 0}), (Elements<T>{{2, 2, 1}, {1, 2, 5, -1}}));
}

TYPED_TEST(Sets, XdiffOfRunsOfOneAndOfNothing_IsEmpty) {
  using T = typename TypeParam::element;
  EXPECT_EQ(this->given_by("xdiff", {1}, {T{5}}), (Elements<T>{{0}, {}}));
  EXPECT_EQ(this->given_by("xdiff", {3, 1}, {1, 2, 3}), (Elements<T>{{3, 0}, {}}));
  EXPECT_EQ(this->given_by("xdiff", {0}, {}), (Elements<T>{{0}, {}}));
  EXPECT_EQ(this->given_by("xdiff", {0, 3}, {}), (Elements<T>{{0, 0}, {}}));
  EXPECT_EQ(this->given_by("xdiff", {3, 0}, {}), (Elements<T>{{3, 0}, {}}));
  EXPECT_EQ(this->given_by("xdiff", {}, {T{5}}), (Elements<T>{{0}, {}}));
}

// ---- Single values

TEST_F(OrderingTest, Required_XdiffOfIntegers_Wraps) {
  EXPECT_EQ(given<XTInt>(call("xdiff", {array_of<XTInt>(ctx(), {2}, {INT32_MIN, 1})})), (Position{{1}, {-2147483647}}));
  EXPECT_EQ(given<XTInt>(call("xdiff", {array_of<XTInt>(ctx(), {3}, {INT32_MAX, INT32_MIN, INT32_MAX})})),
            (Position{{2}, {1, -1}}));
  EXPECT_EQ(given<XTInt64>(call("xdiff", {array_of<XTInt64>(ctx(), {2}, {INT64_MIN, 1})})),
            (Elements<std::int64_t>{{1}, {INT64_MIN + 1}}));
}

TEST_F(OrderingTest, Required_NaN_StaysInXuniqueEachTime) {
  const double nan = std::nan("");
  const auto found = given<XTDouble>(call("xunique", {array_of<XTDouble>(ctx(), {3}, {nan, nan, nan})}));
  EXPECT_EQ(found.extents, Extents{3});
}

TEST_F(OrderingTest, XuniqueOfZerosOfBothSigns_IsTheFirstInOrder) {
  for (const std::size_t length : {3u, 300u}) {
    std::vector<double> x(length, -0.0);
    x[1] = 0.0;
    const auto found = given<XTDouble>(call("xunique", {array_of<XTDouble>(ctx(), {length}, x)}));
    ASSERT_EQ(found.extents, Extents{1});
    std::sort(x.begin(), x.end());
    EXPECT_EQ(std::signbit(found.elements[0]), std::signbit(x[0]));
  }
}

TEST_F(OrderingTest, Required_NaNInFront_IsTheExtremeAndElsewhereNone) {
  const double nan = std::nan("");
  for (const std::size_t length : {3u, 40u, 300u, 5000u}) {
    std::vector<double> x(length, 2);
    x[1] = 1, x[2] = 3;
    const auto position = [&](const char* name) {
      return given<XTInt>(call(name, {array_of<XTDouble>(ctx(), {length}, x)})).elements[0];
    };
    x[0] = nan;
    EXPECT_EQ(position("xargmin"), 0);
    EXPECT_EQ(position("xargmax"), 0);
    x[0] = 2;
    for (std::size_t place = 3; place < length; place += 7) x[place] = nan;
    EXPECT_EQ(position("xargmin"), 1);
    EXPECT_EQ(position("xargmax"), 2);
  }
}

TEST_F(OrderingTest, ZerosOfBothSigns_AreEqualExtremes) {
  const Value zeros = array_of<XTDouble>(ctx(), {4}, {0.0, -0.0, 0.0, -0.0});
  EXPECT_EQ(given<XTInt>(call("xargmin", {zeros})), (Position{{}, {0}}));
  EXPECT_EQ(given<XTInt>(call("xargmax", {zeros})), (Position{{}, {0}}));
}

}  // namespace
}  // namespace arrayfold::test
