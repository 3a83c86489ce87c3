// kernels/vector_math_test.cpp: the mathematical functions on every target: how near, where exact, which bits

#include "kernels/vector_math.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <random>
#include <string>

#include "accuracy/functions.hpp"
#include "memory.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

struct Named {
  const char* name;
  VectorFunctions VectorMath::*loops;
  std::uint64_t digest;  // of its values over `ordinary_arguments`
};

constexpr Named all[] = {
    {"xexp", &VectorMath::exp, 0xe41b272df16fb9ff},   {"xexpm1", &VectorMath::expm1, 0x0d84169921466645},
    {"xlog", &VectorMath::log, 0x4960be4a99db733c},   {"xlog1p", &VectorMath::log1p, 0xea853c3c9ee38cec},
    {"xcbrt", &VectorMath::cbrt, 0xea0dfa67fc959b5f}, {"xsin", &VectorMath::sin, 0xeebdbe0149b08479},
    {"xcos", &VectorMath::cos, 0xa3ace101df27fe25},   {"xtan", &VectorMath::tan, 0xcc7daed70eb8bb45},
    {"xsinh", &VectorMath::sinh, 0x698c8b2312ce2975}, {"xcosh", &VectorMath::cosh, 0x3a16abbc18cc80e7},
    {"xtanh", &VectorMath::tanh, 0x5d1172d3c4e90daa}, {"xlogspace", &VectorMath::exp10, 0x4254c0d8a03ef003}};

/// Calls `run(named, loops)` for each function on each target.
template <class Run>
void on_each(Run run) {
  on_each_target([&] {
    for (const Named& named : all) {
      SCOPED_TRACE(named.name);
      run(named, vector_math().*named.loops);
    }
  });
}

template <class T>
double alone(const VectorFunctions& loops, T x) {
  double value = 0;
  loops(&x, &value, 1);
  return value;
}

template <class T>
std::vector<double> one_by_one(const VectorFunctions& loops, const std::vector<T>& elements) {
  std::vector<double> values(elements.size());
  for (std::size_t i = 0; i < elements.size(); ++i) values[i] = alone(loops, elements[i]);
  return values;
}

// ---- Arguments

/// Magnitudes of every exponent.
std::vector<double> bit_patterns(std::size_t count) {
  std::mt19937_64 engine(6);
  std::vector<double> values(count);
  for (double& value : values) {
    const std::uint64_t bits = engine();
    std::memcpy(&value, &bits, sizeof value);
  }
  return values;
}

