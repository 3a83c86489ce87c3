# bench/peers/linear_algebra.py: the peers of linear_algebra.cpp
#
# n is the length of a vector, or the number of rows of a square matrix. Both sides call the same BLAS and LAPACK.

from . import Case, by_size

RANDOM = "r = np.random.default_rng; "
VECTORS = RANDOM + "a = r(1).standard_normal(n); b = r(2).standard_normal(n)"
MATRICES = RANDOM + "a = r(1).standard_normal((n, n)); b = r(2).standard_normal((n, n))"
INTS = RANDOM + "a, b = (r(s).integers(-999_999, 1_000_000, (n, n), dtype=np.int32) for s in (1, 2))"
MIXED = RANDOM + (
    "a = r(1).integers(-999_999, 1_000_000, (n, n), dtype=np.int32); b = r(2).standard_normal((n, n))"
)
MATRIX_AND_VECTOR = RANDOM + "a = r(1).standard_normal((n, n)); b = r(2).standard_normal(n)"
MATRIX_AND_SMALL = RANDOM + "a = r(1).standard_normal((n, n)); b = r(2).standard_normal((4, 4))"
DOMINANT = RANDOM + "a = r(1).standard_normal((n, n)) + 2 * n * np.eye(n)"
SYSTEM = DOMINANT + "; b = r(2).standard_normal(n)"


def by_side(four, thirty_two, many, very_many):
    """Bounds for square matrices of four sizes."""
    return {4: four, 32: thirty_two, 256: many, 1024: very_many}


def by_small_side(four, thirty_two, many):
    """Bounds for square matrices of three sizes."""
    return {4: four, 32: thirty_two, 256: many}


ROUTINE = by_side(0.3, 1.05, 1.05, 1.03)
LONG_ROUTINE = by_side(0.65, 1.05, 1.05, 1.03)
UNBOUND = by_side(None, None, None, None)
UNBOUND_SMALL = by_small_side(None, None, None)
UNBOUND_LENGTHS = by_size(None, None, None, None)

CASES = {
    "dot_vectors": Case(numpy="np.dot(a, b)", setup=VECTORS, ratios=by_size(0.3, 0.4, 0.9, 1.2)),
    "vdot": Case(numpy="np.vdot(a, b)", setup=VECTORS, ratios=UNBOUND_LENGTHS),
    # The module calls the norm of BLAS, which cannot overflow; NumPy takes the root of an inner product.
    "norm_vector": Case(numpy="np.linalg.norm(a)", setup=VECTORS, ratios=UNBOUND_LENGTHS),
    "dot_matrices": Case(numpy="np.dot(a, b)", setup=MATRICES, ratios=by_side(0.4, 0.75, 1.0, 1.03)),
    "dot_matrix_vector": Case(numpy="np.dot(a, b)", setup=MATRIX_AND_VECTOR, ratios=UNBOUND),
    "dot_ints": Case(numpy="np.dot(a, b)", setup=INTS, ratios=by_small_side(0.3, 0.1, 0.06)),
    # NumPy converts the integers and calls BLAS; the module adds in the order of the inner index and truncates.
    "dot_mixed": Case(numpy="np.dot(a, b)", setup=MIXED, ratios=UNBOUND_SMALL),
    # BLAS adds to zeros, which takes two passes; NumPy writes the products. The two differ in the sign of zero
    # products.
    "outer": Case(numpy="np.outer(a, b)", setup=VECTORS, ratios=by_small_side(0.1, 0.15, 0.25)),
    "kron": Case(numpy="np.kron(a, b)", setup=MATRIX_AND_SMALL, ratios=by_small_side(0.1, 0.15, 0.25)),
    "cholesky": Case(numpy="np.linalg.cholesky(a)", setup=DOMINANT, ratios=by_side(0.2, 0.6, 0.65, 0.8)),
    "qr": Case(numpy="np.linalg.qr(a)", setup=DOMINANT, ratios=ROUTINE),
    "svd": Case(numpy="np.linalg.svd(a)", setup=DOMINANT, ratios=LONG_ROUTINE),
    # For four rows, LAPACK alone takes 1.3 of the 3.7 microseconds that NumPy takes.
    "eigh": Case(numpy="np.linalg.eigh(a)", setup=DOMINANT, ratios=ROUTINE),
    "eigvalsh": Case(numpy="np.linalg.eigvalsh(a)", setup=DOMINANT, ratios=UNBOUND),
    "det": Case(numpy="np.linalg.det(a)", setup=DOMINANT, ratios=ROUTINE),
    "slogdet": Case(numpy="np.linalg.slogdet(a)", setup=DOMINANT, ratios=UNBOUND),
    "matrix_rank": Case(numpy="np.linalg.matrix_rank(a)", setup=DOMINANT, ratios=UNBOUND),
    "inv": Case(numpy="np.linalg.inv(a)", setup=DOMINANT, ratios=ROUTINE),
    "pinv": Case(numpy="np.linalg.pinv(a)", setup=DOMINANT, ratios=ROUTINE),
    "eig": Case(numpy="np.linalg.eig(a)", setup=DOMINANT, ratios=UNBOUND_SMALL),
    "eigvals": Case(numpy="np.linalg.eigvals(a)", setup=DOMINANT, ratios=UNBOUND_SMALL),
    # The module inverts the matrix and then always throws.
    "cond": Case(numpy="np.linalg.inv(a)", setup=DOMINANT, ratios=UNBOUND_SMALL),
    "norm": Case(numpy="np.linalg.norm(a)", setup=DOMINANT, ratios=by_side(0.2, 0.2, 2.0, 2.2)),
    # The module adds the diagonal in order, 0.7 ns for each addition; NumPy adds in pairs.
    "trace": Case(numpy="np.trace(a)", setup=DOMINANT, ratios=by_side(0.1, 0.1, 0.1, 0.3)),
    "solve": Case(numpy="np.linalg.solve(a, b)", setup=SYSTEM, ratios=ROUTINE),
    "lstsq": Case(numpy="np.linalg.lstsq(a, b, rcond=None)", setup=SYSTEM, ratios=LONG_ROUTINE),
}
