# bench/peers/tables.py: the peers of tables.cpp

from . import Case, by_size

CASES = {
    # A host table and a Python list: both hold boxed numbers, contiguously.
    "xarray": Case(
        numpy="np.array(numbers)",
        setup="numbers = np.random.default_rng(1).standard_normal(n).tolist()",
        ratios={10: 0.5, 1_000: 0.15, 100_000: 0.15, 1_000_000: 1 / 6},
    ),
    # The module writes the elements that it gathered, none, up to the count, and has the array beside them in untouched
    # pages. The peer writes its zeros.
    "dimensions": Case(
        numpy="np.full(n, 0.0)",
        ratios=by_size(0.9, 1.0, 1.2, 1.2),
        beside={100_000: "np.zeros(n)", 10_000_000: "np.zeros(n)"},
        untouched={10_000_000},
    ),
    # The module reads the tree of a quotation. NumPy's list is built in each call, as in a Python script.
    "literal": Case(
        numpy="np.array([[0.0, 1.0, 2.0], [3.0, 4.0, 5.0], [6.0, 7.0, 8.0]])",
        ratios={9: None},
        limits={9: 2_000},
    ),
}
