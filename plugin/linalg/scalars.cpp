// linalg/scalars.cpp: xnorm, xcond, xdet, xmatrix_rank, xslogdet, xtrace
//
// Numbers of a matrix. They are given as zero-dimensional arrays, except by xslogdet, whose table holds plain numbers,
// and by xtrace, whose result has two dimensions fewer than the operand.

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "array/ordered_fold.hpp"
#include "kernels/folds.hpp"
#include "linalg/lu.hpp"

namespace arrayfold {
namespace {

/// The square root of the sum of squares. The squares are added in the order of a reduction.
template <class T>
T frobenius_norm(const xarray_of<T>& matrix) {
  const auto add_squares = folds<T>().sum_of_squares;
  return static_cast<T>(std::sqrt(ordered_fold(matrix, 0.0, add_squares, std::plus<>{})));
}

/// A vector has the Euclidean norm, a matrix that of Frobenius. Throws std::runtime_error for other dimensions.
template <class T>
T norm_of(const xarray_of<T>& array) {
  if (array.dimension() == 2) return frobenius_norm(array);
  if (array.dimension() != 1) throw std::runtime_error("Norm not implemented!");
  check_extents(array);
  require_counts(array);
  return xt::linalg::norm(array, 2);
}

/// The product of the diagonal, its sign changed for each exchange of rows. A singular matrix has a zero there.
template <class T>
T determinant(const LuFactors<T>& factors) {
  T product = exchanges(factors) % 2 == 0 ? T{1} : T{-1};
  for (std::size_t i = 0; i < factors.pivots.size(); ++i) product *= factors.matrix(i, i);
  return product;
}

struct LogDeterminant {
  double sign;
  double logarithm;  // of the absolute value, added up in the element's type
};

/// For a singular matrix the sign is 0 and the logarithm minus infinity.
template <class T>
LogDeterminant log_determinant(const LuFactors<T>& factors) {
  if (factors.info != 0) return {0.0, -std::numeric_limits<double>::infinity()};
  std::size_t turns = exchanges(factors);
  T sum{0};
  for (std::size_t i = 0; i < factors.pivots.size(); ++i) {
    const T x = factors.matrix(i, i);
    turns += x < 0;
    sum += std::log(std::abs(x));
  }
  return {turns % 2 == 0 ? 1.0 : -1.0, sum};
}

/// The number of singular values above the tolerance, which grows with the largest one and the longer extent. Throws
/// std::runtime_error where LAPACK finds none.
template <class T>
int rank_of(const xarray_of<T>& array) {
  auto matrix = by_columns<T>(array);
  const auto longer = static_cast<double>(std::max(matrix.shape()[0], matrix.shape()[1]));
  const auto [info, left, values, right] = xt::lapack::gesdd(matrix, 'N');
  if (info > 0) throw std::runtime_error("SVD decomposition failed.");
  const double tolerance = *std::max_element(values.begin(), values.end()) * longer * std::numeric_limits<T>::epsilon();
  return static_cast<int>(std::count_if(values.begin(), values.end(), [=](T value) { return value > tolerance; }));
}

/// The sums along the diagonal of the first two axes, in the element's type, for each position along the others.
template <class Kind, class T>
auto trace_of(Kind, const xarray_of<T>& array) {
  using Stored = typename Kind::stored;
  const auto& elements = array.storage();
  const Shape& extents = array.shape();
  check_extents(array);
  const Shape others(extents.begin() + 2, extents.end());
  auto made = make_array<Stored>(others);
  auto& sums = made->array->storage();
  const std::size_t step = (extents[1] + 1) * sums.size();
  for (std::size_t place = 0; place < sums.size(); ++place) {
    T sum{0};
    for (std::size_t i = 0; i < std::min(extents[0], extents[1]); ++i) sum += elements[i * step + place];
    // The sum passes through a double, whatever type it was added in.
    sums[place] = Stored::from_double(static_cast<double>(sum));
  }
  return made;
}

}  // namespace

Outcome xnorm(const Call& call) {
  return give_computed(call, [](auto kind, const auto& array) { return stored_scalar(kind, norm_of(array)); });
}

// required: the order of its norm is 0, which only vectors have, and the inverse of a matrix is a matrix: no operand
// gives a value. Integers count as handled, unlike everywhere else in this family.
Outcome xcond(const Call& call) {
  const auto array = numeric_argument(call, 0);
  if (!array) return Outcome::failed;
  visit_floating(*array, [](auto, const auto& matrix) {
    inverse_by_columns(matrix);
    throw std::runtime_error("Norm 0 not implemented!");
  });
  return Outcome::handled;
}

Outcome xdet(const Call& call) {
  return give_computed(
      call, [](auto kind, const auto& array) { return stored_scalar(kind, determinant(lu_factors(array))); });
}

// required: the rank is a double. Without elements, or with NaN or an infinity, no singular value is above the
// tolerance.
Outcome xmatrix_rank(const Call& call) {
  return give_computed(call, [](auto kind, const auto& matrix) {
    require_matrix(matrix);
    const bool has_values = !matrix.storage().empty() && all_finite(matrix);
    return stored_scalar(kind, has_values ? rank_of(matrix) : 0);
  });
}

Outcome xslogdet(const Call& call) {
  return visit_first_floating(call, [&](auto, const auto& array) {
    const auto [sign, logarithm] = log_determinant(lu_factors(array));
    auto table = give_table(call);
    table.add(sign);
    table.add(logarithm);
  });
}

// required: an array of fewer than two dimensions has no diagonal; it counts as handled and gives no value.
Outcome xtrace(const Call& call) {
  const auto operand = numeric_argument(call, 0);
  if (!operand) return Outcome::failed;
  visit_ref(*operand, [&](auto kind, const auto& array) {
    if (array.dimension() >= 2) give_array(call, kind, trace_of(kind, array));
  });
  return Outcome::handled;
}

}  // namespace arrayfold
