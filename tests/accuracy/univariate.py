#!/usr/bin/python3
# accuracy/univariate.py: the digits of mean and standard deviation, ours and NumPy's, into docs/accuracy.md

import argparse
import os
import subprocess

import numpy as np

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


def main():
    parser = argparse.ArgumentParser(description="Writes the table of digits into a page.")
    parser.add_argument("program", help="the univariate program")
    parser.add_argument("data", help="the folder of the sets")
    parser.add_argument("page", help="the page whose table is replaced")
    chosen = parser.parse_args()
    run = subprocess.run([chosen.program, chosen.data], stdout=subprocess.PIPE, text=True, check=True)
    with open(chosen.page) as page:
        head, begin, rest = page.read().partition(BEGIN)
    _, end, tail = rest.partition(END)
    if not begin or not end:
        parser.error(f"{chosen.page} has no place for a table")
    rows = "\n".join(table(run.stdout.splitlines(), chosen.data))
    with open(chosen.page, "w") as page:
        page.write(f"{head}{begin}{rows}\n\nNumPy {np.__version__}.\n{end}{tail}")


if __name__ == "__main__":
    main()
