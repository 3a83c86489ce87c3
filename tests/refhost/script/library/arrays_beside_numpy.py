# refhost/script/library/arrays_beside_numpy.py: the functions of the library `arrays` give what NumPy gives
#
# Usage: arrays_beside_numpy.py HVM SEEDS
#
# Each seed makes a script of one call of every function, with random arguments. Kinds and shapes must be the same, and
# so must elements, but for those whose sums NumPy adds in another order and those whose powers it computes otherwise.

import json
import subprocess
import sys

import numpy as np

HVM = sys.argv[1]
KINDS = {"bool": np.bool_, "int": np.int32, "int64": np.int64, "double": np.float64}
SEEDS = int(sys.argv[2])


def literal(x):
    """The text of a value in the script language."""
    if isinstance(x, np.ndarray):
        kind = next(name for name, dtype in KINDS.items() if x.dtype == dtype)
        return f"xarray(@{kind}, {entries(x.tolist())})"
    if isinstance(x, (list, tuple)):
        return "[" + ", ".join(map(literal, x)) + "]"
    return number(x)


def entries(x):
    return "[" + ", ".join(map(entries, x)) + "]" if isinstance(x, list) else number(x)


def number(x):
    if isinstance(x, (bool, np.bool_)):
        return str(int(x))
    if isinstance(x, (int, np.integer)):
        return f"{x}L" if abs(int(x)) > 2**31 - 1 else str(x)
    if x != x:
        return "nan"
    return repr(float(x)) if abs(x) != np.inf else ("inf" if x > 0 else "(-inf)")


HEAD = """use "arrays"
inf = 1.0 / 0
nan = inf - inf
fn show(x)
  if type(x) == "int" or type(x) == "real" then
    print(type(x), "[]", str(x))
  else
    print(type(x), str(x.shape()), str(x))
  end
end
"""


class Arguments:
    """Random arguments of one script."""

    def __init__(self, seed):
        self.random = np.random.default_rng(seed)

    def shape(self, dimensions):
        return tuple(self.random.integers(1, 12, dimensions))

    def array(self, kind, shape):
        if kind == "bool":
            return self.random.random(shape) < 0.5
        if kind == "int":
            return self.random.integers(-2**31, 2**31, shape, dtype=np.int32)
        if kind == "int64":
            return self.random.integers(-2**50, 2**50, shape, dtype=np.int64)
        return self.random.standard_normal(shape) * 10.0**self.random.integers(-9, 9, shape)

    def any_kind(self, shape):
        return self.array(self.random.choice(list(KINDS)), shape)

    def with_nan(self, a):
        return np.where(self.random.random(a.shape) < 0.1, np.nan, a)

    def flat_or_matrix(self):
        return self.shape(self.random.integers(1, 3))


