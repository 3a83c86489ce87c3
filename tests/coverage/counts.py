# tests/coverage/counts.py: how often each line and branch has run, from what gcov says of every object file
#
# A line that is compiled several times, as in a template or in a loop for several processors, counts as one: it is
# reached where one of them is. Lines of nothing but braces are not counted. Of the branches those are not counted that
# an exception takes, nor the ways on from a call that may throw, which are no choice. The branches of a line are those
# of one compilation; compilations with another number of branches have branches of their own.

import collections
import json
import pathlib
import subprocess

AT_ONCE = 16
BRACES = {"{", "}", "};", "{}", ""}


def choices(branches):
    """The counts of the branches that are a choice. gcov writes a call that may throw as two branches side by side: on,
    and to the landing pad."""
    dropped = set()
    for i, branch in enumerate(branches):
        if not branch["throw"]:
            continue
        dropped.add(i)
        beside = next((j for j in (i - 1, i + 1)
                       if 0 <= j < len(branches) and j not in dropped and branches[j]["fallthrough"]), None)
        if beside is not None:
            dropped.add(beside)
    return tuple(branch["count"] for i, branch in enumerate(branches) if i not in dropped)


class File:
    """What has run of one source: how often, by the number of the line, and the branches of each line."""

    def __init__(self, lines):
        self.texts = [line.strip() for line in lines]
        self.lines = collections.Counter()
        self.ways = {}  # counts by (line, number of branches)

    def add(self, number, count, branches):
        if self.texts[number - 1] in BRACES:
            return
        self.lines[number] += count
        ways = choices(branches)
        if ways:
            before = self.ways.get((number, len(ways)), (0,) * len(ways))
            self.ways[number, len(ways)] = tuple(a + b for a, b in zip(before, ways))


def documents(build):
    """What gcov says of the object files of a build, those that never ran among them."""
    notes = sorted(build.rglob("*.gcno"))
    for first in range(0, len(notes), AT_ONCE):
        run = subprocess.run(["gcov", "--json-format", "--stdout", "--branch-probabilities",
                              *map(str, notes[first : first + AT_ONCE])],
                             cwd=build, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        if run.returncode:
            raise SystemExit(run.stderr.decode())
        yield from (json.loads(line) for line in run.stdout.splitlines() if line.strip())


def counted(project, build, parts):
    """The files below some folders of the project, by their paths."""
    files = {}
    for document in documents(build):
        for entry in document["files"]:
            path = pathlib.Path(document["current_working_directory"], entry["file"]).resolve()
            if project not in path.parents or not path.is_file():
                continue
            name = path.relative_to(project).as_posix()
            if name.partition("/")[0] not in parts:
                continue
            if name not in files:
                files[name] = File(path.read_text().splitlines())
            for line in entry["lines"]:
                files[name].add(line["line_number"], line["count"], line["branches"])
    return files
