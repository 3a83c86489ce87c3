// kernels/maps_test.cpp: one element computed from one element, on every target, against its formula

#include "kernels/maps.hpp"

#include <cmath>
#include <functional>
#include <limits>

#include "memory.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

template <class T, class R>
struct Case {
  const char* name;
  Map<T, R> Maps<T>::*map;
  std::function<R(T)> formula;
};

/// What integers are computed in where they are converted first.
template <class T>
using Floating = std::conditional_t<std::is_same_v<T, float>, float, double>;
template <class T>
using Magnitude = std::conditional_t<std::is_same_v<T, float>, double, T>;

template <class T>
Magnitude<T> magnitude(T x) {
  if constexpr (std::is_integral_v<T>)
    return x < 0 ? static_cast<T>(-x) : x;
  else
    return static_cast<double>(std::abs(x));
}

// Products go through a volatile, so that no compiler contracts two steps.
template <class T>
T product(T a, T b) {
  const volatile T result = static_cast<T>(a * b);
  return result;
}

template <class T>
std::vector<Case<T, double>> maps_to_doubles() {
  using F = Floating<T>;
  constexpr F pi = static_cast<F>(3.141592653589793238L);
  std::vector<Case<T, double>> cases = {
      {"degrees", &Maps<T>::degrees, [=](T x) { return product(static_cast<F>(x), F{180}) / pi; }},
      {"radians", &Maps<T>::radians, [=](T x) { return product(static_cast<F>(x), pi) / F{180}; }},
      {"square", &Maps<T>::square, [](T x) { return static_cast<double>(product(x, x)); }},
      {"cube", &Maps<T>::cube, [](T x) { return static_cast<double>(product(product(x, x), x)); }},
      {"square root", &Maps<T>::square_root, [](T x) { return std::sqrt(static_cast<F>(x)); }}};
  if constexpr (std::is_floating_point_v<T>) {
    cases.push_back({"sign", &Maps<T>::sign, [](T x) { return x == 0 || x != x ? x : std::copysign(T{1}, x); }});
    cases.push_back({"is nan", &Maps<T>::is_nan, [](T x) { return std::isnan(x) ? 1.0 : 0.0; }});
    cases.push_back({"is infinite", &Maps<T>::is_infinite, [](T x) { return std::isinf(x) ? 1.0 : 0.0; }});
    cases.push_back({"is finite", &Maps<T>::is_finite, [](T x) { return std::isfinite(x) ? 1.0 : 0.0; }});
  }
  return cases;
}

template <class T, class R>
void expect_map(const Case<T, R>& by, const std::vector<T>& elements, std::size_t offset) {
  SCOPED_TRACE(testing::Message() << by.name << " of " << elements.size());
  Memory<T> in(elements, offset);
  Memory<R> out(elements.size(), 3 - offset);
  (maps<T>().*by.map)(in.data(), out.data(), elements.size());
  std::vector<R> expected(elements.size());
  for (std::size_t i = 0; i < elements.size(); ++i) expected[i] = by.formula(elements[i]);
  EXPECT_TRUE(same_bits(out.values(), expected));
  EXPECT_TRUE(out.is_intact());
}

template <class T>
void expect_maps() {
  const Case<T, Magnitude<T>> absolute = {"magnitude", &Maps<T>::magnitude, magnitude<T>};
  for (const std::size_t length : lengths()) {
    const auto elements = mixed_values<T>(length, static_cast<unsigned>(length));
    expect_map(absolute, elements, length % 4);
    for (const auto& by : maps_to_doubles<T>()) expect_map(by, elements, length % 4);
  }
}

TEST(Maps, OfEveryLength_AreThoseOfTheirFormulas) {
  on_each_target([] {
    expect_maps<double>();
    expect_maps<float>();
    expect_maps<std::int32_t>();
    expect_maps<std::int64_t>();
  });
}

}  // namespace
}  // namespace arrayfold::test
