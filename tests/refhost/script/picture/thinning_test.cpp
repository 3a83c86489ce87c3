// refhost/script/picture/thinning_test.cpp: what stays of data that is too much for a picture

#include "script/picture/thinning.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace hvm {
namespace {

using testing::AllOf;
using testing::Each;
using testing::Ge;
using testing::Le;

constexpr double gap = std::numeric_limits<double>::quiet_NaN();

/// A random walk over 0, 1, 2, ...
Curve walk(std::size_t count) {
  std::mt19937 engine(7);
  std::uniform_real_distribution<double> step(-1, 1);
  Curve curve;
  curve.name = "walk";
  double y = 0;
  for (std::size_t i = 0; i < count; ++i) {
    curve.x.push_back(static_cast<double>(i));
    curve.y.push_back(y += step(engine));
  }
  return curve;
}

TEST(Thinning, LeavesAFewPointsAsTheyAre) {
  const Curve curve = walk(5000);
  EXPECT_EQ(thinned_line(curve).y, curve.y);
  EXPECT_EQ(thinned_points(curve).y, curve.y);
}

TEST(Thinning, KeepsEndsAndExtremesOfALine) {
  Curve curve = walk(200'000);
  curve.y[77'777] = 1e6;
  curve.y[99'999] = -1e6;
  const Curve thin = thinned_line(curve);
  EXPECT_LT(thin.y.size(), 12'000U);
  EXPECT_EQ(thin.name, "walk");
  EXPECT_EQ(thin.x.front(), 0);
  EXPECT_EQ(thin.x.back(), 199'999);
  EXPECT_TRUE(std::is_sorted(thin.x.begin(), thin.x.end()));
  EXPECT_EQ(*std::max_element(thin.y.begin(), thin.y.end()), 1e6);
  EXPECT_EQ(*std::min_element(thin.y.begin(), thin.y.end()), -1e6);
  for (std::size_t i = 0; i < thin.x.size(); ++i) EXPECT_EQ(thin.y[i], curve.y[static_cast<std::size_t>(thin.x[i])]);
}

TEST(Thinning, KeepsGapsOfALine) {
  Curve curve = walk(100'000);
  for (std::size_t i = 50'000; i < 50'010; ++i) curve.y[i] = gap;
  const Curve thin = thinned_line(curve);
  EXPECT_GE(std::count_if(thin.y.begin(), thin.y.end(), [](double y) { return std::isnan(y); }), 1);
}

TEST(Thinning, OfALineWithoutAFinitePointKeepsNone) {
  Curve curve;
  curve.x.assign(100'000, gap);
  curve.y.assign(100'000, 1);
  const Curve thin = thinned_line(curve);
  EXPECT_LT(thin.x.size(), 12'000U);
  for (const double x : thin.x) EXPECT_TRUE(std::isnan(x));
  EXPECT_TRUE(thinned_points(curve).x.empty());
}

TEST(Thinning, OfPointsKeepsExtremesAndDropsTwins) {
  Curve curve;
  std::mt19937 engine(3);
  std::normal_distribution<double> normal;
  for (int i = 0; i < 1'000'000; ++i) {
    curve.x.push_back(normal(engine));
    curve.y.push_back(normal(engine));
  }
  curve.x[400'000] = 40;
  curve.y[500'000] = -40;
  curve.y[600'000] = gap;
  const Curve thin = thinned_points(curve);
  EXPECT_LT(thin.x.size(), 600'000U);
  EXPECT_EQ(*std::max_element(thin.x.begin(), thin.x.end()), 40);
  EXPECT_EQ(*std::min_element(thin.y.begin(), thin.y.end()), -40);
}

TEST(Thinning, OfAMatrixKeepsWhatIsFarthestFromTheMean) {
  Cells cells{100, 200, std::vector<double>(20'000, 1.0)};
  cells.values[57 * 200 + 123] = 9;
  cells.values[3 * 200 + 4] = -9;
  cells.values[99 * 200 + 199] = gap;
  const Cells thin = thinned_cells(cells, 10, 20);
  EXPECT_EQ(thin.rows, 10U);
  EXPECT_EQ(thin.columns, 20U);
  EXPECT_EQ(thin.values[5 * 20 + 12], 9);
  EXPECT_EQ(thin.values[0], -9);
  EXPECT_EQ(thin.values[9 * 20 + 19], 1);
  EXPECT_THAT(thin.values, Each(AllOf(Ge(-9.0), Le(9.0))));
}

TEST(Thinning, OfAMatrixLeavesFewCellsAsTheyAre) {
  const Cells cells{2, 3, {1, 2, 3, 4, 5, gap}};
  EXPECT_EQ(thinned_cells(cells, 2, 3).values.size(), 6U);
  const Cells thin = thinned_cells({1, 4, {gap, gap, 1, 2}}, 1, 2);
  EXPECT_TRUE(std::isnan(thin.values[0]));
  EXPECT_EQ(thin.columns, 2U);
}

}  // namespace
}  // namespace hvm
