# bench/peers/operators.py: the peers of operators.cpp

from . import Case, by_size

DOUBLES = "r = np.random.default_rng(1); a = r.standard_normal(n); b = r.standard_normal(n)"
INTS = "r = np.random.default_rng(1); a, b = r.integers(-999_999, 1_000_000, (2, n), dtype=np.int32)"
LONG_INTS = "r = np.random.default_rng(1); a, b = r.integers(-999_999, 1_000_000, (2, n))"
DIVIDED = INTS + "; b = r.integers(1, 1000, n, dtype=np.int32)"
SQUARE = "r = np.random.default_rng(1); k = int(n ** 0.5); a = r.standard_normal((k, k))"

ARITHMETIC = by_size(0.45, 0.5, 1.05, 1.15)
SMALL_CALL = {10: 150}
# Broadcasting over 100,000 elements reads and writes 1.6 MB and takes as long as a + 1.5. On processors with 1 MB of L2
# cache that is 14 of NumPy's 30 microseconds, which exceeds the bound.
BROADCASTING = by_size(0.2, 0.25, 0.4, 0.9)
COMPARISON = by_size(0.4, 0.6, 1.0, 1.3)
COMPARISON_WITH_NUMBER = by_size(0.4, 0.6, 1.5, 1.3)
# Ten elements take 19 to 22 ns. The host stores and releases the result in 13 of them, 0.01 of NumPy's time, which
# exceeds the bound.
EQUALITY = by_size(0.01, 0.05, 0.75, 1.05)
# Ten elements take 89 ns. A sum of ten takes 84, which is 0.4 of NumPy's time without any division, so that quotients
# and remainders of ten elements are at the bound.
DIVISION = by_size(0.4, 0.35, 0.35, 0.5)
DIVISION_BY_NUMBER = by_size(0.4, 0.35, 1.4, 1.2)
# 1,000 doubles take 71 ns: two reads and a write take 62 with registers of any width, and the call takes 8. NumPy's
# time varies between 300 and 330 ns, so that the ratio is at the bound or above it.
IN_PLACE = by_size(0.05, 0.2, 1.0, 1.0)
IN_PLACE_WITH_NUMBER = by_size(0.05, 0.2, 1.0, 1.15)


def arithmetic(expression, setup, ratios=ARITHMETIC):
    return Case(numpy=expression, setup=setup, ratios=ratios, limits=SMALL_CALL)


CASES = {
    "add": arithmetic("a + b", DOUBLES),
    "subtract": arithmetic("a - b", DOUBLES),
    "multiply": arithmetic("a * b", DOUBLES),
    "divide": arithmetic("a / b", DOUBLES),
    "add_number": arithmetic("a + 1.5", DOUBLES),
    "subtract_number": arithmetic("a - 1.5", DOUBLES),
    "multiply_number": arithmetic("a * 1.5", DOUBLES),
    "divide_number": arithmetic("a / 1.5", DOUBLES),
    "add_ints": arithmetic("a + b", INTS),
    "subtract_ints": arithmetic("a - b", INTS),
    "multiply_ints": arithmetic("a * b", INTS),
    "add_number_ints": arithmetic("a + 7", INTS),
    "multiply_number_ints": arithmetic("a * 7", INTS),
    "add_int64s": arithmetic("a + b", LONG_INTS, by_size(0.45, 0.5, 1.25, 1.15)),
    "multiply_int64s": arithmetic("a * b", LONG_INTS, by_size(0.45, 0.5, 1.4, 1.15)),
    # The module truncates toward zero. NumPy has no truncating quotient of integers, so the peer is its flooring one,
    # which also checks signs. np.fmod truncates; it is shown beside the remainder.
    "divide_ints": Case(numpy="a // b", setup=DIVIDED, ratios=DIVISION),
    "remainder_ints": Case(
        numpy="a % b", setup=DIVIDED, ratios=DIVISION, beside={100_000: "np.fmod(a, b)", 10_000_000: "np.fmod(a, b)"}
    ),
    "divide_number_ints": Case(numpy="a // 7", setup=DIVIDED, ratios=DIVISION_BY_NUMBER),
    "remainder_number_ints": Case(
        numpy="a % 7", setup=DIVIDED, ratios=DIVISION_BY_NUMBER, beside={100_000: "np.fmod(a, 7)"}
    ),
    # n is about the number of elements of the result.
    "broadcast_row": Case(numpy="a + b", setup=SQUARE + "; b = r.standard_normal(k)", ratios=BROADCASTING),
    "broadcast_column": Case(numpy="a + b", setup=SQUARE + "; b = r.standard_normal((k, 1))", ratios=BROADCASTING),
    "broadcast_outer": Case(numpy="a[:, :1] + b", setup=SQUARE + "; b = r.standard_normal(k)", ratios=BROADCASTING),
    "less": Case(numpy="a < b", setup=DOUBLES, ratios=COMPARISON),
    "less_number": Case(numpy="a < 1.5", setup=DOUBLES, ratios=COMPARISON_WITH_NUMBER),
    "less_ints": Case(numpy="a < b", setup=INTS, ratios=COMPARISON),
    "less_number_ints": Case(numpy="a < 7", setup=INTS, ratios=COMPARISON_WITH_NUMBER),
    # The arrays are equal, so that every element is compared.
    "equal": Case(numpy="np.array_equal(a, b)", setup=DOUBLES + "; b = a.copy()", ratios=EQUALITY),
    "equal_ints": Case(numpy="np.array_equal(a, b)", setup=INTS + "; b = a.copy()", ratios=EQUALITY),
    "in_place": Case(numpy="np.add(a, b, out=a)", setup=DOUBLES, ratios=IN_PLACE),
    "in_place_number": Case(numpy="np.add(a, 1.5, out=a)", setup=DOUBLES, ratios=IN_PLACE_WITH_NUMBER),
    "in_place_ints": Case(numpy="np.add(a, b, out=a)", setup=INTS, ratios=IN_PLACE),
    "in_place_number_ints": Case(numpy="np.add(a, 7, out=a)", setup=INTS, ratios=IN_PLACE_WITH_NUMBER),
    "element_read": Case(numpy="a[1, 3]", setup="a = np.ones((2, 5))", ratios={10: None}, limits={10: 40}),
    "element_write": Case(numpy="a[1, 3] = 2.5", setup="a = np.ones((2, 5))", ratios={10: None}, limits={10: 40}),
}
