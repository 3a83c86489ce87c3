# tests/docs/pages.py: no link of the pages is broken, and every recipe of the cookbook is a block that expects something
#
# Usage: pages.py PROJECT_DIRECTORY
#
# Links to files and folders of the project must lead to one, and those with `#` to a title there. Links to the web are
# not followed.

import pathlib
import re
import sys

import extract_blocks

FEWEST_RECIPES = 40
FENCE = re.compile(r"^ *```.*?^ *```+$", re.MULTILINE | re.DOTALL)
CODE = re.compile(r"`[^`\n]+`")
LINK = re.compile(r"\]\(([^)\s]+)\)")
TITLE = re.compile(r"^#+ (.+)$", re.MULTILINE)
EXPECTATION = re.compile(r"# expect( ~\S+)?: ")


def blank(match):
    """As many line ends as there were, so that lines keep their numbers."""
    return "\n" * match.group().count("\n")


def prose_of(text):
    return FENCE.sub(blank, text)


def anchors_of(text):
    """The anchors that titles have where pages are shown: lower case, hyphens for blanks, no other signs."""
    anchors = set()
    for title in TITLE.findall(prose_of(text)):
        words = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", title).lower()
        anchor = re.sub(r"[^\w\- ]", "", words).replace(" ", "-")
        number = 0
        while (name := f"{anchor}-{number}" if number else anchor) in anchors:
            number += 1
        anchors.add(name)
    return anchors


def faults_of_links(page):
    """The links that lead nowhere, with their lines."""
    for number, line in enumerate(CODE.sub("", prose_of(page.read_text())).splitlines(), start=1):
        for link in LINK.findall(line):
            if re.match(r"[a-z]+:", link):
                continue
            path, _, anchor = link.partition("#")
            target = page.parent / path if path else page
            if not target.exists():
                yield f"{number}: links to {path}, which there is not"
            elif anchor and (target.suffix != ".md" or anchor not in anchors_of(target.read_text())):
                yield f"{number}: links to {link}, and there is no such title"


def faults_of_cookbook(text):
    """Every recipe is one block that expects something, and there are enough of them."""
    titles = [(number, line) for number, line in enumerate(prose_of(text).splitlines(), start=1)
              if line.startswith("#")]
    recipes = 0
    for (number, title), (following, _) in zip(titles, titles[1:] + [(len(text.splitlines()) + 1, "")]):
        if not title.startswith("### "):
            continue
        recipes += 1
        blocks = [block for block in extract_blocks.blocks_of(text) if number < block.line < following]
        if len(blocks) != 1 or blocks[0].language != "hvm" or not EXPECTATION.search("\n".join(blocks[0].lines)):
            yield f"{number}: the recipe is not one hvm block that expects something"
    if recipes < FEWEST_RECIPES:
        yield f"1: {recipes} recipes, fewer than {FEWEST_RECIPES}"


def main(project):
    project = pathlib.Path(project)
    pages = list(extract_blocks.pages_of(project))
    faults = [f"{page}:{fault}" for page in pages for fault in faults_of_links(page)]
    cookbook = project / "docs/cookbook.md"
    faults += [f"{cookbook}:{fault}" for fault in faults_of_cookbook(cookbook.read_text())]
    print("\n".join(faults) or f"the links of {len(pages)} pages lead somewhere")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
