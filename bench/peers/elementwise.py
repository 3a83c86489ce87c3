# bench/peers/elementwise.py: the peers of elementwise.cpp

from dataclasses import replace

from . import Case, by_size

DOUBLES = "a = np.random.default_rng(1).standard_normal(n)"
POSITIVE = "a = np.abs(np.random.default_rng(1).standard_normal(n))"
INTS = "a = np.random.default_rng(1).integers(-999_999, 1_000_000, n, dtype=np.int32)"
TO_100 = "a = np.random.default_rng(1).integers(1, 101, n, dtype=np.int32)"

MATHEMATICS = by_size(0.55, 1.0, 1.1, 1.1)
LOGARITHM = by_size(0.55, 1.1, 1.5, 1.15)
ARITHMETIC = by_size(0.5, 0.5, 1.05, 1.05)
# The module writes eight bytes for each element, NumPy one or four.
TRUTHS = by_size(0.4, 0.6, 1.15, 3.9)
INT_MAGNITUDES = by_size(0.5, 0.5, 1.25, 1.05)
# At 100,000 elements, operand and result take 1.2 MB, and NumPy's 0.8 MB. On processors with 1 MB of L2 cache the loop
# alone takes twice as long, which exceeds the bound.
INT_PRODUCTS = by_size(0.5, 0.5, 1.6, 1.6)
UNBOUND = by_size(None, None, None, None)

CASES = {}


def add(name, numpy, ratios, int_ratios=None, doubles=DOUBLES, ints=TO_100):
    CASES[name] = Case(numpy=numpy, setup=doubles, ratios=ratios)
    if name != "xsign":
        CASES[name + "_int"] = Case(numpy=numpy, setup=ints, ratios=int_ratios or ratios)


add("xabs", "np.abs(a)", ARITHMETIC, INT_MAGNITUDES, ints=INTS)
add("xsign", "np.sign(a)", ARITHMETIC)
add("xrad2deg", "np.rad2deg(a)", ARITHMETIC)
add("xdegrees", "np.degrees(a)", ARITHMETIC)
add("xdeg2rad", "np.deg2rad(a)", ARITHMETIC)
add("xradians", "np.radians(a)", ARITHMETIC)
add("xsquare", "np.square(a)", ARITHMETIC, INT_PRODUCTS, ints=INTS)
add("xcube", "a * a * a", ARITHMETIC, INT_PRODUCTS, ints=INTS)
add("xsqrt", "np.sqrt(a)", ARITHMETIC, doubles=POSITIVE)
add("xlog", "np.log(a)", LOGARITHM, doubles=POSITIVE)
add("xlog1p", "np.log1p(a)", MATHEMATICS, doubles=POSITIVE)
for name in ("exp", "expm1", "cbrt", "sin", "cos", "tan", "sinh", "cosh", "tanh"):
    add("x" + name, f"np.{name}(a)", MATHEMATICS)
for name in ("isnan", "isinf", "isfinite"):
    add("x" + name, f"np.{name}(a)", TRUTHS, UNBOUND)
# No integer is NaN or infinite: the module gives zeros without reading any, from 128 KiB on as untouched pages.
for name in ("isnan", "isinf"):
    CASES[f"x{name}_int"] = replace(
        CASES[f"x{name}_int"],
        beside={100_000: "np.zeros(n)", 10_000_000: "np.zeros(n)"},
        untouched={10_000_000},
    )
# One call of a library function for each element; NumPy has no such function.
add("xerf", None, UNBOUND)
add("xtgamma", None, UNBOUND)
add("xlgamma", None, UNBOUND, doubles=POSITIVE)

TWO_DOUBLES = DOUBLES + "; b = np.random.default_rng(2).standard_normal(n)"
TWO_INTS = INTS + "; b = np.random.default_rng(2).integers(-999_999, 1_000_000, n, dtype=np.int32)"
CHOICES = by_size(0.45, 0.5, 1.05, 1.15)
# At 100,000 elements, operands and result take 1.6 MB, and NumPy's 1.2 MB. On processors with 1 MB of L2 cache the loop
# alone takes 13.7 of 14.2 microseconds, and NumPy takes 10.5, which exceeds the bound.
INT_CHOICES = by_size(0.45, 0.5, 1.25, 1.9)
for name in ("minimum", "maximum"):
    CASES["x" + name] = Case(numpy=f"np.{name}(a, b)", setup=TWO_DOUBLES, ratios=CHOICES)
    CASES[f"x{name}_int"] = Case(numpy=f"np.{name}(a, b)", setup=TWO_INTS, ratios=INT_CHOICES)
