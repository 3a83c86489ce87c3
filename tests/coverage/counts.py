# tests/coverage/counts.py: how often each line and branch has run, from what gcov says of every object file
#
# A line that is compiled several times, as in a template or in a loop for several processors, counts as one: it is
# reached where one of them is. Not counted are lines of nothing but braces, and lines of which the compiler has made
# nothing but what cleans up behind an exception; lines of a catch clause are counted. Of the branches those are not
# counted that an exception takes, nor the ways on from a call that may throw, which are no choice. The branches of a
# line are those of one compilation; compilations with another number of branches have branches of their own.

import collections
import json
import pathlib
import re
import subprocess

AT_ONCE = 16
BRACES = {"{", "}", "};", "{}", ""}
# Of the blocks that have not run, gcov marks those that only an exception leads to by `$$$$$`, the others by `%%%%%`. A
# block stands on its last line.
BLOCK = re.compile(r" *([$%])\1{4}\*?: *(\d+)-block")
SOURCE = re.compile(r" *-: *0:Source:(.+)")


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

    def drop(self, numbers):
        for number in numbers:
            del self.lines[number]
        self.ways = {key: ways for key, ways in self.ways.items() if key[0] not in numbers}


def lines_of_catches(texts):
    """The numbers of the lines of catch clauses, the first of each among them."""
    numbers = set()
    depth = 0  # of braces, within a clause
    for number, text in enumerate(texts, 1):
        if depth == 0 and "catch (" in text:
            numbers.add(number)
            depth = text.partition("catch (")[2].count("{") - text.partition("catch (")[2].count("}")
        elif depth > 0:
            numbers.add(number)
            depth += text.count("{") - text.count("}")
    return numbers


def said(build, *options):
    """The lines that gcov prints of the object files of a build, those that never ran among them."""
    notes = sorted(build.rglob("*.gcno"))
    for first in range(0, len(notes), AT_ONCE):
        run = subprocess.run(["gcov", "--stdout", *options, *map(str, notes[first : first + AT_ONCE])],
                             cwd=build, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        if run.returncode:
            raise SystemExit(run.stderr.decode())
        yield from run.stdout.decode().splitlines()


class Project:
    """The files below some folders of a project."""

    def __init__(self, folder, parts):
        self.folder, self.parts = folder, parts
        self.names = {}

    def name_of(self, path):
        """The path of a file within the project; None for any other file."""
        if path not in self.names:
            whole = pathlib.Path(path).resolve()
            inside = self.folder in whole.parents and whole.is_file()
            name = whole.relative_to(self.folder).as_posix() if inside else None
            self.names[path] = name if name and name.partition("/")[0] in self.parts else None
        return self.names[path]


def lines_behind_exceptions(project, build):
    """The lines with blocks that have not run and that only an exception leads to, and no others, as (path, number)."""
    found = {"$": set(), "%": set()}
    name = None
    for line in said(build, "--all-blocks"):
        block = BLOCK.match(line)
        if block and name:
            found[block[1]].add((name, int(block[2])))
        elif source := SOURCE.match(line):
            name = project.name_of(source[1])
    return found["$"] - found["%"]


def counted(folder, build, parts):
    """The files below some folders of a project, by their paths."""
    project = Project(folder, parts)
    files = {}
    for line in said(build, "--json-format", "--branch-probabilities"):
        for entry in json.loads(line)["files"] if line else []:
            name = project.name_of(entry["file"])
            if name is None:
                continue
            if name not in files:
                files[name] = File((folder / name).read_text().splitlines())
            for row in entry["lines"]:
                files[name].add(row["line_number"], row["count"], row["branches"])
    behind = lines_behind_exceptions(project, build)
    for name, file in files.items():
        caught = lines_of_catches(file.texts)
        file.drop([number for number, count in file.lines.items()
                   if count == 0 and number not in caught and (name, number) in behind])
    return files
