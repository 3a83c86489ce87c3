// reduce/moments.hpp: mean and variance of all elements
//
// Both are textbook formulas in two passes, rounded in the order of the fold. Without elements both are 0 / 0, which is
// NaN.

#pragma once

#include <functional>

#include "array/ordered_fold.hpp"

namespace arrayfold {

/// The sum in the element's own type, where integers wrap, divided by the count in doubles.
template <class T>
double mean_of(const xarray_of<T>& array) {
  const T sum = ordered_fold(array, T{0}, std::plus<>{}, std::plus<>{});
  return static_cast<double>(sum) / static_cast<double>(array.storage().size());
}

/// The mean of the squared distances from the mean, all in doubles: the variance of a whole population.
template <class T>
double variance_of(const xarray_of<T>& array) {
  const double mean = mean_of(array);
  const auto add_square = [mean](double sum, T x) {
    const double distance = static_cast<double>(x) - mean;
    return sum + distance * distance;
  };
  return ordered_fold(array, 0.0, add_square, std::plus<>{}) / static_cast<double>(array.storage().size());
}

}  // namespace arrayfold
