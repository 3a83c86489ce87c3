// binning/histogram_test.cpp: xhistogram and xhistogram_bin_edges beside the array library's, and beside a slow formula
//
// The library writes past its counts where the formula of a bin rounds up to the number of bins, or is none. There
// only the slow formula is asked, which takes the last bin or the first.

#include <cmath>
#include <limits>
#include <random>

#include "binnings.hpp"
#include "reference.hpp"
#include "support/same.hpp"

namespace arrayfold::test {
namespace {

/// A histogram's counts, and edges.
TestArray counts(const Numbers& numbers) { return TestArray(Kind::float64, {numbers.size()}, numbers); }

class Histogram : public OverKinds<ArrayResultTest> {
 protected:
  static TestArray row(const Numbers& x) { return TestArray(kind(), {x.size()}, x); }
  static TestArray random(const Extents& extents, unsigned seed) { return random_array(kind(), extents, seed); }

  TestArray histogram(const TestArray& array) const {
    Operand operand(ctx(), array);
    return given(call("xhistogram", {operand.value()}), Kind::float64);
  }
  TestArray histogram(const TestArray& array, std::size_t bins) const {
    Operand operand(ctx(), array);
    return given(call("xhistogram", {operand.value(), Value(static_cast<std::int64_t>(bins))}), Kind::float64);
  }

  /// The formula's histogram, and the library's where that is in bounds.
  void expect_rule(const TestArray& array, std::size_t bins, const std::string& what) {
    const TestArray found = histogram(array, bins);
    const auto expected = expected_histogram(array, bins);
    ASSERT_EQ(difference(found, expected.counts), "") << what << " in " << bins;
    if (expected.in_bounds) {
      ASSERT_EQ(difference(found, library_histogram(array, bins)), "") << what << " in " << bins;
      ++beside_library_;
    } else {
      ++out_of_bounds_;
    }
  }
  void expect_rules(const TestArray& array, const std::string& what) {
    for (const std::size_t bins : {1u, 2u, 3u, 7u, 10u, 100u}) expect_rule(array, bins, what);
  }

  /// The eleven edges beside the library's.
  void expect_edges(const TestArray& array, const std::string& what) const {
    Operand operand(ctx(), array);
    const TestArray expected = library_edges(array);
    const TestArray found = given(call("xhistogram_bin_edges", {operand.value(), operand.value()}), Kind::float64);
    ASSERT_EQ(found.extents(), Extents{11}) << what;
    for (std::size_t i = 0; i < 11; ++i) ASSERT_TRUE(same(found[i].real, expected[i].real)) << what << " at " << i;
  }