/// Numbers up to 1e5 of many magnitudes, the same on every system.
std::vector<double> ordinary_arguments() {
  std::mt19937_64 engine(19);
  std::vector<double> values(100'000);
  for (double& value : values) {
    const auto fraction = static_cast<double>(static_cast<std::int64_t>(engine())) * 0x1p-63;
    value = std::ldexp(fraction, static_cast<int>(engine() % 28) - 11);
    if (!(std::abs(value) <= 1e5)) value = fraction;
  }
  return values;
}

/// Adds the number of either sign and its neighbours.
void add_around(std::vector<double>& values, double x) {
  double below = x, above = x;
  values.insert(values.end(), {x, -x});
  for (int step = 0; step < 3; ++step) {
    below = std::nextafter(below, -INFINITY);
    above = std::nextafter(above, INFINITY);
    values.insert(values.end(), {below, above, -below, -above});
  }
}

/// Where tables and polynomials change, where ranges end, and every power of two.
std::vector<double> borders() {
  const long double step = std::log(2.0L) / 32, quarter = std::acos(0.0L) / 2;
  std::vector<double> values = {HUGE_VAL, -HUGE_VAL, std::nan(""), -std::nan("")};
  for (int i = -34'600; i <= 32'900; i += i % 64 == 0 ? 1 : 7) add_around(values, static_cast<double>(step * i));
  for (int i = 0; i < 1000; ++i) add_around(values, static_cast<double>(step * i / 2));
  for (int i = 1; i < 127'400; i += i < 4000 ? 1 : 101) add_around(values, static_cast<double>(quarter * i));
  for (int i = 0; i < 32; ++i)
    for (const int exponent : {-1074, -1022, -3, -2, -1, 0, 1, 2, 3, 52, 53, 54, 1019, 1020, 1021, 1022, 1023})
      add_around(values, std::ldexp(1 + (i + 0.5) / 32, exponent));
  for (int exponent = -1074; exponent < 1024; ++exponent) add_around(values, std::ldexp(1.0, exponent));
  for (const double end :
       {20.0, 290.0, 308.25471555991669, 323.30621534311575, 330.0, 36.0, 36.7368005696771, 37.42994775023705, 700.0,
        708.0, 708.3964185322641, 709.782712893384, 710.4758600739439, 745.1332191019411, 760.0, 1e5, 1e300})
    add_around(values, end);
  return values;
}

// ---- How near

TEST(VectorLoops, NearBorders_StayWithinTheBound) {
  const std::vector<double> x = borders();
  on_each([&](const Named& named, const VectorFunctions& loops) {
    const auto& functions = accuracy::functions();
    const auto has_name = [&](const auto& function) { return std::string(function.name) == named.name; };
    const auto function = std::find_if(functions.begin(), functions.end(), has_name);
    ASSERT_NE(function, functions.end());
    const double bound = fuses_products() ? function->bound.fused : function->bound.otherwise;
    std::vector<double> values(x.size());
    loops(x.data(), values.data(), x.size());
    for (std::size_t i = 0; i < x.size(); ++i)
      ASSERT_LT(accuracy::error_in_ulp(values[i], function->exact(x[i])), bound)
          << named.name << "(" << x[i] << ") is " << values[i];
  });
}

/// Of the doubles up to 1e5, these come nearest to 0 and to the poles: up to 2^-60.
TEST(VectorLoops, NextToEveryMultipleOfAQuarterTurn_StayWithinTheBound) {
  const long double quarter = std::acos(0.0L);
  std::vector<double> x;
  for (int n = 1; n <= 63'661; ++n) x.push_back(static_cast<double>(n * quarter));
  std::vector<long double> sines, cosines;
  for (const long double value : x) {
    sines.push_back(std::sin(value));
    cosines.push_back(std::cos(value));
  }
  on_each_target([&] {
    const double bound = fuses_products() ? 1.0 : 1.5;
    for (std::size_t i = 0; i < x.size(); ++i) {
      ASSERT_LT(accuracy::error_in_ulp(alone(vector_math().sin, x[i]), sines[i]), bound) << x[i];
      ASSERT_LT(accuracy::error_in_ulp(alone(vector_math().cos, x[i]), cosines[i]), bound) << x[i];
      ASSERT_LT(accuracy::error_in_ulp(alone(vector_math().tan, x[i]), sines[i] / cosines[i]), bound) << x[i];
    }
  });
}

// ---- Exact values

TEST(VectorLoops, OfPlainArguments_AreExact) {
  on_each_target([] {
    const VectorMath& of = vector_math();
    for (const double zero : {0.0, -0.0}) {
      EXPECT_EQ(alone(of.exp, zero), 1);
      EXPECT_EQ(alone(of.exp10, zero), 1);
      EXPECT_EQ(alone(of.cos, zero), 1);
      EXPECT_EQ(alone(of.cosh, zero), 1);
    }
    EXPECT_EQ(alone(of.log, 1.0), 0);
    EXPECT_FALSE(std::signbit(alone(of.log, 1.0)));
    for (const double large : {20.0, 1e3, 1e300, HUGE_VAL}) EXPECT_EQ(alone(of.tanh, large), 1);
    for (const double low : {-40.0, -1e3, -1e300, -HUGE_VAL}) EXPECT_EQ(alone(of.expm1, low), -1);
  });
}

/// As the C library reads them from digits, which it rounds as the exact numbers. 10^23 lies exactly in the middle of
/// two doubles.
TEST(VectorLoops, OfWholeExponents_ArePowersOfTenToTheLastPlace) {
  on_each_target([] {
    for (int exponent = -340; exponent <= 340; ++exponent) {
      const double nearest = std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr);
      const double power = alone(vector_math().exp10, exponent);
      if (exponent == 23)
        EXPECT_TRUE(power == nearest || power == std::nextafter(nearest, HUGE_VAL));
      else
        EXPECT_EQ(power, nearest) << exponent;
    }
  });
}

/// The 80 bits of the reference count for another 0.0005.
TEST(VectorLoops, PowersOfTen_AreRoundedAlmostAsTheExactOnes) {
  std::mt19937_64 engine(10);
  std::vector<double> exponents(50'000);
  for (double& x : exponents) x = std::ldexp(static_cast<double>(static_cast<std::int64_t>(engine())), -63) * 290;
  std::vector<long double> exact;
  for (const double x : exponents) exact.push_back(std::pow(10.0L, static_cast<long double>(x)));
  on_each_target([&] {
    std::vector<double> powers(exponents.size());
    vector_math().exp10(exponents.data(), powers.data(), powers.size());
    for (std::size_t i = 0; i < powers.size(); ++i)
      ASSERT_LT(accuracy::error_in_ulp(powers[i], exact[i]), 0.5035) << exponents[i];
  });
}

/// The kernel's, the C library's, infinity and 0, next to each other in a register.
TEST(VectorLoops, PowersOfTenOfEverySize_AreTheNearestDoubles) {
  std::vector<double> exponents = {std::nan("")};
  for (const double x : {0.0, 1.5, 290.0, 290.5, 307.75, 308.25471555991669, 308.25471555991675, 309.0, 323.5, 324.0,
                         324.5, 331.0, 1e300, HUGE_VAL})
    exponents.insert(exponents.end(), {x, -x});
  on_each_target([&] {
    std::vector<double> powers(exponents.size());
    vector_math().exp10(exponents.data(), powers.data(), powers.size());
    for (std::size_t i = 0; i < powers.size(); ++i)
      EXPECT_LE(accuracy::error_in_ulp(powers[i], std::pow(10.0L, static_cast<long double>(exponents[i]))), 0.51)
          << exponents[i];
  });
}

TEST(VectorLoops, OfExactCubes_GiveTheirRoots) {
  std::mt19937_64 engine(3);
  on_each_target([&] {
    for (int i = 0; i < 20'000; ++i) {
      // Roots of up to 17 bits have cubes of up to 51.
      const double root =
          std::ldexp(static_cast<double>(1 + engine() % 131'071), static_cast<int>(engine() % 600) - 330);
      ASSERT_EQ(alone(vector_math().cbrt, root * root * root), root);
      ASSERT_EQ(alone(vector_math().cbrt, -root * root * root), -root);
    }
    for (int exponent = -358; exponent <= 341; ++exponent)
      ASSERT_EQ(alone(vector_math().cbrt, std::ldexp(1.0, 3 * exponent)), std::ldexp(1.0, exponent)) << exponent;
  });
}

TEST(VectorLoops, OfOppositeArguments_AreOppositeOrTheSame) {
  std::vector<double> x = ordinary_arguments(), opposite = x;
  for (const double value : borders()) x.push_back(value);
  opposite = x;
  for (double& value : opposite) value = -value;
  on_each_target([&] {
    const auto values_of = [](const VectorFunctions& loops, const std::vector<double>& elements) {
      std::vector<double> values(elements.size());
      loops(elements.data(), values.data(), elements.size());
      return values;
    };
    const VectorMath& of = vector_math();
    for (const VectorFunctions& odd : {of.cbrt, of.sin, of.tan, of.sinh, of.tanh}) {
      auto expected = values_of(odd, x);
      for (double& value : expected) value = -value;
      EXPECT_TRUE(same_bits(values_of(odd, opposite), expected));
    }
    for (const VectorFunctions& even : {of.cos, of.cosh})
      EXPECT_TRUE(same_bits(values_of(even, opposite), values_of(even, x)));
  });
}

TEST(VectorLoops, OfTheSmallestNumbers_AreTheNumbersWhereTheSlopeIsOne) {
  std::vector<double> x;
  for (int exponent = -1074; exponent < -60; ++exponent) add_around(x, std::ldexp(1.0, exponent));
  on_each_target([&] {
    const VectorMath& of = vector_math();
    for (const VectorFunctions& loops : {of.expm1, of.log1p, of.sin, of.tan, of.sinh, of.tanh}) {
      std::vector<double> values(x.size());
      loops(x.data(), values.data(), x.size());
      EXPECT_TRUE(same_bits(values, x));
    }
  });
}

TEST(VectorLoops, BeyondTheCircles_AreTheCLibrarys) {
  std::vector<double> x = {0x1.6ac5b262ca1ffp+849 /* next to a multiple of pi/2 */, 0x1p1023, 1e22, 100000.00000000001};
  std::mt19937_64 engine(5);
  for (int i = 0; i < 1000; ++i) {
    x.push_back(std::ldexp(1 + static_cast<double>(engine() % 1000) / 1000, 17 + i));
    x.push_back(100'001 + static_cast<double>(engine() % 1'000'000) / 100);
  }
  for (const double value : x)
    on_each_target([&] {
      EXPECT_EQ(alone(vector_math().sin, value), std::sin(value)) << value;
      EXPECT_EQ(alone(vector_math().cos, -value), std::cos(-value)) << value;
      EXPECT_EQ(alone(vector_math().tan, -value), std::tan(-value)) << value;
    });
}

// ---- The same bits everywhere

TEST(VectorLoops, OfEveryLengthAndPlace_GiveEachElementsOwnValue) {
  on_each([](const Named&, const VectorFunctions& loops) {
    for (const std::size_t length : lengths())
      for (const auto& elements : {mixed_values<double>(length, 1), bit_patterns(length)}) {
        const auto expected = one_by_one(loops, elements);
        for (const std::size_t offset : {1, 2, 5}) {
          Memory<double> in(elements, offset), out(length, 3), in_place(elements, 2);
          loops(in.data(), out.data(), length);
          loops(in_place.data(), in_place.data(), length);
          ASSERT_TRUE(same_bits(out.values(), expected)) << length;
          ASSERT_TRUE(same_bits(in_place.values(), expected)) << length;
          ASSERT_TRUE(out.is_intact() && in_place.is_intact()) << length;
          if (length > 70) break;
        }
      }
  });
}

template <class Integer>
void expect_values_of_doubles(const VectorFunctions& loops) {
  for (const std::size_t length : lengths()) {
    if (length > 300) continue;
    const auto elements = mixed_values<Integer>(length, 2);
    Memory<Integer> in(elements, 1);
    Memory<double> out(length, 3);
    loops(in.data(), out.data(), length);
    const std::vector<double> doubles(elements.begin(), elements.end());
    ASSERT_TRUE(same_bits(out.values(), one_by_one(loops, doubles))) << length;
    ASSERT_TRUE(out.is_intact()) << length;
  }
}

TEST(VectorLoops, OfIntegers_GiveTheValuesOfTheDoubles) {
  on_each([](const Named&, const VectorFunctions& loops) {
    expect_values_of_doubles<std::int32_t>(loops);
    expect_values_of_doubles<std::int64_t>(loops);
  });
}

std::uint64_t digest_of(const std::vector<double>& values) {
  std::uint64_t digest = 0;
  for (const double value : values) {
    std::uint64_t bits = 0x7ff8000000000000;
    if (!std::isnan(value)) std::memcpy(&bits, &value, sizeof bits);
    digest = (digest ^ bits) * 0x9e3779b97f4a7c15;
    digest ^= digest >> 32;
  }
  return digest;
}

TEST(VectorLoops, WithFusedProducts_GiveTheSameBitsOnEveryProcessor) {
  const std::vector<double> x = ordinary_arguments();
  on_each([&](const Named& named, const VectorFunctions& loops) {
    if (!fuses_products()) return;
    std::vector<double> values(x.size());
    loops(x.data(), values.data(), x.size());
    EXPECT_EQ(digest_of(values), named.digest) << std::hex << digest_of(values);
  });
}

// ---- Time
//
// The checks of the sanitizers cost each path something else, so only the other builds are measured.
#ifndef ARRAYFOLD_ADDRESS_SANITIZER

/// Processor time of the shortest of several runs over as many equal arguments, in nanoseconds.
double time_of(const VectorFunctions& loops, double argument) {
  const std::vector<double> x(2000, argument);
  std::vector<double> values(x.size());
  double shortest = HUGE_VAL;
  for (int run = 0; run < 20; ++run) {
    timespec before{}, after{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &before);
    loops(x.data(), values.data(), x.size());
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &after);
    const auto seconds = static_cast<double>(after.tv_sec - before.tv_sec);
    shortest = std::min(shortest, seconds * 1e9 + static_cast<double>(after.tv_nsec - before.tv_nsec));
  }
  return shortest;
}

/// They take up to 3 times as long where nothing disturbs the measurement. A call of the C library, or a subnormal
/// product in each lane, would take 10 to 80 times as long.
TEST(VectorLoops, OfUnusualArguments_TakeLittleLonger) {
  on_each([](const Named&, const VectorFunctions& loops) {
    if (!fuses_products()) return;
    const double usual = time_of(loops, 0.7);
    for (const double x :
         {HUGE_VAL, -HUGE_VAL, std::nan(""), 0.0, -0.0, -1.0, -3.5, 1e-310, -5e-324, 708.5, -708.5, -740.0, 1e4, -1e4})
      EXPECT_LT(time_of(loops, x), 8 * usual) << x;
  });
}

#endif

}  // namespace
}  // namespace arrayfold::test
