# bench/peers/text.py: the peers of text.cpp

from . import Case, per_element

RATIOS = {10: 0.35, 1_000: 0.2, 100_000: 0.2}
TEXT = "json.dumps(a.tolist())"

CASES = {
    "dump_reals": Case(
        numpy=TEXT,
        setup="import json; a = np.random.default_rng(1).standard_normal(n)",
        ratios=RATIOS,
        limits=per_element(60, 1_000, 100_000),
    ),
    "dump_ints": Case(
        numpy=TEXT,
        setup="import json; a = np.random.default_rng(1).integers(-999_999, 1_000_000, n, dtype=np.int32)",
        ratios=RATIOS,
        limits=per_element(6, 1_000, 100_000),
    ),
}
