// reduce/median_test.cpp: xmedian beside the array library's own median, bit for bit
//
// A long array is searched between two elements of a sample of it. Whatever the sample shows, hides or misses, the
// result is that of a partition of the whole.

#include <algorithm>
#include <functional>

#include <xtensor/xarray.hpp>
#include <xtensor/xsort.hpp>

#include "reductions.hpp"

namespace arrayfold::test {
namespace {

/// Around the length from which on there is a sample, and well beyond it.
std::vector<std::size_t> lengths() {
  std::vector<std::size_t> all;
  for (std::size_t length = 1; length <= 100; ++length) all.push_back(length);
  for (std::size_t length = 1000; length <= 1100; ++length) all.push_back(length);
  all.insert(all.end(), {5000, 100001});
  return all;
}

template <class Kind>
class Median : public ReductionTest {
 protected:
  using Element = typename Kind::element;
  using Row = std::vector<Element>;

  void expect_library(const Extents& extents, const Row& x, const std::string& what) const {
    Operand<Kind> operand(ctx(), extents, x);
    const Value value = operand.value();
    const auto found = number<HostNumber<Element>>("xmedian", value);
    const Element expected = xt::median(*container_of<Kind>(value));
    EXPECT_TRUE(same<HostNumber<Element>>(found, expected))
        << what << " of " << ::testing::PrintToString(extents) << " is " << found << ", not " << expected;
  }

