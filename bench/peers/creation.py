# bench/peers/creation.py: the peers of creation.cpp

from . import Case, by_size

# The module's engine, and NumPy's default engine.
GENERATOR = "r = np.random.Generator(np.random.MT19937(1)); default = np.random.default_rng(1)"

CASES = {
    # Large arrays of zeros are untouched pages in both, which cost their time at the first use. A call that writes its
    # zeros stands beside them.
    "xzeros": Case(
        numpy="np.zeros(n)",
        ratios=by_size(0.9, 1.0, 1.0, None),
        beside={100_000: "np.full(n, 0.0)", 10_000_000: "np.full(n, 0.0)"},
        untouched={10_000_000},
    ),
    "xones": Case(numpy="np.ones(n)", ratios=by_size(0.9, 0.3, 1.0, 1.05)),
    "xempty": Case(numpy="np.empty(n)", ratios=by_size(None, None, None, None)),
    # n is about the number of elements; the square has the root of n rows.
    # The diagonal of the largest one touches every page that the system has to make, small or huge: that is its time.
    "xeye": Case(
        numpy="np.eye(k)",
        setup="k = int(n ** 0.5)",
        ratios=by_size(0.2, 0.3, 0.9, 1.4),
        beside={10_000_000: "np.full((k, k), 0.0)"},
        untouched={10_000_000},
    ),
    # xarange returns doubles, so the peer does too.
    "xarange": Case(numpy="np.arange(n, dtype=float)", ratios=by_size(0.9, 0.3, 0.3, 1.05)),
    "xlinspace": Case(numpy="np.linspace(0.0, 1.0, n)", ratios=by_size(0.05, 0.3, 0.3, 1.05)),
    "xlogspace": Case(numpy="np.logspace(-3.0, 3.0, n)", ratios=by_size(0.05, 0.15, 0.4, 0.4)),
    # The module draws from the Mersenne twister, whose stream scripts see; NumPy's default engine is faster.
    "xrand": Case(
        numpy="r.random(n)",
        setup=GENERATOR,
        ratios=by_size(0.5, 1.0, 1.0, 1.0),
        beside={100_000: "default.random(n)", 10_000_000: "default.random(n)"},
    ),
    "xrandn": Case(
        numpy="r.standard_normal(n)",
        setup=GENERATOR,
        ratios=by_size(0.5, 1.1, 1.1, 1.1),
        beside={100_000: "default.standard_normal(n)", 10_000_000: "default.standard_normal(n)"},
    ),
    "xshuffle": Case(
        numpy="r.shuffle(a)", setup=GENERATOR + "; a = r.standard_normal(n)", ratios=by_size(None, None, None, None)
    ),
    # The module draws the numbers of a shuffle and nothing else; NumPy also makes the permutation.
    "xpermutation": Case(numpy="r.permutation(n)", setup=GENERATOR, ratios=by_size(None, None, None, None)),
}
