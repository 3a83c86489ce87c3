// reduce/extremes_test.cpp: xamin and xamax, NaN by NaN and zero by zero
//
// NaN is skipped wherever it stands. Blocks are folded in order: of two elements that compare equal the first stays.
// Which zero comes out follows from that for every length.

#include <functional>
#include <random>

#include "reference.hpp"

namespace arrayfold::test {
namespace {

class Extremes : public OverKinds<ReductionTest> {
 protected:
  void expect_order(const TestArray& array, const std::string& what) const {
    Operand operand(ctx(), array);
    for (const char* name : {"xamin", "xamax"})
      EXPECT_EQ(number_given(name, operand.value()), expected_number(name, array))
          << name << ": " << what << " of " << ::testing::PrintToString(array.extents());
  }

  /// A filling of each length up to 1500, which are a few of the module's own strides and what is left of them.
  using Fill = std::function<Number(std::mt19937& engine)>;
  void expect_order_everywhere(const std::string& what, const Fill& fill) const {
    std::mt19937 engine(3);
    for (std::size_t length = 0; length <= 1500; ++length) {
      Numbers x;
      for (std::size_t i = 0; i < length; ++i) x.push_back(fill(engine));
      expect_order(TestArray(kind(), {length}, x), what);
    }
  }
};

INSTANTIATE_TEST_SUITE_P(Kinds, Extremes, ::testing::ValuesIn(numeric_kinds), KindName());

TEST_P(Extremes, OfRandomElements_FollowTheRule) {
  for (std::size_t length = 0; length <= 1500; ++length)
    expect_order(random_array(kind(), {length}, static_cast<unsigned>(length)), "random");
  for (const Extents& extents :
       std::vector<Extents>{{}, {3, 5}, {5, 3}, {40, 50}, {7, 11, 13}, {2, 2, 2, 2, 2, 2, 2, 2, 3}})
    expect_order(random_array(kind(), extents, 9), "random");
}

TEST_P(Extremes, AtEachPlace_AreFound) {
  for (const std::size_t length : {5u, 9u, 300u, 520u, 600u})
    for (std::size_t place = 0; place < length; ++place) {
      TestArray x(kind(), {length}, Numbers(length, 100));
      x.set(place, 7);
      expect_order(x, "one small");
      x.set(place, 1000);
      expect_order(x, "one large");
    }
}

TEST_P(Extremes, OfLongArrays_AreFoundAtEachEnd) {
  for (const std::size_t length : {65536u, 65537u, 131072u, 131073u, 200001u})
    for (const std::size_t place : {std::size_t{0}, length / 4, length / 2 + 1, length - 1}) {
      TestArray x(kind(), {length}, Numbers(length, 100));
      x.set(place, 7);
      x.set(length - 1 - place, 1000);
      expect_order(x, "one small and one large");
    }
}

class FloatingExtremes : public Extremes {};
INSTANTIATE_TEST_SUITE_P(Kinds, FloatingExtremes, ::testing::ValuesIn(floating_kinds), KindName());

TEST_P(FloatingExtremes, AmongManyNaNs_FollowTheRule) {
  expect_order_everywhere("every second NaN", [](std::mt19937& engine) {
    return engine() % 2 == 0 ? Number(NAN) : Number(engine() % 1000);
  });
}

TEST_P(FloatingExtremes, AmongFewNaNs_FollowTheRule) {
  expect_order_everywhere("a NaN now and then", [](std::mt19937& engine) {
    return engine() % 300 == 0 ? NAN : static_cast<double>(engine() % 1000) - 500;
  });
}

TEST_P(FloatingExtremes, OfNaNsAlone_FollowTheRule) {
  expect_order_everywhere("NaN", [](std::mt19937&) { return NAN; });
}

TEST_P(FloatingExtremes, OfZerosOfBothSigns_FollowTheRule) {
  expect_order_everywhere("zeros", [](std::mt19937& engine) { return engine() % 2 == 0 ? 0.0 : -0.0; });
  const auto among = [](std::mt19937& engine, double sign) {
    const auto drawn = engine() % 400;
    return drawn == 0 ? 0.0 : drawn == 1 ? -0.0 : sign * static_cast<double>(drawn);
  };
  expect_order_everywhere("few zeros", [&](std::mt19937& engine) { return among(engine, 1); });
  expect_order_everywhere("zeros above", [&](std::mt19937& engine) { return among(engine, -1); });
}

TEST_P(FloatingExtremes, OfZerosAndNaNs_FollowTheRule) {
  expect_order_everywhere("zeros and NaN", [](std::mt19937& engine) {
    const double choice[] = {0.0, -0.0, NAN, 3};
    return choice[engine() % 4];
  });
}

TEST_P(FloatingExtremes, OfInfinitiesAndSubnormals_FollowTheRule) {
  const auto [lowest, max, min, denorm_min] = limits_of(kind());
  const Number choice[] = {INFINITY, -INFINITY, denorm_min, -denorm_min.real, min, max, lowest};
  expect_order_everywhere("the ends", [&](std::mt19937& engine) { return choice[engine() % 7]; });
  expect_order_everywhere("infinities", [](std::mt19937&) { return INFINITY; });
  expect_order_everywhere("negative infinities", [](std::mt19937&) { return -INFINITY; });
}

TEST_P(FloatingExtremes, OfOneNaNAtEachPlace_FollowTheRule) {
  for (const std::size_t length : {4u, 8u, 11u, 256u, 512u, 530u, 600u})
    for (std::size_t place = 0; place < length; ++place) {
      TestArray x = random_array(kind(), {length}, static_cast<unsigned>(place));
      x.set(place, NAN);
      expect_order(x, "one NaN");
      // The extremes beside it.
      x.set((place + length / 2) % length, -1e30f);
      x.set((place + 1) % length, 1e30f);
      expect_order(x, "one NaN beside the extremes");
    }
}

// ---- Single values

using Extreme = ReductionTest;

TEST_F(Extreme, NaN_IsSkippedWhereverItStands) {
  EXPECT_EQ((number_of<double, XTDouble>("xamin", {5, NAN, 7, 1})), 1.0);
  EXPECT_EQ((number_of<double, XTDouble>("xamin", {NAN, 5, 1, 7})), 1.0);
  EXPECT_EQ((number_of<double, XTDouble>("xamin", {9, NAN, 8, 1})), 1.0);
  EXPECT_EQ((number_of<double, XTDouble>("xamin", {NAN, NAN, 3, NAN, 4})), 3.0);
  EXPECT_EQ((number_of<double, XTDouble>("xamin", {9, 9, 9, 9, NAN, 1})), 1.0);
  EXPECT_EQ((number_of<double, XTDouble>("xamax", {NAN, 5, 1, 7})), 7.0);
  EXPECT_EQ((number_of<double, XTDouble>("xamax", {5, 9, NAN, 7})), 9.0);
}

TEST_F(Extreme, OfNaNAlone_IsThatOfNoElement) {
  EXPECT_EQ((number_of<double, XTDouble>("xamin", {NAN})), std::numeric_limits<double>::max());
  EXPECT_EQ((number_of<double, XTDouble>("xamin", {NAN, NAN, NAN, NAN})), std::numeric_limits<double>::max());
  EXPECT_EQ((number_of<double, XTDouble>("xamax", {NAN, NAN, NAN, NAN, NAN})), std::numeric_limits<double>::min());
}

TEST_F(Extreme, Required_OfTwoZeros_TheFirstFoundStays) {
  EXPECT_TRUE(std::signbit(number_of<double, XTDouble>("xamin", {-0.0, 0.0})));
  EXPECT_FALSE(std::signbit(number_of<double, XTDouble>("xamin", {0.0, -0.0})));
  // The negative zero is in the second pair, and the result of the first stays.
  EXPECT_FALSE(std::signbit(number_of<double, XTDouble>("xamin", {1, -0.0, 0.0, 0.0})));
  EXPECT_TRUE(std::signbit(number_of<double, XTDouble>("xamin", {1, 0.0, -0.0, 0.0})));
}

}  // namespace
}  // namespace arrayfold::test
