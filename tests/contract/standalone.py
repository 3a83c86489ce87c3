# tests/contract/standalone.py: every source and every header of the module and the reference host compiles alone
#
# Usage: standalone.py [--sources] BUILD_DIRECTORY PROJECT_DIRECTORY
#
# A header may profit from what its includer has included before, and a source from a precompiled header. Here each
# header is checked as the only line of a source, by the command of a source beside it from compile_commands.json. A
# header that a source includes first is checked by that source. With --sources, each source that is built together with
# others or with a precompiled header is checked in place of the headers, by its command without that header. Sources of
# tests and benchmarks are not checked, but each must belong to a target.

import argparse
import concurrent.futures
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

sys.path.append(os.path.join(os.path.dirname(__file__), "..", "support"))
from compile_commands import commands_of, is_unit

FOLDERS = ["plugin", "refhost"]
COMPILED = ["plugin", "refhost", "tests", "bench"]
ELSEWHERE = ["plugin/self_contained", "tests/plugin/self_contained",  # built for ARRAYFOLD_SELF_CONTAINED alone
             "tests/fuzz",  # built with the sanitizers alone
             "tests/coverage",  # part of the programs that scripts/coverage counts
             "tests/install"]  # a host outside of the project


def checking(command, source):
    """The command as one that checks the syntax of `source` alone."""
    words, checked = iter(shlex.split(command)), []
    for word in words:
        if word in ("-o", "-MF", "-MT", "-MQ"):
            next(words)
        elif word == "-include":
            header = next(words)
            if "cmake_pch" not in header:
                checked += [word, header]
        elif word not in ("-c", "-MD", "-Winvalid-pch"):
            checked.append(word)
    checked.pop()  # the source of the command
    if checked and os.path.basename(checked[0]).startswith("ccache"):
        checked.pop(0)
    return checked + ["-fsyntax-only", source]


def nearest(folder, commands):
    """The command of a source in `folder`, or in the closest folder above it that has one below."""
    while True:
        for source, command in commands.items():
            if source.is_relative_to(folder):
                return command
        folder = folder.parent


def uncompiled(commands, project):
    """The sources that belong to no target."""
    for folder in COMPILED:
        for path in sorted((project / folder).rglob("*.c*")):
            elsewhere = any(path.is_relative_to(project / other) for other in ELSEWHERE)
            if path.suffix in (".cpp", ".c") and not elsewhere and path not in commands:
                yield path


def first_include(source):
    """The first header that a source includes."""
    found = re.search(r'^#include ["<](.*)[">]$', source.read_text(), re.MULTILINE)
    return found.group(1) if found else None


def sources(commands, project):
    """Each source that is built with others or with a precompiled header, with its command."""
    for path, command in sorted(commands.items()):
        is_alone = "cmake_pch" not in command and not is_unit(command)
        if not is_alone and any(path.is_relative_to(project / folder) for folder in FOLDERS):
            yield path, checking(command, str(path))


def headers(commands, project):
    """Each header that no source includes first, with its command."""
    for folder in FOLDERS:
        included_first = {first_include(source) for source in commands if source.is_relative_to(project / folder)}
        for path in sorted((project / folder).rglob("*.h*")):
            if path.suffix in (".hpp", ".h") and str(path.relative_to(project / folder)) not in included_first:
                yield path, checking(nearest(path.parent, commands), path)


def failure_of(check):
    """What the compiler says of a file; nothing when it compiles."""
    path, command = check
    with tempfile.NamedTemporaryFile("w", suffix=".cpp") as includer:
        if path.suffix in (".hpp", ".h"):
            includer.write(f'#include "{path}"\n')
            includer.flush()
            command = command[:-1] + [includer.name]
        run = subprocess.run(command, capture_output=True, text=True)
    return f"{path}\n{run.stderr}" if run.returncode != 0 else ""


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--sources", action="store_true", help="check sources in place of headers")
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("project", type=pathlib.Path)
    asked = parser.parse_args()
    build, project = asked.build.resolve(), asked.project.resolve()
    commands = dict(commands_of(build))
    if strays := [f"{path}: no target compiles it" for path in uncompiled(commands, project)]:
        raise SystemExit("\n".join(strays))
    files = list((sources if asked.sources else headers)(commands, project))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        failures = [failure for failure in pool.map(failure_of, files) if failure]
    print("\n".join(failures), end="")
    print(f"{len(files)} files checked, {len(failures)} do not compile alone")
    return 1 if failures or len(files) < 20 else 0


if __name__ == "__main__":
    sys.exit(main())
