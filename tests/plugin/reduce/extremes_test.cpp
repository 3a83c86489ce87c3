// reduce/extremes_test.cpp: xamin and xamax, NaN by NaN and zero by zero
//
// Blocks are folded in order: of two that compare equal, and of two of which one is NaN, the first stays. Which zero
// comes out, and what a NaN hides, follows from that for every length.

#include <algorithm>

#include "reductions.hpp"

namespace arrayfold::test {
namespace {

template <class Kind>
class Extremes : public ReductionTest {
 protected:
  using Element = typename Kind::element;

  void expect_order(const Extents& extents, const std::vector<Element>& x, const std::string& what) const {
    Operand<Kind> operand(ctx(), extents, x);
    const auto min = number<HostNumber<Element>>("xamin", operand.value());
    const auto max = number<HostNumber<Element>>("xamax", operand.value());
    EXPECT_TRUE(same<HostNumber<Element>>(min, expected_min(extents, x)))
        << what << " of " << ::testing::PrintToString(extents) << ": " << min << ", not " << expected_min(extents, x);
    EXPECT_TRUE(same<HostNumber<Element>>(max, expected_max(extents, x)))
        << what << " of " << ::testing::PrintToString(extents) << ": " << max << ", not " << expected_max(extents, x);
  }

  /// A filling of each length up to 1500, which are a few of the module's own strides and what is left of them.
  template <class Fill>
  void expect_order_everywhere(const std::string& what, Fill fill) const {
    std::mt19937 engine(3);
    for (std::size_t length = 0; length <= 1500; ++length) {
      std::vector<Element> x(length);
      for (Element& element : x) element = fill(engine);
      expect_order({length}, x, what);
    }
  }
};

TYPED_TEST_SUITE(Extremes, AllKinds, KindNames);

TYPED_TEST(Extremes, OfRandomElements) {
  using T = typename TypeParam::element;
  for (std::size_t length = 0; length <= 1500; ++length)
    this->expect_order({length}, random_elements<T>(length, static_cast<unsigned>(length)), "random");
  for (const Extents& extents :
       std::vector<Extents>{{}, {3, 5}, {5, 3}, {40, 50}, {7, 11, 13}, {2, 2, 2, 2, 2, 2, 2, 2, 3}})
    this->expect_order(extents, random_elements<T>(size_of(extents), 9), "random");
}

TYPED_TEST(Extremes, AtEachPlace) {
  using T = typename TypeParam::element;
  for (const std::size_t length : {5u, 9u, 300u, 520u, 600u})
    for (std::size_t place = 0; place < length; ++place) {
      std::vector<T> x(length, 100);
      x[place] = 7;
      this->expect_order({length}, x, "one small");
      x[place] = 1000;
      this->expect_order({length}, x, "one large");
    }
}

template <class Kind>
using RealExtremes = Extremes<Kind>;
TYPED_TEST_SUITE(RealExtremes, RealKinds, KindNames);

TYPED_TEST(RealExtremes, AmongManyNaNs) {
  using T = typename TypeParam::element;
  this->expect_order_everywhere("every second NaN", [](std::mt19937& engine) {
    return engine() % 2 == 0 ? std::numeric_limits<T>::quiet_NaN() : static_cast<T>(engine() % 1000);
  });
}

TYPED_TEST(RealExtremes, AmongFewNaNs) {
  using T = typename TypeParam::element;
  this->expect_order_everywhere("a NaN now and then", [](std::mt19937& engine) {
    return engine() % 300 == 0 ? std::numeric_limits<T>::quiet_NaN() : static_cast<T>(engine() % 1000) - T{500};
  });
}

TYPED_TEST(RealExtremes, OfNaNsAlone) {
  using T = typename TypeParam::element;
  this->expect_order_everywhere("NaN", [](std::mt19937&) { return std::numeric_limits<T>::quiet_NaN(); });
}

TYPED_TEST(RealExtremes, OfZerosOfBothSigns) {
  using T = typename TypeParam::element;
  this->expect_order_everywhere("zeros", [](std::mt19937& engine) { return engine() % 2 == 0 ? T{0} : -T{0}; });
  this->expect_order_everywhere("few zeros", [](std::mt19937& engine) {
    const auto drawn = engine() % 400;
    return drawn == 0 ? T{0} : drawn == 1 ? -T{0} : static_cast<T>(drawn);
  });
  this->expect_order_everywhere("zeros above", [](std::mt19937& engine) {
    const auto drawn = engine() % 400;
    return drawn == 0 ? T{0} : drawn == 1 ? -T{0} : -static_cast<T>(drawn);
  });
}

TYPED_TEST(RealExtremes, OfZerosAndNaNs) {
  using T = typename TypeParam::element;
  this->expect_order_everywhere("zeros and NaN", [](std::mt19937& engine) {
    const T choice[] = {T{0}, -T{0}, std::numeric_limits<T>::quiet_NaN(), T{3}};
    return choice[engine() % 4];
  });
}

TYPED_TEST(RealExtremes, OfInfinitiesAndSubnormals) {
  using T = typename TypeParam::element;
  using Limits = std::numeric_limits<T>;
  this->expect_order_everywhere("the ends", [](std::mt19937& engine) {
    const T choice[] = {Limits::infinity(), -Limits::infinity(), Limits::denorm_min(), -Limits::denorm_min(),
                        Limits::min(),      Limits::max(),       Limits::lowest()};
    return choice[engine() % 7];
  });
  this->expect_order_everywhere("infinities", [](std::mt19937&) { return Limits::infinity(); });
  this->expect_order_everywhere("negative infinities", [](std::mt19937&) { return -Limits::infinity(); });
}

TYPED_TEST(RealExtremes, OfOneNaNAtEachPlace) {
  using T = typename TypeParam::element;
  for (const std::size_t length : {4u, 8u, 11u, 256u, 512u, 530u, 600u})
    for (std::size_t place = 0; place < length; ++place) {
      auto x = random_elements<T>(length, static_cast<unsigned>(place));
      x[place] = std::numeric_limits<T>::quiet_NaN();
      this->expect_order({length}, x, "one NaN");
      // The extreme itself beside it, where it may be hidden.
      x[(place + length / 2) % length] = T{-1e30f};
      x[(place + 1) % length] = T{1e30f};
      this->expect_order({length}, x, "one NaN beside the extremes");
    }
}

// ---- Single values

using Extreme = ReductionTest;

TEST_F(Extreme, Required_NaN_HidesTheElementThatItMeetsFirst) {
  // b0 meets b2, b1 meets b3, and the two results each other; the second of a pair is dropped.
  EXPECT_EQ((number_of<double, XTDouble>("xamin", {NAN, 5, 1, 7})), std::numeric_limits<double>::max());
  EXPECT_EQ((number_of<double, XTDouble>("xamin", {1, 5, NAN, 7})), 1.0);
  EXPECT_EQ((number_of<double, XTDouble>("xamin", {9, NAN, 8, 1})), 8.0);
  EXPECT_EQ((number_of<double, XTDouble>("xamax", {NAN, 5, 1, 7})), std::numeric_limits<double>::min());
  EXPECT_EQ((number_of<double, XTDouble>("xamin", {9, 9, 9, 9, NAN, 1})), 1.0);
  EXPECT_EQ((number_of<double, XTDouble>("xamin", {NAN})), std::numeric_limits<double>::max());
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
