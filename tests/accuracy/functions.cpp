// accuracy/functions.cpp: the C library's functions of 80 bits, and distances from them

#include "functions.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace arrayfold::accuracy {
namespace {

constexpr double vectors = 4.0;     // promised of everything that vectors compute
constexpr double rounded = 0.5001;  // correctly rounded; the rest is the reference's own error
constexpr double unbound = 0.0;

long double square(long double x) { return x * x; }
long double cube(long double x) { return x * x * x; }

}  // namespace

const std::vector<Function>& functions() {
  static const std::vector<Function> all = {
      {"xsqrt", std::sqrt, rounded, nullptr},
      {"xsquare", square, rounded, nullptr},
      {"xcube", cube, 1.51, nullptr},
      {"xexp", std::exp, vectors, vector_exp},
      {"xexpm1", std::expm1, vectors, vector_expm1},
      {"xlog", std::log, vectors, vector_log},
      {"xlog1p", std::log1p, vectors, vector_log1p},
      {"xcbrt", std::cbrt, vectors, vector_cbrt},
      {"xsin", std::sin, vectors, vector_sin},
      {"xcos", std::cos, vectors, vector_cos},
      {"xtan", std::tan, vectors, vector_tan},
      {"xsinh", std::sinh, vectors, vector_sinh},
      {"xcosh", std::cosh, vectors, vector_cosh},
      {"xtanh", std::tanh, vectors, vector_tanh},
      {"xerf", std::erf, unbound, nullptr},
      {"xtgamma", std::tgamma, unbound, nullptr},
      {"xlgamma", std::lgamma, unbound, nullptr},
  };
  return all;
}

double error_in_ulp(double value, long double exact) {
  constexpr auto infinite = std::numeric_limits<double>::infinity();
  constexpr long double beyond = 0x1p1024L;
  if (std::isnan(value) || std::isnan(exact)) return std::isnan(value) && std::isnan(exact) ? 0 : infinite;
  const auto nearest = static_cast<double>(exact);
  if (value == nearest && std::isinf(value)) return 0;
  const auto finite = [=](long double x) { return std::max(-beyond, std::min(beyond, x)); };
  const int exponent = std::max(std::min(std::ilogb(exact), 1023), -1022);
  const long double unit = std::ldexp(1.0L, exponent - 52);
  return static_cast<double>(std::abs(finite(value) - finite(exact)) / unit);
}

}  // namespace arrayfold::accuracy
