# tests/accuracy/digits_table.py: what the reports on certified sets share

import argparse
import subprocess

import numpy as np


def write_into_page(begin, end, table):
    """Runs the program named on the command line over its sets, and puts what `table(lines, folder)` makes of its lines
    between the marks in a page."""
    parser = argparse.ArgumentParser(description="Writes the table of digits into a page.")
    parser.add_argument("program", help="the program that prints the digits")
    parser.add_argument("data", help="the folder of the sets")
    parser.add_argument("page", help="the page whose table is replaced")
    chosen = parser.parse_args()
    run = subprocess.run([chosen.program, chosen.data], stdout=subprocess.PIPE, text=True, check=True)
    with open(chosen.page) as page:
        before, found, rest = page.read().partition(begin)
    _, closed, after = rest.partition(end)
    if not found or not closed:
        parser.error(f"{chosen.page} has no place for a table")
    rows = "\n".join(table(run.stdout.splitlines(), chosen.data))
    with open(chosen.page, "w") as page:
        page.write(f"{before}{begin}{rows}\n\nNumPy {np.__version__}.\n{end}{after}")
