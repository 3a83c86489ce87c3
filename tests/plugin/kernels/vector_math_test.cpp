// kernels/vector_math_test.cpp: the vector functions at every length and place, on every target
//
// How near the values are to the mathematical ones is a matter of the C library: tests of the functions say so.

#include "kernels/vector_math.hpp"

#include <cmath>
#include <cstring>
#include <random>

#include "memory.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

struct Named {
  const char* name;
  VectorFunction VectorMath::*loop;
  double (*function)(double);
};

constexpr Named all[] = {{"exp", &VectorMath::exp, std::exp},    {"expm1", &VectorMath::expm1, std::expm1},
                         {"log", &VectorMath::log, std::log},    {"log1p", &VectorMath::log1p, std::log1p},
                         {"cbrt", &VectorMath::cbrt, std::cbrt}, {"sin", &VectorMath::sin, std::sin},
                         {"cos", &VectorMath::cos, std::cos},    {"tan", &VectorMath::tan, std::tan},
                         {"sinh", &VectorMath::sinh, std::sinh}, {"cosh", &VectorMath::cosh, std::cosh},
                         {"tanh", &VectorMath::tanh, std::tanh}};

template <class Run>
void on_each(Run run) {
  on_each_target([&] {
    for (const Named& named : all) {
      SCOPED_TRACE(named.name);
      run(named, vector_math().*named.loop);
    }
  });
}

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

/// Each value as the loop gives it for a single element.
std::vector<double> one_by_one(VectorFunction loop, const std::vector<double>& elements) {
  std::vector<double> values(elements.size());
  for (std::size_t i = 0; i < elements.size(); ++i) loop(&elements[i], &values[i], 1);
  return values;
}

TEST(VectorLoops, OfEveryLength_GiveEachElementsOwnValue) {
  on_each([](const Named&, VectorFunction loop) {
    for (const std::size_t length : lengths())
      for (const auto& elements : {mixed_values<double>(length, 1), bit_patterns(length)}) {
        const auto expected = one_by_one(loop, elements);
        Memory<double> in(elements, 1), out(length, 3), in_place(elements, 2);
        loop(in.data(), out.data(), length);
        loop(in_place.data(), in_place.data(), length);
        ASSERT_TRUE(same_bits(out.values(), expected)) << length;
        ASSERT_TRUE(same_bits(in_place.values(), expected)) << length;
        ASSERT_TRUE(out.is_intact() && in_place.is_intact()) << length;
      }
  });
}

TEST(VectorLoops, AreTheFunctionsOfTheirNames) {
  on_each([](const Named& named, VectorFunction loop) {
    for (const double x : {0.1, 0.5, 1.0, 1.5, 2.75}) {
      double value = 0;
      loop(&x, &value, 1);
      EXPECT_NEAR(value, named.function(x), 1e-15 * std::abs(named.function(x)) + 1e-16) << x;
    }
  });
}

}  // namespace
}  // namespace arrayfold::test
