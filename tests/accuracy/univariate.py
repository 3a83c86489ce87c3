#!/usr/bin/python3
# accuracy/univariate.py: the digits of mean and standard deviation, ours and NumPy's, into docs/accuracy.md

import os

import numpy as np

from digits_table import write_into_page

MOST_DIGITS = 15  # of the certified values
BEGIN, END = "<!-- univariate -->\n", "<!-- end of univariate -->"


def read_set(path):
    """The certified mean and standard deviation, and the numbers."""
    with open(path) as lines:
        certified = [float(line.rpartition(":")[2]) for line in lines if line.startswith("# certified")]
    return certified[0], certified[1], np.loadtxt(path)


def digits(value, exact):
    """Correct decimal digits, as univariate.cpp counts them."""
    error = abs(value - exact) / abs(exact)
    return MOST_DIGITS if error == 0 else min(max(-np.log10(error), 0), MOST_DIGITS)


def table(lines, folder):
    yield "| Set | Elements | Mean: digits | at least | NumPy's | Deviation: digits | at least | NumPy's |"
    yield "| --- | ---: | ---: | ---: | ---: | ---: | ---: | ---: |"
    for line in lines:
        name, count, mean, least_mean, deviation, least_deviation = line.split()
        certified_mean, certified_deviation, numbers = read_set(os.path.join(folder, name + ".dat"))
        peer_mean = digits(np.mean(numbers), certified_mean)
        peer_deviation = digits(np.std(numbers, ddof=1), certified_deviation)
        yield (f"| `{name}` | {count} | {mean} | {least_mean} | {peer_mean:.1f} "
               f"| {deviation} | {least_deviation} | {peer_deviation:.1f} |")


if __name__ == "__main__":
    write_into_page(BEGIN, END, table)
