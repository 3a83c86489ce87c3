# tests/census/census.py: which warnings the scripts, examples and pages of this project bring about, and why
#
# Usage: census.py PROJECT_DIRECTORY HVM WORK_DIRECTORY [--write]
#
# Every script below tests/scripts and examples, and every hvm block of the pages, runs with warnings as failures. A
# warning that no comment of its line expects must stand in warnings.txt, with the number of its lines and the reason.
# What is there and does not come is a fault as well. What else fails there, the tests of scripts, examples and pages
# report. --write writes the file anew, with `?` where a reason is missing.

import collections
import pathlib
import re
import subprocess
import sys

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / "docs"))
import extract_blocks

WARNING = re.compile(r"^(?P<path>[^:]+):\d+: unexpected warning: (?P<name>[a-z0-9-]+): ")
BLOCK = re.compile(r"-line-\d+\.hvm$")


def prepared(project, work):
    """The folders whose scripts run, by the folder in which hvm runs them."""
    blocks = work / "blocks"
    count, faults = extract_blocks.extract(project, blocks)
    if faults or count == 0:
        raise SystemExit("\n".join(faults) or "there are no blocks")
    for name, target in (("data", project / "examples/week/data"), ("examples", project / "examples")):
        link = work / name
        if not link.is_symlink():
            link.symlink_to(target)
    return [project / "tests/scripts", project / "examples", blocks]


def page_or_script(path, project, work):
    """The name of a script as the list has it: a block has that of its page."""
    path = pathlib.Path(path)
    if (work / "blocks") in path.parents:
        return BLOCK.sub(".md", str(path.relative_to(work / "blocks")))
    return str(path.relative_to(project))


def counted(project, hvm, work):
    """The unexpected warnings by script and name, folders that did not run, and the number of scripts."""
    found = collections.Counter()
    failures = []
    scripts = 0
    for folder in prepared(project, work):
        run = subprocess.run([hvm, "--test", str(folder), "--warnings", "error"], cwd=work, stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT, text=True, check=False)
        *lines, last = run.stdout.splitlines() or [""]
        total = re.fullmatch(r"(\d+) passed, (\d+) failed in [\d.]+ s", last)
        if not total:
            failures.append(f"{folder}: {last}")
            continue
        scripts += int(total.group(1)) + int(total.group(2))
        for line in lines:
            warning = WARNING.match(line)
            if warning:
                found[page_or_script(warning["path"], project, work), warning["name"]] += 1
    return found, failures, scripts


def listed(path):
    """The list: a line is a script, a warning, the number of lines, and the reason."""
    expected = {}
    for line in path.read_text().splitlines():
        if line and not line.startswith("#"):
            script, name, count, reason = line.split(None, 3)
            expected[script, name] = (int(count), reason)
    return expected


def write(path, found, expected):
    head = [line for line in path.read_text().splitlines() if line.startswith("#")] if path.exists() else []
    rows = [f"{script} {name} {count} {expected.get((script, name), (0, '?'))[1]}"
            for (script, name), count in sorted(found.items())]
    path.write_text("\n".join(head + rows) + "\n")


def main(project, hvm, work, *options):
    project, work = pathlib.Path(project).resolve(), pathlib.Path(work).resolve()
    work.mkdir(parents=True, exist_ok=True)
    path = project / "tests/census/warnings.txt"
    expected = listed(path) if path.exists() else {}
    found, faults, scripts = counted(project, str(pathlib.Path(hvm).resolve()), work)
    if "--write" in options:
        write(path, found, expected)
        return 0
    for key in sorted(found.keys() | expected.keys()):
        count, reason = expected.get(key, (0, "?"))
        if found[key] != count:
            faults.append(f"{key[0]}: {key[1]} comes on {found[key]} lines, and the list says {count}")
        elif reason.startswith("?"):
            faults.append(f"{key[0]}: {key[1]} has no reason")
    by_reason = collections.Counter()
    for (count, reason) in expected.values():
        by_reason[reason] += count
    print(f"{scripts} scripts and blocks, {sum(found.values())} warnings without a comment that expects them")
    for reason, count in by_reason.most_common():
        print(f"  {count} {reason}")
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
