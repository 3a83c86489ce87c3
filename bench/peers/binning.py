# bench/peers/binning.py: the peers of binning.cpp

from . import Case, by_size

DOUBLES = "a = np.random.default_rng(1).standard_normal(n)"
TO_100 = "a = np.random.default_rng(1).integers(1, 101, n, dtype=np.int32)"
LONG_TO_100 = "a = np.random.default_rng(1).integers(1, 101, n)"
# All elements share one counter, so each addition depends on the one before.
ALIKE = "a = np.full(n, 100, dtype=np.int32)"

# NumPy counts 64-bit integers directly and converts others first, which is most of its time. Two rows of 64-bit
# integers exceed the bound. Ten elements take 98 ns, of which 85 are the call and its array, a quarter of NumPy's time.
# 10,000,000 elements are read three times, for both extremes and for the counts: 5.2 of the module's 7.0 ms, half of
# NumPy's time.
COUNTS = by_size(0.2, 0.4, 0.4, 0.3)
PLACES = by_size(0.2, 0.7, 0.4, 0.3)
UNBOUND = by_size(None, None, None, None)


def among(edges):
    return DOUBLES + f"; edges = np.linspace(-3.0, 3.0, {edges})"


CASES = {
    # NumPy returns the edges as well.
    "xhistogram": Case(numpy="np.histogram(a)", setup=DOUBLES, ratios=COUNTS),
    "xhistogram_100": Case(numpy="np.histogram(a, 100)", setup=DOUBLES, ratios=COUNTS),
    "xhistogram_bin_edges": Case(numpy="np.histogram_bin_edges(a)", setup=DOUBLES, ratios=UNBOUND),
    "xbincount": Case(numpy="np.bincount(a)", setup=TO_100, ratios=COUNTS),
    "xbincount_int64": Case(numpy="np.bincount(a)", setup=LONG_TO_100, ratios=COUNTS),
    "xbincount_alike": Case(numpy="np.bincount(a)", setup=ALIKE, ratios=UNBOUND),
    "xdigitize_10": Case(numpy="np.digitize(a, edges)", setup=among(10), ratios=PLACES),
    "xdigitize_1000": Case(numpy="np.digitize(a, edges)", setup=among(1000), ratios=PLACES),
}
