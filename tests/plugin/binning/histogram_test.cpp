// binning/histogram_test.cpp: xhistogram and xhistogram_bin_edges beside the array library's, and beside a slow formula
//
// The library writes past its counts where the formula of a bin rounds up to the number of bins, or is none. There
// only the slow formula is asked, which takes the last bin or the first.

#include <cmath>
#include <limits>

#include <xtensor/xhistogram.hpp>

#include "binnings.hpp"
#include "support/reals.hpp"

namespace arrayfold::test {
namespace {

using Counts = Elements<double>;

/// A histogram by the rule, element by element.
struct Expected {
  std::vector<double> counts;
  bool in_bounds = true;  // every element's bin is in bounds as the formula has it
};

template <class T>
Expected expected_histogram(const xarray_of<T>& array, std::size_t bins) {
  Expected expected{std::vector<double>(bins, 0.0)};
  const std::array<T, 2> bounds = xt::minmax(array)();
  const xt::xtensor<T, 1> edges = xt::linspace<T>(bounds[0], bounds[1], bins + 1);
  const std::array<T, 2> edge_bounds = xt::minmax(edges)();
  const double low = static_cast<double>(edge_bounds[0]), high = static_cast<double>(edge_bounds[1]);
  const double norm = 1.0 / (high - low);
  const double bin_count = static_cast<double>(bins);
  const std::size_t stride = last_stride(Extents(array.shape().begin(), array.shape().end()));
  for (std::size_t i = 0; i < array.size(); ++i) {
    const double x = static_cast<double>(array.storage()[i * stride]);
    std::size_t bin = bins - 1;
    if (x >= low && x < high) {
      const double place = ((x - low) * bin_count) * norm;
      const bool fits = place >= 0 && place < bin_count;
      if (!fits) expected.in_bounds = false;
      if (fits)
        bin = static_cast<std::size_t>(place);
      else if (!(place > 0))
        bin = 0;
    } else if (x != high) {
      continue;
    }
    expected.counts[bin] += 1;
  }
  return expected;
}

template <class Kind>
class Histogram : public ArrayResultTest {
 protected:
  using Element = typename Kind::element;

  /// The formula's histogram, and the library's where that is in bounds.
  void expect_rule(const Value& operand, std::size_t bins, const std::string& what) {
    const auto& array = *container_of<Kind>(operand);
    const auto found = given<XTDouble>(call("xhistogram", {operand, Value(static_cast<std::int64_t>(bins))}));
    const auto expected = expected_histogram(array, bins);
    ASSERT_EQ(difference(found, Counts{{bins}, expected.counts}), "") << what << " in " << bins;
    if (expected.in_bounds) {
      ASSERT_EQ(difference(found, elements_in<double>(xt::histogram(array, bins))), "") << what << " in " << bins;
      ++beside_library_;
    } else {
      ++out_of_bounds_;
    }
  }

  void expect_rule(const Extents& extents, const std::vector<Element>& x, std::size_t bins, const std::string& what) {
    Operand<Kind> operand(ctx(), extents, x);
    expect_rule(operand.value(), bins, what);
  }
  void expect_rules(const std::vector<Element>& x, const std::string& what) {
    for (const std::size_t bins : {1u, 2u, 3u, 7u, 10u, 100u}) expect_rule({x.size()}, x, bins, what);
  }

  /// The eleven edges beside the library's.
  void expect_edges(const std::vector<Element>& x, const std::string& what) const {
    Operand<Kind> operand(ctx(), {x.size()}, x);
    const Value value = operand.value();
    const auto& array = *container_of<Kind>(value);
    const auto expected = elements_in<double>(xt::histogram_bin_edges(array, array, 10));
    auto found = given<XTDouble>(call("xhistogram_bin_edges", {value, value}));
    ASSERT_EQ(found.extents, Extents{11}) << what;
    for (std::size_t i = 0; i < 11; ++i)
      ASSERT_TRUE(same<double>(found.elements[i], expected.elements[i])) << what << " at " << i;
  }

