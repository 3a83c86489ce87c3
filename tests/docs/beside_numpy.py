# tests/docs/beside_numpy.py: in docs/numpy.md, what stands beside an idiom of NumPy gives the same
#
# Usage: beside_numpy.py PROJECT_DIRECTORY HVM
#
# The table under Operands defines variables. Every row of the tables with the columns NumPy, Here and What differs runs
# in both languages, each time with new operands, and the values of the last statements are compared: elements, shapes
# and kinds. Where the kinds differ, the third column must name ours. A row with `there is none` in the second column
# has nothing to run. A warning of hvm is a fault.

import ast
import contextlib
import json
import pathlib
import re
import subprocess
import sys
import tempfile
from typing import NamedTuple

import numpy as np

FEWEST_ROWS = 250
NOTHING = "there is none"
OPERAND_COLUMNS = ["Name", "NumPy", "Here"]
COLUMNS = ["NumPy", "Here", "What differs"]
# The kinds of NumPy by their letters, and ours by the names that type gives.
LETTERS = {"b": "truth", "i": "integer", "f": "fraction", "U": "text"}
OURS = {
    "$xboolarray": ("truth", "bool"), "$xintarray": ("integer", "int"), "$xint64array": ("integer", "int64"),
    "$xdoublearray": ("fraction", "double"), "int": ("integer", "int"), "int64": ("integer", "int64"),
    "real": ("fraction", "real"), "string": ("text", "string"),
}
SHOW = """use "arrays"
fn show(number, x)
  shape = []
  kind = type(x)
  if kind[:1] == "$" then
    print(to_json([number, kind, x.shape(), str(x)]))
  else
    print(to_json([number, kind, shape, x]))
  end
end
"""


class Row(NamedTuple):
    line: int
    theirs: str
    ours: str  # empty where there is none
    note: str


def cells_of(line):
    """The cells of a table's row. A bar that is no border has a backslash before it."""
    return [cell.strip().replace("\\|", "|") for cell in re.split(r"(?<!\\)\|", line)[1:-1]]


def code_of(cell, line):
    """The one piece of code in a cell."""
    code = re.fullmatch(r"`([^`]+)`", cell)
    if not code:
        raise ValueError(f"line {line}: '{cell}' is not one piece of code")
    return code.group(1)


def read(text):
    """The operands of a page as names with both codes, and its rows."""
    operands, rows = {}, []
    columns = None
    for number, line in enumerate(text.splitlines(), start=1):
        if not line.startswith("|"):
            columns = None
        elif columns is None:
            columns = cells_of(line)
            if columns not in (OPERAND_COLUMNS, COLUMNS):
                raise ValueError(f"line {number}: a table with the columns {columns}")
        elif not line.startswith("| ---"):
            cells = cells_of(line)
            if len(cells) != len(columns):
                raise ValueError(f"line {number}: {len(cells)} cells")
            if columns == OPERAND_COLUMNS:
                operands[cells[0]] = (code_of(cells[1], number), code_of(cells[2], number))
                continue
            ours = "" if cells[1] == NOTHING else code_of(cells[1], number)
            if not ours and not cells[2]:
                raise ValueError(f"line {number}: there is none, and nothing says what to do instead")
            rows.append(Row(number, code_of(cells[0], number), ours, cells[2]))
    return operands, rows


def value_in_numpy(code, operands):
    """The value of the last statement."""
    names = {"np": np}
    for name, (theirs, _) in operands.items():
        names[name] = eval(theirs, names)
    tree = ast.parse(code)
    last = ast.Expression(tree.body.pop().value)
    exec(compile(tree, "row", "exec"), names)
    return eval(compile(last, "row", "eval"), names)


def statements_of(code):
    """The statements at the outermost level of a line in the script language, split at their semicolons."""
    parts, begin, depth, quoted = [], 0, 0, False
    for token in re.finditer(r'\\.|"|;|\b(?:for|while|if|try|end)\b', code):
        if token.group() == '"':
            quoted = not quoted
        elif quoted:
            continue
        elif token.group() == ";" and depth == 0:
            parts.append(code[begin:token.start()].strip())
            begin = token.end()
        elif token.group() == "end":
            depth -= 1
        elif token.group() != ";":
            depth += 1
    return parts + [code[begin:].strip()]


