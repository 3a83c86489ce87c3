// reduce/reference.cpp: the array library's own functions

#include "reference.hpp"

#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>
#include <type_traits>

#include "support/containers.hpp"
#include "support/elements.hpp"

#include <xtensor/xmath.hpp>
#include <xtensor/xsort.hpp>

namespace arrayfold::test {
namespace {

template <class T>
std::vector<T> factors(std::size_t count, unsigned seed) {
  if constexpr (std::is_integral_v<T>) {
    auto odd = random_elements<T>(count, seed);  // no product of odd numbers vanishes
    for (T& x : odd) x |= 1;
    return odd;
  }
  std::mt19937_64 engine(seed);
  std::vector<T> drawn(count);
  for (T& x : drawn)
    x = static_cast<T>(std::exp2(std::uniform_real_distribution(-1.0, 1.0)(engine)) * (engine() % 2 == 0 ? 1 : -1));
  return drawn;
}

template <class T>
HostNumber library_number_of(const std::string& name, const xarray_of<T>& array) {
  const auto variance = [&]() -> double { return xt::variance(array, 0)(); };
  if (name == "xprod") {
    const T product = xt::prod(array)();
    return host_number(product);
  }
  if (name == "xmean") return host_number(static_cast<double>(xt::mean(array)()));
  if (name == "xvariance") return host_number(variance());
  if (name == "xstddev") return host_number(std::sqrt(variance()));
  if (name == "xtrapz") return host_number(static_cast<double>(xt::trapz(array, 1.0).storage()[0]));
  if (name == "xcount_nonzero") return host_number(static_cast<std::int64_t>(xt::count_nonzero(array)()));
  if (name == "xmedian") {
    const T median = xt::median(array);
    return host_number(median);
  }
  throw std::invalid_argument(name);
}

}  // namespace

HostNumber library_number(const std::string& name, const TestArray& array) {
  return with_element(array.kind(),
                      [&](auto zero) { return library_number_of(name, container_with<decltype(zero)>(array)); });
}

TestArray random_factors(Kind kind, const Extents& extents, unsigned seed) {
  return with_element(kind,
                      [&](auto zero) { return TestArray(extents, factors<decltype(zero)>(size_of(extents), seed)); });
}

Limits limits_of(Kind kind) {
  return with_element(kind, [](auto zero) -> Limits {
    using Of = std::numeric_limits<decltype(zero)>;
    return {Of::lowest(), Of::max(), Of::min(), Of::denorm_min()};
  });
}

}  // namespace arrayfold::test