  int beside_library_ = 0;
  int out_of_bounds_ = 0;
};

TYPED_TEST_SUITE(Histogram, RealKinds, KindNames);

TYPED_TEST(Histogram, OfRandomElements) {
  using T = typename TypeParam::element;
  for (std::size_t length = 1; length <= 300; ++length)
    this->expect_rules(random_elements<T>(length, static_cast<unsigned>(length)), "random");
  for (const std::size_t length : {1000u, 5000u, 100001u})
    this->expect_rules(random_elements<T>(length, static_cast<unsigned>(length)), "random");
  EXPECT_GT(this->beside_library_, 1000);
}

TYPED_TEST(Histogram, OfElementsOnEdgesAndBesideThem) {
  using T = typename TypeParam::element;
  std::mt19937_64 engine(4);
  const auto real = [&](double from, double to) {
    return static_cast<T>(std::uniform_real_distribution(from, to)(engine));
  };
  for (int round = 0; round < 2000; ++round) {
    const T low = real(-1000, 1000), high = low + real(0, 10000);
    const std::size_t bins = 1 + engine() % 50;
    std::vector<T> x = {low, high, std::nextafter(high, low), std::nextafter(low, high)};
    for (std::size_t i = 1; i < bins; ++i) {
      const T edge = low + (high - low) * static_cast<T>(i) / static_cast<T>(bins);
      for (const T near : {edge, std::nextafter(edge, low), std::nextafter(edge, high)}) x.push_back(near);
    }
    this->expect_rule({x.size()}, x, bins, "on edges");
  }
  EXPECT_GT(this->beside_library_, 1000);
  // Between neighbouring floats the products of doubles have room enough.
  if constexpr (std::is_same_v<T, double>) {
    EXPECT_GT(this->out_of_bounds_, 20);
  } else {
    EXPECT_EQ(this->out_of_bounds_, 0);
  }
}

TYPED_TEST(Histogram, OfRangesThatAreAFewNumbersWide) {
  using T = typename TypeParam::element;
  std::mt19937_64 engine(5);
  for (int round = 0; round < 3000; ++round) {
    const T low = static_cast<T>(std::uniform_real_distribution(-1e6, 1e6)(engine));
    std::vector<T> x = {low};
    const std::size_t width = 1 + engine() % 6;
    for (std::size_t i = 0; i < width; ++i) x.push_back(std::nextafter(x.back(), std::numeric_limits<T>::max()));
    this->expect_rule({x.size()}, x, 1 + engine() % 30, "narrow");
    this->expect_edges(x, "narrow");
  }
}

TYPED_TEST(Histogram, OfRangesThatOverflow) {
  using T = typename TypeParam::element;
  using Limits = std::numeric_limits<T>;
  constexpr T infinity = Limits::infinity(), most = Limits::max(), nan = Limits::quiet_NaN();
  for (const std::vector<T>& x : std::vector<std::vector<T>>{{-most, most},
                                                             {-most, 0, most, most},
                                                             {-most, most / 2, 1, 2},
                                                             {-infinity, 0, 1},
                                                             {0, 1, infinity},
                                                             {-infinity, 5, infinity},
                                                             {infinity, infinity},
                                                             {-infinity, -infinity},
                                                             {infinity},
                                                             {infinity, nan, 3},
                                                             {nan, -infinity, nan}}) {
    this->expect_rules(x, ::testing::PrintToString(x));
    this->expect_edges(x, ::testing::PrintToString(x));
  }
}

TYPED_TEST(Histogram, OfDenormalRanges) {
  using T = typename TypeParam::element;
  constexpr T tiny = std::numeric_limits<T>::denorm_min();
  for (const std::vector<T>& x : std::vector<std::vector<T>>{
           {0, tiny, 2 * tiny}, {-tiny, 0, tiny}, {0, tiny}, {tiny, tiny}, {-tiny, -T{0}, T{0}}})
    for (const std::size_t bins : {1u, 2u, 4u, 10u}) {
      this->expect_rule({x.size()}, x, bins, ::testing::PrintToString(x));
      this->expect_edges(x, ::testing::PrintToString(x));
    }
}

TYPED_TEST(Histogram, Required_NaN_IsNotCountedAndIsNoBound) {
  using T = typename TypeParam::element;
  constexpr T nan = std::numeric_limits<T>::quiet_NaN();
  for (const std::size_t length : {1u, 5u, 40u, 300u, 5000u}) {
    auto x = random_elements<T>(length, 6);
    for (std::size_t i = 0; i < length; i += 3) x[i] = nan;
    this->expect_rules(x, "some NaN");
    this->expect_edges(x, "some NaN");
    x.assign(length, nan);
    this->expect_rules(x, "all NaN");
    this->expect_edges(x, "all NaN");
    Operand<TypeParam> operand(this->ctx(), {length}, x);
    EXPECT_EQ(this->template given<XTDouble>(this->call("xhistogram", {operand.value()})),
              (Counts{{10}, std::vector<double>(10, 0.0)}));
  }
}

TYPED_TEST(Histogram, OfMoreDimensions_IsFlat) {
  using T = typename TypeParam::element;
  for (const Extents& extents :
       {Extents{3, 5}, Extents{2, 3, 4}, Extents{20, 30, 2}, Extents{1, 7}, Extents{2, 1, 2, 1, 2, 1, 2, 1, 3}})
    this->expect_rule(extents, random_elements<T>(size_of(extents), 7), 10, "more dimensions");
  this->expect_rule({}, {T{42}}, 10, "no dimension");
}

TYPED_TEST(Histogram, Required_WithALastExtentOfOne_CountsTheFirstElementEachTime) {
  using T = typename TypeParam::element;
  const std::vector<T> x = {3, 0, 1, 2, 4};
  Operand<TypeParam> operand(this->ctx(), {5, 1}, x);
  EXPECT_EQ(this->template given<XTDouble>(this->call("xhistogram", {operand.value(), Value(4)})),
            (Counts{{4}, {0, 0, 0, 5}}));
  EXPECT_EQ(this->template given<XTDouble>(this->call("xhistogram", {operand.value(), Value(8)})),
            (Counts{{8}, {0, 0, 0, 0, 0, 0, 5, 0}}));
  for (const Extents& extents : {Extents{5, 1}, Extents{1, 1}, Extents{2, 3, 1}, Extents{1}})
    this->expect_rule(extents, random_elements<T>(size_of(extents), 8), 10, "last extent 1");
}

TYPED_TEST(Histogram, OfNothing_IsZeros) {
  for (const Extents& extents : {Extents{0}, Extents{0, 3}, Extents{3, 0}}) {
    Operand<TypeParam> operand(this->ctx(), extents, {});
    for (const std::size_t bins : {1u, 2u, 10u})
      EXPECT_EQ(
          this->template given<XTDouble>(this->call("xhistogram", {operand.value(), Value(static_cast<int>(bins))})),
          (Counts{{bins}, std::vector<double>(bins, 0.0)}));
  }
}

TYPED_TEST(Histogram, WithoutABinCount_HasTen) {
  Operand<TypeParam> operand(this->ctx(), {11}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  EXPECT_EQ(this->template given<XTDouble>(this->call("xhistogram", {operand.value()})),
            (Counts{{10}, {1, 1, 1, 1, 1, 1, 1, 1, 1, 2}}));
}

TYPED_TEST(Histogram, OfEqualElements_IsTheLastBin) {
  using T = typename TypeParam::element;
  for (const T x : {T{0}, T{-7.5}, std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest()}) {
    Operand<TypeParam> operand(this->ctx(), {4}, {x, x, x, x});
    EXPECT_EQ(this->template given<XTDouble>(this->call("xhistogram", {operand.value(), Value(3)})),
              (Counts{{3}, {0, 0, 4}}));
  }
}

TYPED_TEST(Histogram, WithMoreBinsThanElements) {
  using T = typename TypeParam::element;
  this->expect_rule({20}, random_elements<T>(20, 9), 100000, "many bins");
}

TYPED_TEST(Histogram, OfNoBins_IsEmpty) {
  for (const Extents& extents : {Extents{3}, Extents{0}, Extents{}}) {
    Operand<TypeParam> operand(this->ctx(), extents, std::vector<typename TypeParam::element>(size_of(extents), 1));
    EXPECT_EQ(this->template given<XTDouble>(this->call("xhistogram", {operand.value(), Value(0)})), (Counts{{0}, {}}));
  }
}

TYPED_TEST(Histogram, OfBinsThatCannotBe_IsOutOfMemory) {
  Operand<TypeParam> operand(this->ctx(), {2}, {1, 2});
  for (const std::int64_t bins : {std::int64_t{-1}, std::int64_t{-2}, std::int64_t{-1000}, INT64_MIN, INT64_MAX,
                                  INT64_MAX - 1, std::int64_t{1} << 61, (std::int64_t{1} << 60) - 1})
    EXPECT_THROW(this->call("xhistogram", {operand.value(), Value(bins)}), std::bad_alloc) << bins;
}

// ---- Edges

TYPED_TEST(Histogram, EdgesOfRandomElements_AreTheLibrarys) {
  using T = typename TypeParam::element;
  for (std::size_t length = 1; length <= 300; ++length)
    this->expect_edges(random_elements<T>(length, static_cast<unsigned>(length)), "random");
  this->expect_edges(random_elements<T>(100001, 1), "random");
  this->expect_edges({}, "empty");
  this->expect_edges({T{-0.0}, T{0.0}}, "zeros");
  this->expect_edges({T{0.0}, T{-0.0}, T{-0.0}}, "zeros");
  this->expect_edges({T{-0.0}}, "zeros");
}

TYPED_TEST(Histogram, Required_EdgesAreElevenWhateverFollows) {
  using T = typename TypeParam::element;
  Operand<TypeParam> operand(this->ctx(), {2, 2}, {0, 5, 10, T{7.5}});
  FloatObject floats({2}, {std::numeric_limits<float>::infinity(), -1});
  const Counts expected{{11}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}};
  for (const Value& second : {this->template twos<XTInt>({0}), this->template twos<XTInt64>({2, 3}), floats.value(),
                              this->template twos<XTDouble>({}), this->template twos<XTInt>({2, 1, 2, 1, 2, 1})})
    for (const std::vector<Value>& args :
         {std::vector<Value>{operand.value(), second}, std::vector<Value>{operand.value(), second, Value(3)},
          std::vector<Value>{operand.value(), second, Value("text"), Value(5)}})
      EXPECT_EQ(this->template given<XTDouble>(this->call("xhistogram_bin_edges", args)), expected);
}

// ---- Single values

using Histograms = ArrayResultTest;

TEST_F(Histograms, TheLargestElement_IsInTheLastBin) {
  const Value x = array_of<XTDouble>(ctx(), {5}, {0, 1, 2, 3, 4});
  EXPECT_EQ(given<XTDouble>(call("xhistogram", {x, Value(2)})), (Counts{{2}, {2, 3}}));
}

TEST_F(Histograms, OfAnElementWhoseBinRoundsUpToTheNumberOfBins_TakeTheLastBin) {
  const Value x = array_of<XTDouble>(ctx(), {3}, {0, std::nextafter(7430.3, 0), 7430.3});
  EXPECT_EQ(given<XTDouble>(call("xhistogram", {x, Value(10)})), (Counts{{10}, {1, 0, 0, 0, 0, 0, 0, 0, 0, 2}}));
}

TEST_F(Histograms, EdgesOfFloats_AreRoundedTo32BitsAndWidened) {
  FloatObject x({2}, {0.1f, 0.8f});
  const auto edges = given<XTDouble>(call("xhistogram_bin_edges", {x.value(), x.value()})).elements;
  EXPECT_EQ(edges.front(), static_cast<double>(0.1f));
  EXPECT_EQ(edges.back(), static_cast<double>(0.8f));
  for (const double edge : edges) EXPECT_EQ(edge, static_cast<double>(static_cast<float>(edge)));
}

}  // namespace
}  // namespace arrayfold::test
