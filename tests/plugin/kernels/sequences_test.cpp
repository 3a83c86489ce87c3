// kernels/sequences_test.cpp: elements computed from their position, on every target, against their formulas

#include "kernels/sequences.hpp"

#include <limits>

#include "kernels/conversion.hpp"
#include "memory.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr auto int_min = std::numeric_limits<std::int32_t>::min();
constexpr auto int_max = std::numeric_limits<std::int32_t>::max();

TEST(Fill, WritesEveryElementAndNoOther) {
  on_each_target([] {
    for (const std::size_t length : lengths()) {
      Memory<double> out(length, length % 4);
      fill(out.data(), length, 1.5);
      EXPECT_TRUE(same_bits(out.values(), std::vector<double>(length, 1.5)));
      EXPECT_TRUE(out.is_intact());
    }
  });
}

TEST(CountUp, WrapsIn32Bits) {
  on_each_target([] {
    for (const auto& [start, step] : {std::pair{0, 1}, {10, -3}, {int_max - 2, 1}, {int_min, -1}, {7, int_max}, {5, 0}})
      for (const std::size_t length : lengths()) {
        SCOPED_TRACE(testing::Message() << length << " from " << start << " by " << step);
        Memory<double> out(length, length % 4);
        count_up(out.data(), length, start, step);
        std::vector<double> expected;
        auto number = static_cast<std::uint32_t>(start);
        for (std::size_t i = 0; i < length; ++i, number += static_cast<std::uint32_t>(step))
          expected.push_back(static_cast<std::int32_t>(number));
        EXPECT_TRUE(same_bits(out.values(), expected));
        EXPECT_TRUE(out.is_intact());
      }
  });
}

template <class T>
T element(double x) {
  if constexpr (std::is_integral_v<T>)
    return truncated<T>(x);
  else
    return static_cast<T>(x);
}

template <class T>
void expect_spacing(double first, double step) {
  for (const std::size_t length : lengths()) {
    SCOPED_TRACE(testing::Message() << length << " from " << first << " by " << step);
    Memory<T> out(length, length % 4);
    space_evenly(out.data(), length, first, step);
    std::vector<T> expected(length);
    for (std::size_t i = 0; i < length; ++i) {
      const volatile double distance = static_cast<double>(i) * step;
      expected[i] = element<T>(first + distance);
    }
    EXPECT_TRUE(same_bits(out.values(), expected));
    EXPECT_TRUE(out.is_intact());
  }
}

TEST(EvenSpacing, RoundsAfterTheProductAndAfterTheSum) {
  on_each_target([] {
    for (const auto& [first, step] :
         {std::pair{0.0, 0.1}, {-0.0, -0.0}, {1.0, 1.0 / 3}, {-1e300, 1e298}, {1e-320, 5e-324}})
      for (const double sign : {1.0, -1.0}) {
        expect_spacing<double>(sign * first, sign * step);
        expect_spacing<float>(sign * first, sign * step);
      }
    expect_spacing<double>(-infinity, infinity);
  });
}

TEST(EvenSpacing, OfIntegers_TruncatesAndGivesTheSmallestBeyond) {
  on_each_target([] {
    for (const auto& [first, step] : {std::pair{0.0, 0.7},
                                      {-7.5, 0.3},
                                      {2147483600.0, 1.3},
                                      {-2147483600.0, -1.3},
                                      {9.2e18, 1e15},
                                      {-9.2e18, -1e15},
                                      {-1e19, 1e18},
                                      {1e15, 0.5}}) {
      expect_spacing<std::int32_t>(first, step);
      expect_spacing<std::int64_t>(first, step);
    }
    expect_spacing<std::int32_t>(-infinity, infinity);
    expect_spacing<std::int64_t>(infinity, infinity);
  });
}

}  // namespace
}  // namespace arrayfold::test
