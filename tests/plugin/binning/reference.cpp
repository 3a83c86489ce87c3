// binning/reference.cpp: the rule of a bin, and the array library's own functions

#include "reference.hpp"

#include <array>
#include <cmath>
#include <limits>

#include "support/containers.hpp"

#include <xtensor/xhistogram.hpp>

namespace arrayfold::test {
namespace {

/// Calls `use(T{})` for the kinds of floating-point numbers.
template <class Use>
auto with_floating(Kind kind, Use use) {
  return kind == Kind::float32 ? use(float{}) : use(double{});
}

template <class T>
ExpectedHistogram expected_histogram_of(const xarray_of<T>& array, std::size_t bins) {
  std::vector<double> counts(bins, 0.0);
  bool in_bounds = true;
  const std::array<T, 2> bounds = xt::minmax(array)();
  const xt::xtensor<T, 1> edges = xt::linspace<T>(bounds[0], bounds[1], bins + 1);
  const std::array<T, 2> edge_bounds = xt::minmax(edges)();
  const double low = static_cast<double>(edge_bounds[0]), high = static_cast<double>(edge_bounds[1]);
  const double norm = 1.0 / (high - low);
  const double bin_count = static_cast<double>(bins);
  const std::size_t stride = last_stride(Extents(array.shape().begin(), array.shape().end()));
  for (std::size_t i = 0; i < array.size(); ++i) {
    const double x = static_cast<double>(array.storage()[i * stride]);
    std::size_t bin = bins - 1;
    if (x >= low && x < high) {
      const double place = ((x - low) * bin_count) * norm;
      const bool fits = place >= 0 && place < bin_count;
      if (!fits) in_bounds = false;
      if (fits)
        bin = static_cast<std::size_t>(place);
      else if (!(place > 0))
        bin = 0;
    } else if (x != high) {
      continue;
    }
    counts[bin] += 1;
  }
  return {TestArray(Extents{bins}, std::move(counts)), in_bounds};
}

template <class T>
TestArray on_edges(std::mt19937_64& engine, std::size_t bins) {
  const auto real = [&](double from, double to) {
    return static_cast<T>(std::uniform_real_distribution(from, to)(engine));
  };
  const T low = real(-1000, 1000), high = low + real(0, 10000);
  std::vector<T> x = {low, high, std::nextafter(high, low), std::nextafter(low, high)};
  for (std::size_t i = 1; i < bins; ++i) {
    const T edge = low + (high - low) * static_cast<T>(i) / static_cast<T>(bins);
    for (const T near : {edge, std::nextafter(edge, low), std::nextafter(edge, high)}) x.push_back(near);
  }
  const Extents extents = {x.size()};
  return TestArray(extents, std::move(x));
}

}  // namespace

ExpectedHistogram expected_histogram(const TestArray& array, std::size_t bins) {
  return with_floating(array.kind(),
                       [&](auto zero) { return expected_histogram_of(container_with<decltype(zero)>(array), bins); });
}

TestArray library_histogram(const TestArray& array, std::size_t bins) {
  return with_floating(array.kind(), [&](auto zero) {
    return array_in<double>(xt::histogram(container_with<decltype(zero)>(array), bins));
  });
}

TestArray library_edges(const TestArray& array) {
  return with_floating(array.kind(), [&](auto zero) {
    const auto container = container_with<decltype(zero)>(array);
    return array_in<double>(xt::histogram_bin_edges(container, container, 10));
  });
}

TestArray library_bincount(const TestArray& array) {
  if (array.kind() == Kind::int32) return array_in<std::int32_t>(xt::bincount(container_with<std::int32_t>(array)));
  return array_in<std::int64_t>(xt::bincount(container_with<std::int64_t>(array)));
}

TestArray library_digitize(const TestArray& array, const TestArray& edges) {
  return with_floating(array.kind(), [&](auto zero) {
    const auto elements = container_with<decltype(zero)>(array);
    return with_element(edges.kind(), [&](auto other) {
      return array_in<double>(xt::digitize(elements, container_with<decltype(other)>(edges)));
    });
  });
}

TestArray elements_on_edges(Kind kind, std::mt19937_64& engine, std::size_t bins) {
  return with_floating(kind, [&](auto zero) { return on_edges<decltype(zero)>(engine, bins); });
}

TestArray successors(Kind kind, double first, std::size_t count) {
  return with_floating(kind, [&](auto zero) {
    using T = decltype(zero);
    std::vector<T> x = {static_cast<T>(first)};
    while (x.size() <= count) x.push_back(std::nextafter(x.back(), std::numeric_limits<T>::infinity()));
    return TestArray(Extents{count + 1}, std::move(x));
  });
}

RealLimits limits_of(Kind kind) {
  return with_floating(kind, [](auto zero) -> RealLimits {
    using Limits = std::numeric_limits<decltype(zero)>;
    return {static_cast<double>(Limits::max()), static_cast<double>(Limits::denorm_min())};
  });
}

}  // namespace arrayfold::test
