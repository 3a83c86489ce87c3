// reduce/median_test.cpp: xmedian beside the array library's own median, bit for bit
//
// A long array is searched between two elements of a sample of it. Whatever the sample shows, hides or misses, the
// result is that of a partition of the whole.

#include <algorithm>
#include <functional>

#include "reference.hpp"

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

class Median : public OverKinds<ReductionTest> {
 protected:
  void expect_library(const TestArray& array, const std::string& what) const {
    EXPECT_EQ(number_given("xmedian", array), library_number("xmedian", array))
        << what << " of " << ::testing::PrintToString(array.extents());
  }

  /// Fills every length by element numbers.
  using Fill = std::function<Number(std::size_t i, std::size_t length)>;
  void expect_library_everywhere(const std::string& what, const Fill& fill) const {
    for (const std::size_t length : lengths()) {
      Numbers x;
      for (std::size_t i = 0; i < length; ++i) x.push_back(fill(i, length));
      expect_library(TestArray(kind(), {length}, x), what);
    }
  }
};

INSTANTIATE_TEST_SUITE_P(Kinds, Median, ::testing::ValuesIn(numeric_kinds), KindName());

TEST_P(Median, OfRandomElements_IsTheLibrarys) {
  for (const std::size_t length : lengths())
    expect_library(random_array(kind(), {length}, static_cast<unsigned>(length)), "random");
}

TEST_P(Median, OfFewDistinctElements_IsTheLibrarys) {
  for (const unsigned distinct : {2u, 3u, 10u}) {
    std::mt19937 engine(distinct);
    expect_library_everywhere("few distinct", [&](std::size_t, std::size_t) { return engine() % distinct; });
  }
  // The two around the middle are not the same.
  expect_library_everywhere("halves", [](std::size_t i, std::size_t length) { return i < length / 2 ? 1 : 4; });
}

TEST_P(Median, OfEqualElements_IsTheLibrarys) {
  expect_library_everywhere("equal", [](std::size_t, std::size_t) { return 7; });
  expect_library_everywhere("equal but one", [](std::size_t i, std::size_t length) { return i == length / 2 ? 1 : 7; });
}

TEST_P(Median, OfSortedElements_IsTheLibrarys) {
  expect_library_everywhere("sorted", [](std::size_t i, std::size_t) { return i; });
  expect_library_everywhere("reversed", [](std::size_t i, std::size_t length) { return length - i; });
  expect_library_everywhere("up and down", [](std::size_t i, std::size_t length) { return std::min(i, length - i); });
}

TEST_P(Median, OfPeriodsThatMisleadASample_IsTheLibrarys) {
  // A sample at even distances sees one element of each period, whatever the distance is, in one of these.
  const std::size_t longest = kind() == Kind::float64 ? 100001 : 20010;
  for (std::size_t period = 2; period <= 80; ++period)
    for (const std::size_t length : {std::size_t{1030}, std::size_t{1500}, std::size_t{5000}, longest})
      for (const int sign : {1, -1}) {
        std::vector<std::int32_t> x(length);
        for (std::size_t i = 0; i < length; ++i)
          x[i] = sign * static_cast<std::int32_t>(i % period == 0 ? 1000 + i % 7 : i % 11);
        expect_library(TestArray({length}, x).converted(kind()), sign > 0 ? "large each period" : "small each period");
      }
}

TEST_P(Median, OfMoreDimensions_IsTheLibrarys) {
  for (const Extents& extents :
       std::vector<Extents>{{}, {1, 1}, {3, 5}, {5, 1}, {4, 6}, {40, 50}, {3, 7, 101}, {2, 2, 2, 2, 2, 2, 2, 2, 3}})
    expect_library(random_array(kind(), extents, 5), "random");
}

TEST_P(Median, OfTheEndsOfTheRange_IsTheLibrarys) {
  const auto [lowest, max, min, denorm_min] = limits_of(kind());
  const auto beside = [](const Number& x, int step) { return x.is_integer ? Number(x.integer + step) : x; };
  expect_library_everywhere("largest",
                            [&, max = max](std::size_t i, std::size_t) { return i % 2 == 0 ? max : beside(max, -1); });
  expect_library_everywhere(
      "lowest", [&, lowest = lowest](std::size_t i, std::size_t) { return i % 2 == 0 ? lowest : beside(lowest, 1); });
  std::mt19937 engine(2);
  const Number choice[] = {lowest, max, 0, 1};
  expect_library_everywhere("ends", [&](std::size_t, std::size_t) { return choice[engine() % 4]; });
}

