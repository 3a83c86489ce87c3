# tests/docs/printed.py: the pictures and texts that pages show are what their scripts print
#
# Usage: printed.py PROJECT_DIRECTORY HVM
#
# Below the line `<!-- printed -->` a page shows, as a text block, a part of what the script above prints. Blanks at the
# ends of lines do not count.

import pathlib
import subprocess
import sys
import tempfile

import extract_blocks

PRINTED = "<!-- printed -->"


def without_ends(text):
    return "\n".join(line.rstrip() for line in text.splitlines())


def shown_by(text):
    """The text blocks of a page below the line, each with the script that stands above it."""
    lines = text.splitlines()
    blocks = extract_blocks.blocks_of(text)
    scripts = extract_blocks.scripts_of(text)
    for number in (number for number, line in enumerate(lines, start=1) if line == PRINTED):
        block = next((block for block in blocks if block.line > number), None)
        above = [script for script in scripts if script[0].line < number]
        if block is None or block.language != "text" or not above:
            raise ValueError(f"line {number}: no text block follows, or no script stands above")
        yield block, above[-1]


def faults_of_page(text, hvm):
    try:
        pairs = list(shown_by(text))
    except ValueError as fault:
        yield str(fault)
        return
    for block, script in pairs:
        with tempfile.TemporaryDirectory() as folder:
            run = subprocess.run([hvm], input=extract_blocks.script_of(script), cwd=folder, stdout=subprocess.PIPE,
                                 stderr=subprocess.PIPE, text=True, check=False)
        if run.returncode != 0:
            yield f"line {script[0].line}: the script ends with {run.returncode}\n{run.stderr}"
        elif without_ends("\n".join(block.lines)) not in without_ends(run.stdout):
            yield f"line {block.line}: the script prints something else:\n{run.stdout}"


def main(project, hvm):
    project, hvm = pathlib.Path(project), pathlib.Path(hvm).resolve()
    pages = [page for page in extract_blocks.pages_of(project) if f"\n{PRINTED}\n" in page.read_text()]
    faults = [f"{page}: {fault}" for page in pages for fault in faults_of_page(page.read_text(), hvm)]
    if not pages:
        faults.append("no page shows what its script prints")
    print("\n".join(faults) or f"{len(pages)} pages show what their scripts print")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
