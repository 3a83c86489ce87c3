# tests/examples/embedding_sources.py: what examples/embedding says of its sources, checked against them
#
# Usage: embedding_sources.py PROJECT_DIRECTORY

import pathlib
import re
import sys

MOST_LINES = 300
SYSTEM_HEADERS = {"dlfcn.h", "math.h", "stddef.h", "stdint.h", "stdio.h", "stdlib.h", "string.h"}


def faults_of_sources(folder):
    """The C files together are at most 300 lines and include their own header and the C library's, nothing else."""
    files = sorted(path for path in folder.iterdir() if path.suffix in {".c", ".h"})
    if not files:
        yield f"{folder}: no C files"
    lines = sum(len(path.read_text().splitlines()) for path in files)
    if lines > MOST_LINES:
        yield f"{folder}: {lines} lines of C, at most {MOST_LINES} are allowed"
    for path in files:
        for header in re.findall(r'^\s*#\s*include\s*(\S+)', path.read_text(), re.MULTILINE):
            if header != '"host.h"' and header.strip("<>") not in SYSTEM_HEADERS:
                yield f"{path}: includes {header}"


def faults_of_build(listing):
    """The build gives the example no directory of the module or the reference host."""
    text = "\n".join(line.split("#")[0] for line in listing.read_text().splitlines())
    for word in ("include_directories", "plugin", "refhost", "arrayfold_contract", "arrayfold_flags"):
        if word in text:
            yield f"{listing}: names {word}"


def faults_of_excerpts(page, folder):
    """Every C block of the page stands in a file of the example, character for character."""
    sources = [path.read_text() for path in folder.iterdir() if path.suffix in {".c", ".h", ".map"}]
    blocks = re.findall(r"^```c\n(.*?)^```", page.read_text(), re.MULTILINE | re.DOTALL)
    if not blocks:
        yield f"{page}: no excerpt"
    for block in blocks:
        if not any(block in source for source in sources):
            yield f"{page}: no file of the example holds this excerpt:\n{block}"


def main(project):
    folder = project / "examples" / "embedding"
    faults = [
        *faults_of_sources(folder),
        *faults_of_build(folder / "CMakeLists.txt"),
        *faults_of_excerpts(project / "docs" / "host-contract.md", folder),
    ]
    print("\n".join(faults) or "as stated")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
