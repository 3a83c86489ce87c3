#!/usr/bin/python3
# kernels/make_tables.py: makes vector_math_tables.hpp, the constants of the mathematical functions
#
#     make_tables.py           writes the file beside this script
#     make_tables.py --check   ends with 1 where the file differs from what would be written
#
# Every number is computed from its definition with 60 decimal digits and rounded once to a double. A polynomial is the
# one that meets its function at the Chebyshev points of the range, which is near the best one of its degree. The bounds
# that the kernels rely on are asserted here.

import argparse
import os
import sys
import textwrap

from mpmath import mp, mpf

mp.dps = 60
PATH = os.path.join(os.path.dirname(os.path.abspath(__file__)), "vector_math_tables.hpp")


# ---- Numbers

def bits(x, count):
    """x rounded to so many significant bits."""
    x = mpf(x)
    if x == 0:
        return x
    exponent = mp.floor(mp.log(abs(x), 2)) + 1
    return mp.ldexp(mp.nint(mp.ldexp(x, int(count - exponent))), int(exponent - count))


def rounded(x):
    return bits(x, 53)


def multiple(x, exponent):
    """x rounded to a multiple of a power of two."""
    return mp.ldexp(mp.nint(mp.ldexp(mpf(x), -exponent)), exponent)


def parts(x, *counts):
    """x as a sum of numbers of so many bits each; the last one takes the rest as a double."""
    found = []
    for count in counts + (53,):
        found.append(bits(x, count))
        x -= found[-1]
    return found


def chebyshev(count):
    """The zeros of the Chebyshev polynomial, ascending within -1 and 1."""
    return [-mp.cos(mp.pi * (2 * i + 1) / (2 * count)) for i in range(count)]


def points_between(low, high, count):
    return [(low + high) / 2 + (high - low) / 2 * x for x in chebyshev(count)]


def points_above_zero(high, count):
    """For an error that counts more the farther from 0 it is: one zero of count + 1 lies on 0 and is left out."""
    least, *others = chebyshev(count + 1)
    return [high * (x - least) / (1 - least) for x in others]


def polynomial(function, points):
    """The coefficients, lowest power first, of the polynomial that meets the function at the points."""
    matrix = mp.matrix([[point ** power for power in range(len(points))] for point in points])
    # The functions cancel where the point is nearly 0.
    with mp.workdps(5 * mp.dps):
        values = [function(point) for point in points]
    return [rounded(c) for c in mp.lu_solve(matrix, mp.matrix(values))]


def largest_error(function, coefficients, low, high, weight):
    """The largest distance between polynomial and function on the range, times the weight."""
    count = 400
    points = [low + (high - low) * (mpf(i) + mpf("0.37")) / count for i in range(count)]
    return max(abs(mp.polyval(coefficients[::-1], r) - function(r)) * weight(r) for r in points)


def demand(condition, what):
    if not condition:
        sys.exit(f"make_tables.py: {what}")


def fitted(function, degree, low, high, weight, exponent):
    """A polynomial whose error, times the weight, stays below a power of two. A range from 0 on has weight 0 there."""
    points = points_above_zero(high, degree + 1) if low == 0 else points_between(low, high, degree + 1)
    found = polynomial(function, points)
    error = largest_error(function, found, low, high, weight)
    demand(error < mpf(2) ** exponent, f"a polynomial of degree {degree} has the error {mp.nstr(error, 5)}")
    return found


# ---- The text of the file

def literal(x):
    demand(x == rounded(x), f"{x} is no double")
    return float(x).hex() if x != 0 else "0"


lines = []


def comment(text):
    lines.extend([""] + textwrap.wrap(text, width=120, initial_indent="// ", subsequent_indent="// "))


def constant(name, x):
    lines.append(f"constexpr double {name} = {literal(x)};")


def table(kind, name, items):
    lines.append(f"alignas(64) constexpr {kind} {name}[{len(items)}] = {{")
    for first in range(0, len(items), 4):
        lines.append("    " + " ".join(f"{item}," for item in items[first:first + 4]))
    lines[-1] = lines[-1].rstrip(",") + "};"


def doubles(name, numbers):
    table("double", name, [literal(x) for x in numbers])


def words(name, numbers):
    table("std::uint64_t", name, [f"{x & 0xffffffffffffffff:#018x}" for x in numbers])


def word_of(x):
    """The bits of a double."""
    demand(x > 0 and x == rounded(x), f"{x} is no positive double")
    exponent = int(mp.floor(mp.log(x, 2)))
    return (exponent + 1023 << 52) + int(mp.ldexp(x, 52 - exponent)) - (1 << 52)


# ---- Exponential functions

STEPS = 16  # per doubling
TOP = 48  # the bits above hold the exponent and, below it, the upper bits of the fraction


