// linalg/solvers.cpp: xinv, xpinv, xsolve, xlstsq

#include "array/arguments.hpp"
#include "linalg/lu.hpp"

namespace arrayfold {
namespace {

/// The pseudo-inverse: singular values up to 1e-15 of the largest count as zeros.
template <class T, class Kind>
auto pseudo_inverse(const XTArray<T, Kind>& array) {
  const auto& matrix = *array.array;
  require_matrix(matrix);
  if (matrix.storage().empty() || !all_finite(matrix))
    return filled<Kind>({matrix.shape()[1], matrix.shape()[0]}, std::numeric_limits<double>::quiet_NaN());
  return stored<Kind>(xt::linalg::pinv(by_columns<T>(matrix), 1e-15));
}

// ---- xsolve

/// The right-hand sides by columns, in the element type R, with the dimensions of `b`.
template <class R, class T>
ColumnMajor<R> sides_by_columns(const xarray_of<T>& b) {
  if (b.dimension() == 2) return by_columns<R>(b);
  return b;
}

/// Does the routine find `rows` numbers for each side? It takes the columns of a matrix, and what lies before the last
/// dimension of an array with more; of a single side the first extent tells it how many there are.
template <class T>
bool sides_hold(const xarray_of<T>& b, std::size_t rows) {
  if (b.dimension() == 0) return false;
  const Shape& extents = b.shape();
  if (b.dimension() == 1 || extents.back() == 1) return extents.front() >= rows && b.storage().size() >= rows;
  std::size_t before = 1;
  for (std::size_t n = 0; n + 1 < extents.size(); ++n) before *= extents[n];
  return before >= rows;
}

/// Solves for each side in its place. False for a singular matrix, which is all that is asked where there is no side.
template <class T>
bool solve_in_place(ColumnMajor<T>& matrix, ColumnMajor<T>& sides) {
  if (!sides.storage().empty()) return xt::lapack::gesv(matrix, sides) == 0;
  xt::uvector<xt::blas_index_t> pivots(matrix.shape()[0]);
  return xt::lapack::getrf(matrix, pivots) == 0;
}

/// The right-hand sides, each with its first numbers replaced by the solution. Throws std::runtime_error where they are
/// too short, and for a singular matrix.
template <class T, class Kind>
auto solution(const XTArray<T, Kind>& a, const XTArray<T, Kind>& b) {
  auto matrix = square_by_columns(*a.array);
  const auto& sides = *b.array;
  check_extents(sides);
  const std::size_t rows = matrix.shape()[0];
  require_counts(sides);
  const bool holds = sides_hold(sides, rows);
  if (rows == 0 && holds) return stored<Kind>(sides);
  auto solved = sides_by_columns<T>(sides);
  if (!holds || !solve_in_place(matrix, solved)) throw std::runtime_error("The solution could not be computed");
  return stored<Kind>(solved);
}

// ---- xlstsq

/// What a least-squares problem gives: the solutions by columns, the sums of squared residuals where the rank is full
/// and there are more rows than columns, the rank and the singular values.
struct LeastSquares {
  std::unique_ptr<ArrayOf<XTDouble>> solutions;
  std::unique_ptr<ArrayOf<XTDouble>> residuals;
  std::unique_ptr<ArrayOf<XTDouble>> rank;
  std::unique_ptr<ArrayOf<XTDouble>> singular_values;
};

/// Where there is nothing to compute, or no number to compute with, every solution and singular value is `value`.
LeastSquares without_rank(const Shape& solutions, std::size_t singular_values, double value) {
  return {filled<XTDouble>(solutions, value), filled<XTDouble>({0}, 0.0), make_scalar<XTDouble>(0.0),
          filled<XTDouble>({singular_values}, value)};
}

template <class T, class Kind, class Side>
LeastSquares least_squares(const XTArray<T, Kind>& a, const xarray_of<Side>& b) {
  const auto& matrix = *a.array;
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
  if (matrix.storage().empty() || b.storage().empty()) return without_rank(solutions, values, 0.0);
  if (!all_finite(matrix)) return without_rank(solutions, values, std::numeric_limits<double>::quiet_NaN());
  const auto solved = xt::linalg::lstsq(by_columns<T>(matrix), sides_by_columns<T>(b), -1.0);
  LeastSquares result{stored<Kind>(std::get<0>(solved)), stored<Kind>(std::get<1>(solved)),
                      make_scalar<XTDouble>(std::get<2>(solved)), stored<Kind>(std::get<3>(solved))};
  // The library drops every extent of 1, also that of a single column.
  result.solutions->array->reshape(solutions);
  return result;
}

}  // namespace

Outcome xinv(const Call& call) {
  return serve_first_reals(call, [&](const auto& array) {
    using Kind = typename std::decay_t<decltype(array)>::tag;
    give_array<Kind>(call.ctx, call.result, stored<Kind>(inverse_by_columns(*array.array)));
  });
}

Outcome xpinv(const Call& call) {
  return serve_first_reals(call, [&](const auto& array) {
    using Kind = typename std::decay_t<decltype(array)>::tag;
    give_array<Kind>(call.ctx, call.result, pseudo_inverse(array));
  });
}

// required: a float array and a double array are no pair for it, unlike for xlstsq.
Outcome xsolve(const Call& call) {
  const auto arrays = two_numeric_arguments(call);
  if (!arrays) return Outcome::failed;
  Outcome outcome = Outcome::failed;
  serve_reals(arrays->first, [&](const auto& a) {
    serve_reals(arrays->second, [&](const auto& b) {
      using Kind = typename std::decay_t<decltype(a)>::tag;
      if constexpr (std::is_same_v<decltype(a), decltype(b)>) {
        give_array<Kind>(call.ctx, call.result, solution(a, b));
        outcome = Outcome::handled;
      }
    });
  });
  return outcome;
}

// required: the first operand decides the precision, and the second is converted to it.
Outcome xlstsq(const Call& call) {
  const auto arrays = two_numeric_arguments(call);
  if (!arrays) return Outcome::failed;
  Outcome outcome = Outcome::failed;
  serve_reals(arrays->first, [&](const auto& a) {
    outcome = serve_reals(arrays->second, [&](const auto& b) {
      using Kind = typename std::decay_t<decltype(a)>::tag;
      auto result = least_squares(a, *b.array);
      auto table = give_table(call);
      for (auto* part : {&result.solutions, &result.residuals, &result.rank, &result.singular_values})
        give_array<Kind>(call.ctx, table.next_slot(), std::move(*part));
    });
  });
  return outcome;
}

}  // namespace arrayfold
