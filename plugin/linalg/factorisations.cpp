// linalg/factorisations.cpp: xcholesky, xqr, xsvd

#include "array/arguments.hpp"
#include "linalg/library.hpp"
#include "linalg/matrix.hpp"

namespace arrayfold {
namespace {

/// Sets what the routine has left of the operand to 0.
template <class T>
void clear_above_diagonal(ColumnMajor<T>& matrix) {
  const std::size_t n = matrix.shape()[0];
  T* column = matrix.storage().data();
  for (std::size_t j = 0; j < n; ++j, column += n) std::fill_n(column, j, T{0});
}

/// The factors of a singular value decomposition: the left vectors by columns, the values, the right vectors by rows.
struct SingularFactors {
  std::unique_ptr<ArrayOf<XTDouble>> left;
  std::unique_ptr<ArrayOf<XTDouble>> values;
  std::unique_ptr<ArrayOf<XTDouble>> right;
};

std::unique_ptr<ArrayOf<XTDouble>> identity(std::size_t n) {
  auto made = filled<XTDouble>({n, n}, 0.0);
  for (std::size_t i = 0; i < n; ++i) made->array->storage()[i * (n + 1)] = 1.0;
  return made;
}

template <class T, class Kind>
SingularFactors singular_factors(const XTArray<T, Kind>& array) {
  const auto& matrix = *array.array;
  require_matrix(matrix);
  const std::size_t rows = matrix.shape()[0];
  const std::size_t columns = matrix.shape()[1];
  if (matrix.storage().empty()) return {identity(rows), filled<XTDouble>({0}, 0.0), identity(columns)};
  if (!all_finite(matrix)) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    return {filled<XTDouble>({rows, rows}, nan), filled<XTDouble>({std::min(rows, columns)}, nan),
            filled<XTDouble>({columns, columns}, nan)};
  }
  const auto [left, values, right] = xt::linalg::svd(by_columns<T>(matrix));
  return {stored<Kind>(left), stored<Kind>(values), stored<Kind>(right)};
}

struct OrthogonalFactors {
  std::unique_ptr<ArrayOf<XTDouble>> q;
  std::unique_ptr<ArrayOf<XTDouble>> r;
};

/// Q with as many columns as R has rows: the smaller extent. Without elements that is 0.
template <class T, class Kind>
OrthogonalFactors orthogonal_factors(const XTArray<T, Kind>& array) {
  const auto& matrix = *array.array;
  require_matrix(matrix);
  if (matrix.storage().empty())
    return {filled<XTDouble>({matrix.shape()[0], 0}, 0.0), filled<XTDouble>({0, matrix.shape()[1]}, 0.0)};
  const auto [q, r] = xt::linalg::qr(by_columns<T>(matrix));
  return {stored<Kind>(q), stored<Kind>(r)};
}

}  // namespace

Outcome xcholesky(const Call& call) {
  return serve_first_reals(call, [&](const auto& array) {
    using Kind = typename std::decay_t<decltype(array)>::tag;
    auto factor = square_by_columns(*array.array);
    if (xt::lapack::potr(factor, 'L') > 0) throw std::runtime_error("Cholesky decomposition failed.");
    clear_above_diagonal(factor);
    give_array<Kind>(call.ctx, call.result, stored<Kind>(factor));
  });
}

Outcome xqr(const Call& call) {
  return serve_first_reals(call, [&](const auto& array) {
    using Kind = typename std::decay_t<decltype(array)>::tag;
    auto [q, r] = orthogonal_factors(array);
    auto table = give_table(call);
    give_array<Kind>(call.ctx, table.next_slot(), std::move(q));
    give_array<Kind>(call.ctx, table.next_slot(), std::move(r));
  });
}

Outcome xsvd(const Call& call) {
  return serve_first_reals(call, [&](const auto& array) {
    using Kind = typename std::decay_t<decltype(array)>::tag;
    auto factors = singular_factors(array);
    auto table = give_table(call);
    give_array<Kind>(call.ctx, table.next_slot(), std::move(factors.left));
    give_array<Kind>(call.ctx, table.next_slot(), std::move(factors.values));
    give_array<Kind>(call.ctx, table.next_slot(), std::move(factors.right));
  });
}

}  // namespace arrayfold
