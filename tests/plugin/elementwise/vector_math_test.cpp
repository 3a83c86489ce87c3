// elementwise/vector_math_test.cpp: the vector functions for AVX2, which processors without AVX-512 take
//
// Compiled into this program with the wide ones left out, so that every machine tests them.

#include "kernels/vector_math.hpp"

#include <cmath>
#include <random>

#include "functions.hpp"

namespace arrayfold::test {
namespace {

constexpr std::size_t longest = 40;

struct Named {
  const char* name;
  VectorFunction vectors;
};

constexpr Named all[] = {{"xexp", vector_exp},     {"xexpm1", vector_expm1}, {"xlog", vector_log},
                         {"xlog1p", vector_log1p}, {"xcbrt", vector_cbrt},   {"xsin", vector_sin},
                         {"xcos", vector_cos},     {"xtan", vector_tan},     {"xsinh", vector_sinh},
                         {"xcosh", vector_cosh},   {"xtanh", vector_tanh}};

double alone(VectorFunction vectors, double x) {
  double value = 0;
  vectors(&x, &value, 1);
  return value;
}

/// The C library's function of an entry's name.
double expected(const char* name, double x) {
  for (const auto& function : functions())
    if (function.name == std::string(name)) return function.of_double(x);
  throw std::invalid_argument(name);
}

std::vector<double> drawn_and_special(std::size_t count) {
  std::mt19937_64 engine(6);
  std::vector<double> elements = special_values();
  while (elements.size() < count) {
    const auto bits = engine();
    elements.push_back(load<double>(&bits));
    elements.push_back(std::uniform_real_distribution(-40.0, 40.0)(engine));
  }
  return elements;
}

TEST(VectorMath, OnAvx2_SpecialValuesAreThoseOfTheCLibrary) {
  for (const auto& [name, vectors] : all)
    for (const double x : special_values()) {
      const double value = alone(vectors, x), wanted = expected(name, x);
      if (!std::isfinite(wanted) || wanted == 0 || x == 0)
        EXPECT_TRUE(same(value, wanted)) << name << "(" << x << ") is " << value;
      else
        EXPECT_LE(steps_between(value, wanted), 4u) << name << "(" << x << ") is " << value;
    }
}

TEST(VectorMath, OnAvx2_EveryPlaceGivesTheSameBits) {
  const auto elements = drawn_and_special(600);
  for (const auto& [name, vectors] : all)
    for (std::size_t length = 1; length <= longest; ++length)
      for (std::size_t first = 0; first + length <= elements.size(); first += 3) {
        std::vector<double> values(length);
        vectors(elements.data() + first, values.data(), length);
        for (std::size_t i = 0; i < length; ++i)
          ASSERT_TRUE(same(values[i], alone(vectors, elements[first + i])))
              << name << "(" << elements[first + i] << ")";
      }
}

TEST(VectorMath, OnAvx2_InPlaceGivesTheSame) {
  const auto elements = drawn_and_special(501);
  for (const auto& [name, vectors] : all)
    for (const std::size_t count : {std::size_t{0}, std::size_t{3}, elements.size()}) {
      auto changed = elements;
      vectors(changed.data(), changed.data(), count);
      for (std::size_t i = 0; i < elements.size(); ++i)
        ASSERT_TRUE(same(changed[i], i < count ? alone(vectors, elements[i]) : elements[i])) << name << i;
    }
}

TEST(VectorMath, OnAvx2_NothingBehindTheEndIsWritten) {
  for (const auto& [name, vectors] : all)
    for (std::size_t length = 0; length <= longest; ++length) {
      const std::vector<double> elements(length, 0.5);
      std::vector<double> values(length + 8, 77);
      vectors(elements.data(), values.data(), length);
      for (std::size_t i = length; i < values.size(); ++i) EXPECT_EQ(values[i], 77) << name << " of " << length;
    }
}

}  // namespace
}  // namespace arrayfold::test
