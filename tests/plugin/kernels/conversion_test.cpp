// kernels/conversion_test.cpp: numbers of one type as numbers of another, at every edge and on every target

#include "kernels/conversion.hpp"

#include <cmath>
#include <limits>

#include "memory.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr auto int_min = std::numeric_limits<std::int32_t>::min();
constexpr auto int_max = std::numeric_limits<std::int32_t>::max();
constexpr auto int64_min = std::numeric_limits<std::int64_t>::min();

TEST(Truncated, To32Bits_DropsTheFractionAndGivesTheSmallestBeyond) {
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

TEST(Truncated, To64Bits_DropsTheFractionAndGivesTheSmallestBeyond) {
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

// ---- Many at a time

template <class To, class From>
To converted(From x) {
  if constexpr (std::is_integral_v<To> && std::is_floating_point_v<From>)
    return truncated<To>(static_cast<double>(x));
  else
    return static_cast<To>(x);
}

template <class From, class To>
void expect_conversion(const std::vector<From>& numbers) {
  SCOPED_TRACE(numbers.size());
  Memory<From> in(numbers, numbers.size() % 4);
  Memory<To> out(numbers.size(), numbers.size() % 3);
  convert(in.data(), out.data(), numbers.size());
  std::vector<To> expected;
  for (const From x : numbers) expected.push_back(converted<To>(x));
  EXPECT_TRUE(same_bits(out.values(), expected));
  EXPECT_TRUE(out.is_intact());
}

template <class From, class To>
void expect_conversion_of_every_length() {
  for (const std::size_t length : lengths()) expect_conversion<From, To>(mixed_values<From>(length, 7));
}

TEST(Convert, OfEveryLength_IsThatOfOneNumber) {
  on_each_target([] {
    expect_conversion_of_every_length<double, std::int32_t>();
    expect_conversion_of_every_length<double, std::int64_t>();
    expect_conversion_of_every_length<float, double>();
    expect_conversion_of_every_length<float, std::int32_t>();
    expect_conversion_of_every_length<float, std::int64_t>();
    expect_conversion_of_every_length<std::int32_t, double>();
    expect_conversion_of_every_length<std::int64_t, double>();
    expect_conversion_of_every_length<std::int64_t, std::int32_t>();
  });
}

/// Doubles of every magnitude and sign, the neighbours of powers of two, and halfway points.
std::vector<double> edges() {
  std::vector<double> numbers = {infinity, -infinity, std::nan(""), 0.0, -0.0, 5e-324, 2147483647.5, -2147483648.5};
  for (int exponent = -2; exponent <= 66; ++exponent) {
    const double power = std::ldexp(1.0, exponent);
    for (const double x :
         {power, power - 0.5, power + 0.5, std::nextafter(power, 0.0), std::nextafter(power, infinity)})
      numbers.insert(numbers.end(), {x, -x});
  }
  std::mt19937_64 engine(8);
  for (int i = 0; i < 4000; ++i) {
    const double magnitude = std::ldexp(std::uniform_real_distribution<double>(1.0, 2.0)(engine), i % 68);
    numbers.push_back(i % 3 == 0 ? -magnitude : magnitude);
  }
  return numbers;
}

TEST(Convert, FromDoubles_TruncatesEveryMagnitude) {
  on_each_target([] {
    expect_conversion<double, std::int32_t>(edges());
    expect_conversion<double, std::int64_t>(edges());
  });
}

TEST(Convert, From64BitIntegers_RoundsAsACastDoes) {
  std::vector<std::int64_t> numbers = {int64_min, int64_min + 1, std::numeric_limits<std::int64_t>::max()};
  for (int bit = 0; bit < 63; ++bit)
    for (const std::int64_t below : {-3, -2, -1, 0, 1, 2, 3}) {
      const std::int64_t x = (std::int64_t{1} << bit) + below;
      // Halfway between two doubles, and beside it.
      const std::int64_t halfway = (std::int64_t{1} << 62) | (std::int64_t{1} << bit) | (256 + below);
      numbers.insert(numbers.end(), {x, -x, halfway, -halfway});
    }
  std::mt19937_64 engine(9);
  for (int i = 0; i < 4000; ++i) numbers.push_back(static_cast<std::int64_t>(engine()) >> (i % 64));
  on_each_target([&] { expect_conversion<std::int64_t, double>(numbers); });
}

TEST(Convert, FromInts_WidensThem) {
  on_each_target([] {
    for (const std::size_t length : lengths()) {
      SCOPED_TRACE(length);
      const auto values = mixed_values<std::int32_t>(length, 1);
      Memory<std::int32_t> row(values, 1);
      Memory<std::int64_t> wide(length, 1);
      convert(row.data(), wide.data(), length);
      EXPECT_TRUE(same_bits(wide.values(), std::vector<std::int64_t>(values.begin(), values.end())));
      EXPECT_TRUE(wide.is_intact());
    }
  });
}

}  // namespace
}  // namespace arrayfold::test
