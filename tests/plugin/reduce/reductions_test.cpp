// reduce/reductions_test.cpp: values of xsum, xprod, xamin, xamax, xmean

#include "reference.hpp"

namespace arrayfold::test {
namespace {

class Whole : public ReductionTest {
 protected:
  double real(const char* name, const std::vector<double>& x) const { return number_of<double, XTDouble>(name, x); }
  double of_floats(const char* name, const std::vector<float>& x) const { return number_of<double, XTFloat>(name, x); }
  std::int32_t of_ints(const char* name, const std::vector<std::int32_t>& x) const {
    return number_of<std::int32_t, XTInt>(name, x);
  }
  std::int64_t of_int64s(const char* name, const std::vector<std::int64_t>& x) const {
    return number_of<std::int64_t, XTInt64>(name, x);
  }

  void expect_scans_of_last_extent_one(Kind kind) const {
    for (std::size_t count = 0; count <= 40; ++count)
      for (const Extents& extents : {Extents{count, 1}, Extents{1, count, 1}, Extents{count, 1, 1}}) {
        const TestArray array = random_array(kind, extents, static_cast<unsigned>(count));
        for (const char* name : {"xsum", "xamin", "xamax"})
          EXPECT_EQ(number_given(name, array), expected_number(name, array)) << name << count;
      }
  }
};

TEST_F(Whole, OfSmallArrays_AreTheirNumbers) {
  EXPECT_EQ(real("xsum", {1, 2, 3.5}), 6.5);
  EXPECT_EQ(real("xprod", {1.5, 2, -3}), -9.0);
  EXPECT_EQ(real("xamin", {4, -2, 3}), -2.0);
  EXPECT_EQ(real("xamax", {4, -2, 3}), 4.0);
  EXPECT_EQ(real("xmean", {1, 2, 6}), 3.0);
  EXPECT_EQ(of_floats("xsum", {1, 2, 3.5}), 6.5);
  EXPECT_EQ(of_floats("xprod", {1.5, 2, -3}), -9.0);
  EXPECT_EQ(of_floats("xamin", {4, -2, 3}), -2.0);
  EXPECT_EQ(of_floats("xamax", {4, -2, 3}), 4.0);
  EXPECT_EQ(of_floats("xmean", {1, 2, 6}), 3.0);
  EXPECT_EQ(of_ints("xsum", {1, 2, 3}), 6);
  EXPECT_EQ(of_ints("xprod", {7, -2, 3}), -42);
  EXPECT_EQ(of_ints("xamin", {4, -2, 3}), -2);
  EXPECT_EQ(of_ints("xamax", {4, -2, 3}), 4);
  EXPECT_EQ(of_int64s("xsum", {1, 2, 3}), 6);
  EXPECT_EQ(of_int64s("xprod", {7, -2, std::int64_t{1} << 40}), -14 * (std::int64_t{1} << 40));
  EXPECT_EQ(of_int64s("xamin", {4, -2, 3}), -2);
}

TEST_F(Whole, OfFloats_AreWidened) {
  EXPECT_EQ(of_floats("xsum", {0.1f}), static_cast<double>(0.1f));
  EXPECT_EQ(of_floats("xprod", {0.1f}), static_cast<double>(0.1f));
  EXPECT_EQ(of_floats("xamin", {0.1f}), static_cast<double>(0.1f));
  EXPECT_EQ(of_floats("xamax", {0.1f}), static_cast<double>(0.1f));
  EXPECT_EQ(of_floats("xsum", {3e38f, 3e38f}), 2 * static_cast<double>(3e38f));
}

TEST_F(Whole, OfNothing_AreTheStartValues) {
  for (const Extents& extents : {Extents{0}, Extents{0, 3}, Extents{3, 0}, Extents{2, 0, 1, 2, 1, 2}}) {
    EXPECT_TRUE(same((number_of<double, XTDouble>("xsum", extents, {})), 0.0));
    EXPECT_EQ((number_of<double, XTDouble>("xprod", extents, {})), 1.0);
    EXPECT_EQ((number_of<double, XTDouble>("xamin", extents, {})), 1.7976931348623157e+308);
    EXPECT_EQ((number_of<double, XTDouble>("xamax", extents, {})), 2.2250738585072014e-308);
    EXPECT_TRUE(same((number_of<double, XTFloat>("xsum", extents, {})), 0.0));
    EXPECT_EQ((number_of<double, XTFloat>("xprod", extents, {})), 1.0);
    EXPECT_EQ((number_of<double, XTFloat>("xamin", extents, {})), 3.4028234663852886e+38);
    EXPECT_EQ((number_of<double, XTFloat>("xamax", extents, {})), 1.1754943508222875e-38);
    EXPECT_EQ((number_of<std::int32_t, XTInt>("xsum", extents, {})), 0);
    EXPECT_EQ((number_of<std::int32_t, XTInt>("xprod", extents, {})), 1);
    EXPECT_EQ((number_of<std::int32_t, XTInt>("xamin", extents, {})), 2147483647);
    EXPECT_EQ((number_of<std::int32_t, XTInt>("xamax", extents, {})), smallest);
    EXPECT_EQ((number_of<std::int64_t, XTInt64>("xsum", extents, {})), 0);
    EXPECT_EQ((number_of<std::int64_t, XTInt64>("xprod", extents, {})), 1);
    EXPECT_EQ((number_of<std::int64_t, XTInt64>("xamin", extents, {})), 9223372036854775807);
    EXPECT_EQ((number_of<std::int64_t, XTInt64>("xamax", extents, {})), 9223372036854775807);
    EXPECT_TRUE(std::isnan(number_of<double, XTDouble>("xmean", extents, {})));
    EXPECT_TRUE(std::isnan(number_of<double, XTFloat>("xmean", extents, {})));
    EXPECT_TRUE(std::isnan(number_of<double, XTInt>("xmean", extents, {})));
    EXPECT_TRUE(std::isnan(number_of<double, XTInt64>("xmean", extents, {})));
  }
}

TEST_F(Whole, OfZeroDimensionalArrays_AreTheElement) {
  for (const char* name : {"xsum", "xprod", "xamin", "xamax", "xmean"}) {
    EXPECT_EQ((number_of<double, XTDouble>(name, {}, {2.5})), 2.5) << name;
    EXPECT_EQ((number_of<double, XTFloat>(name, {}, {2.5f})), 2.5) << name;
    if (name == std::string("xmean")) continue;
    EXPECT_EQ((number_of<std::int32_t, XTInt>(name, {}, {7})), 7) << name;
    EXPECT_EQ((number_of<std::int64_t, XTInt64>(name, {}, {7})), 7) << name;
  }
  EXPECT_EQ((number_of<double, XTInt>("xmean", {}, {7})), 7.0);
  EXPECT_EQ((number_of<double, XTInt64>("xmean", {}, {7})), 7.0);
}

TEST_F(Whole, OfNineDimensions_AreThoseOfAllElements) {
  const Extents extents = {2, 1, 3, 1, 2, 1, 1, 2, 2};
  std::vector<std::int32_t> x(size_of(extents));
  for (std::size_t i = 0; i < x.size(); ++i) x[i] = static_cast<std::int32_t>(i) + 1;
  EXPECT_EQ((number_of<std::int32_t, XTInt>("xsum", extents, x)), 48 * 49 / 2);
  EXPECT_EQ((number_of<std::int32_t, XTInt>("xamin", extents, x)), 1);
  EXPECT_EQ((number_of<std::int32_t, XTInt>("xamax", extents, x)), 48);
  EXPECT_EQ((number_of<double, XTInt>("xmean", extents, x)), 24.5);
  EXPECT_EQ((number_of<double, XTDouble>("xprod", extents, std::vector<double>(48, 2.0))), 0x1p48);
}

// ---- Integers that wrap

TEST_F(Whole, Integers_WrapInTheirWidth) {
  EXPECT_EQ(of_ints("xsum", {largest, 1}), smallest);
  EXPECT_EQ(of_ints("xsum", {smallest, -1}), largest);
  EXPECT_EQ(of_ints("xsum", std::vector<std::int32_t>(40, 1 << 30)), 0);
  EXPECT_EQ(of_ints("xprod", {65536, 65536}), 0);
  EXPECT_EQ(of_ints("xprod", {65536, 32768}), smallest);
  EXPECT_EQ(of_int64s("xsum", {largest64, 1}), smallest64);
  EXPECT_EQ(of_int64s("xsum", {largest, 1}), std::int64_t{1} << 31);
  EXPECT_EQ(of_int64s("xprod", {largest64, 2}), -2);
  EXPECT_EQ(of_int64s("xprod", {65536, 65536}), std::int64_t{1} << 32);
}

TEST_F(Whole, Required_MeanOfInts_IsThatOfTheWrappedSum) {
  EXPECT_EQ((number_of<double, XTInt>("xmean", {largest, 1})), -1073741824.0);
  EXPECT_EQ((number_of<double, XTInt>("xmean", {1, 2})), 1.5);
  EXPECT_EQ((number_of<double, XTInt64>("xmean", {largest, 1})), 1073741824.0);
  EXPECT_EQ((number_of<double, XTInt64>("xmean", {largest64, 1})), -4611686018427387904.0);
  // The sum is rounded to a double before it is divided.
  EXPECT_EQ((number_of<double, XTInt64>("xmean", {9007199254740993, 0, 0})), 9007199254740992.0 / 3);
}

// ---- Start values

TEST_F(Whole, Required_XamaxOfNumbersBelowTheSmallestNormal_IsTheSmallestNormal) {
  constexpr double normal = 2.2250738585072014e-308, float_normal = 1.1754943508222875e-38;
  for (const std::size_t count : {1u, 2u, 4u, 9u, 300u, 1500u})
    for (const float element : {-3.f, -1.f, 0.f, -0.f, -std::numeric_limits<float>::max(), -HUGE_VALF}) {
      EXPECT_EQ(real("xamax", std::vector<double>(count, element)), normal) << count << " times " << element;
      EXPECT_EQ(of_floats("xamax", std::vector<float>(count, element)), float_normal) << count << " times " << element;
    }
  EXPECT_EQ(real("xamax", {-3, -1}), normal);
  EXPECT_EQ(real("xamax", {5e-324}), normal);
  EXPECT_EQ(real("xamax", {2.225073858507202e-308}), 2.225073858507202e-308);
  EXPECT_EQ(of_floats("xamax", {1e-40f}), float_normal);
  EXPECT_EQ(real("xamin", {-3, -1}), -3.0);
}

TEST_F(Whole, XaminStartsFromTheLargest) {
  EXPECT_EQ(real("xamin", {infinity, infinity}), 1.7976931348623157e+308);
  EXPECT_EQ(of_floats("xamin", {HUGE_VALF}), 3.4028234663852886e+38);
  EXPECT_EQ(real("xamin", std::vector<double>(600, infinity)), 1.7976931348623157e+308);
  EXPECT_EQ(real("xamin", {infinity, 5, -infinity}), -infinity);
  EXPECT_EQ(real("xamax", {infinity, 5, -infinity}), infinity);
}

TEST_F(Whole, XamaxOfInts_IsTheLargest) {
  EXPECT_EQ(of_ints("xamax", {-3, -1}), -1);
  EXPECT_EQ(of_ints("xamax", std::vector<std::int32_t>(9, smallest)), smallest);
  EXPECT_EQ(of_ints("xamax", {smallest, smallest + 1}), smallest + 1);
  EXPECT_EQ(of_ints("xamin", {largest, largest}), largest);
}

TEST_F(Whole, Required_XamaxOfInt64s_IsTheSmallest) {
  EXPECT_EQ(of_int64s("xamax", {1, 5, 9}), 1);
  EXPECT_EQ(of_int64s("xamin", {1, 5, 9}), 1);
  EXPECT_EQ(of_int64s("xamax", {smallest64, 0, largest64}), smallest64);
  EXPECT_EQ(of_int64s("xamax", {3, 2, 9, 8, 7, 6, 5, 4, 1}), 1);
}

// ---- NaN and infinities

TEST_F(Whole, SumsProductsAndMeans_CarryNaNAndInfinities) {
  for (const std::size_t count : {1u, 3u, 4u, 9u, 40u})
    for (std::size_t place = 0; place < count; ++place) {
      std::vector<double> x(count, 1.0);
      x[place] = NAN;
      for (const char* name : {"xsum", "xprod", "xmean"}) EXPECT_TRUE(std::isnan(real(name, x))) << name;
      x[place] = -infinity;
      for (const char* name : {"xsum", "xprod", "xmean"}) EXPECT_EQ(real(name, x), -infinity) << name;
    }
  for (const char* name : {"xsum", "xmean"}) EXPECT_TRUE(std::isnan(real(name, {infinity, -infinity}))) << name;
  EXPECT_TRUE(std::isnan(real("xprod", {infinity, 0})));
  EXPECT_EQ(real("xprod", {infinity, -infinity}), -infinity);
  EXPECT_EQ(real("xsum", {1e308, 1e308}), infinity);
  EXPECT_EQ(real("xmean", {1e308, 1e308}), infinity);
}

TEST_F(Whole, SumsOfNegativeZeros_ArePositive) {
  for (const std::size_t count : {1u, 4u, 9u, 20u}) {
    const std::vector<double> zeros(count, -0.0);
    EXPECT_TRUE(same(real("xsum", zeros), 0.0));
    EXPECT_TRUE(same(real("xmean", zeros), 0.0));
  }
  EXPECT_TRUE(same(real("xprod", {-1, 0}), -0.0));
  EXPECT_TRUE(same(real("xprod", {-0.0}), -0.0));
}

// ---- A last extent of 1

TEST_F(Whole, Required_LastExtentOne_ReadsTheFirstElementForTheTail) {
  EXPECT_EQ((number_of<double, XTDouble>("xsum", {5, 1}, {1, 2, 3, 4, 5})), 11.0);
  EXPECT_EQ((number_of<double, XTDouble>("xamax", {5, 1}, {1, 2, 3, 4, 5})), 4.0);
  EXPECT_EQ((number_of<double, XTDouble>("xamin", {5, 1}, {5, 4, 3, 2, 1})), 2.0);
  EXPECT_EQ((number_of<double, XTDouble>("xsum", {3, 1}, {1, 2, 3})), 3.0);
  EXPECT_EQ((number_of<std::int64_t, XTInt64>("xsum", {6, 1}, {1, 2, 3, 4, 5, 6})), 12);
  EXPECT_EQ((number_of<std::int32_t, XTInt>("xsum", {5, 1}, {1, 2, 3, 4, 5})), 5);
  EXPECT_EQ((number_of<std::int32_t, XTInt>("xsum", {9, 1}, {1, 2, 3, 4, 5, 6, 7, 8, 9})), 37);
  EXPECT_EQ((number_of<std::int32_t, XTInt>("xamax", {9, 1}, {1, 2, 3, 4, 5, 6, 7, 8, 9})), 8);
  EXPECT_EQ((number_of<double, XTFloat>("xsum", {9, 1}, {1, 2, 3, 4, 5, 6, 7, 8, 9})), 37.0);
  EXPECT_EQ((number_of<double, XTFloat>("xsum", {5, 1}, {1, 2, 3, 4, 5})), 5.0);
  // Not so in these.
  EXPECT_EQ((number_of<double, XTDouble>("xmean", {5, 1}, {1, 2, 3, 4, 5})), 3.0);
  EXPECT_EQ((number_of<double, XTDouble>("xprod", {5, 1}, {1, 2, 3, 4, 5})), 120.0);
  EXPECT_EQ((number_of<double, XTDouble>("xsum", {1, 5}, {1, 2, 3, 4, 5})), 15.0);
  EXPECT_EQ((number_of<double, XTDouble>("xsum", {1}, {7})), 7.0);
}

TEST_F(Whole, Required_LastExtentOne_OfEveryCountAndKind) {
  for (const Kind kind : numeric_kinds) expect_scans_of_last_extent_one(kind);
}

}  // namespace
}  // namespace arrayfold::test
