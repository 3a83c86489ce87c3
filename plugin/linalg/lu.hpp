// linalg/lu.hpp: a square matrix as a permuted product of a lower and an upper triangle

#pragma once

#include "linalg/matrix.hpp"

namespace arrayfold {

/// The factors in one matrix by columns, the row exchanged at each step, counted from 1, and LAPACK's info: 0, or the
/// position of the first zero on the diagonal.
template <class T>
struct LuFactors {
  ColumnMajor<T> matrix;
  xt::uvector<xt::blas_index_t> pivots;
  int info;
};

template <class T>
LuFactors<T> lu_factors(const xarray_of<T>& array) {
  LuFactors<T> factors{square_by_columns(array), xt::uvector<xt::blas_index_t>(array.shape()[0]), 0};
  factors.info = xt::lapack::getrf(factors.matrix, factors.pivots);
  return factors;
}

/// The number of row exchanges.
template <class T>
std::size_t exchanges(const LuFactors<T>& factors) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < factors.pivots.size(); ++i) count += static_cast<std::size_t>(factors.pivots[i]) != i + 1;
  return count;
}

/// The inverse by columns. Throws std::runtime_error for a singular matrix.
template <class T>
ColumnMajor<T> inverse_by_columns(const xarray_of<T>& array) {
  auto factors = lu_factors(array);
  if (factors.info > 0) throw std::runtime_error("Singular matrix not invertible (getrf).");
  // LAPACK prints an error for n = 0.
  if (factors.pivots.size() > 0 && xt::lapack::getri(factors.matrix, factors.pivots) > 0)
    throw std::runtime_error("Singular matrix not invertible (getri).");
  return std::move(factors.matrix);
}

}  // namespace arrayfold
