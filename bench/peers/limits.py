# bench/peers/limits.py: the cases of limits.cpp
#
# They have no peers and no bounds: the rows of the functions that they bound are compared with NumPy.

from . import Case

LARGE = {100_000: None, 10_000_000: None}

CASES = {
    **{
        name: Case(ratios=LARGE)
        for name in ("square_ints", "smaller_ints", "mark_nan", "add_ints", "divide", "compare", "compare_ints",
                     "add_in_place", "read", "write_doubles", "add_in_order", "euclidean_norm")
    },
    "two_sums_in_order": Case(ratios={100_000: None}),
    "squares_by_rows": Case(ratios={256: None, 1_024: None}),
    "five_blocks": Case(ratios={10: None}),
    "table_of_two": Case(ratios={10: None}),
    "symmetric_eigenvalues": Case(ratios={256: None}),
}