  /// Fills every length by element numbers.
  template <class Fill>
  void expect_library_everywhere(const std::string& what, Fill fill) const {
    for (const std::size_t length : lengths()) {
      Row x(length);
      for (std::size_t i = 0; i < length; ++i) x[i] = fill(i, length);
      expect_library({length}, x, what);
    }
  }
};

TYPED_TEST_SUITE(Median, AllKinds, KindNames);

TYPED_TEST(Median, OfRandomElements) {
  using T = typename TypeParam::element;
  for (const std::size_t length : lengths())
    this->expect_library({length}, random_elements<T>(length, static_cast<unsigned>(length)), "random");
}

TYPED_TEST(Median, OfFewDistinctElements) {
  using T = typename TypeParam::element;
  for (const unsigned distinct : {2u, 3u, 10u}) {
    std::mt19937 engine(distinct);
    this->expect_library_everywhere("few distinct",
                                    [&](std::size_t, std::size_t) { return static_cast<T>(engine() % distinct); });
  }
  // The two around the middle are not the same.
  this->expect_library_everywhere(
      "halves", [](std::size_t i, std::size_t length) { return static_cast<T>(i < length / 2 ? 1 : 4); });
}

TYPED_TEST(Median, OfEqualElements) {
  using T = typename TypeParam::element;
  this->expect_library_everywhere("equal", [](std::size_t, std::size_t) { return T{7}; });
  this->expect_library_everywhere("equal but one",
                                  [](std::size_t i, std::size_t length) { return i == length / 2 ? T{1} : T{7}; });
}

TYPED_TEST(Median, OfSortedElements) {
  using T = typename TypeParam::element;
  this->expect_library_everywhere("sorted", [](std::size_t i, std::size_t) { return static_cast<T>(i); });
  this->expect_library_everywhere("reversed",
                                  [](std::size_t i, std::size_t length) { return static_cast<T>(length - i); });
  this->expect_library_everywhere(
      "up and down", [](std::size_t i, std::size_t length) { return static_cast<T>(std::min(i, length - i)); });
}

TYPED_TEST(Median, OfPeriodsThatMisleadASample) {
  using T = typename TypeParam::element;
  // A sample at even distances sees one element of each period, whatever the distance is, in one of these.
  const bool is_double = std::is_same_v<T, double>;
  for (std::size_t period = 2; period <= 80; ++period)
    for (const std::size_t length : {1030u, 1500u, 5000u, is_double ? 100001u : 20010u}) {
      std::vector<T> x(length);
      for (std::size_t i = 0; i < length; ++i) x[i] = static_cast<T>(i % period == 0 ? 1000 + i % 7 : i % 11);
      this->expect_library({length}, x, "large each period");
      for (T& element : x) element = -element;
      this->expect_library({length}, x, "small each period");
    }
}

TYPED_TEST(Median, OfMoreDimensions) {
  using T = typename TypeParam::element;
  for (const Extents& extents :
       std::vector<Extents>{{}, {1, 1}, {3, 5}, {5, 1}, {4, 6}, {40, 50}, {3, 7, 101}, {2, 2, 2, 2, 2, 2, 2, 2, 3}})
    this->expect_library(extents, random_elements<T>(size_of(extents), 5), "random");
}

TYPED_TEST(Median, OfTheEndsOfTheRange) {
  using T = typename TypeParam::element;
  using Limits = std::numeric_limits<T>;
  this->expect_library_everywhere("largest", [](std::size_t i, std::size_t) {
    return static_cast<T>(i % 2 == 0 ? Limits::max() : Limits::max() - 1);
  });
  this->expect_library_everywhere("lowest", [](std::size_t i, std::size_t) {
    return static_cast<T>(i % 2 == 0 ? Limits::lowest() : Limits::lowest() + 1);
  });
  std::mt19937 engine(2);
  this->expect_library_everywhere("ends", [&](std::size_t, std::size_t) {
    const T choice[] = {Limits::lowest(), Limits::max(), T{0}, T{1}};
    return choice[engine() % 4];
  });
}

TYPED_TEST(Median, LeavesTheOperandAsItWas) {
  using T = typename TypeParam::element;
  for (const std::size_t length : {2u, 99u, 1500u}) {
    const auto x = random_elements<T>(length, 4);
    Operand<TypeParam> operand(this->ctx(), {length}, x);
    this->call("xmedian", {operand.value()});
    EXPECT_EQ(elements_of<TypeParam>(operand.value()), x);
  }
}

template <class Kind>
using RealMedian = Median<Kind>;
TYPED_TEST_SUITE(RealMedian, RealKinds, KindNames);

TYPED_TEST(RealMedian, WithOneNaNAtSomePlace) {
  using T = typename TypeParam::element;
  const std::function<std::size_t(std::size_t)> places[] = {
      [](std::size_t) { return 0; },                                            // in every sample
      [](std::size_t length) { return std::min<std::size_t>(1, length - 1); },  // in none of a long array
      [](std::size_t length) { return length / 2; }, [](std::size_t length) { return length - 1; },
      [](std::size_t length) { return length * 2 / 3; }};
  for (const auto& place : places)
    for (const std::size_t length : lengths()) {
      auto x = random_elements<T>(length, static_cast<unsigned>(length));
      x[place(length)] = std::numeric_limits<T>::quiet_NaN();
      this->expect_library({length}, x, "one NaN");
      for (std::size_t i = 0; i < length; ++i)
        if (!std::isnan(x[i])) x[i] = static_cast<T>(i);
      this->expect_library({length}, x, "sorted but for a NaN");
    }
}

TYPED_TEST(RealMedian, WithManyNaNs) {
  using T = typename TypeParam::element;
  for (const unsigned rarity : {2u, 3u, 50u}) {
    std::mt19937 engine(rarity);
    this->expect_library_everywhere("NaN", [&](std::size_t, std::size_t) {
      return engine() % rarity == 0 ? std::numeric_limits<T>::quiet_NaN() : static_cast<T>(engine() % 1000);
    });
  }
  this->expect_library_everywhere("only NaN",
                                  [](std::size_t, std::size_t) { return std::numeric_limits<T>::quiet_NaN(); });
}

TYPED_TEST(RealMedian, OfZerosOfBothSigns) {
  using T = typename TypeParam::element;
  std::mt19937 engine(8);
  const auto zero = [&] { return engine() % 2 == 0 ? T{0} : -T{0}; };
  this->expect_library_everywhere("zeros", [&](std::size_t, std::size_t) { return zero(); });
  this->expect_library_everywhere("zeros among others", [&](std::size_t, std::size_t) {
    const auto drawn = engine() % 10;
    return drawn < 5 ? zero() : static_cast<T>(drawn) - T{7};
  });
  this->expect_library_everywhere("zeros as the lower middle", [&](std::size_t i, std::size_t length) {
    return i < (length + 1) / 2 ? zero() : T{5};
  });
  this->expect_library_everywhere("zeros as the higher middle",
                                  [&](std::size_t i, std::size_t length) { return i < length / 2 ? T{-5} : zero(); });
  // One negative zero among many, where no sample meets it.
  this->expect_library_everywhere("one negative zero",
                                  [&](std::size_t i, std::size_t) { return i == 1 ? -T{0} : T{0}; });
  this->expect_library_everywhere("one positive zero",
                                  [&](std::size_t i, std::size_t) { return i == 1 ? T{0} : -T{0}; });
}

TYPED_TEST(RealMedian, OfInfinities) {
  using T = typename TypeParam::element;
  constexpr T infinity = std::numeric_limits<T>::infinity();
  this->expect_library_everywhere("infinities", [&](std::size_t, std::size_t) { return infinity; });
  this->expect_library_everywhere(
      "both infinities", [&](std::size_t i, std::size_t length) { return i < length / 2 ? infinity : -infinity; });
  std::mt19937 engine(8);
  this->expect_library_everywhere("infinities among others", [&](std::size_t, std::size_t) {
    const T choice[] = {infinity, -infinity, T{1}, T{-2}, std::numeric_limits<T>::denorm_min()};
    return choice[engine() % 5];
  });
}

// ---- Single values

using Medians = ReductionTest;

TEST_F(Medians, OfReals_AreTheMiddleOrTheHalfOfTheSumOfTwo) {
  EXPECT_EQ((number_of<double, XTDouble>("xmedian", {3, 1, 2})), 2.0);
  EXPECT_EQ((number_of<double, XTDouble>("xmedian", {4, 1, 3, 2})), 2.5);
  EXPECT_EQ((number_of<double, XTDouble>("xmedian", {}, {42.5})), 42.5);
  EXPECT_EQ((number_of<double, XTDouble>("xmedian", {1e308, 1.5e308})), INFINITY);  // the sum overflows
}

TEST_F(Medians, OfFloats_AreComputedIn32BitsAndWidened) {
  EXPECT_EQ((number_of<double, XTFloat>("xmedian", {3e38f, 3e38f})), INFINITY);
  EXPECT_EQ((number_of<double, XTFloat>("xmedian", {0.1f, 0.2f})), static_cast<double>((0.1f + 0.2f) * 0.5f));
  EXPECT_EQ((number_of<double, XTFloat>("xmedian", {0x1p24f, 0x1p24f + 2})), 16777216.0);  // 2^25 + 2 is a tie
}

TEST_F(Medians, Required_OfIntegers_AreIntegersHalvedTowardZero) {
  EXPECT_EQ((number_of<std::int32_t, XTInt>("xmedian", {4, 1, 3, 2})), 2);
  EXPECT_EQ((number_of<std::int32_t, XTInt>("xmedian", {1, 2})), 1);
  EXPECT_EQ((number_of<std::int32_t, XTInt>("xmedian", {-3, 0})), -1);
  EXPECT_EQ((number_of<std::int64_t, XTInt64>("xmedian", {4, 1, 3, 2})), 2);
  EXPECT_EQ((number_of<std::int64_t, XTInt64>("xmedian", {-3, 0})), -1);
}

TEST_F(Medians, Required_SumOfTheTwoMiddleIntegers_Wraps) {
  EXPECT_EQ((number_of<std::int32_t, XTInt>("xmedian", {2147483647, 1})), -1073741824);
  EXPECT_EQ((number_of<std::int32_t, XTInt>("xmedian", {2147483647, 2147483647})), -1);
  EXPECT_EQ((number_of<std::int64_t, XTInt64>("xmedian", {INT64_MAX, INT64_MAX})), -1);
  EXPECT_EQ((number_of<std::int64_t, XTInt64>("xmedian", {INT64_MIN, INT64_MIN})), 0);
  EXPECT_EQ((number_of<std::int64_t, XTInt64>("xmedian", {2147483647, 1})), 1073741824);
}

TEST_F(Medians, OfNothing_AreNaNForRealsAndZeroForIntegers) {
  for (const Extents& extents : {Extents{0}, Extents{0, 3}, Extents{3, 0}}) {
    EXPECT_TRUE(std::isnan(number_of<double, XTDouble>("xmedian", extents, {})));
    EXPECT_TRUE(std::isnan(number_of<double, XTFloat>("xmedian", extents, {})));
    EXPECT_EQ((number_of<std::int32_t, XTInt>("xmedian", extents, {})), 0);
    EXPECT_EQ((number_of<std::int64_t, XTInt64>("xmedian", extents, {})), 0);
  }
}

}  // namespace
}  // namespace arrayfold::test