def exponentials():
    step = mp.ln(2) / STEPS
    comment("Exponentials: x = n * step + r with |r| <= step / 2, and e^x is the power 2^(n/16) times e^r.")
    constant("steps_per_unit", rounded(1 / step))
    # n has up to 15 bits, and its product with the upper part is exact.
    high, low = parts(step, 36)
    constant("step_high", high)
    constant("step_low", low)

    comment("Powers of ten: x = n * step + r in the same way, and 10^r is e^t, where t = r * ln 10.")
    step_of_ten = mp.log10(2) / STEPS
    constant("steps_per_decade", rounded(1 / step_of_ten))
    high, low = parts(step_of_ten, 36)
    constant("step_of_ten_high", high)
    constant("step_of_ten_low", low)
    high, low = parts(mp.ln(10), 53)
    constant("ln10_high", high)
    constant("ln10_low", low)

    comment("The bits of 2^(i/16) without i in the upper ones: n, shifted there, adds its exponent. Then how much "
            "larger the power is than the double, as a share of it.")
    powers = [mpf(2) ** (mpf(i) / STEPS) for i in range(STEPS)]
    tails = [rounded((power - rounded(power)) / rounded(power)) for power in powers]
    words("power_bits", [word_of(rounded(power)) - (i << TOP) for i, power in enumerate(powers)])
    doubles("power_tails", tails)

    reach = step / 2 * mpf("1.0001")
    comment("(e^r - 1 - r) / r^2")
    doubles("exponential", fitted(lambda r: (mp.expm1(r) - r) / r ** 2, 5, -reach, reach, abs, -58))
    comment("(cosh r - 1) / r^2 and (sinh r - r) / r^3, in powers of r^2")
    doubles("cosine_h", fitted(lambda y: (mp.cosh(mp.sqrt(y)) - 1) / y, 2, 0, reach ** 2, lambda y: y, -62))
    doubles("sine_h", fitted(lambda y: (mp.sinh(mp.sqrt(y)) / mp.sqrt(y) - 1) / y, 2, 0, reach ** 2, lambda y: y, -62))


# ---- Logarithms and cube roots

CELLS = 16
BIAS = 1021  # of the exponents of logarithms: one below that of the smallest numbers which the loop takes
WITH_EXPONENT = 2048  # its sum with the biased exponent has the exponent in its upper bits
LEAST = mpf("0.09")  # logarithms above need no exact remainder


def cells():
    """The ends of the cells of the fraction, from the one of 1 on: each holds the doubles of 2^48 bit patterns."""
    start = word_of(mpf(1)) - (1 << TOP - 1)
    value = lambda word: mp.ldexp(mpf((word & (1 << 52) - 1) + (1 << 52)), (word >> 52) - 1023 - 52)
    return [(value(start + (i << TOP)), value(start + (i + 1 << TOP))) for i in range(CELLS)]


def reach_of(cell, inverse):
    low, high = cell
    return max(abs(low * inverse - 1), abs(high * inverse - 1))


def inverse_of(cell):
    """A number near the inverse of the cell, so short that z times it, less 1, is a double where this counts."""
    low, high = cell
    if low < 1 < high:
        return mpf(1)
    middle = 2 / (low + high)
    log = -mp.ln(middle)
    if min(abs(log), abs(log - mp.ln(2))) > LEAST + mpf(1) / 32:
        return multiple(middle, -12)
    # A multiple of 2^-q gives doubles up to 2^(1-q).
    for exponent in (-6, -5):
        if reach_of(cell, multiple(middle, exponent)) <= mpf(2) ** (1 + exponent):
            return multiple(middle, exponent)
    demand(False, f"the cell from {low} to {high} has no inverse")


