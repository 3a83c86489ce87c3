// elementwise/values_test.cpp: values of elements, wherever in an array they stand
//
// Doubles are computed several at a time, in the module's own loops or in the C library's vectors. Neither the place of
// an element nor its neighbours may show.

#include <algorithm>
#include <cmath>
#include <ctime>
#include <random>

#include "functions.hpp"

namespace arrayfold::test {
namespace {

constexpr std::size_t longest = 40;

class Values : public ModuleTest {
 protected:
  std::vector<double> map(const char* name, const std::vector<std::size_t>& extents,
                          const std::vector<double>& elements) const {
    return elements_of<XTDouble>(call(name, {array_of<XTDouble>(ctx(), extents, elements)}).result);
  }

  /// The element alone in a zero-dimensional array.
  double alone(const char* name, double x) const { return map(name, {}, {x})[0]; }

  /// `x` at each place of arrays of each length up to 40, among `others`: the same bits everywhere.
  void expect_everywhere(const char* name, double x, const std::vector<double>& others) const {
    const double expected = alone(name, x);
    for (std::size_t length = 1; length <= longest; ++length)
      for (const std::size_t parity : {0u, 1u}) {  // x at the even places, then at the odd ones
        std::vector<double> elements(length, x);
        for (std::size_t i = 1 - parity; i < length; i += 2) elements[i] = others[(length + i) % others.size()];
        const auto values = map(name, {length}, elements);
        for (std::size_t i = parity; i < length; i += 2)
          EXPECT_TRUE(same(values[i], expected)) << name << "(" << x << ") at " << i << " of " << length;
      }
  }
};

bool is_exact(double value) { return std::isnan(value) || std::isinf(value) || value == 0; }

TEST_F(Values, OfSpecialArguments_AreThoseOfTheCLibrary) {
  for (const auto& function : functions())
    for (const double x : special_values()) {
      const double value = alone(function.name, x), expected = function.of_double(x);
      if (function.closeness == Closeness::same || is_exact(expected) || x == 0 || !std::isfinite(x))
        EXPECT_TRUE(same(value, expected)) << function.name << "(" << x << ") is " << value;
      else
        EXPECT_LE(steps_between(value, expected), 4u) << function.name << "(" << x << ") is " << value;
    }
}

TEST_F(Values, AtTheEndsOfTheRange_OverflowAndVanishWhereTheCLibrarysDo) {
  for (const auto& function : functions())
    for (const double end :
         {709.782712893384, -745.1332191019411, -708.3964185322641, 710.4758600739439, 171.6243769563027}) {
      double x = end;
      for (int step = 0; step < 20; ++step) x = std::nextafter(x, -INFINITY);
      for (int step = 0; step < 40; ++step, x = std::nextafter(x, INFINITY)) {
        const double value = alone(function.name, x), expected = function.of_double(x);
        EXPECT_EQ(std::isinf(value), std::isinf(expected)) << function.name << "(" << x << ")";
        EXPECT_EQ(value == 0, expected == 0) << function.name << "(" << x << ")";
      }
    }
}

TEST_F(Values, OfSubnormals_AreThemselvesWhereAFunctionIsOdd) {
  for (const char* name : {"xsin", "xtan", "xsinh", "xtanh", "xexpm1", "xlog1p"})
    for (const double x : {5e-324, -5e-324, 4e-320, -1e-310, 2.2e-308}) EXPECT_EQ(alone(name, x), x) << name;
}

TEST_F(Values, OfSpecialArguments_AreTheSameAtEveryPlace) {
  for (const auto& function : functions())
    for (const double x : special_values()) expect_everywhere(function.name, x, {0.5, -1.25, 3});
}

TEST_F(Values, AmongSpecialArguments_AreTheSameAtEveryPlace) {
  for (const auto& function : functions())
    for (const double x : {0.3, -1.7, 12.5, 700.25}) expect_everywhere(function.name, x, special_values());
}

/// Half of all bit patterns, half of moderate size.
std::vector<double> random_arguments(std::size_t count) {
  std::mt19937_64 engine(5);
  std::vector<double> drawn(count);
  for (std::size_t i = 0; i < count; ++i) {
    const auto bits = engine();
    drawn[i] = i % 2 == 0 ? load<double>(&bits) : std::uniform_real_distribution(-40.0, 40.0)(engine);
  }
  return drawn;
}

TEST_F(Values, OfRandomArguments_AreTheSameAtEveryPlace) {
  const auto drawn = random_arguments(2000);
  for (const auto& function : functions()) {
    std::vector<double> expected;
    for (const double x : drawn) expected.push_back(alone(function.name, x));
    // Shifted by one each time, so that every element meets every place of a vector, body and tail.
    for (std::size_t length = 1; length <= longest; ++length)
      for (std::size_t first = 0; first + length <= 10 * longest; ++first) {
        const auto begin = drawn.begin() + static_cast<std::ptrdiff_t>(first);
        const auto values = map(function.name, {length}, {begin, begin + static_cast<std::ptrdiff_t>(length)});
        for (std::size_t i = 0; i < length; ++i)
          ASSERT_TRUE(same(values[i], expected[first + i])) << function.name << "(" << drawn[first + i] << ")";
      }
    const auto whole = map(function.name, {40, 50}, drawn);
    for (std::size_t i = 0; i < whole.size(); ++i)
      ASSERT_TRUE(same(whole[i], expected[i])) << function.name << "(" << drawn[i] << ")";
  }
}

TEST_F(Values, OfRandomArguments_AreThoseOfTheCLibrary) {
  const auto drawn = random_arguments(20000);
  for (const auto& function : functions()) {
    const auto values = map(function.name, {drawn.size()}, drawn);
    for (std::size_t i = 0; i < drawn.size(); ++i) {
      const auto steps = steps_between(values[i], function.of_double(drawn[i]));
      // Less than 1 on one side, and up to 4 on the other, which is the C library's own error.
      EXPECT_LE(steps, function.closeness == Closeness::same ? 0u : 4u) << function.name << "(" << drawn[i] << ")";
    }
  }
}

/// The processor time of this thread, in nanoseconds.
double processor_time() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

TEST_F(Values, OfNoArgument_TakeLong) {
  // The slowest need some hundred nanoseconds; a loop that depends on the argument would need seconds.
  constexpr double limit = 20'000;
  constexpr std::size_t count = 250;
  auto arguments = special_values();
  const auto drawn = random_arguments(100);
  arguments.insert(arguments.end(), drawn.begin(), drawn.end());
  for (const double integer : {-170.0, -1e6, -0x1p31, -1e15, 0x1p62}) arguments.push_back(integer);
  for (const auto& function : functions())
    for (const double x : arguments) {
      const Value operand = array_of<XTDouble>(ctx(), {count}, std::vector<double>(count, x));
      // The shortest of a few: on a busy machine one alone may be interrupted for milliseconds.
      double shortest = limit;
      for (int attempt = 0; attempt < 5 && shortest >= limit; ++attempt) {
        const double before = processor_time();
        call(function.name, {operand});
        shortest = std::min(shortest, (processor_time() - before) / count);
      }
      EXPECT_LT(shortest, limit) << function.name << "(" << x << ")";
    }
}

TEST_F(Values, Required_DegreesAndRadians_MultiplyFirst) {
  // The other order rounds to another number.
  EXPECT_EQ(alone("xrad2deg", 1.1), 1.1 * 180.0 / 3.141592653589793);
  EXPECT_NE(1.1 * 180.0 / 3.141592653589793, 1.1 * (180.0 / 3.141592653589793));
  EXPECT_EQ(alone("xrad2deg", 1e307), INFINITY);
  EXPECT_EQ(alone("xdeg2rad", 1e308), INFINITY);
}

TEST_F(Values, DegreesAndRadians_AreEachTwoNamesOfOneFunction) {
  const auto drawn = random_arguments(5000);
  for (const auto& [one, other] : {std::pair{"xrad2deg", "xdegrees"}, {"xdeg2rad", "xradians"}}) {
    const auto left = map(one, {drawn.size()}, drawn), right = map(other, {drawn.size()}, drawn);
    for (std::size_t i = 0; i < drawn.size(); ++i) EXPECT_TRUE(same(left[i], right[i])) << drawn[i];
  }
}

TEST_F(Values, Xsign_KeepsTheSignOfZeroAndGivesQuietNaN) {
  EXPECT_TRUE(std::signbit(alone("xsign", -0.0)));
  EXPECT_FALSE(std::signbit(alone("xsign", 0.0)));
  const double nan = alone("xsign", std::numeric_limits<double>::signaling_NaN());
  EXPECT_TRUE(std::isnan(nan));
  EXPECT_NE(load<std::uint64_t>(&nan) & (std::uint64_t{1} << 51), 0u);
}

TEST_F(Values, Xabs_ClearsTheSignBitOfNaNs) {
  const double nan = alone("xabs", std::copysign(std::numeric_limits<double>::quiet_NaN(), -1.0));
  EXPECT_TRUE(std::isnan(nan));
  EXPECT_FALSE(std::signbit(nan));
}

}  // namespace
}  // namespace arrayfold::test
