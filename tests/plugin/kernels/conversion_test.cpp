// kernels/conversion_test.cpp: floating-point numbers to integers, at every edge

#include "kernels/conversion.hpp"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace arrayfold {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr auto int_min = std::numeric_limits<std::int32_t>::min();
constexpr auto int_max = std::numeric_limits<std::int32_t>::max();
constexpr auto int64_min = std::numeric_limits<std::int64_t>::min();

TEST(Truncated, To32Bits_DropsTheFractionAndAnswersTheSmallestBeyond) {
  const std::pair<double, std::int32_t> rows[] = {{0.0, 0},
                                                  {-0.0, 0},
                                                  {0.999, 0},
                                                  {-0.999, 0},
                                                  {2.5, 2},
                                                  {-2.5, -2},
                                                  {2147483647.0, int_max},
                                                  {2147483647.9, int_max},
                                                  {2147483648.0, int_min},
                                                  {-2147483648.0, int_min},
                                                  {-2147483648.9, int_min},
                                                  {-2147483649.0, int_min},
                                                  {1e300, int_min},
                                                  {infinity, int_min},
                                                  {-infinity, int_min},
                                                  {std::nan(""), int_min},
                                                  {5e-324, 0}};
  for (const auto& [real, integer] : rows) EXPECT_EQ(truncated<std::int32_t>(real), integer) << real;
}

TEST(Truncated, To64Bits_DropsTheFractionAndAnswersTheSmallestBeyond) {
  const std::pair<double, std::int64_t> rows[] = {{-1.5, -1},
                                                  {9007199254740993.0, 9007199254740992},
                                                  {std::nextafter(9223372036854775808.0, 0), 9223372036854774784},
                                                  {9223372036854775808.0, int64_min},
                                                  {-9223372036854775808.0, int64_min},
                                                  {-1e19, int64_min},
                                                  {infinity, int64_min},
                                                  {std::nan(""), int64_min}};
  for (const auto& [real, integer] : rows) EXPECT_EQ(truncated<std::int64_t>(real), integer) << real;
}

}  // namespace
}  // namespace arrayfold
