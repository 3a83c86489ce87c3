# tests/docs/trace_example.py: the trace in the host contract is what hvm writes
#
# Usage: trace_example.py PROJECT_DIRECTORY HVM
#
# Runs the command of the page's first sh block that traces, and compares the last line of the trace with the json block
# behind it. The times may differ, and must be there.

import json
import pathlib
import shlex
import subprocess
import sys
import tempfile

import extract_blocks


def example_in(page):
    """The command of the example and the line that it leaves, as the page has them."""
    blocks = extract_blocks.blocks_of(page.read_text())
    for command, line in zip(blocks, blocks[1:]):
        if command.language == "sh" and command.lines[0].startswith("hvm --trace") and line.language == "json":
            return shlex.split(command.lines[0]), json.loads("".join(line.lines))
    raise ValueError(f"{page}: no example of a trace")


def last_line_of(command, hvm):
    """The last line of the trace that a command leaves."""
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([hvm, *command[1:]], cwd=folder, check=True, stdout=subprocess.DEVNULL)
        lines = (pathlib.Path(folder) / command[command.index("--trace") + 1]).read_text().splitlines()
        return json.loads(lines[-1])


def main(project, hvm):
    command, told = example_in(pathlib.Path(project) / "docs/host-contract.md")
    found = last_line_of(command, pathlib.Path(hvm).resolve())
    for line in (told, found):
        if not isinstance(line.pop("nanoseconds"), int):
            raise ValueError("a time is not a whole number")
    if list(told.items()) == list(found.items()):
        return 0
    print(f"on the page:\n{json.dumps(told)}\nhvm writes:\n{json.dumps(found)}")
    return 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
