# refhost/script/data/formats.py: random tables through hvm's CSV and JSON and through Python's give the same values
#
# Usage: formats.py HVM MODULE

import csv
import json
import os
import random
import subprocess
import sys
import tempfile

HVM, MODULE = sys.argv[1:]
CHARACTERS = ['a', 'Z', '0', ' ', ',', '"', '\n', '\r\n', '\t', ';', '\\', '/', '\u00e9', '\u2248', '\U0001F600', '\x7f']


def text(random_numbers):
    """A string that spells no number, without blanks at its ends: without quotation marks, hvm leaves them out."""
    return "".join(random_numbers.choices(CHARACTERS, k=random_numbers.randrange(8))).strip(" \t") + "x"


def real(random_numbers):
    return random_numbers.choice([random_numbers.uniform(-1, 1), float(random_numbers.randrange(-9, 9)), 5e-324,
                                  random_numbers.uniform(-1, 1) * 10.0**random_numbers.randrange(-320, 308)])


def integer(random_numbers):
    return random_numbers.choice([random_numbers.randrange(-9, 9), random_numbers.randrange(-2**63, 2**63)])


def columns(random_numbers):
    kinds = [text, real, integer]
    rows = random_numbers.randrange(1, 30)
    return {f"column {i} {text(random_numbers)}": [kind(random_numbers) for _ in range(rows)]
            for i, kind in enumerate(random_numbers.choices(kinds, k=random_numbers.randrange(1, 6)))}


def value(random_numbers, depth=0):
    """A JSON value without an empty object, which hvm does not tell from an empty list, and without truth values."""
    kind = random_numbers.randrange(6 if depth < 5 else 4)
    if kind == 4:
        return [value(random_numbers, depth + 1) for _ in range(random_numbers.randrange(5))]
    if kind == 5:
        return {text(random_numbers): value(random_numbers, depth + 1) for _ in range(random_numbers.randrange(1, 5))}
    return [text, real, integer, lambda _: None][kind](random_numbers)


def identical(a, b):
    """Equal with equal kinds: 1 and 1.0 differ, and so do the zeros and the order of keys."""
    return json.dumps(a) == json.dumps(b)


SCRIPT = """
t = read_csv("python.csv")
write_text("columns.json", to_json(t))
write_csv("hvm.csv", t)
v = parse_json(read_text("python.json"))
write_text("hvm.json", to_json(v, 1))
"""


def check(seed):
    """Writes with Python, lets hvm read and write, and reads with Python."""
    random_numbers = random.Random(seed)
    table = columns(random_numbers)
    with open("python.csv", "w", newline="") as out:
        writer = csv.writer(out, quoting=random_numbers.choice([csv.QUOTE_MINIMAL, csv.QUOTE_ALL]))
        writer.writerow(table)
        writer.writerows(zip(*table.values()))
    written = value(random_numbers)
    with open("python.json", "w") as out:
        json.dump(written, out, ensure_ascii=random_numbers.random() < 0.5, indent=random_numbers.choice([None, 3]))
    subprocess.run([HVM, "--module", MODULE, "--leaks", "script.hvm"], check=True, stderr=subprocess.PIPE)
    with open("columns.json") as text_of_columns:
        read = json.load(text_of_columns)
    assert identical(read, table), (seed, read, table)
    with open("hvm.csv", newline="") as lines:
        rows = list(csv.reader(lines))
    again = {key: [type(cell)(row[i]) for cell, row in zip(read[key], rows[1:])] for i, key in enumerate(rows[0])}
    assert identical(again, read), (seed, again, read)
    with open("hvm.json") as text_of_value:
        assert identical(json.load(text_of_value), written), seed


def main():
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        with open("script.hvm", "w") as out:
            out.write(SCRIPT)
        for seed in range(60):
            check(seed)
    print("60 tables and values are the same")


main()
