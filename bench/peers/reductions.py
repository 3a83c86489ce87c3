# bench/peers/reductions.py: the peers of reductions.cpp

from . import Case, by_size

DOUBLES = "a = np.random.default_rng(1).standard_normal(n)"
INTS = "a = np.random.default_rng(1).integers(-999_999, 1_000_000, n, dtype=np.int32)"
LONG_INTS = "a = np.random.default_rng(1).integers(-999_999, 1_000_000, n)"
FACTORS = "a = np.exp(0.001 * np.random.default_rng(1).standard_normal(n))"
# n is about the number of elements.
SQUARE = "k = int(n ** 0.5); a = np.random.default_rng(1).standard_normal((k, k))"
FACTOR_SQUARE = "k = int(n ** 0.5); a = np.exp(0.001 * np.random.default_rng(1).standard_normal((k, k)))"

SCAN = by_size(0.02, 0.1, 1.0, 1.05)
INT_SCAN = by_size(0.02, 0.1, 0.5, 1.05)
# AVX-512 has an instruction for the smaller of two 64-bit integers, which NumPy uses; AVX2 has none.
LONG_INT_EXTREME = by_size(0.02, 0.15, 2.7, 1.05)
MEDIAN = by_size(0.01, 0.15, 0.15, 0.15)
# Each addition depends on the one before; NumPy adds in pairs.
MEAN = by_size(0.01, 0.25, 3.5, 2.8)
# Two such chains of additions, one after the other. At 100,000 elements they alone take 1.6 times as long as NumPy with
# AVX-512.
VARIANCE = by_size(0.01, 0.15, 1.45, 0.75)
# A call with ten elements takes 20 ns, of which the host takes 14 to store and release the number. Products, counts and
# the mean of a square, for which NumPy is fast, exceed their bounds at this size. At 1,000 elements a product is one
# chain of multiplications, a third of NumPy's time, which has the same chain.
CHAIN = by_size(0.01, 0.3, 1.0, 1.0)
UNBOUND = by_size(None, None, None, None)

CASES = {
    "xsum": Case(numpy="np.sum(a)", setup=DOUBLES, ratios=SCAN),
    "xsum_int": Case(numpy="np.sum(a)", setup=INTS, ratios=INT_SCAN),
    "xsum_int64": Case(numpy="np.sum(a)", setup=LONG_INTS, ratios=SCAN),
    "xamin": Case(numpy="np.min(a)", setup=DOUBLES, ratios=SCAN),
    "xamin_int": Case(numpy="np.min(a)", setup=INTS, ratios=INT_SCAN),
    "xamin_int64": Case(numpy="np.min(a)", setup=LONG_INTS, ratios=LONG_INT_EXTREME),
    "xamax": Case(numpy="np.max(a)", setup=DOUBLES, ratios=SCAN),
    "xamax_int": Case(numpy="np.max(a)", setup=INTS, ratios=INT_SCAN),
    # xamax of 64-bit integers is their minimum.
    "xamax_int64": Case(numpy="np.min(a)", setup=LONG_INTS, ratios=LONG_INT_EXTREME),
    "xmean": Case(numpy="np.mean(a)", setup=DOUBLES, ratios=MEAN),
    # The reference for xmean, which takes at most 1.05 times as long at the three larger sizes.
    "add_chain": Case(numpy=None, setup=DOUBLES, ratios=UNBOUND),
    "xvariance": Case(numpy="np.var(a)", setup=DOUBLES, ratios=VARIANCE),
    "xstddev": Case(numpy="np.std(a)", setup=DOUBLES, ratios=VARIANCE),
    "xprod": Case(numpy="np.prod(a)", setup=FACTORS, ratios=CHAIN),
    "xtrapz": Case(numpy="np.trapz(a)", setup=DOUBLES, ratios=CHAIN),
    "xmean_2d": Case(numpy="np.mean(a)", setup=SQUARE, ratios=by_size(0.01, 0.1, 0.75, 1.4)),
    "xvariance_2d": Case(numpy="np.var(a)", setup=SQUARE, ratios=by_size(0.01, 0.1, 0.5, 0.5)),
    "xprod_2d": Case(numpy="np.prod(a)", setup=FACTOR_SQUARE, ratios=by_size(0.01, 0.1, 0.25, 0.5)),
    "xmedian": Case(numpy="np.median(a)", setup=DOUBLES, ratios=MEDIAN),
    "xmedian_int": Case(numpy="np.median(a)", setup=INTS, ratios=MEDIAN),
    "xmedian_int64": Case(numpy="np.median(a)", setup=LONG_INTS, ratios=MEDIAN),
    "xcount_nonzero": Case(numpy="np.count_nonzero(a)", setup=DOUBLES, ratios=by_size(0.05, 0.1, 0.1, 0.2)),
    "xcount_nonzero_int": Case(numpy="np.count_nonzero(a)", setup=INTS, ratios=by_size(0.05, 0.1, 0.5, 1.2)),
    "xcount_nonzero_int64": Case(numpy="np.count_nonzero(a)", setup=LONG_INTS, ratios=UNBOUND),
}
