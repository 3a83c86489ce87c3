// accuracy/functions.cpp: the C library's functions of 80 bits, and distances from them

#include "functions.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace arrayfold::accuracy {
namespace {

constexpr Bound vectors = {1.0, 1.5};        // promised of the module's own functions
constexpr Bound rounded = {0.5001, 0.5001};  // correctly rounded; the rest is the reference's own error
constexpr Bound almost_rounded = {0.51, 0.51};  // in part the C library's
constexpr Bound rounded_twice = {1.51, 1.51};
constexpr Bound unbound = {0, 0};

long double square(long double x) { return x * x; }
long double cube(long double x) { return x * x * x; }
long double power_of_ten(long double x) { return std::pow(10.0L, x); }

}  // namespace

const std::vector<Function>& functions() {
  static const std::vector<Function> all = {
      {"xsqrt", std::sqrt, rounded},     {"xsquare", square, rounded},      {"xcube", cube, rounded_twice},
      {"xexp", std::exp, vectors},       {"xexpm1", std::expm1, vectors},   {"xlog", std::log, vectors},
      {"xlog1p", std::log1p, vectors},   {"xcbrt", std::cbrt, vectors},     {"xsin", std::sin, vectors},
      {"xcos", std::cos, vectors},       {"xtan", std::tan, vectors},       {"xsinh", std::sinh, vectors},
      {"xcosh", std::cosh, vectors},     {"xtanh", std::tanh, vectors},     {"xerf", std::erf, unbound},
      {"xtgamma", std::tgamma, unbound}, {"xlgamma", std::lgamma, unbound}, {"xlogspace", power_of_ten, almost_rounded},
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
