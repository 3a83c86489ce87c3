// reduce/statistics.cpp: xvariance, xstddev, xmedian, xtrapz, xcount_nonzero
//
// Each folds a whole array into one host number: a double, but for the median, which keeps the element's type, and the
// count, which is a 64-bit integer.

#include <cmath>

#include "kernels/folds.hpp"
#include "reduce/median.hpp"
#include "reduce/moments.hpp"
#include "reduce/reduction.hpp"

namespace arrayfold {
namespace {

constexpr auto variance = [](const auto& array) { return variance_of(array); };
constexpr auto standard_deviation = [](const auto& array) { return std::sqrt(variance_of(array)); };
// required: the median of integers is an integer, halved toward zero.
constexpr auto median = [](const auto& array) { return median_of(array); };

/// The integral of the first row by the trapezoidal rule with spacing 1. Neighbours are added in the element's type,
/// where integers wrap. A row of fewer than two elements gives 0.
/// required: of an array with more dimensions the other rows do not count.
constexpr auto trapezoidal_integral = [](const auto& array) {
  using T = typename std::decay_t<decltype(array)>::value_type;
  const auto& elements = array.storage();
  if (array.dimension() == 0 || elements.empty()) return 0.0;
  check_extents(array);
  return folds<T>().trapezoids(elements.data(), array.shape().back());
};

/// How many elements differ from 0: NaN does, a negative zero does not.
constexpr auto nonzero_count = [](const auto& array) {
  using T = typename std::decay_t<decltype(array)>::value_type;
  const auto& elements = array.storage();
  if (!elements.empty()) check_extents(array);
  const std::size_t zeros = folds<T>().count_of_zeros(elements.data(), elements.size());
  return static_cast<std::int64_t>(elements.size() - zeros);
};

}  // namespace

Outcome xvariance(const Call& call) { return reduce(call, variance); }
Outcome xstddev(const Call& call) { return reduce(call, standard_deviation); }
Outcome xmedian(const Call& call) { return reduce(call, median); }
Outcome xtrapz(const Call& call) { return reduce(call, trapezoidal_integral); }
Outcome xcount_nonzero(const Call& call) { return reduce(call, nonzero_count); }

}  // namespace arrayfold
