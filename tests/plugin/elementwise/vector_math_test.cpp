// elementwise/vector_math_test.cpp: the vector functions, on every target

#include "kernels/vector_math.hpp"

#include <cmath>
#include <random>

#include "functions.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

constexpr std::size_t longest = 40;

struct Named {
  const char* name;
  VectorFunction VectorMath::*vectors;
};

constexpr Named all[] = {{"xexp", &VectorMath::exp},     {"xexpm1", &VectorMath::expm1}, {"xlog", &VectorMath::log},
                         {"xlog1p", &VectorMath::log1p}, {"xcbrt", &VectorMath::cbrt},   {"xsin", &VectorMath::sin},
                         {"xcos", &VectorMath::cos},     {"xtan", &VectorMath::tan},     {"xsinh", &VectorMath::sinh},
                         {"xcosh", &VectorMath::cosh},   {"xtanh", &VectorMath::tanh}};

/// Calls `run(name, vectors)` for each function on each target.
template <class Run>
void on_each(Run run) {
  on_each_target([&] {
    for (const auto& [name, vectors] : all) run(name, vector_math().*vectors);
  });
}

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

TEST(VectorMath, SpecialValuesAreThoseOfTheCLibrary) {
  on_each([](const char* name, VectorFunction vectors) {
    for (const double x : special_values()) {
      const double value = alone(vectors, x), wanted = expected(name, x);
      if (!std::isfinite(wanted) || wanted == 0 || x == 0)
        EXPECT_TRUE(same(value, wanted)) << name << "(" << x << ") is " << value;
      else
        EXPECT_LE(steps_between(value, wanted), 4u) << name << "(" << x << ") is " << value;
    }
  });
}

TEST(VectorMath, EveryPlaceGivesTheSameBits) {
  const auto elements = drawn_and_special(600);
  on_each([&](const char* name, VectorFunction vectors) {
    std::vector<double> single;
    for (const double x : elements) single.push_back(alone(vectors, x));
    for (std::size_t length = 1; length <= longest; ++length)
      for (std::size_t first = 0; first + length <= elements.size(); first += 3) {
        std::vector<double> values(length);
        vectors(elements.data() + first, values.data(), length);
        for (std::size_t i = 0; i < length; ++i)
          ASSERT_TRUE(same(values[i], single[first + i])) << name << "(" << elements[first + i] << ")";
      }
  });
}

TEST(VectorMath, InPlaceGivesTheSame) {
  const auto elements = drawn_and_special(501);
  on_each([&](const char* name, VectorFunction vectors) {
    for (const std::size_t count : {std::size_t{0}, std::size_t{3}, elements.size()}) {
      auto changed = elements;
      vectors(changed.data(), changed.data(), count);
      for (std::size_t i = 0; i < elements.size(); ++i)
        ASSERT_TRUE(same(changed[i], i < count ? alone(vectors, elements[i]) : elements[i])) << name << i;
    }
  });
}

TEST(VectorMath, NothingBehindTheEndIsWritten) {
  on_each([](const char* name, VectorFunction vectors) {
    for (std::size_t length = 0; length <= longest; ++length) {
      const std::vector<double> elements(length, 0.5);
      std::vector<double> values(length + 8, 77);
      vectors(elements.data(), values.data(), length);
      for (std::size_t i = length; i < values.size(); ++i) EXPECT_EQ(values[i], 77) << name << " of " << length;
    }
  });
}

}  // namespace
}  // namespace arrayfold::test
