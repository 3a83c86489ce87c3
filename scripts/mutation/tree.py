# scripts/mutation/tree.py: the project with all mutants in its module, built
#
# source is the project with links to everything but plugin, whose sources have the mutants. tree is what CMake builds
# of it. What does not compile, since the compiler has to know a value or a type does not fit, is left out: the errors
# tell where.

import hashlib
import json
import os
import pathlib
import re
import subprocess

from mutants import Finder, with_mutants

HEADER = pathlib.Path(__file__).resolve().parent / "mutant.hpp"
SOURCES = {".cpp", ".hpp"}
SHARE = 0.15  # of the possible mutants of a file
FEWEST = 8  # of a file
ERROR = re.compile(r"(?P<path>[^\s:]+):(?P<line>\d+):(?P<column>\d+):\s+(?P<what>error|note|required from|warning)")
MODULES = ["arrayfold", "arrayfold_self_contained"]


class Tree:
    """The project with mutants, in a folder of its own."""

    def __init__(self, project, folder):
        self.project, self.folder = project, folder
        self.source, self.build = folder / "source", folder / "tree"
        self.refused_file = folder / "refused.txt"
        folder.mkdir(parents=True, exist_ok=True)
        self.refused = set(self.refused_file.read_text().splitlines()) if self.refused_file.exists() else set()
        self.mutants = []

    def choose(self):
        """Chooses the mutants: of each file those with the lowest ranks."""
        self.possible = {}
        for path in sorted((self.project / "plugin").rglob("*")):
            if path.suffix in SOURCES:
                name = str(path.relative_to(self.project / "plugin"))
                self.possible[name] = Finder(name, path.read_text()).find()
        self.chosen = []
        for found in self.possible.values():
            wanted = max(FEWEST, round(SHARE * len(found)))
            self.chosen += sorted(found, key=lambda m: m.rank())[:wanted]
        for number, mutant in enumerate(self.chosen):
            mutant.number = number
        self.mutants = [m for m in self.chosen if m.name not in self.refused]

    def write(self):
        """Writes the sources; what is as before keeps its time."""
        self.source.mkdir(exist_ok=True)
        for entry in sorted(self.project.iterdir()):
            if entry.name not in ("plugin", "build") and not entry.name.startswith("."):
                link = self.source / entry.name
                if not link.is_symlink():
                    link.symlink_to(entry)
        self.places = {}
        for path in sorted((self.project / "plugin").rglob("*")):
            if not path.is_file() or "__pycache__" in path.parts:
                continue
            name = str(path.relative_to(self.project / "plugin"))
            text = path.read_text()
            mutants = [m for m in self.mutants if m.name.startswith(name + " | ")]
            if mutants:
                text, places, overlapping = with_mutants(text, mutants)
                self.refuse(overlapping)
                # The header takes the place of the first line, which is a comment.
                first_line = f'#include "{HEADER}"\n'
                shift = len(first_line) - text.index("\n") - 1
                text = first_line + text[text.index("\n") + 1:]
                self.places[name] = {n: (a + shift, b + shift) for n, (a, b) in places.items()}
            copy = self.source / "plugin" / name
            copy.parent.mkdir(parents=True, exist_ok=True)
            if not copy.exists() or copy.read_text() != text:
                copy.write_text(text)

    def refuse(self, mutants):
        names = {m.name for m in mutants}
        self.refused |= names
        self.mutants = [m for m in self.mutants if m.name not in names]
        self.refused_file.write_text("".join(name + "\n" for name in sorted(self.refused)))

    def hash(self):
        """Tells apart trees with other mutants or another module."""
        made = hashlib.sha256(json.dumps([m.name for m in self.mutants]).encode())
        for path in sorted((self.source / "plugin").rglob("*")):
            if path.suffix in SOURCES:
                made.update(path.read_bytes())
        return made.hexdigest()[:16]

    # ---- Building

    def make(self, targets, jobs):
        self.choose()
        self.write()
        subprocess.run(["cmake", "-S", self.source, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Mutation",
                        "-DCMAKE_CXX_COMPILER=g++", "-DCMAKE_C_COMPILER=gcc", "-DCMAKE_CXX_FLAGS_MUTATION=-O1 -w",
                        "-DCMAKE_C_FLAGS_MUTATION=-O1 -w", "-DARRAYFOLD_SELF_CONTAINED=ON",
                        "-DARRAYFOLD_BUILD_BENCH=OFF",
                        "-DCMAKE_UNITY_BUILD=ON", "-DCMAKE_UNITY_BUILD_BATCH_SIZE=12"], check=True, stdout=subprocess.DEVNULL)
        while True:
            built = self.ninja(MODULES, jobs)
            if built.returncode == 0:
                break
            wrong = self.wrong_mutants(built.stdout)
            if not wrong:
                (self.folder / "errors.txt").write_text(built.stdout)
                raise SystemExit(f"error: the module does not compile; see {self.folder}/errors.txt")
            print(f"{len(wrong)} mutants do not compile", flush=True)
            self.refuse(wrong)
            self.write()
        built = self.ninja(targets, jobs)
        if built.returncode != 0:
            (self.folder / "errors.txt").write_text(built.stdout)
            raise SystemExit(f"error: the tests do not compile; see {self.folder}/errors.txt")

    def ninja(self, targets, jobs):
        return subprocess.run(["ninja", "-C", self.build, "-k", "0", f"-j{jobs}", *targets], text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              env={**os.environ, "LC_ALL": "C"})

    def wrong_mutants(self, output):
        """The mutants at the errors: the innermost one, or else those of the places that an error comes from."""
        by_number = {m.number: m for m in self.chosen}
        wrong, elsewhere = set(), []
        for line in output.splitlines():
            found = ERROR.search(line)
            if not found:
                if "In instantiation of" in line or "In file included from" in line:
                    elsewhere = []
                continue
            at = self.at(found["path"], int(found["line"]), int(found["column"]))
            if found["what"] == "error":
                wrong |= set(at or elsewhere)
                elsewhere = []
            elif found["what"] == "required from":
                elsewhere += at
        if not wrong:  # a value that is used elsewhere
            places = [(found["path"], int(found["line"]), int(found["column"])) for found in ERROR.finditer(output)]
            wrong = {n for place in places for n in self.at(*place)}
            # Or a function that the compiler runs.
            wrong = wrong or {n for path, _, _ in places for n in self.places.get(self.name_of(path), ())}
        return [by_number[number] for number in wrong]

    def name_of(self, path):
        """The name of a source of the module as mutants have it."""
        return os.path.relpath(os.path.join(self.build, path), self.source / "plugin")

    def at(self, path, line, column):
        """The numbers of the innermost mutant at a place, or else of all of its line."""
        name = self.name_of(path)
        if name not in self.places:
            return []
        text = (self.source / "plugin" / name).read_text()
        lines = text.splitlines(keepends=True)
        start = sum(len(before) for before in lines[:line - 1])
        at = start + len(lines[line - 1].encode()[:column - 1].decode(errors="ignore"))
        places = self.places[name]
        around = [n for n, (first, end) in places.items() if first <= at < end]
        if around:
            return [min(around, key=lambda n: places[n][1] - places[n][0])]
        return [n for n, (first, end) in places.items() if first < start + len(lines[line - 1]) and end > start]
