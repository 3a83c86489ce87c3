// linalg/scalars.cpp: xnorm, xcond, xdet, xmatrix_rank, xslogdet, xtrace
//
// Numbers of a matrix. They are given as arrays of no dimension, but for xslogdet, whose table holds plain numbers, and
// xtrace, which has the dimensions that two fewer leave.

#include <cmath>

#include "array/arguments.hpp"
#include "array/ordered_fold.hpp"
#include "array/runs.hpp"
#include "linalg/lu.hpp"

namespace arrayfold {
namespace {

template <class Kind>
void give_scalar(const Call& call, typename StoredKind<Kind>::element value) {
  give_array<Kind>(call.ctx, call.result, make_scalar<StoredKind<Kind>>(value));
}

/// The square root of the sum of squares. The sum goes along the rows, each from its start, as a reduction does.
template <class T>
T frobenius_norm(const xarray_of<T>& matrix) {
  const auto add_square = [](double sum, T x) { return sum + static_cast<double>(x) * static_cast<double>(x); };
  const auto add = [](double sum, double row) { return sum + row; };
  return static_cast<T>(std::sqrt(ordered_fold(matrix, 0.0, add_square, add)));
}

template <class T>
T norm_of(const xarray_of<T>& array) {
  if (array.dimension() == 2) return frobenius_norm(array);
  if (array.dimension() != 1) throw std::runtime_error("Norm not implemented!");
  check_extents(array);
  require_counts(array);
  return xt::linalg::norm(array, 2);
}

/// The product of the diagonal, its sign turned for each exchange of rows. A singular matrix has a zero there.
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

/// Of a singular matrix the sign is 0 and the logarithm minus infinity.
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

/// The sums along the diagonal of the first two dimensions, in the element's type, for each place in the others.
template <class T, class Kind>
std::unique_ptr<ArrayOf<StoredKind<Kind>>> trace_of(const XTArray<T, Kind>& array) {
  using Stored = typename StoredKind<Kind>::element;
  const auto& elements = array.array->storage();
  const Shape& extents = array.array->shape();
  check_extents(*array.array);
  const Shape others(extents.begin() + 2, extents.end());
  auto made = make_array<StoredKind<Kind>>(others);
  auto& sums = made->array->storage();
  const std::size_t step = (extents[1] + 1) * sums.size();
  for (std::size_t place = 0; place < sums.size(); ++place) {
    T sum{0};
    for (std::size_t i = 0; i < std::min(extents[0], extents[1]); ++i) sum += elements[i * step + place];
    // The sum is handed over in 64-bit reals, whatever it was added in.
    sums[place] = stored_as<Stored>(static_cast<double>(sum));
  }
  return made;
}

}  // namespace

// A vector has the Euclidean norm, a matrix that of Frobenius.
Outcome xnorm(const Call& call) {
  return serve_first_reals(call, [&](const auto& array) {
    using Kind = typename std::decay_t<decltype(array)>::tag;
    give_scalar<Kind>(call, norm_of(*array.array));
  });
}

// required: the order of its norm is 0, which vectors alone have, and the inverse of a matrix is a matrix: there is no
// operand that it succeeds with. Integers count as handled, unlike everywhere else in this family.
Outcome xcond(const Call& call) {
  const auto array = numeric_argument(call, 0);
  if (!array) return Outcome::failed;
  serve_reals(*array, [](const auto& boxed) {
    inverse_by_columns(*boxed.array);
    throw std::runtime_error("Norm 0 not implemented!");
  });
  return Outcome::handled;
}

Outcome xdet(const Call& call) {
  return serve_first_reals(call, [&](const auto& array) {
    using Kind = typename std::decay_t<decltype(array)>::tag;
    give_scalar<Kind>(call, determinant(lu_factors(*array.array)));
  });
}

// required: the rank is a real. Without elements, or with NaN or an infinity, no singular value is above any tolerance.
Outcome xmatrix_rank(const Call& call) {
  return serve_first_reals(call, [&](const auto& array) {
    using Kind = typename std::decay_t<decltype(array)>::tag;
    using T = typename Kind::element;
    const auto& matrix = *array.array;
    require_matrix(matrix);
    const bool has_values = !matrix.storage().empty() && all_finite(matrix);
    give_scalar<Kind>(call, has_values ? xt::linalg::matrix_rank(by_columns<T>(matrix), -1.0) : 0);
  });
}

Outcome xslogdet(const Call& call) {
  return serve_first_reals(call, [&](const auto& array) {
    const auto [sign, logarithm] = log_determinant(lu_factors(*array.array));
    auto table = give_table(call);
    table.add(sign);
    table.add(logarithm);
  });
}

Outcome xtrace(const Call& call) {
  const auto array = numeric_argument(call, 0);
  if (!array) return Outcome::failed;
  return xtl::visit(
      [&](const auto* boxed) {
        using Kind = typename std::decay_t<decltype(*boxed)>::tag;
        if (boxed->array->dimension() < 2) return Outcome::failed;
        give_array<Kind>(call.ctx, call.result, trace_of(*boxed));
        return Outcome::handled;
      },
      *array);
}

}  // namespace arrayfold
