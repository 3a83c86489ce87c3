# bench/peers/creation.py: the peers of creation.cpp

from . import Case, by_size

# The same engine as ours, and the one that NumPy takes when nobody asks.
GENERATOR = "r = np.random.Generator(np.random.MT19937(1)); default = np.random.default_rng(1)"

CASES = {
    # numpy.zeros of big arrays hands out pages that nothing has touched: the work is left to the first use. The peer
    # is then the call that writes its zeros, as ours does.
    "xzeros": Case(
        numpy={10: "np.zeros(n)", 1_000: "np.zeros(n)", 100_000: "np.zeros(n)", 10_000_000: "np.full(n, 0.0)"},
        ratios=by_size(0.9, 1.0, 1.0, 1.05),
        beside={10_000_000: "np.zeros(n)"},
    ),
    "xones": Case(numpy="np.ones(n)", ratios=by_size(0.9, 0.3, 1.0, 1.05)),
    "xempty": Case(numpy="np.empty(n)", ratios=by_size(None, None, None, None)),
    # n is the size asked for; the square has the side of its root.
    "xeye": Case(numpy="np.eye(k)", setup="k = int(n ** 0.5)", ratios=by_size(0.2, 0.3, 0.9, 1.4)),
    # xarange gives doubles, so the peer is asked for doubles too.
    "xarange": Case(numpy="np.arange(n, dtype=float)", ratios=by_size(0.9, 0.3, 0.3, 1.05)),
    "xlinspace": Case(numpy="np.linspace(0.0, 1.0, n)", ratios=by_size(0.05, 0.3, 0.3, 1.05)),
    # The power decides, and ours is the C library's, element by element.
    "xlogspace": Case(numpy="np.logspace(-3.0, 3.0, n)", ratios=by_size(0.05, None, 2.1, 2.1)),
    # Ours draws from the Mersenne twister, whose stream is what scripts see; NumPy's default engine is a quicker one.
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
    # Ours makes the draws of a shuffle and nothing else, NumPy's also gives the permutation.
    "xpermutation": Case(numpy="r.permutation(n)", setup=GENERATOR, ratios=by_size(None, None, None, None)),
}