  int beside_library_ = 0;
  int out_of_bounds_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Kinds, Histogram, ::testing::ValuesIn(floating_kinds), KindName());

TEST_P(Histogram, OfRandomElements_FollowsTheRule) {
  for (std::size_t length = 1; length <= 300; ++length)
    expect_rules(random({length}, static_cast<unsigned>(length)), "random");
  for (const std::size_t length : {1000u, 5000u, 100001u})
    expect_rules(random({length}, static_cast<unsigned>(length)), "random");
  EXPECT_GT(beside_library_, 1000);
}

TEST_P(Histogram, OfElementsOnEdgesAndBesideThem_FollowsTheRule) {
  std::mt19937_64 engine(4);
  for (int round = 0; round < 2000; ++round) {
    const std::size_t bins = 1 + engine() % 50;
    expect_rule(elements_on_edges(kind(), engine, bins), bins, "on edges");
  }
  EXPECT_GT(beside_library_, 1000);
  // Between neighbouring floats the products of doubles have room enough.
  if (kind() == Kind::float64) {
    EXPECT_GT(out_of_bounds_, 20);
  } else {
    EXPECT_EQ(out_of_bounds_, 0);
  }
}

TEST_P(Histogram, OfRangesThatAreAFewNumbersWide_FollowsTheRule) {
  std::mt19937_64 engine(5);
  for (int round = 0; round < 3000; ++round) {
    const double low = std::uniform_real_distribution(-1e6, 1e6)(engine);
    const TestArray x = successors(kind(), low, 1 + engine() % 6);
    expect_rule(x, 1 + engine() % 30, "narrow");
    expect_edges(x, "narrow");
  }
}

TEST_P(Histogram, OfRangesThatOverflow_FollowsTheRule) {
  const double most = limits_of(kind()).max;
  const Number half = most / 2;
  for (const Numbers& x : std::vector<Numbers>{{-most, most},
                                               {-most, 0, most, most},
                                               {-most, half, 1, 2},
                                               {-INFINITY, 0, 1},
                                               {0, 1, INFINITY},
                                               {-INFINITY, 5, INFINITY},
                                               {INFINITY, INFINITY},
                                               {-INFINITY, -INFINITY},
                                               {INFINITY},
                                               {INFINITY, NAN, 3},
                                               {NAN, -INFINITY, NAN}}) {
    expect_rules(row(x), ::testing::PrintToString(x));
    expect_edges(row(x), ::testing::PrintToString(x));
  }
}

TEST_P(Histogram, OfDenormalRanges_FollowsTheRule) {
  const double tiny = limits_of(kind()).denorm_min;
  for (const Numbers& x :
       std::vector<Numbers>{{0, tiny, 2 * tiny}, {-tiny, 0, tiny}, {0, tiny}, {tiny, tiny}, {-tiny, -0.0, 0.0}})
    for (const std::size_t bins : {1u, 2u, 4u, 10u}) {
      expect_rule(row(x), bins, ::testing::PrintToString(x));
      expect_edges(row(x), ::testing::PrintToString(x));
    }
}

TEST_P(Histogram, Required_NaN_IsNotCountedAndIsNoBound) {
  for (const std::size_t length : {1u, 5u, 40u, 300u, 5000u}) {
    TestArray x = random({length}, 6);
    for (std::size_t i = 0; i < length; i += 3) x.set(i, NAN);
    expect_rules(x, "some NaN");
    expect_edges(x, "some NaN");
    const TestArray nans = row(Numbers(length, NAN));
    expect_rules(nans, "all NaN");
    expect_edges(nans, "all NaN");
    EXPECT_EQ(histogram(nans), counts(Numbers(10, 0)));
  }
}

TEST_P(Histogram, OfMoreDimensions_IsFlat) {
  for (const Extents& extents :
       {Extents{3, 5}, Extents{2, 3, 4}, Extents{20, 30, 2}, Extents{1, 7}, Extents{2, 1, 2, 1, 2, 1, 2, 1, 3}})
    expect_rule(random(extents, 7), 10, "more dimensions");
  expect_rule(TestArray(kind(), {}, {42}), 10, "zero-dimensional");
}

TEST_P(Histogram, Required_WithALastExtentOfOne_CountsTheFirstElementEachTime) {
  const TestArray x(kind(), {5, 1}, {3, 0, 1, 2, 4});
  EXPECT_EQ(histogram(x, 4), counts({0, 0, 0, 5}));
  EXPECT_EQ(histogram(x, 8), counts({0, 0, 0, 0, 0, 0, 5, 0}));
  for (const Extents& extents : {Extents{5, 1}, Extents{1, 1}, Extents{2, 3, 1}, Extents{1}})
    expect_rule(random(extents, 8), 10, "last extent 1");
}

TEST_P(Histogram, OfNothing_IsZeros) {
  for (const Extents& extents : {Extents{0}, Extents{0, 3}, Extents{3, 0}})
    for (const std::size_t bins : {1u, 2u, 10u})
      EXPECT_EQ(histogram(TestArray(kind(), extents, {}), bins), counts(Numbers(bins, 0)));
}

TEST_P(Histogram, WithoutABinCount_HasTen) {
  EXPECT_EQ(histogram(row({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10})), counts({1, 1, 1, 1, 1, 1, 1, 1, 1, 2}));
}

TEST_P(Histogram, OfEqualElements_IsTheLastBin) {
  const double most = limits_of(kind()).max;
  for (const double x : {0.0, -7.5, most, -most}) EXPECT_EQ(histogram(row(Numbers(4, x)), 3), counts({0, 0, 4}));
}

TEST_P(Histogram, WithMoreBinsThanElements_FollowsTheRule) { expect_rule(random({20}, 9), 100000, "many bins"); }

TEST_P(Histogram, OfNoBins_IsEmpty) {
  for (const Extents& extents : {Extents{3}, Extents{0}, Extents{}})
    EXPECT_EQ(histogram(TestArray(kind(), extents, Numbers(size_of(extents), 1)), 0), counts({}));
}

TEST_P(Histogram, OfBinsThatCannotBe_IsOutOfMemory) {
  Operand operand(ctx(), kind(), {2}, {1, 2});
  for (const std::int64_t bins : {std::int64_t{-1}, std::int64_t{-2}, std::int64_t{-1000}, INT64_MIN, INT64_MAX,
                                  INT64_MAX - 1, std::int64_t{1} << 61, (std::int64_t{1} << 60) - 1})
    EXPECT_THROW(call("xhistogram", {operand.value(), Value(bins)}), std::bad_alloc) << bins;
}

// ---- Edges

TEST_P(Histogram, EdgesOfRandomElements_AreTheLibrarys) {
  for (std::size_t length = 1; length <= 300; ++length)
    expect_edges(random({length}, static_cast<unsigned>(length)), "random");
  expect_edges(random({100001}, 1), "random");
  expect_edges(row({}), "empty");
  expect_edges(row({-0.0, 0.0}), "zeros");
  expect_edges(row({0.0, -0.0, -0.0}), "zeros");
  expect_edges(row({-0.0}), "zeros");
}

TEST_P(Histogram, Required_EdgesAreElevenWhateverFollows) {
  Operand operand(ctx(), kind(), {2, 2}, {0, 5, 10, 7.5});
  FloatObject floats({2}, {std::numeric_limits<float>::infinity(), -1});
  const TestArray expected = counts({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  for (const Value& second : {twos(Kind::int32, {0}), twos(Kind::int64, {2, 3}), floats.value(), twos(Extents{}),
                              twos(Kind::int32, {2, 1, 2, 1, 2, 1})})
    for (const std::vector<Value>& args :
         {std::vector<Value>{operand.value(), second}, std::vector<Value>{operand.value(), second, Value(3)},
          std::vector<Value>{operand.value(), second, Value("text"), Value(5)}})
      EXPECT_EQ(given(call("xhistogram_bin_edges", args), Kind::float64), expected);
}

// ---- Single values

using Histograms = ArrayResultTest;

TEST_F(Histograms, TheLargestElement_IsInTheLastBin) {
  const Value x = array_of<XTDouble>(ctx(), {5}, {0, 1, 2, 3, 4});
  EXPECT_EQ(given(call("xhistogram", {x, Value(2)}), Kind::float64), counts({2, 3}));
}

TEST_F(Histograms, OfAnElementWhoseBinRoundsUpToTheNumberOfBins_TakeTheLastBin) {
  const Value x = array_of<XTDouble>(ctx(), {3}, {0, std::nextafter(7430.3, 0), 7430.3});
  EXPECT_EQ(given(call("xhistogram", {x, Value(10)}), Kind::float64), counts({1, 0, 0, 0, 0, 0, 0, 0, 0, 2}));
}

TEST_F(Histograms, EdgesOfFloats_AreRoundedTo32BitsAndWidened) {
  FloatObject x({2}, {0.1f, 0.8f});
  const TestArray found = given(call("xhistogram_bin_edges", {x.value(), x.value()}), Kind::float64);
  const auto& edges = found.as<double>();
  EXPECT_EQ(edges.front(), static_cast<double>(0.1f));
  EXPECT_EQ(edges.back(), static_cast<double>(0.8f));
  for (const double edge : edges) EXPECT_EQ(edge, static_cast<double>(static_cast<float>(edge)));
}

}  // namespace
}  // namespace arrayfold::test
