// elementwise/vector_math_test.cpp: special values of the vector functions, on every target

#include "kernels/vector_math.hpp"

#include <cmath>

#include "functions.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

struct Named {
  const char* name;
  VectorFunctions VectorMath::*vectors;
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

double alone(const VectorFunctions& vectors, double x) {
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

TEST(VectorMath, SpecialValuesAreThoseOfTheCLibrary) {
  on_each([](const char* name, const VectorFunctions& vectors) {
    for (const double x : special_values()) {
      const double value = alone(vectors, x), wanted = expected(name, x);
      if (!std::isfinite(wanted) || wanted == 0 || x == 0)
        EXPECT_TRUE(same(value, wanted)) << name << "(" << x << ") is " << value;
      else
        EXPECT_LE(steps_between(value, wanted), 4u) << name << "(" << x << ") is " << value;
    }
  });
}

}  // namespace
}  // namespace arrayfold::test
