# tests/docs/extract_blocks.py: the hvm blocks of the documentation as script files
#
# Usage: extract_blocks.py PROJECT_DIRECTORY OUTPUT_DIRECTORY
#
# A block is named after its page and the line on which it begins, and stands in its file on the same lines as in the
# page, so that a failure is reported with the page's line. What was there from an earlier run goes away first. Fails on
# a fence that does not close or does not say what it holds.
#
# The hvm blocks between the lines `<!-- one script -->` and `<!-- end of the script -->`, or the end of the page, are
# one script. It is named after the first of them.

import pathlib
import re
import shutil
import sys
from typing import NamedTuple

FENCE = re.compile(r"^( *)```+(.*)$")
ONE_SCRIPT = "<!-- one script -->"
END_OF_SCRIPT = "<!-- end of the script -->"
KNOWN_LANGUAGES = {"hvm", "text", "sh", "c", "cpp", "cmake", "json"}


class Block(NamedTuple):
    language: str
    line: int  # of its first line of text, counted from 1
    lines: list


def pages_of(project):
    """The pages whose blocks run."""
    for pattern in ("*.md", "docs/*.md", "docs/functions/*.md", "docs/library/*.md"):
        yield from sorted(project.glob(pattern))


def blocks_of(text):
    """The fenced blocks of a page; raises ValueError for a fence that is not right."""
    blocks = []
    current = None
    indent = 0
    for number, line in enumerate(text.splitlines(), start=1):
        fence = FENCE.match(line)
        if current is None and fence:
            language = fence.group(2).strip()
            if language not in KNOWN_LANGUAGES:
                known = ", ".join(sorted(KNOWN_LANGUAGES))
                raise ValueError(f"line {number}: a block of '{language}'; known are {known}")
            indent = len(fence.group(1))
            current = Block(language, number + 1, [])
        elif current is not None and fence and not fence.group(2).strip():
            blocks.append(current)
            current = None
        elif current is not None:
            current.lines.append(line[indent:] if line[:indent].strip() == "" else line)
    if current is not None:
        raise ValueError(f"line {current.line - 1}: the block does not end")
    return blocks


def scripts_of(text):
    """The hvm blocks of a page, as lists of those that are one script."""
    begun = []  # for each line, the line on which its script begins, or None where each block is a script of its own
    for number, line in enumerate(text.splitlines()):
        before = begun[-1] if begun else None
        begun.append({ONE_SCRIPT: number, END_OF_SCRIPT: None}.get(line, before))
    scripts = {}
    for block in blocks_of(text):
        if block.language == "hvm":
            start = begun[block.line - 2]
            scripts.setdefault(block.line if start is None else -start, []).append(block)
    return list(scripts.values())


def script_of(blocks):
    """The text of blocks on the lines that they have in their page."""
    lines = []
    for block in blocks:
        lines += [""] * (block.line - 1 - len(lines)) + block.lines
    return "\n".join(lines) + "\n"


def extract(project, output):
    """Writes every hvm block below `output`; gives their count and what is wrong with the pages."""
    if output.exists():
        shutil.rmtree(output)
    count = 0
    faults = []
    for page in pages_of(project):
        name = page.relative_to(project).with_suffix("")
        try:
            scripts = scripts_of(page.read_text())
        except ValueError as fault:
            faults.append(f"{page}: {fault}")
            continue
        for blocks in scripts:
            path = output / name.parent / f"{name.name}-line-{blocks[0].line}.hvm"
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(script_of(blocks))
            count += 1
    return count, faults


def main(project, output):
    count, faults = extract(pathlib.Path(project), pathlib.Path(output))
    print("\n".join(faults) or f"{count} scripts")
    return 1 if faults or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