def logarithms():
    borders = cells()
    inverses = [inverse_of(cell) for cell in borders]
    comment("Logarithms: x = 2^k * z, where z lies in one of 16 cells, and z * inverse = 1 + r. The bits of x with "
            "this sum have the exponent, k + 1021, above bit 52 and the cell in the four bits below. The cell of 1 is "
            "the first.")
    lines.append(f"constexpr std::uint64_t to_cells = {(1 << TOP - 1) - (1023 - BIAS << 52) & 0xffffffffffffffff:#x};")
    comment("The bits of the inverse, from which those above bit 48 are subtracted.")
    words("cell_inverses", [word_of(c) + (BIAS << 52) + (i << TOP) for i, c in enumerate(inverses)])

    # What is multiplied with ln 2 is 2048 + 1021 + k + cell/16, which has 16 bits. Both parts of ln 2 have 37, so that
    # the products are exact, and so are the sums with the upper parts of the cells.
    ln2 = multiple(mp.ln(2), -37)
    ln2_low = bits(mp.ln(2) - ln2, 37)
    logs = [-mp.ln(c) for c in inverses]
    upper = [multiple(x, -41) for x in logs]
    for cell, c, log in list(zip(borders, inverses, logs))[1:]:
        least = min(abs(log), abs(log - mp.ln(2)))  # of the sums with multiples of ln 2
        demand(least >= reach_of(cell, c), "a remainder is larger than what it is added to")
    factors = [WITH_EXPONENT + BIAS + mpf(i) / CELLS for i in range(CELLS)]
    comment("-ln(inverse) less the multiples of ln 2 that come with the cell and the bias, in two parts as ln 2.")
    doubles("cell_logs", [x - factor * ln2 for x, factor in zip(upper, factors)])
    doubles("cell_log_tails", [rounded(x - y - factor * ln2_low) for x, y, factor in zip(logs, upper, factors)])
    constant("ln2_high", ln2)
    constant("ln2_low", ln2_low)
    comment("(ln(1 + r) - r) / r^2")
    largest = max(high * c - 1 for (low, high), c in zip(borders, inverses))
    least = min(low * c - 1 for (low, high), c in zip(borders, inverses))
    log_tail = lambda r: (mp.log1p(r) - r) / r ** 2
    doubles("logarithm", fitted(log_tail, 8, least, largest, lambda r: min(abs(r), mpf(1) / 32), -56))

    comment("Cube roots: (1 + r)^(-1/3) in the same cells, and the cube roots of the inverses. 2^(-e/3) is a "
            "parabola in e for e = -1, 0, 1.")
    doubles("cube_root_inverses", [rounded(mp.cbrt(c)) for c in inverses])
    doubles("inverse_cube_root", fitted(lambda r: mp.cbrt(1 / (1 + r)), 4, least, largest, lambda r: 1, -30))
    up, down = mp.cbrt(2), 1 / mp.cbrt(2)
    doubles("third_power", [mpf(1), rounded((down - up) / 2), rounded((down + up) / 2 - 1)])


# ---- Sine, cosine and tangent

def circular():
    comment("Circles: x = n * pi/2 + r with |r| <= pi/4.")
    constant("quarters_per_unit", rounded(2 / mp.pi))
    # n has up to 16 bits for |x| up to 1e5, and its product with the second part is exact.
    first, second, third = parts(mp.pi / 2, 53, 37)
    constant("quarter_first", first)
    constant("quarter_second", second)
    constant("quarter_third", third)
    reach = mp.pi / 4 * mpf("1.0001")
    comment("(sin r - r) / r^3, in powers of r^2")
    sine = lambda y: (mp.sin(mp.sqrt(y)) / mp.sqrt(y) - 1) / y
    doubles("sine", fitted(sine, 5, 0, reach ** 2, lambda y: y, -57))

    dividend, divisor = tangent(reach ** 2)
    comment("tan r is r * p / q. The polynomials p and q begin with 1, and are in powers of r^2: here are the other "
            "coefficients, of q in two parts.")
    doubles("tangent_dividend", dividend)
    constant("tangent_divisor_first", divisor[0])
    doubles("tangent_divisor", divisor[1:])
    constant("tangent_slope", mpf("0.75"))


def tangent(high, dividend_count=3, divisor_count=4):
    """The coefficients of both polynomials without the ones. The divisor's first one is rounded before the rest."""
    ratio = lambda y: mp.tan(mp.sqrt(y)) / mp.sqrt(y)
    powers = range(1, dividend_count + 1)

    def solution(known):
        rest = range(len(known) + 1, divisor_count + 1)
        points = points_above_zero(high, len(powers) + len(rest))
        matrix = mp.matrix([[y ** i for i in powers] + [-ratio(y) * y ** i for i in rest] for y in points])
        of_known = lambda y: 1 + sum(c * y ** (i + 1) for i, c in enumerate(known))
        found = list(mp.lu_solve(matrix, mp.matrix([ratio(y) * of_known(y) - 1 for y in points])))
        return found[:dividend_count], known + found[dividend_count:]

    first = rounded(solution([])[1][0])
    dividend, divisor = [[rounded(c) for c in coefficients] for coefficients in solution([first])]
    value = lambda c, y: 1 + y * mp.polyval(c[::-1], y)
    points = [high * (mpf(i) + mpf("0.37")) / 400 for i in range(400)]
    error = max(abs(value(dividend, y) / value(divisor, y) / ratio(y) - 1) for y in points)
    demand(error < mpf(2) ** -57, f"the tangent has the error {mp.nstr(error, 5)}")
    return dividend, divisor


# ---- The file

HEAD = """\
// kernels/vector_math_tables.hpp: constants of the mathematical functions, written by make_tables.py

#pragma once

#include <cstdint>

namespace arrayfold::constants {"""


def text():
    lines[:] = [HEAD]
    exponentials()
    logarithms()
    circular()
    lines.extend(["", "}  // namespace arrayfold::constants", ""])
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description="Makes the constants of the mathematical functions.")
    parser.add_argument("--check", action="store_true", help="compare the file with what would be written")
    chosen = parser.parse_args()
    made = text()
    if not chosen.check:
        with open(PATH, "w") as file:
            file.write(made)
        return 0
    with open(PATH) as file:
        same = file.read() == made
    if not same:
        print(f"{PATH} is not what make_tables.py writes", file=sys.stderr)
    return 0 if same else 1


if __name__ == "__main__":
    sys.exit(main())
