// reduce/moments.hpp: mean and variance of all elements
//
// Both are textbook formulas in two passes, rounded in the order of the fold. Without elements both are 0 / 0, which is
// NaN.

#pragma once

#include <functional>

#include "array/ordered_fold.hpp"
#include "kernels/folds.hpp"

namespace arrayfold {

/// The sum in the element's own type, where integers wrap, divided by the count in doubles.
template <class T>
double mean_of(const xarray_of<T>& array) {
  const T sum = ordered_fold(array, T{0}, folds<T>().sum, std::plus<>{});
  return static_cast<double>(sum) / static_cast<double>(array.storage().size());
}

/// The mean of the squared distances from the mean, all in doubles: the variance of a whole population.
template <class T>
double variance_of(const xarray_of<T>& array) {
  const auto& storage = array.storage();
  const auto count = static_cast<double>(storage.size());
  // The extent of a single row is the number of its elements; `reshape` cannot make it another one.
  const bool is_one_row = array.shape().size() < 2;
  if (is_one_row) return folds<T>().sum_of_squared_deviations(storage.data(), storage.size()) / count;
  const auto add_squares = [fold = folds<T>().sum_of_squared_distances, mean = mean_of(array)](
                               const T* elements, std::size_t rows, std::size_t length, double* sums) {
    fold(elements, rows, length, mean, sums);
  };
  return ordered_fold(array, 0.0, add_squares, std::plus<>{}) / count;
}

}  // namespace arrayfold
