// linalg/eigen.cpp: xeig, xeigvals, xeigh, xeigvalsh
//
// The first two take any square matrix, whose eigenvalues are complex; no kind of element is, and their results are
// dropped. The other two read the lower triangle alone, as that of a symmetric matrix.

#include "array/arguments.hpp"
#include "linalg/library.hpp"
#include "linalg/matrix.hpp"

namespace arrayfold {

// required: the table stays empty. What a script can see is that the call fails on a bad matrix.
Outcome xeig(const Call& call) {
  return serve_first_reals(call, [&](const auto& array) {
    const auto matrix = square_by_columns(*array.array);
    if (!all_finite(*array.array)) throw std::runtime_error("Eigenvalue calculation did not converge.");
    const auto dropped = xt::linalg::eig(matrix);
    give_table(call);
  });
}

// required: nothing is given, the result record stays as it was.
Outcome xeigvals(const Call& call) {
  return serve_first_reals(call, [&](const auto& array) {
    const auto matrix = square_by_columns(*array.array);
    // The argument that the routine refuses: the matrix is its fourth.
    if (!all_finite(*array.array)) throw std::runtime_error("Failed to compute eigenvalue 4.");
    const auto dropped = xt::linalg::eigvals(matrix);
  });
}

Outcome xeigh(const Call& call) {
  return serve_first_reals(call, [&](const auto& array) {
    using Kind = typename std::decay_t<decltype(array)>::tag;
    const auto solution = xt::linalg::eigh(square_by_columns(*array.array));
    auto values = stored<Kind>(std::get<0>(solution));
    auto vectors = stored<Kind>(std::get<1>(solution));
    auto table = give_table(call);
    give_array<Kind>(call.ctx, table.next_slot(), std::move(values));
    give_array<Kind>(call.ctx, table.next_slot(), std::move(vectors));
  });
}

Outcome xeigvalsh(const Call& call) {
  return serve_first_reals(call, [&](const auto& array) {
    using Kind = typename std::decay_t<decltype(array)>::tag;
    give_array<Kind>(call.ctx, call.result, stored<Kind>(xt::linalg::eigvalsh(square_by_columns(*array.array))));
  });
}

}  // namespace arrayfold