def cases(arguments):
    """Call, arguments, NumPy's result, and the tolerance in units of the largest element's last place."""
    a, r = arguments, arguments.random
    m = a.any_kind(a.shape(2))
    rows, columns = m.shape
    i, j = int(r.integers(rows)), int(r.integers(columns))
    yield "row", (m, i), m[i], 0
    yield "column", (m, j), m[:, j], 0
    yield "transpose", (m,), m.T, 0
    yield "slice", (m, i, i + j), m[i:i + j], 0
    d = a.array("double", a.shape(2))
    for summed in (m, d):
        yield "sum_rows", (summed,), summed.sum(axis=1), 100
        yield "sum_columns", (summed,), summed.sum(axis=0), 100
    yield "mean_columns", (m,), m.mean(axis=0), 100
    parts = [a.any_kind(columns) for _ in range(rows)]
    yield "stack", (parts,), np.stack(parts), 0

    x = a.any_kind(a.flat_or_matrix())
    held = r.random(x.shape) < 0.5
    positions = r.integers(0, x.size, a.flat_or_matrix(), dtype=np.int64)
    yield "where", (held,), np.flatnonzero(held).astype(np.int32), 0
    yield "count", (x,), int(np.count_nonzero(x)), 0
    yield "mask", (x, held), x[held], 0
    yield "take", (x, positions), x.take(positions), 0
    yield "take", (x, positions.astype(np.int32)), x.take(positions), 0
    yield "cumsum", (x,), x.cumsum(), 0
    yield "as_double", (x,), x.astype(np.float64), 0
    small = r.uniform(-2.0**31, 2.0**31, a.flat_or_matrix())
    yield "as_int", (small,), small.astype(np.int32), 0
    flat = a.any_kind(a.shape(1))
    n = int(r.integers(1, flat.size + 1))
    yield "moving_average", (flat, n), np.convolve(flat.astype(float), np.ones(n), "valid") / n, 100
    start, stop = sorted(r.integers(0, flat.size + 3, 2).tolist())
    yield "slice", (flat, min(start, flat.size), stop), flat[start:stop], 0

    y = a.with_nan(a.array("double", a.flat_or_matrix()))
    low, high = sorted(r.standard_normal(2).tolist())
    yield "clip", (y, low, high), np.clip(y, low, high), 0
    for kind in ("int", "int64"):
        integers = a.array(kind, a.flat_or_matrix())
        low, high = sorted(r.integers(-2**31 + 1, 2**31, 2).tolist())
        yield "clip", (integers, low, high), np.clip(integers, low, high).astype(integers.dtype), 0
        base = r.integers(-7, 8, a.flat_or_matrix()).astype(KINDS[kind])
        p = int(r.integers(0, 11))
        yield "power", (base, p), base**p, 0
    yield "power", (y, int(r.integers(-9, 10))), None, 8
    yield "power", (y, float(r.uniform(-5, 5))), None, 8

    # Of a single point NumPy gives no NaN for NaN.
    xp = np.cumsum(r.uniform(0.1, 1, 1 + a.shape(1)[0]))
    fp = a.array("double", xp.shape)
    at = a.with_nan(r.uniform(0, xp[-1] + 1, a.flat_or_matrix()))
    at.flat[0] = xp[-1]
    yield "interpolate", (at, xp, fp), np.interp(at, xp, fp), 0
    yield "interpolate", (float(xp[0]), xp, fp), float(fp[0]), 0
    p = r.random(a.flat_or_matrix())
    yield "quantile", (x, p), np.quantile(x.astype(float), p), 0
    yield "quantile", (x, float(p.flat[0])), float(np.quantile(x.astype(float), p.flat[0])), 0


def expected_of(name, arguments, given):
    if given is not None:
        return given
    a, p = arguments
    with np.errstate(all="ignore"):
        return np.power(a, p)


def check(seed):
    wanted = list(cases(Arguments(seed)))
    script = HEAD + "".join(f"show({name}({', '.join(map(literal, given))}))\n" for name, given, _, _ in wanted)
    run = subprocess.run([HVM], input=script, text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    assert run.returncode == 0, (seed, run.stderr, script)
    lines = run.stdout.splitlines()
    assert len(lines) == len(wanted), (seed, run.stdout)
    for line, (name, arguments, result, tolerance) in zip(lines, wanted):
        result = expected_of(name, arguments, result)
        fault = difference(line, result, tolerance)
        assert not fault, (seed, name, arguments, line, result, fault)
    return len(wanted)


def difference(line, expected, tolerance):
    """What is wrong with a line of output, if anything is. The text of an array has null for NaN and infinities."""
    kind, rest = line.split(" ", 1)
    end = rest.index("]") + 1
    shape, text = rest[:end], rest[end:]
    expected_kind = {bool: "bool", int: "int", float: "real"}.get(type(expected)) or name_of(expected)
    if kind != expected_kind:
        return f"kind {kind}, not {expected_kind}"
    if json.loads(shape) != list(np.shape(expected)):
        return f"shape {shape}"
    elements = np.array(json.loads(text), dtype=float if "double" in kind or kind == "real" else None)
    wanted = np.asarray(expected)
    if wanted.dtype == np.float64:
        wanted = np.where(np.isfinite(wanted), wanted, np.nan)
    if wanted.size == 0:
        return ""
    if tolerance == 0 or wanted.dtype != np.float64:
        return "" if np.array_equal(elements, wanted, equal_nan=wanted.dtype == np.float64) else "elements"
    largest = np.abs(wanted) if tolerance < 100 else np.nanmax(np.abs(wanted), initial=1)
    near = np.abs(elements - wanted) <= tolerance * np.spacing(largest)
    return "" if np.all(near | (np.isnan(elements) & np.isnan(wanted))) else "elements"


def name_of(array):
    return "$x" + next(name for name, dtype in KINDS.items() if array.dtype == dtype) + "array"


def main():
    compared = sum(check(seed) for seed in range(SEEDS))
    print(f"{compared} results are the same")


main()
