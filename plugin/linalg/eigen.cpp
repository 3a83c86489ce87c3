// linalg/eigen.cpp: xeig, xeigvals, xeigh, xeigvalsh
//
// The first two take any square matrix. Its eigenvalues are complex, no kind of element is, and so their results are
// dropped. The other two read the lower triangle alone, as that of a symmetric matrix.

#include "linalg/matrix.hpp"

namespace arrayfold {
namespace {

/// The eigenvalues of the symmetric matrix whose lower triangle is in `matrix`. The job 'V' leaves the eigenvectors in
/// it, 'N' nothing of use. The library's own functions would copy the matrix once more. Throws std::runtime_error where
/// LAPACK finds none.
template <class T>
ColumnMajor<T> symmetric_eigenvalues(ColumnMajor<T>& matrix, char job) {
  auto values = ColumnMajor<T>::from_shape({matrix.shape()[0]});
  if (xt::lapack::syevd(matrix, job, 'L', values) != 0)
    throw std::runtime_error("Eigenvalue computation did not converge.");
  return values;
}

}  // namespace

// required: the table stays empty. What a script can see is that the call fails for a bad matrix.
Outcome xeig(const Call& call) {
  return visit_first_floating(call, [&](auto, const auto& array) {
    const auto matrix = square_by_columns(array);
    if (!all_finite(array)) throw std::runtime_error("Eigenvalue calculation did not converge.");
    const auto dropped = xt::linalg::eig(matrix);
    give_table(call);
  });
}

// required: nothing is given, the result record stays as it was.
Outcome xeigvals(const Call& call) {
  return visit_first_floating(call, [&](auto, const auto& array) {
    const auto matrix = square_by_columns(array);
    // The number of the argument that LAPACK rejects: the matrix is its fourth.
    if (!all_finite(array)) throw std::runtime_error("Failed to compute eigenvalue 4.");
    const auto dropped = xt::linalg::eigvals(matrix);
  });
}

Outcome xeigh(const Call& call) {
  return give_computed(call, [](auto kind, const auto& array) {
    auto matrix = square_by_columns(array);
    const auto values = symmetric_eigenvalues(matrix, 'V');
    return std::tuple{stored(kind, values), stored(kind, matrix)};
  });
}

Outcome xeigvalsh(const Call& call) {
  return give_computed(call, [](auto kind, const auto& array) {
    auto matrix = square_by_columns(array);
    return stored(kind, symmetric_eigenvalues(matrix, 'N'));
  });
}

}  // namespace arrayfold
