# tests/coverage/report.py: which lines and branches of the module and the reference host the tests reach
#
# Usage: report.py PROJECT_DIRECTORY BUILD_DIRECTORY [--branches]
#
# Prints a table by folder, from what programs of the preset `coverage` have written. Fails when a part falls below its
# bounds, when a line is not reached and not in the list, and when a line of the list is reached or is no more. The list
# is unreached.txt: the lines that no test reaches, each with its reason. Lines are known by their text, so that they
# may move. --branches also prints the lines whose branches are not all taken.

import collections
import pathlib
import sys

import counts

# Percent of lines and of branches. Lines of the list do not count against the module, but do against the host.
BOUNDS = {"plugin": (100.0, 95.0), "refhost": (98.0, 0.0)}

LIST = pathlib.Path(__file__).resolve().parent / "unreached.txt"


class Count:
    """How many of some lines or branches there are, and how many of them are reached."""

    def __init__(self):
        self.all = self.reached = 0

    def add(self, is_reached):
        self.all += 1
        self.reached += is_reached

    def percent(self):
        return 100.0 * self.reached / self.all if self.all else 100.0

    def __str__(self):
        # Cut, not rounded: 100.0 stands for all.
        return f"{self.reached:6} of {self.all:6} {int(self.percent() * 10) / 10:6.1f}%"


def read_list(path):
    """The lines of the list, as (file, text), and how often each is there. A reason stands above the lines it is for."""
    listed = collections.Counter()
    reason = ""
    was_line = False
    errors = []
    for number, line in enumerate(path.read_text().splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        if not line.startswith(" "):
            reason = line if was_line else f"{reason} {line}".strip()
            was_line = False
            continue
        file, separator, text = line.strip().partition(": ")
        if not separator or not reason:
            errors.append(f"{path.name}:{number}: a line is `  FILE: TEXT`, below its reason: {line.strip()}")
        was_line = True
        listed[file, text.strip()] += 1
    return listed, errors


def folder_of(file):
    """The folder of a file for the table: two steps down, in the language of the host three."""
    parts = file.split("/")[:-1]
    return "/".join(parts[: 3 if parts[:2] == ["refhost", "script"] else 2])


def compare(unreached, listed, sources):
    """What the list and the unreached lines do not have in common, as sentences."""
    errors = []
    for (file, text), numbers in sorted(unreached.items(), key=lambda item: (item[0][0], item[1])):
        missing = len(numbers) - listed[file, text]
        if missing > 0:
            places = ", ".join(str(number) for number in numbers)
            errors.append(f"{file}:{places}: no test reaches it, and the list has it {listed[file, text]} times: {text}")
    for (file, text), count in sorted(listed.items()):
        if count <= len(unreached.get((file, text), ())):
            continue
        lines = (sources / file).read_text().splitlines() if (sources / file).is_file() else []
        state = "a test reaches it" if any(line.strip() == text for line in lines) else "there is no such line"
        errors.append(f"the list has {file}: {text}\n  but {state}")
    return errors


def report(files, listed, bounds, sources):
    """Prints the table; returns what is wrong, as sentences."""
    lines, branches, counted_lines = (collections.defaultdict(Count) for _ in range(3))
    unreached = collections.defaultdict(list)
    for name, file in files.items():
        groups = folder_of(name), name.partition("/")[0]
        for number, count in sorted(file.lines.items()):
            text = file.texts[number - 1]
            if count == 0:
                unreached[name, text].append(number)
            for group in groups:
                lines[group].add(count > 0)
                if count > 0 or (name, text) not in listed:
                    counted_lines[group].add(count > 0)
        for ways in file.ways.values():
            for count in ways:
                for group in groups:
                    branches[group].add(count > 0)

    width = max(map(len, lines), default=0)
    print(f"{'':{width}}  {'lines':>24}  {'branches':>24}")
    for group in sorted(lines):
        print(f"{group:{width}}  {lines[group]}  {branches[group]}")
    errors = []
    for part, (fewest_lines, fewest_branches) in bounds.items():
        if not lines[part].all:
            errors.append(f"{part}: there are no figures")
        percent = (counted_lines if fewest_lines == 100 else lines)[part].percent()
        if percent < fewest_lines:
            errors.append(f"{part}: {percent:.2f}% of the lines are reached, and {fewest_lines}% must be")
        if branches[part].percent() < fewest_branches:
            errors.append(f"{part}: {branches[part].percent():.2f}% of the branches are taken, "
                          f"and {fewest_branches}% must be")
    return errors + compare(unreached, listed, sources)


def print_branches(files):
    for name, file in sorted(files.items()):
        for (number, _), ways in sorted(file.ways.items()):
            if not all(ways):
                shown = " ".join("taken" if count else "-" for count in ways)
                print(f"{name}:{number}: {shown}: {file.texts[number - 1]}")


def main():
    project, build = (pathlib.Path(word).resolve() for word in sys.argv[1:3])
    files = counts.counted(project, build, BOUNDS)
    if "--branches" in sys.argv[3:]:
        print_branches(files)
    listed, errors = read_list(LIST)
    errors += report(files, listed, BOUNDS, project)
    for error in errors:
        print(error)
    sys.exit(1 if errors else 0)


if __name__ == "__main__":
    main()
