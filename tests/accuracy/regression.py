#!/usr/bin/python3
# accuracy/regression.py: the digits of linear regression, ours and NumPy's, into docs/accuracy.md

import os

import numpy as np

from digits_table import write_into_page

MOST_DIGITS = 15  # of the certified values
BEGIN, END = "<!-- regression -->\n", "<!-- end of regression -->"


def read_set(path):
    """The certified coefficients, the right-hand sides and the design."""
    with open(path) as lines:
        line = next(line for line in lines if line.startswith("# certified coefficients"))
    numbers = np.loadtxt(path)
    return np.array(line.rpartition(":")[2].split(), dtype=float), numbers[:, 0], numbers[:, 1:]


def digits(values, exact):
    """Correct decimal digits of the worst coefficient, as regression.cpp counts them."""
    error = np.max(np.abs(values - exact) / np.abs(exact))
    return MOST_DIGITS if error == 0 else min(max(-np.log10(error), 0), MOST_DIGITS)


def table(lines, folder):
    yield ("| Set | Rows | Columns | Condition | `xlstsq`: digits | NumPy's `lstsq` | `xqr`, `xsolve`: digits "
           "| NumPy's `qr`, `solve` | Residual deviation: digits |")
    yield "| --- | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: |"
    for line in lines:
        name, rows, columns, fitted, factors, deviation = line.split()
        exact, rhs, design = read_set(os.path.join(folder, name + ".dat"))
        # -1: singular values count down to the machine's precision, as in xlstsq.
        peer, _, _, values = np.linalg.lstsq(design, rhs, rcond=-1)
        q, r = np.linalg.qr(design)
        by_factors = np.linalg.solve(r, q.T @ rhs)
        yield (f"| `{name}` | {rows} | {columns} | {values[0] / values[-1]:.0e} | {fitted} | {digits(peer, exact):.1f} "
               f"| {factors} | {digits(by_factors, exact):.1f} | {deviation} |")


if __name__ == "__main__":
    write_into_page(BEGIN, END, table)
