// linalg/factorisations.cpp: xcholesky, xqr, xsvd

#include "linalg/matrix.hpp"

namespace arrayfold {
namespace {

// ---- xcholesky

/// Sets the elements above the diagonal, which LAPACK leaves as they were, to 0.
template <class T>
void clear_above_diagonal(ColumnMajor<T>& matrix) {
  const std::size_t n = matrix.shape()[0];
  T* column = matrix.storage().data();
  for (std::size_t j = 0; j < n; ++j, column += n) std::fill_n(column, j, T{0});
}

constexpr auto lower_factor = [](auto kind, const auto& array) {
  auto factor = square_by_columns(array);
  if (xt::lapack::potr(factor, 'L') > 0) throw std::runtime_error("Cholesky decomposition failed.");
  clear_above_diagonal(factor);
  return stored(kind, factor);
};

// ---- xqr

/// Q and R; Q has as many columns as R has rows, the smaller extent. Without elements that is 0.
constexpr auto orthogonal_factors = [](auto kind, const auto& matrix) {
  using T = typename decltype(kind)::element;
  require_matrix(matrix);
  if (matrix.storage().empty())
    return std::tuple{filled(kind, {matrix.shape()[0], 0}, 0), filled(kind, {0, matrix.shape()[1]}, 0)};
  const auto [q, r] = xt::linalg::qr(by_columns<T>(matrix));
  return std::tuple{stored(kind, q), stored(kind, r)};
};

// ---- xsvd

template <class Kind>
auto identity(Kind kind, std::size_t n) {
  auto made = filled(kind, {n, n}, 0);
  for (std::size_t i = 0; i < n; ++i) made->array->storage()[i * (n + 1)] = 1;
  return made;
}

/// The left singular vectors by columns, the singular values, the right singular vectors by rows.
constexpr auto singular_factors = [](auto kind, const auto& matrix) {
  using T = typename decltype(kind)::element;
  require_matrix(matrix);
  const std::size_t rows = matrix.shape()[0];
  const std::size_t columns = matrix.shape()[1];
  if (matrix.storage().empty()) return std::tuple{identity(kind, rows), filled(kind, {0}, 0), identity(kind, columns)};
  if (!all_finite(matrix)) {
    constexpr auto nan = std::numeric_limits<T>::quiet_NaN();
    return std::tuple{filled(kind, {rows, rows}, nan), filled(kind, {std::min(rows, columns)}, nan),
                      filled(kind, {columns, columns}, nan)};
  }
  const auto [left, values, right] = xt::linalg::svd(by_columns<T>(matrix));
  return std::tuple{stored(kind, left), stored(kind, values), stored(kind, right)};
};

}  // namespace

Outcome xcholesky(const Call& call) { return give_computed(call, lower_factor); }
Outcome xqr(const Call& call) { return give_computed(call, orthogonal_factors); }
Outcome xsvd(const Call& call) { return give_computed(call, singular_factors); }

}  // namespace arrayfold
