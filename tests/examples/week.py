# tests/examples/week.py: the scripts of examples/week give what their NumPy twins give, in at most twice the statements
#
# Usage: week.py PROJECT_DIRECTORY HVM
#
# A script and its twin each run in an empty folder that holds nothing but the data. What they print and the files that
# they leave there are compared. The table in the README has a row for each script, with the statements of both.

import pathlib
import re
import subprocess
import sys
import tempfile
from itertools import zip_longest

import statements

ROW = re.compile(r"^\| [^|]+ \| \[(\w+)\.hvm\]\(\1\.hvm\) \| (\d+) \| \[\1\.py\]\(\1\.py\) \| (\d+) \|$", re.MULTILINE)
INTEGER = re.compile(r"-?\d+")
SCRIPTS = 26
MOST_TIMES_NUMPY = 2
TOLERANCE = 1e-5  # hvm prints six significant digits
SECONDS = 60      # for one script


def words_of(text):
    """The words and numbers of a text. Kinds and shapes in front of arrays, their brackets and commas are left out."""
    bare = re.sub(r"\b(?:bool|int|int64|double)\([\d, ]*\)", " ", text)
    return re.sub(r"[\[\](),]", " ", bare).split()


def number_of(word):
    try:
        return float(word)
    except (TypeError, ValueError):
        return None


def agree(word, other):
    """Whether two words are the same, or two numbers nearly so. Integers differ by nothing."""
    x, y = number_of(word), number_of(other)
    if word == other:
        return True
    if x is None or y is None or INTEGER.fullmatch(word) and INTEGER.fullmatch(other):
        return False
    return abs(x - y) <= TOLERANCE * max(1, abs(y))


def difference(text, expected):
    """The first place where two texts differ, or nothing."""
    for word, other in zip_longest(words_of(text), words_of(expected)):
        if word is None or other is None or not agree(word, other):
            return f"{word} instead of {other}"
    return None


def outcome_of(command, data):
    """What a command prints and the files that it writes, by name."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "data").symlink_to(data)
        run = subprocess.run(command, cwd=folder, capture_output=True, text=True, timeout=SECONDS, check=False)
        if run.returncode != 0 or run.stderr:
            raise RuntimeError(f"status {run.returncode}\n{run.stderr}")
        files = {path.name: path.read_text() for path in sorted(folder.iterdir()) if path.name != "data"}
        return {"output": run.stdout, **files}


def faults_of_pair(script, twin, hvm):
    """A script and its twin print something, and the same; they leave the same files."""
    try:
        got = outcome_of([hvm, script], script.parent / "data")
        expected = outcome_of([sys.executable, "-B", twin], script.parent / "data")
    except (RuntimeError, subprocess.TimeoutExpired) as problem:
        yield f"{script}: {problem}"
        return
    if not words_of(expected["output"]):
        yield f"{twin}: no output"
    if got.keys() != expected.keys():
        yield f"{script}: writes {list(got)}, the twin {list(expected)}"
    for part in got.keys() & expected.keys():
        found = difference(got[part], expected[part])
        if found:
            yield f"{script}: {part}: {found}\n{got[part]}--- NumPy:\n{expected[part]}"


def faults_of_counts(folder, names):
    """No script has more than twice the statements of its twin, and the table has a row with both for each."""
    rows = {name: (int(ours), int(theirs)) for name, ours, theirs in ROW.findall((folder / "README.md").read_text())}
    for name in sorted(rows.keys() - names):
        yield f"{folder}/README.md: {name} is no script"
    for name in sorted(names):
        ours = statements.of_hvm((folder / f"{name}.hvm").read_text())
        theirs = statements.of_python((folder / f"{name}.py").read_text())
        if ours > MOST_TIMES_NUMPY * theirs:
            yield f"{folder}/{name}.hvm: {ours} statements, NumPy takes {theirs}"
        if rows.get(name) != (ours, theirs):
            yield f"{folder}/README.md: {name} has {rows.get(name)}, counted are {(ours, theirs)}"


def faults_of_names(folder):
    """Every script has its twin, every twin its script, and all are there."""
    scripts = {path.stem for path in folder.glob("*.hvm")}
    twins = {path.stem for path in folder.glob("*.py")}
    for name in sorted(scripts ^ twins):
        yield f"{folder}/{name}: a script without its twin, or a twin without its script"
    if len(scripts) != SCRIPTS:
        yield f"{folder}: {len(scripts)} scripts, not {SCRIPTS}"


def faults_of(folder, hvm):
    names = {path.stem for path in folder.glob("*.hvm")} & {path.stem for path in folder.glob("*.py")}
    yield from faults_of_names(folder)
    yield from faults_of_counts(folder, names)
    for name in sorted(names):
        yield from faults_of_pair(folder / f"{name}.hvm", folder / f"{name}.py", hvm)


def main(project, hvm):
    faults = list(faults_of(project.resolve() / "examples" / "week", pathlib.Path(hvm).resolve()))
    print("\n".join(faults) or "as NumPy")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]), sys.argv[2]))