TEST_P(Median, LeavesTheOperandAsItWas) {
  for (const std::size_t length : {2u, 99u, 1500u}) {
    const TestArray array = random_array(kind(), {length}, 4);
    Operand operand(ctx(), array);
    call("xmedian", {operand.value()});
    EXPECT_EQ(from_host(operand.value()), array);
  }
}

class FloatingMedian : public Median {};
INSTANTIATE_TEST_SUITE_P(Kinds, FloatingMedian, ::testing::ValuesIn(floating_kinds), KindName());

TEST_P(FloatingMedian, WithOneNaNAtSomePlace_IsTheLibrarys) {
  const std::function<std::size_t(std::size_t)> places[] = {
      [](std::size_t) { return 0; },                                            // in every sample
      [](std::size_t length) { return std::min<std::size_t>(1, length - 1); },  // in none of a long array
      [](std::size_t length) { return length / 2; }, [](std::size_t length) { return length - 1; },
      [](std::size_t length) { return length * 2 / 3; }};
  for (const auto& place : places)
    for (const std::size_t length : lengths()) {
      TestArray x = random_array(kind(), {length}, static_cast<unsigned>(length));
      x.set(place(length), NAN);
      expect_library(x, "one NaN");
      for (std::size_t i = 0; i < length; ++i)
        if (i != place(length)) x.set(i, i);
      expect_library(x, "sorted but for a NaN");
    }
}

TEST_P(FloatingMedian, WithManyNaNs_IsTheLibrarys) {
  for (const unsigned rarity : {2u, 3u, 50u}) {
    std::mt19937 engine(rarity);
    expect_library_everywhere("NaN", [&](std::size_t, std::size_t) {
      return engine() % rarity == 0 ? Number(NAN) : Number(engine() % 1000);
    });
  }
  expect_library_everywhere("only NaN", [](std::size_t, std::size_t) { return NAN; });
}

TEST_P(FloatingMedian, OfZerosOfBothSigns_IsTheLibrarys) {
  std::mt19937 engine(8);
  const auto zero = [&] { return engine() % 2 == 0 ? 0.0 : -0.0; };
  expect_library_everywhere("zeros", [&](std::size_t, std::size_t) { return zero(); });
  expect_library_everywhere("zeros among others", [&](std::size_t, std::size_t) {
    const auto drawn = engine() % 10;
    return drawn < 5 ? zero() : static_cast<double>(drawn) - 7;
  });
  expect_library_everywhere("zeros as the lower middle",
                            [&](std::size_t i, std::size_t length) { return i < (length + 1) / 2 ? zero() : 5.0; });
  expect_library_everywhere("zeros as the higher middle",
                            [&](std::size_t i, std::size_t length) { return i < length / 2 ? -5.0 : zero(); });
  // One negative zero among many, where no sample meets it.
  expect_library_everywhere("one negative zero", [&](std::size_t i, std::size_t) { return i == 1 ? -0.0 : 0.0; });
  expect_library_everywhere("one positive zero", [&](std::size_t i, std::size_t) { return i == 1 ? 0.0 : -0.0; });
}

TEST_P(FloatingMedian, OfInfinities_IsTheLibrarys) {
  expect_library_everywhere("infinities", [&](std::size_t, std::size_t) { return INFINITY; });
  expect_library_everywhere("both infinities",
                            [&](std::size_t i, std::size_t length) { return i < length / 2 ? INFINITY : -INFINITY; });
  std::mt19937 engine(8);
  const Number choice[] = {INFINITY, -INFINITY, 1, -2, limits_of(kind()).denorm_min};
  expect_library_everywhere("infinities among others", [&](std::size_t, std::size_t) { return choice[engine() % 5]; });
}

// ---- Single values

using Medians = ReductionTest;

TEST_F(Medians, OfDoubles_AreTheMiddleOrTheHalfOfTheSumOfTwo) {
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

TEST_F(Medians, OfNothing_AreNaNForFloatingPointAndZeroForIntegers) {
  for (const Extents& extents : {Extents{0}, Extents{0, 3}, Extents{3, 0}}) {
    EXPECT_TRUE(std::isnan(number_of<double, XTDouble>("xmedian", extents, {})));
    EXPECT_TRUE(std::isnan(number_of<double, XTFloat>("xmedian", extents, {})));
    EXPECT_EQ((number_of<std::int32_t, XTInt>("xmedian", extents, {})), 0);
    EXPECT_EQ((number_of<std::int64_t, XTInt64>("xmedian", extents, {})), 0);
  }
}

}  // namespace
}  // namespace arrayfold::test
