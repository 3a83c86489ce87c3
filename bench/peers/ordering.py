# bench/peers/ordering.py: the peers of ordering.cpp

from . import Case, by_size

REALS = "a = np.random.default_rng(1).standard_normal(n)"
INTS = "a = np.random.default_rng(1).integers(-999_999, 1_000_000, n, dtype=np.int32)"
LONG_INTS = "a = np.random.default_rng(1).integers(-999_999, 1_000_000, n)"
# n is about the number of elements.
SQUARE = "k = int(n ** 0.5); a = np.random.default_rng(1).standard_normal((k, k))"

SORT = by_size(0.3, 0.7, 0.15, 0.15)
INT_SORT = by_size(0.2, 0.5, 0.25, 0.25)
POSITIONS = by_size(0.2, 0.9, 0.25, 0.25)
PARTITION = by_size(0.2, 0.6, 0.9, 1.35)
DIFFERENCES = by_size(0.1, 0.15, 0.9, 1.15)
EXTREME = by_size(0.15, 0.15, 1.0, 1.4)
UNBOUND = by_size(None, None, None, None)


def by_row_size(ten, thousand, hundred_thousand, million):
    """Bounds of squares, of which the largest holds a million elements."""
    return {10: ten, 1_000: thousand, 100_000: hundred_thousand, 1_000_000: million}


CASES = {
    "xsort": Case(numpy="np.sort(a)", setup=REALS, ratios=SORT),
    "xsort_int": Case(numpy="np.sort(a)", setup=INTS, ratios=INT_SORT),
    "xsort_int64": Case(numpy="np.sort(a)", setup=LONG_INTS, ratios=SORT),
    "xunique": Case(numpy="np.unique(a)", setup=REALS, ratios=SORT),
    "xunique_int": Case(numpy="np.unique(a)", setup=INTS, ratios=UNBOUND),
    "xunique_int64": Case(numpy="np.unique(a)", setup=LONG_INTS, ratios=SORT),
    "xargsort": Case(numpy="np.argsort(a)", setup=REALS, ratios=POSITIONS),
    "xargsort_int": Case(numpy="np.argsort(a)", setup=INTS, ratios=POSITIONS),
    "xargsort_int64": Case(numpy="np.argsort(a)", setup=LONG_INTS, ratios=POSITIONS),
    "xargmin": Case(numpy="np.argmin(a)", setup=REALS, ratios=EXTREME),
    "xargmin_int": Case(numpy="np.argmin(a)", setup=INTS, ratios=EXTREME),
    "xargmin_int64": Case(numpy="np.argmin(a)", setup=LONG_INTS, ratios=EXTREME),
    "xargmax": Case(numpy="np.argmax(a)", setup=REALS, ratios=EXTREME),
    "xargmax_int": Case(numpy="np.argmax(a)", setup=INTS, ratios=EXTREME),
    "xargmax_int64": Case(numpy="np.argmax(a)", setup=LONG_INTS, ratios=EXTREME),
    "xsort_rows": Case(numpy="np.sort(a)", setup=SQUARE, ratios=by_row_size(0.2, 0.85, 0.25, 0.2)),
    "xargsort_rows": Case(numpy="np.argsort(a)", setup=SQUARE, ratios=by_row_size(0.2, 0.95, 0.4, 0.3)),
    "xpartition": Case(numpy="np.partition(a, n // 2)", setup=REALS, ratios=PARTITION),
    "xpartition_int": Case(numpy="np.partition(a, n // 2)", setup=INTS, ratios=PARTITION),
    "xpartition_rows": Case(
        numpy="np.partition(a, k // 2)", setup=SQUARE, ratios=by_row_size(None, None, None, None)
    ),
    "xdiff": Case(numpy="np.diff(a)", setup=REALS, ratios=DIFFERENCES),
    "xdiff_int": Case(numpy="np.diff(a)", setup=INTS, ratios=DIFFERENCES),
    "xdiff_rows": Case(numpy="np.diff(a)", setup=SQUARE, ratios=by_size(0.1, 0.15, 0.3, 1.15)),
}

# Rows without bounds, which show that data of no kind makes a sort many times slower than random data does. The
# standard library's sort takes NaN, and for values also zeros of both signs; vectors take the others.
SPECIAL_KINDS = {
    "nan": REALS + "; a[np.random.default_rng(2).integers(0, 100, n) < 2] = np.nan",
    "both_zeros": REALS + "; r = np.random.default_rng(2).integers(0, 100, n); a[r == 0] = 0.0; a[r == 1] = -0.0",
    "few_distinct": "a = np.random.default_rng(2).integers(0, 10, n).astype(float)",
    "sorted": REALS + "; a.sort()",
    # The order is the worst for the standard library's sort; another sort's would be another one.
    "adversarial": None,
}
for function in ("sort", "argsort"):
    for kind, setup in SPECIAL_KINDS.items():
        CASES[f"x{function}_{kind}"] = Case(
            numpy=setup and f"np.{function}(a)", setup=setup or "", ratios={100_000: None}
        )
