# tests/docs/extract_blocks.py: the hvm blocks of the documentation as script files
#
# Usage: extract_blocks.py PROJECT_DIRECTORY OUTPUT_DIRECTORY
#
# A block is named after its page and the line on which it begins, and stands in its file on the same lines as in the
# page, so that a failure is reported with the page's line. What was there from an earlier run goes away first. Fails on
# a fence that does not close or does not say what it holds.

import pathlib
import re
import shutil
import sys
from typing import NamedTuple

FENCE = re.compile(r"^( *)```+(.*)$")
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


def script_of(block):
    """The text of a block on the lines that it has in its page."""
    return "\n" * (block.line - 1) + "\n".join(block.lines) + "\n"


def extract(project, output):
    """Writes every hvm block below `output`; gives their count and what is wrong with the pages."""
    if output.exists():
        shutil.rmtree(output)
    count = 0
    faults = []
    for page in pages_of(project):
        name = page.relative_to(project).with_suffix("")
        try:
            blocks = blocks_of(page.read_text())
        except ValueError as fault:
            faults.append(f"{page}: {fault}")
            continue
        for block in blocks:
            if block.language != "hvm":
                continue
            path = output / name.parent / f"{name.name}-line-{block.line}.hvm"
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(script_of(block))
            count += 1
    return count, faults


def main(project, output):
    count, faults = extract(pathlib.Path(project), pathlib.Path(output))
    print("\n".join(faults) or f"{count} blocks")
    return 1 if faults or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
