// linalg/solvers.cpp: xinv, xpinv, xsolve, xlstsq

#include "linalg/lu.hpp"

namespace arrayfold {
namespace {

constexpr auto inverse = [](auto kind, const auto& array) { return stored(kind, inverse_by_columns(array)); };

/// The pseudo-inverse: singular values up to 1e-15 times the largest one count as zeros.
constexpr auto pseudo_inverse = [](auto kind, const auto& matrix) {
  using T = typename decltype(kind)::element;
  require_matrix(matrix);
  if (matrix.storage().empty() || !all_finite(matrix))
    return filled(kind, {matrix.shape()[1], matrix.shape()[0]}, std::numeric_limits<T>::quiet_NaN());
  return stored(kind, xt::linalg::pinv(by_columns<T>(matrix), 1e-15));
};

// ---- xsolve

/// The right-hand sides by columns, in the element type R, with the dimensions of `b`.
template <class R, class T>
ColumnMajor<R> right_hand_sides_by_columns(const xarray_of<T>& b) {
  if (b.dimension() == 2) return by_columns<R>(b);
  return b;
}

/// Does each right-hand side hold `rows` numbers? LAPACK takes as many as the extents before the last one say; the
/// library passes it the first extent where there is a single right-hand side.
template <class T>
bool are_long_enough(const xarray_of<T>& b, std::size_t rows) {
  if (b.dimension() == 0) return false;
  const Shape& extents = b.shape();
  if (b.dimension() == 1 || extents.back() == 1) return extents.front() >= rows && b.storage().size() >= rows;
  std::size_t before = 1;
  for (std::size_t n = 0; n + 1 < extents.size(); ++n) before *= extents[n];
  return before >= rows;
}

/// Solves for each right-hand side in its place. False for a singular matrix. Without right-hand sides the matrix is
/// only factorised to learn that.
template <class T>
bool solve_in_place(ColumnMajor<T>& matrix, ColumnMajor<T>& sides) {
  if (!sides.storage().empty()) return xt::lapack::gesv(matrix, sides) == 0;
  xt::uvector<xt::blas_index_t> pivots(matrix.shape()[0]);
  return xt::lapack::getrf(matrix, pivots) == 0;
}

/// The right-hand sides, each with its first numbers replaced by the solution. Throws std::runtime_error when they are
/// too short, and for a singular matrix.
template <class Kind, class T>
auto solution(Kind kind, const xarray_of<T>& a, const xarray_of<T>& sides) {
  auto matrix = square_by_columns(a);
  check_extents(sides);
  const std::size_t rows = matrix.shape()[0];
  require_counts(sides);
  const bool holds = are_long_enough(sides, rows);
  if (rows == 0 && holds) return stored(kind, sides);
  auto solved = right_hand_sides_by_columns<T>(sides);
  if (!holds || !solve_in_place(matrix, solved)) throw std::runtime_error("The solution could not be computed");
  return stored(kind, solved);
}

// ---- xlstsq

/// What a least-squares problem gives: the solutions by columns, the sums of squared residuals where the rank is full
/// and there are more rows than columns, the rank and the singular values.
template <class Kind>
struct LeastSquaresOf {
  using Array = std::unique_ptr<ArrayOf<typename Kind::stored>>;
  using Results = std::tuple<Array, Array, Array, Array>;
};
template <class Kind>
using LeastSquares = typename LeastSquaresOf<Kind>::Results;

/// The results for operands without elements or with NaN or infinities: rank 0, and `value` for every solution and
/// singular value.
template <class Kind>
LeastSquares<Kind> without_rank(Kind kind, const Shape& solutions, std::size_t singular_values,
                                StoredElement<Kind> value) {
  return {filled(kind, solutions, value), filled(kind, {0}, 0), stored_scalar(kind, 0),
          filled(kind, {singular_values}, value)};
}

template <class Kind, class T, class Side>
LeastSquares<Kind> least_squares(Kind kind, const xarray_of<T>& matrix, const xarray_of<Side>& b) {
  require_matrix(matrix);
  if (b.dimension() > 2) throw std::runtime_error("Expected 1- or 2D expression for A.");
  const std::size_t rows = matrix.shape()[0];
  const std::size_t columns = matrix.shape()[1];
  if (b.dimension() == 0 || b.shape()[0] != rows) throw std::runtime_error("Shape of 'b' for lstsq does not match.");
  check_extents(b);
  require_counts(b);
  Shape solutions = b.shape();
  solutions[0] = columns;
  const std::size_t values = std::min(rows, columns);
  if (matrix.storage().empty() || b.storage().empty()) return without_rank(kind, solutions, values, 0);
  if (!all_finite(matrix)) return without_rank(kind, solutions, values, std::numeric_limits<T>::quiet_NaN());
  const auto [solution, residuals, rank, singular_values] =
      xt::linalg::lstsq(by_columns<T>(matrix), right_hand_sides_by_columns<T>(b), -1.0);
  auto solved = stored(kind, solution);
  // The library drops every extent of 1, also that of a single column.
  solved->array->reshape(solutions);
  return {std::move(solved), stored(kind, residuals), stored_scalar(kind, rank), stored(kind, singular_values)};
}

}  // namespace

Outcome xinv(const Call& call) { return give_computed(call, inverse); }
Outcome xpinv(const Call& call) { return give_computed(call, pseudo_inverse); }

// required: it fails for a float array with a double array, unlike xlstsq.
Outcome xsolve(const Call& call) {
  const auto arrays = two_numeric_arguments(call);
  if (!arrays) return Outcome::failed;
  Outcome outcome = Outcome::failed;
  visit_floating(arrays->first, [&](auto kind, const auto& a) {
    using Kind = decltype(kind);
    visit_floating(arrays->second, [&](auto other_kind, const auto& b) {
      if constexpr (std::is_same_v<decltype(other_kind), Kind>) {
        give_result(call, kind, solution(kind, a, b));
        outcome = Outcome::handled;
      }
    });
  });
  return outcome;
}

// required: the kind of the first operand decides the precision; the second is converted to it.
Outcome xlstsq(const Call& call) {
  const auto arrays = two_numeric_arguments(call);
  if (!arrays) return Outcome::failed;
  Outcome outcome = Outcome::failed;
  visit_floating(arrays->first, [&](auto kind, const auto& a) {
    outcome = visit_floating(arrays->second,
                             [&](auto, const auto& b) { give_result(call, kind, least_squares(kind, a, b)); });
  });
  return outcome;
}

}  // namespace arrayfold