def script_of(operands, rows):
    """A script that prints a line of JSON for each row: its line in the page, the kind, the shape and the value."""
    text = SHOW
    for row in rows:
        *before, last = statements_of(row.ours)
        lines = [f"{name} = {ours}" for name, (_, ours) in operands.items()] + before + [f"return {last}"]
        text += f"fn row_{row.line}()\n" + "".join(f"  {line}\n" for line in lines) + "end\n"
        text += f"try\n  show({row.line}, row_{row.line}())\n"
        text += f"catch e\n  print(to_json([{row.line}, \"error\", [], e]))\nend\n"
    return text


def values_here(operands, rows, hvm):
    """Kind, shape and value of each row, by its line."""
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "rows.hvm"
        path.write_text(script_of(operands, rows))
        run = subprocess.run([hvm, "--warnings", "error", path], cwd=folder, stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, text=True, check=False)
    if run.returncode != 0:
        raise RuntimeError(f"hvm ended with {run.returncode}\n{run.stderr}")
    found = {}
    for line in run.stdout.splitlines():
        number, kind, shape, value = json.loads(line)
        found[number] = (kind, shape, json.loads(value) if kind.startswith("$") else value)
    return found


def finite(x):
    """Elements as doubles, with NaN for what JSON does not have."""
    x = np.array(x, dtype=float)
    return np.where(np.isfinite(x), x, np.nan)


def difference(expected, kind, shape, value, note):
    """What is wrong with a value of ours, or nothing."""
    if kind == "error":
        return value
    if kind not in OURS and kind != "table":
        return f"is {kind}"
    wanted = np.asarray(expected)
    if kind == "table":
        shape = list(np.shape(value))
    if shape != list(wanted.shape):
        return f"has the shape {shape}, not {list(wanted.shape)}"
    if wanted.dtype.kind == "U":
        return "" if np.array_equal(wanted, value) else f"is {value!r}, not {expected!r}"
    if kind == "string":
        return f"is a string, not {expected!r}"
    if not np.allclose(finite(value), finite(wanted), rtol=1e-9, atol=1e-12, equal_nan=True):
        return f"is {value}, not {wanted.tolist()}"
    if kind == "table" or kind == "int" and isinstance(expected, (bool, np.bool_)):
        return ""
    category, word = OURS[kind]
    if category != LETTERS[wanted.dtype.kind] and not re.search(rf"\b{word}\b", note):
        return f"is of kind {word}, not {wanted.dtype}, and the row does not say so"
    return ""


def faults_of(text, hvm):
    """What is wrong with a page, with the line of each row."""
    operands, rows = read(text)
    run = [row for row in rows if row.ours]
    found = values_here(operands, run, hvm)
    for row in run:
        try:
            expected = value_in_numpy(row.theirs, operands)
        except Exception as problem:
            yield f"{row.line}: {row.theirs}: {type(problem).__name__}: {problem}"
            continue
        fault = difference(expected, *found.get(row.line, ("error", [], "printed nothing")), row.note)
        if fault:
            yield f"{row.line}: {row.ours} {fault}"


def main(project, hvm):
    page, hvm = pathlib.Path(project).resolve() / "docs/numpy.md", pathlib.Path(hvm).resolve()
    text = page.read_text()
    rows = read(text)[1]
    with tempfile.TemporaryDirectory() as folder, contextlib.chdir(folder):
        faults = [f"{page}:{fault}" for fault in faults_of(text, hvm)]
    count = sum(1 for row in rows if row.ours)
    if count < FEWEST_ROWS:
        faults.append(f"{page}: {count} rows run, fewer than {FEWEST_ROWS}")
    print("\n".join(faults) or f"{count} of {len(rows)} rows run, and give the same")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
