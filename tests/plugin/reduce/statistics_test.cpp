// reduce/statistics_test.cpp: values of xvariance, xstddev, xtrapz, xcount_nonzero

#include "reductions.hpp"

namespace arrayfold::test {
namespace {

const Extents empty_extents[] = {{0}, {0, 3}, {3, 0}, {2, 0, 1, 2, 1, 2}};

class Spread : public ReductionTest {
 protected:
  /// The double that comes of elements that every kind can hold; the same for all four.
  double of_all_kinds(const char* name, const Extents& extents, const std::vector<double>& x) const {
    const double found = number_of<double, XTDouble>(name, extents, x);
    const auto expect_same = [&](double other, const char* kind) {
      EXPECT_TRUE(same(other, found)) << name << " of " << kind;
    };
    expect_same(number_of<double, XTFloat>(name, extents, {x.begin(), x.end()}), "float");
    expect_same(number_of<double, XTInt>(name, extents, {x.begin(), x.end()}), "int");
    expect_same(number_of<double, XTInt64>(name, extents, {x.begin(), x.end()}), "int64");
    return found;
  }
};

// ---- Variance and deviation

TEST_F(Spread, VarianceAndDeviation_AreThoseOfAWholePopulation) {
  EXPECT_EQ(of_all_kinds("xvariance", {4}, {1, 2, 3, 4}), 1.25);
  EXPECT_EQ(of_all_kinds("xstddev", {4}, {1, 2, 3, 4}), std::sqrt(1.25));
  EXPECT_EQ(of_all_kinds("xvariance", {2, 2}, {1, 2, 3, 4}), 1.25);
  EXPECT_EQ(of_all_kinds("xvariance", {4, 1}, {1, 2, 3, 4}), 1.25);
  EXPECT_EQ(of_all_kinds("xstddev", {2}, {-3, 3}), 3.0);
}

TEST_F(Spread, VarianceAndDeviationOfOneElement_AreZero) {
  for (const char* name : {"xvariance", "xstddev"})
    for (const Extents& extents : {Extents{}, Extents{1}, Extents{1, 1}})
      EXPECT_EQ(of_all_kinds(name, extents, {7}), 0.0);
}

TEST_F(Spread, VarianceAndDeviationOfNothing_AreNaN) {
  for (const char* name : {"xvariance", "xstddev"})
    for (const Extents& extents : empty_extents) EXPECT_TRUE(std::isnan(of_all_kinds(name, extents, {})));
}

TEST_F(Spread, VarianceAndDeviation_CarryNaNAndInfinities) {
  for (const char* name : {"xvariance", "xstddev"}) {
    EXPECT_TRUE(std::isnan(number_of<double, XTDouble>(name, {1, NAN, 3})));
    EXPECT_TRUE(std::isnan(number_of<double, XTDouble>(name, {1, infinity, 3})));
    EXPECT_TRUE(std::isnan(number_of<double, XTFloat>(name, {1, -HUGE_VALF})));
    EXPECT_EQ((number_of<double, XTDouble>(name, {1e200, -1e200})), infinity);
  }
}

TEST_F(Spread, Required_VarianceOfInts_IsAroundTheMeanOfTheWrappedSum) {
  const double mean = -1073741824.0, above = 2147483647.0 - mean, beside = 1 - mean;
  const double variance = (above * above + beside * beside) / 2;
  EXPECT_EQ((number_of<double, XTInt>("xvariance", {largest, 1})), variance);
  EXPECT_EQ((number_of<double, XTInt>("xstddev", {largest, 1})), std::sqrt(variance));
  EXPECT_EQ((number_of<double, XTInt64>("xstddev", {largest, 1})), 1073741823.0);
}

TEST_F(Spread, VarianceOfFloats_IsComputedIn64Bits) {
  const double x = static_cast<double>(0.1f), y = static_cast<double>(0.3f);
  const double mean = static_cast<double>(0.1f + 0.3f) / 2;
  EXPECT_EQ((number_of<double, XTFloat>("xvariance", {0.1f, 0.3f})),
            ((x - mean) * (x - mean) + (y - mean) * (y - mean)) / 2);
  EXPECT_EQ((number_of<double, XTFloat>("xvariance", {1e30f, -1e30f})),
            static_cast<double>(1e30f) * static_cast<double>(1e30f));
}

TEST_F(Spread, DeviationIsTheRootOfTheVariance) {
  for (std::size_t count = 1; count < 60; ++count) {
    const auto x = random_array(Kind::float64, {count}, static_cast<unsigned>(count)).as<double>();
    EXPECT_EQ((number_of<double, XTDouble>("xstddev", x)), std::sqrt(number_of<double, XTDouble>("xvariance", x)));
  }
}

// ---- Trapezoids

TEST_F(Spread, Trapezoids_AreOneWide) {
  EXPECT_EQ(of_all_kinds("xtrapz", {3}, {1, 2, 3}), 4.0);
  EXPECT_EQ(of_all_kinds("xtrapz", {2}, {1, 2}), 1.5);
  EXPECT_EQ(of_all_kinds("xtrapz", {5}, {0, -1, 4, 2, 1}), 5.5);
}

TEST_F(Spread, Required_TrapezoidsOfMoreDimensions_AreThoseOfTheFirstRow) {
  EXPECT_EQ(of_all_kinds("xtrapz", {2, 3}, {1, 2, 3, 10, 20, 30}), 4.0);
  EXPECT_EQ(of_all_kinds("xtrapz", {3, 2}, {1, 2, 3, 10, 20, 30}), 1.5);
  EXPECT_EQ(of_all_kinds("xtrapz", {2, 1, 3}, {1, 2, 3, 10, 20, 30}), 4.0);
  EXPECT_EQ(of_all_kinds("xtrapz", {1, 1, 1, 1, 1, 1, 1, 2, 3}, {1, 2, 3, 10, 20, 30}), 4.0);
  // The other rows do not count, either.
  EXPECT_EQ((number_of<double, XTDouble>("xtrapz", {2, 2}, {1, 2, NAN, infinity})), 1.5);
}

TEST_F(Spread, TrapezoidsWithoutTwoInARow_AreZero) {
  for (const Extents& extents : {Extents{1}, Extents{1, 1}, Extents{}})
    EXPECT_TRUE(same(of_all_kinds("xtrapz", extents, {7}), 0.0));
  EXPECT_TRUE(same(of_all_kinds("xtrapz", {3, 1}, {7, 8, 9}), 0.0));
  for (const Extents& extents : empty_extents) EXPECT_TRUE(same(of_all_kinds("xtrapz", extents, {}), 0.0));
}

TEST_F(Spread, Required_TrapezoidsOfIntegers_AddNeighboursInTheirOwnWidth) {
  EXPECT_EQ((number_of<double, XTInt>("xtrapz", {largest, 1})), -1073741824.0);
  EXPECT_EQ((number_of<double, XTInt64>("xtrapz", {largest, 1})), 1073741824.0);
  EXPECT_EQ((number_of<double, XTInt64>("xtrapz", {largest64, 1})), -4611686018427387904.0);
}

TEST_F(Spread, TrapezoidsOfFloats_AddNeighboursIn32Bits) {
  EXPECT_EQ((number_of<double, XTFloat>("xtrapz", {3e38f, 3e38f})), infinity);
  EXPECT_EQ((number_of<double, XTFloat>("xtrapz", {0x1p24f, 1})), 0x1p23);
  // The areas themselves are added in 64 bits.
  EXPECT_EQ((number_of<double, XTFloat>("xtrapz", {0x1p25f, 0x1p25f, 1, 1})), 0x1p25 + 0x1p24 + 1);
}

TEST_F(Spread, Trapezoids_CarryNaNAndInfinities) {
  EXPECT_TRUE(std::isnan(number_of<double, XTDouble>("xtrapz", {1, NAN})));
  EXPECT_TRUE(std::isnan(number_of<double, XTDouble>("xtrapz", {infinity, -infinity})));
  EXPECT_EQ((number_of<double, XTDouble>("xtrapz", {1, infinity, 2})), infinity);
  EXPECT_EQ((number_of<double, XTDouble>("xtrapz", {1e308, 1e308})), infinity);
  EXPECT_TRUE(same((number_of<double, XTDouble>("xtrapz", {-0.0, -0.0})), 0.0));
}

// ---- Counts

TEST_F(Spread, Counts_AreInt64sForEveryKind) {
  EXPECT_EQ((number_of<std::int64_t, XTDouble>("xcount_nonzero", {0, -0.0, NAN, 1})), 2);
  EXPECT_EQ((number_of<std::int64_t, XTFloat>("xcount_nonzero", {0, -0.f, NAN, 1, 1e-45f, HUGE_VALF})), 4);
  EXPECT_EQ((number_of<std::int64_t, XTInt>("xcount_nonzero", {0, -1, 5, 0, largest})), 3);
  EXPECT_EQ((number_of<std::int64_t, XTInt64>("xcount_nonzero", {0, -1, std::int64_t{1} << 32, 0})), 2);
  EXPECT_EQ((number_of<std::int64_t, XTDouble>("xcount_nonzero", {5e-324, -infinity})), 2);
}

TEST_F(Spread, CountsOfEveryLength_LeaveOutZeros) {
  for (std::size_t count = 0; count <= 100; ++count) {
    std::vector<double> x(count);
    std::int64_t expected = 0;
    for (std::size_t i = 0; i < count; ++i) expected += (x[i] = static_cast<double>(i * i % 3)) != 0;
    EXPECT_EQ((number_of<std::int64_t, XTDouble>("xcount_nonzero", x)), expected);
    EXPECT_EQ((number_of<std::int64_t, XTInt>("xcount_nonzero", {count, 1}, {x.begin(), x.end()})), expected);
    EXPECT_EQ((number_of<std::int64_t, XTInt64>("xcount_nonzero", {1, count}, {x.begin(), x.end()})), expected);
    EXPECT_EQ((number_of<std::int64_t, XTFloat>("xcount_nonzero", {1, count, 1}, {x.begin(), x.end()})), expected);
  }
}

TEST_F(Spread, CountsOfLongArrays_LeaveOutZeros) {
  for (const std::size_t count : {65535u, 65536u, 65537u, 200000u}) {
    EXPECT_EQ((number_of<std::int64_t, XTInt>("xcount_nonzero", std::vector<std::int32_t>(count, 2))),
              static_cast<std::int64_t>(count));
    EXPECT_EQ((number_of<std::int64_t, XTDouble>("xcount_nonzero", std::vector<double>(count, 2))),
              static_cast<std::int64_t>(count));
    EXPECT_EQ((number_of<std::int64_t, XTFloat>("xcount_nonzero", std::vector<float>(count, 0))), 0);
  }
}

TEST_F(Spread, CountsOfZeroDimensionalAndOfEmptyArrays_AreOneOrZero) {
  EXPECT_EQ((number_of<std::int64_t, XTDouble>("xcount_nonzero", {}, {2})), 1);
  EXPECT_EQ((number_of<std::int64_t, XTInt>("xcount_nonzero", {}, {0})), 0);
  for (const Extents& extents : empty_extents) {
    EXPECT_EQ((number_of<std::int64_t, XTDouble>("xcount_nonzero", extents, {})), 0);
    EXPECT_EQ((number_of<std::int64_t, XTFloat>("xcount_nonzero", extents, {})), 0);
    EXPECT_EQ((number_of<std::int64_t, XTInt>("xcount_nonzero", extents, {})), 0);
    EXPECT_EQ((number_of<std::int64_t, XTInt64>("xcount_nonzero", extents, {})), 0);
  }
}

}  // namespace
}  // namespace arrayfold::test
