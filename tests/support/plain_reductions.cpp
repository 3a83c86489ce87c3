// support/plain_reductions.cpp: the rules of the reductions

#include "support/plain_reductions.hpp"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <type_traits>

namespace arrayfold::test {
namespace {

/// An element as the host has it: 32-bit floating-point numbers are widened.
template <class T>
using Widened = std::conditional_t<std::is_same_v<T, float>, double, T>;

// ---- The block scan

template <class T>
constexpr std::size_t block_of = sizeof(T) == 8 ? 4 : 8;

template <class R, class T, class FoldBlock, class Fold>
R scanned(const std::vector<T>& x, std::size_t stride, R start, FoldBlock fold_block, Fold fold) {
  R value = start;
  const std::size_t whole = x.size() - x.size() % block_of<T>;
  for (std::size_t i = 0; i < whole; i += block_of<T>) value = fold(value, static_cast<R>(fold_block(&x[i])));
  for (std::size_t i = whole; i < x.size(); ++i) value = fold(value, static_cast<R>(x[i * stride]));
  return value;
}

/// A block folded by halves.
template <class T, class Fold>
T halved(const T* b, Fold fold) {
  if (block_of<T> == 4) return fold(fold(b[0], b[2]), fold(b[1], b[3]));
  const T b04 = fold(b[0], b[4]), b15 = fold(b[1], b[5]), b26 = fold(b[2], b[6]), b37 = fold(b[3], b[7]);
  return fold(fold(b04, b26), fold(b15, b37));
}

template <class T>
Widened<T> expected_sum(const Extents& extents, const std::vector<T>& x) {
  using R = Widened<T>;
  const auto block = [](const T* b) { return halved(b, [](T p, T q) { return static_cast<T>(p + q); }); };
  return scanned(x, last_stride(extents), R{0}, block, [](R p, R q) { return static_cast<R>(p + q); });
}

template <class T>
T expected_min(const Extents& extents, const std::vector<T>& x) {
  // NaN is skipped wherever it stands.
  const auto smaller = [](T a, T b) {
    if (a != a || b < a) return b;
    return a;
  };
  return scanned(
      x, last_stride(extents), std::numeric_limits<T>::max(), [&](const T* b) { return halved(b, smaller); }, smaller);
}

template <class T>
T expected_max(const Extents& extents, const std::vector<T>& x) {
  if constexpr (std::is_same_v<T, std::int64_t>) return expected_min(extents, x);
  const auto larger = [](T a, T b) {
    if (a != a || a < b) return b;
    return a;
  };
  return scanned(
      x, last_stride(extents), std::numeric_limits<T>::min(), [&](const T* b) { return halved(b, larger); }, larger);
}

// ---- Rows along the last axis, merged dimension by dimension

/// What the elements from `x` on under the extents from `axis` on give.
template <class R, class T, class Step, class Merge>
R nested(const Extents& extents, std::size_t axis, const T* x, R start, Step step, Merge merge) {
  R value = start;
  if (axis + 1 == extents.size()) {
    for (std::size_t i = 0; i < extents[axis]; ++i) value = step(value, x[i]);
    return value;
  }
  std::size_t distance = 1;
  for (std::size_t n = axis + 1; n < extents.size(); ++n) distance *= extents[n];
  for (std::size_t i = 0; i < extents[axis]; ++i) {
    const R part = nested(extents, axis + 1, x + i * distance, start, step, merge);
    value = i == 0 ? part : merge(value, part);
  }
  return value;
}

template <class R, class T, class Step, class Merge>
R nested(const Extents& extents, const std::vector<T>& x, R start, Step step, Merge merge) {
  if (x.empty()) return start;
  if (extents.empty()) return step(start, x[0]);
  return nested(extents, 0, x.data(), start, step, merge);
}

template <class T>
T expected_product(const Extents& extents, const std::vector<T>& x) {
  const auto multiply = [](T p, T q) { return static_cast<T>(p * q); };
  return nested(extents, x, T{1}, multiply, multiply);
}

template <class T>
double expected_mean(const Extents& extents, const std::vector<T>& x) {
  const auto add = [](T p, T q) { return static_cast<T>(p + q); };
  return static_cast<double>(nested(extents, x, T{0}, add, add)) / static_cast<double>(x.size());
}

template <class T>
double expected_variance(const Extents& extents, const std::vector<T>& x) {
  const double mean = expected_mean(extents, x);
  const auto add_square = [&](double sum, T element) {
    const double distance = static_cast<double>(element) - mean;
    return sum + distance * distance;
  };
  const double squares = nested(extents, x, 0.0, add_square, [](double p, double q) { return p + q; });
  return squares / static_cast<double>(x.size());
}

/// Neighbours are added in their own type. The first row counts alone.
template <class T>
double expected_trapezoids(const Extents& extents, const std::vector<T>& x) {
  double integral = 0;
  if (extents.empty() || x.empty()) return integral;
  for (std::size_t i = 0; i + 1 < extents.back(); ++i) {
    const T both = x[i + 1] + x[i];
    integral += 1.0 * both * 0.5;
  }
  return integral;
}

template <class T>
HostNumber expected_number_of(const std::string& name, const Extents& extents, const std::vector<T>& x) {
  if (name == "xsum") return host_number(expected_sum(extents, x));
  if (name == "xprod") return host_number(expected_product(extents, x));
  if (name == "xamin") return host_number(expected_min(extents, x));
  if (name == "xamax") return host_number(expected_max(extents, x));
  if (name == "xmean") return host_number(expected_mean(extents, x));
  if (name == "xvariance") return host_number(expected_variance(extents, x));
  if (name == "xstddev") return host_number(std::sqrt(expected_variance(extents, x)));
  if (name == "xtrapz") return host_number(expected_trapezoids(extents, x));
  throw std::invalid_argument(name);
}

}  // namespace

HostNumber expected_number(const std::string& name, const TestArray& array) {
  return with_element(array.kind(),
                      [&](auto zero) { return expected_number_of(name, array.extents(), array.as<decltype(zero)>()); });
}

}  // namespace arrayfold::test
