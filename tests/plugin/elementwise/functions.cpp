// elementwise/functions.cpp: expected values by the C library, one element at a time

#include "functions.hpp"

#include <cmath>
#include <limits>

namespace arrayfold::test {
namespace {

template <class Real>
Real sign(Real x) {
  if (std::isnan(x)) return std::numeric_limits<Real>::quiet_NaN();
  return std::copysign(x == 0 ? Real(0) : Real(1), x);
}
// Through a volatile, so that no compiler makes one factor of the two.
double degrees(double x) {
  const volatile double product = x * 180.0;
  return product / 3.141592653589793;
}
float degrees(float x) {
  const volatile float product = x * 180.0f;
  return product / 3.1415927410125732f;
}
double radians(double x) {
  const volatile double product = x * 3.141592653589793;
  return product / 180.0;
}
float radians(float x) {
  const volatile float product = x * 3.1415927410125732f;
  return product / 180.0f;
}
template <class Real>
Real square(Real x) {
  return x * x;
}
template <class Real>
Real cube(Real x) {
  const volatile Real squared = x * x;
  return squared * x;
}
template <class Real>
Real is_nan(Real x) {
  return std::fpclassify(x) == FP_NAN ? Real(1) : Real(0);
}
template <class Real>
Real is_infinite(Real x) {
  return std::fpclassify(x) == FP_INFINITE ? Real(1) : Real(0);
}
template <class Real>
Real is_finite(Real x) {
  return std::fpclassify(x) != FP_NAN && std::fpclassify(x) != FP_INFINITE ? Real(1) : Real(0);
}

}  // namespace

const std::vector<Function>& functions() {
  constexpr auto same = Closeness::same;
  constexpr auto few_places = Closeness::few_places;
  static const std::vector<Function> all = {
      {"xabs", std::abs, std::abs, Integers::kept, same},
      {"xsign", sign, sign, Integers::no_value, same},
      {"xrad2deg", degrees, degrees, Integers::converted, same},
      {"xdegrees", degrees, degrees, Integers::converted, same},
      {"xdeg2rad", radians, radians, Integers::converted, same},
      {"xradians", radians, radians, Integers::converted, same},
      {"xexp", std::exp, std::exp, Integers::converted, few_places},
      {"xexpm1", std::expm1, std::expm1, Integers::converted, few_places},
      {"xlog", std::log, std::log, Integers::converted, few_places},
      {"xlog1p", std::log1p, std::log1p, Integers::converted, few_places},
      {"xsqrt", std::sqrt, std::sqrt, Integers::converted, same},
      {"xsquare", square, square, Integers::own_width, same},
      {"xcube", cube, cube, Integers::own_width, same},
      {"xcbrt", std::cbrt, std::cbrt, Integers::converted, few_places},
      {"xsin", std::sin, std::sin, Integers::converted, few_places},
      {"xcos", std::cos, std::cos, Integers::converted, few_places},
      {"xtan", std::tan, std::tan, Integers::converted, few_places},
      {"xsinh", std::sinh, std::sinh, Integers::converted, few_places},
      {"xcosh", std::cosh, std::cosh, Integers::converted, few_places},
      {"xtanh", std::tanh, std::tanh, Integers::converted, few_places},
      {"xerf", std::erf, std::erf, Integers::converted, same},
      {"xtgamma", std::tgamma, std::tgamma, Integers::converted, same},
      {"xlgamma", std::lgamma, std::lgamma, Integers::converted, same},
      {"xisnan", is_nan, is_nan, Integers::known, same},
      {"xisinf", is_infinite, is_infinite, Integers::known, same},
      {"xisfinite", is_finite, is_finite, Integers::known, same},
  };
  return all;
}

std::uint64_t steps_between(double a, double b) {
  if (same(a, b)) return 0;
  if (std::isnan(a) || std::isnan(b)) return std::numeric_limits<std::uint64_t>::max();
  // Counted from zero on: doubles of one sign are ordered as their bits.
  const auto place = [](double x) {
    const auto bits = load<std::int64_t>(&x);
    return bits < 0 ? std::numeric_limits<std::int64_t>::min() - bits : bits;
  };
  const auto left = static_cast<std::uint64_t>(place(a)), right = static_cast<std::uint64_t>(place(b));
  return place(a) < place(b) ? right - left : left - right;
}

const std::vector<double>& special_values() {
  using Limits = std::numeric_limits<double>;
  static const std::vector<double> all = [] {
    const double positive[] = {0.0,
                               Limits::infinity(),
                               Limits::quiet_NaN(),
                               Limits::denorm_min(),
                               4e-320,
                               1e-310,
                               0x0.fffffffffffffp-1022,
                               Limits::min(),
                               1e-300,
                               0x1p-54,
                               0x1p-27,
                               0.1,
                               0.25,
                               0.5,
                               0.75,
                               1.0,
                               1.5,
                               2.0,
                               2.5,
                               3.5,
                               0.7853981633974483,
                               1.5707963267948966,
                               3.141592653589793,
                               6.283185307179586,
                               1e5,
                               0x1p31,
                               0x1p52,
                               0x1p53,
                               4503599627370495.5,
                               171.5,
                               172.0,
                               700.0,
                               709.0,
                               709.75,
                               710.0,
                               710.4,
                               711.0,
                               745.0,
                               746.0,
                               1e15,
                               1e22,
                               1e100,
                               1e300,
                               0x1p1023,
                               Limits::max()};
    std::vector<double> both;
    for (const double x : positive) both.insert(both.end(), {x, -x});
    both.push_back(Limits::signaling_NaN());
    return both;
  }();
  return all;
}

}  // namespace arrayfold::test
