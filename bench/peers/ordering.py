# bench/peers/ordering.py: the peers of ordering.cpp

from . import Case, by_size

DOUBLES = "a = np.random.default_rng(1).standard_normal(n)"
INTS = "a = np.random.default_rng(1).integers(-999_999, 1_000_000, n, dtype=np.int32)"
LONG_INTS = "a = np.random.default_rng(1).integers(-999_999, 1_000_000, n)"
# n is about the number of elements.
SQUARE = "k = int(n ** 0.5); a = np.random.default_rng(1).standard_normal((k, k))"

# At 10,000,000 only the first call of a process is timed, and its memory is new. Sorting takes 65 to 75 ms and
# positions 75 to 95 ms where the system has free pages ready, else 270 and 360 ms, which exceeds the bound. At 100,000
# the distinct 64-bit integers need two blocks of 0.8 MB, which the C library may return to the system at every call:
# 1.05 ms then, else 0.42 ms, of NumPy's 5.1.
SORT = by_size(0.3, 0.7, 0.15, 0.15)
# NumPy 1.24 sorts 32-bit integers with AVX-512 where the processor has it: 4.1 ns for each element at 100,000 where the
# module takes 3.7, and both 7.2 at 10,000,000. The bounds, fractions of a sort by comparisons, are exceeded there.
INT_SORT = by_size(0.2, 0.5, 0.25, 0.25)
POSITIONS = by_size(0.2, 0.9, 0.25, 0.25)
# Scripts see the order in which std::nth_element leaves the elements, so that no other selection can replace it. NumPy
# takes half as long for 32-bit integers as for doubles, the module 0.85 times: 100,000 integers exceed the bound.
PARTITION = by_size(0.2, 0.6, 0.9, 1.35)
DIFFERENCES = by_size(0.1, 0.15, 0.9, 1.15)
# 1,000 elements take 110 to 200 ns, of which the call and its array take 85, a tenth of NumPy's time. The first chunk
# is read twice, for the extreme and for its position, so that doubles and 64-bit integers exceed the bound.
EXTREME = by_size(0.15, 0.15, 1.0, 1.4)
UNBOUND = by_size(None, None, None, None)


def by_row_size(ten, thousand, hundred_thousand, million):
    """Bounds for square matrices, the largest with a million elements."""
    return {10: ten, 1_000: thousand, 100_000: hundred_thousand, 1_000_000: million}


CASES = {
    "xsort": Case(numpy="np.sort(a)", setup=DOUBLES, ratios=SORT),
    "xsort_int": Case(numpy="np.sort(a)", setup=INTS, ratios=INT_SORT),
    "xsort_int64": Case(numpy="np.sort(a)", setup=LONG_INTS, ratios=SORT),
    "xunique": Case(numpy="np.unique(a)", setup=DOUBLES, ratios=SORT),
    "xunique_int": Case(numpy="np.unique(a)", setup=INTS, ratios=UNBOUND),
    "xunique_int64": Case(numpy="np.unique(a)", setup=LONG_INTS, ratios=SORT),
    "xargsort": Case(numpy="np.argsort(a)", setup=DOUBLES, ratios=POSITIONS),
    "xargsort_int": Case(numpy="np.argsort(a)", setup=INTS, ratios=POSITIONS),
    "xargsort_int64": Case(numpy="np.argsort(a)", setup=LONG_INTS, ratios=POSITIONS),
    "xargmin": Case(numpy="np.argmin(a)", setup=DOUBLES, ratios=EXTREME),
    "xargmin_int": Case(numpy="np.argmin(a)", setup=INTS, ratios=EXTREME),
    "xargmin_int64": Case(numpy="np.argmin(a)", setup=LONG_INTS, ratios=EXTREME),
    "xargmax": Case(numpy="np.argmax(a)", setup=DOUBLES, ratios=EXTREME),
    "xargmax_int": Case(numpy="np.argmax(a)", setup=INTS, ratios=EXTREME),
    "xargmax_int64": Case(numpy="np.argmax(a)", setup=LONG_INTS, ratios=EXTREME),
    "xsort_rows": Case(numpy="np.sort(a)", setup=SQUARE, ratios=by_row_size(0.2, 0.85, 0.25, 0.2)),
    "xargsort_rows": Case(numpy="np.argsort(a)", setup=SQUARE, ratios=by_row_size(0.2, 0.95, 0.4, 0.3)),
    "xpartition": Case(numpy="np.partition(a, n // 2)", setup=DOUBLES, ratios=PARTITION),
    "xpartition_int": Case(numpy="np.partition(a, n // 2)", setup=INTS, ratios=PARTITION),
    "xpartition_rows": Case(
        numpy="np.partition(a, k // 2)", setup=SQUARE, ratios=by_row_size(None, None, None, None)
    ),
    "xargpartition": Case(numpy="np.argpartition(a, n // 2)", setup=DOUBLES, ratios=UNBOUND),
    "xargpartition_int": Case(numpy="np.argpartition(a, n // 2)", setup=INTS, ratios=UNBOUND),
    "xdiff": Case(numpy="np.diff(a)", setup=DOUBLES, ratios=DIFFERENCES),
    "xdiff_int": Case(numpy="np.diff(a)", setup=INTS, ratios=DIFFERENCES),
    "xdiff_rows": Case(numpy="np.diff(a)", setup=SQUARE, ratios=by_size(0.1, 0.15, 0.3, 1.15)),
}

# Cases without bounds. They show that no kind of data makes a sort many times slower than random data does. Data with
# NaN, and values with zeros of both signs, go to std::sort; the others go to the vectorised sort.
SPECIAL_KINDS = {
    "nan": DOUBLES + "; a[np.random.default_rng(2).integers(0, 100, n) < 2] = np.nan",
    "both_zeros": DOUBLES + "; r = np.random.default_rng(2).integers(0, 100, n); a[r == 0] = 0.0; a[r == 1] = -0.0",
    "few_distinct": "a = np.random.default_rng(2).integers(0, 10, n).astype(float)",
    "sorted": DOUBLES + "; a.sort()",
    # The order is the worst one for std::sort and an ordinary one for NumPy, so there is no peer.
    "adversarial": None,
}
for function in ("sort", "argsort"):
    for kind, setup in SPECIAL_KINDS.items():
        CASES[f"x{function}_{kind}"] = Case(
            numpy=setup and f"np.{function}(a)", setup=setup or "", ratios={100_000: None}
        )
