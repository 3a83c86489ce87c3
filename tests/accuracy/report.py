#!/usr/bin/python3
# accuracy/report.py: measures the module and NumPy over the same arguments and writes docs/accuracy.md

import argparse
import ctypes
import os
import re
import subprocess
import tempfile

import numpy as np

PEERS = {
    "xsqrt": np.sqrt, "xsquare": np.square, "xcube": lambda x: x * x * x, "xexp": np.exp, "xexpm1": np.expm1,
    "xlog": np.log, "xlog1p": np.log1p, "xcbrt": np.cbrt, "xsin": np.sin, "xcos": np.cos, "xtan": np.tan,
    "xsinh": np.sinh, "xcosh": np.cosh, "xtanh": np.tanh, "xlogspace": lambda x: np.power(x.dtype.type(10), x),
}
NAMES = [*PEERS, "xerf", "xtgamma", "xlgamma"]  # in the order of the page
OWN = NAMES[NAMES.index("xexp"):NAMES.index("xtanh") + 1]
BATCH = 200_000


def largest_error(function, arguments):
    """The largest distance from the same function in 80 bits, in units in the last place, and its argument."""
    worst, at = 0.0, 0.0
    for first in range(0, len(arguments), BATCH):
        x = arguments[first:first + BATCH]
        value, exact = function(x), function(x.astype(np.longdouble))
        errors = errors_in_ulp(value, exact)
        place = int(np.argmax(errors))
        if errors[place] > worst:
            worst, at = float(errors[place]), float(x[place])
    return worst, at


def errors_in_ulp(value, exact):
    """Distances as functions.cpp counts them: an infinity is 2^1024, and right where the exact value rounds to it."""
    beyond = np.ldexp(np.longdouble(1), 1024)
    exponent = np.clip(np.frexp(np.where(np.isfinite(exact), exact, 1))[1] - 1, -1022, 1023)
    unit = np.ldexp(np.longdouble(1), exponent - 52)
    error = np.abs(np.clip(value.astype(np.longdouble), -beyond, beyond) - np.clip(exact, -beyond, beyond)) / unit
    error = np.where(value == exact.astype(float), np.where(np.isinf(value), 0, error), error)
    neither = np.isnan(value) & np.isnan(exact)
    return np.where(neither, 0, np.where(np.isnan(error), np.inf, error))


def measured_lines(program, count, count_of_others):
    """What the program prints: for the eleven functions of arrays that are the module's own, over many arguments."""
    lines = []
    for name in NAMES:
        arguments = count if name in OWN else count_of_others
        run = subprocess.run([program, str(arguments), "--peers", "--of", name], stdout=subprocess.PIPE, text=True,
                             check=True)
        lines.extend(run.stdout.splitlines())
    return lines


def errors_of(lines):
    """name -> target or library -> (error, argument), as the program prints them."""
    errors = {}
    for line in lines:
        name, by, error, argument = line.split()
        errors.setdefault(name, {})[by] = (float(error), float(argument))
    return errors


def numpy_errors_of(program, count):
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "arguments")
        subprocess.run([program, str(count), "--arguments", path], check=True)
        arguments = np.fromfile(path)
    with np.errstate(all="ignore"):
        return {name: largest_error(function, arguments) for name, function in PEERS.items()}


def sleef():
    """The library with its version, which the name of its file has."""
    try:
        ctypes.CDLL("libsleef.so.3")
    except OSError:
        return "no SLEEF"
    with open("/proc/self/maps") as maps:
        return "SLEEF " + re.search(r"/libsleef\.so\.([0-9.]+)$", maps.read(), re.MULTILINE).group(1)


def cell(error):
    """An error beyond all bounds is a wrong value, such as an overflow that comes early."""
    return "none" if error is None else f"{error:.2f}" if error < 1000 else "wrong values"


def table(measured, numpy_errors):
    yield ("| Function | Largest error | at | without fused products | NumPy's largest | at "
           "| C library's largest | SLEEF's largest |")
    yield "| --- | ---: | ---: | ---: | ---: | ---: | ---: | ---: |"
    for name, by in measured.items():
        error, at = next(iter(by.values()))  # of the best target
        peer = numpy_errors.get(name)
        theirs = f"{cell(peer[0])} | `{peer[1]!r}`" if peer else "none | "
        others = " | ".join(cell(by[library][0] if library in by else None) for library in ("libc", "SLEEF"))
        yield f"| `{name}` | {cell(error)} | `{at!r}` | {cell(by['SSE4'][0])} | {theirs} | {others} |"


def main():
    parser = argparse.ArgumentParser(description="Writes the table of errors into a page.")
    parser.add_argument("program", help="the accuracy program")
    parser.add_argument("page", help="the page whose table is replaced")
    parser.add_argument("--count", type=int, default=10_000_000, help="arguments of the functions from xexp to xtanh")
    parser.add_argument("--count-of-others", type=int, default=10_000_000,
                        help="arguments of the other functions, and of NumPy: the first of those")
    parser.add_argument("--measured", help="a file of what the program printed for these counts, to save the time")
    chosen = parser.parse_args()
    if chosen.measured:
        with open(chosen.measured) as file:
            measured = file.read().splitlines()
    else:
        measured = measured_lines(chosen.program, chosen.count, chosen.count_of_others)
    lines = table(errors_of(measured), numpy_errors_of(chosen.program, chosen.count_of_others))
    with open(chosen.page) as page:
        text = page.read()
    head, begin, rest = text.partition("<!-- table -->\n")
    _, end, tail = rest.partition("<!-- end of table -->")
    if not begin or not end:
        parser.error(f"{chosen.page} has no place for a table")
    libc = os.confstr("CS_GNU_LIBC_VERSION")
    note = (f"\n{chosen.count:,} arguments of each function from `xexp` to `xtanh`, {chosen.count_of_others:,} of the "
            f"others and with NumPy {np.__version__}; {libc}, {sleef()}.\n")
    with open(chosen.page, "w") as page:
        page.write(head + begin + "\n".join(lines) + "\n" + note + end + tail)


if __name__ == "__main__":
    main()
