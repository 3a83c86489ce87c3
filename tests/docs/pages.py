# tests/docs/pages.py: what the pages name is there, links lead from the README to every page, every recipe of the
# cookbook is a block that expects something, the page of tasks has every function of use, and the README is short
#
# Usage: pages.py PROJECT_DIRECTORY
#
# The pages are those whose blocks run, and all others that links lead to from the README. Links to files and folders
# of the project must lead to one, and those with `#` to a title there. Links to the web are not followed. Tests that a
# page names, such as `Suite.Name` or `Suite.*`, must be among the sources of the tests. Files and folders that the page
# on the design names in backticks must be in the project, or in the folder of the module; a file may stand without its
# ending. The rows of a table have as many cells as its head.

import pathlib
import re
import sys

import extract_blocks
import function_pages
from surprises_page import WITHOUT_VALUE

FEWEST_RECIPES = 40
LONGEST_README = 90  # lines
# It gives elements where its name promises positions; the library has a function that gives them.
MISLEADING = ["xargpartition"]
FENCE = re.compile(r"^ *```.*?^ *```+$", re.MULTILINE | re.DOTALL)
CODE = re.compile(r"`[^`\n]+`")
LINK = re.compile(r"\]\(([^)\s]+)\)")
NAMED_TEST = re.compile(r"`([A-Z]\w+\.(?:[A-Z]\w+|\*))`")
TEST = re.compile(r"\bTEST(?:_F|_P)?\((\w+),\s*(\w+)\)")
NAMED_PATH = re.compile(r"`([\w.-]+/[\w./-]+)`")
TITLE = re.compile(r"^#+ (.+)$", re.MULTILINE)
EXPECTATION = re.compile(r"# expect( ~\S+)?: ")
BAR = re.compile(r"(?<!\\)\|")


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


def links_of(page):
    """The links of a page within the project: their lines, texts, targets and anchors."""
    for number, line in enumerate(CODE.sub("", prose_of(page.read_text())).splitlines(), start=1):
        for link in LINK.findall(line):
            if re.match(r"[a-z]+:", link):
                continue
            path, _, anchor = link.partition("#")
            yield number, link, page.parent / path if path else page, anchor


def faults_of_links(page):
    """The links that lead nowhere, with their lines."""
    for number, link, target, anchor in links_of(page):
        if not target.exists():
            yield f"{number}: links to {link.partition('#')[0]}, which there is not"
        elif anchor and (target.suffix != ".md" or anchor not in anchors_of(target.read_text())):
            yield f"{number}: links to {link}, and there is no such title"


def reached_from_readme(project):
    """The pages that links lead to from the README, and itself."""
    reached, waiting = set(), [project / "README.md"]
    while waiting:
        page = waiting.pop().resolve()
        if page.is_dir():
            page /= "README.md"
        if page.suffix == ".md" and page.exists() and page not in reached:
            reached.add(page)
            waiting += [target for _, _, target, _ in links_of(page)]
    return reached


def orphans_of(project):
    """The pages that no links lead to from the README."""
    reached = reached_from_readme(project)
    return [page for page in extract_blocks.pages_of(project) if page.resolve() not in reached]


def faults_of_tasks(text, listing, library):
    """Every function that gives a usable value has a link."""
    working = [name for name, _, status in function_pages.rows_of(listing) if status == "working"]
    wanted = [f"functions/{name}.md" for name in working if name not in WITHOUT_VALUE + MISLEADING]
    wanted += [f"library/{name}.md" for name in function_pages.FN.findall(library)]
    links = LINK.findall(text)
    for page in wanted:
        if page not in links:
            yield f"1: does not link to {page}"


def tests_of(project):
    """The tests in C++ as Suite.Name, and Suite.* for each suite."""
    names = set()
    for source in (project / "tests").rglob("*.cpp"):
        for suite, name in TEST.findall(source.read_text()):
            names |= {f"{suite}.{name}", f"{suite}.*"}
    return names


def faults_of_test_names(text, tests):
    """The tests that a page names and that there are not, with their lines."""
    for number, line in enumerate(prose_of(text).splitlines(), start=1):
        yield from (f"{number}: names the test {name}, which there is not"
                    for name in NAMED_TEST.findall(line) if name not in tests)


def faults_of_paths(text, project):
    """The files and folders that a page names and that there are not, with their lines."""
    for number, line in enumerate(prose_of(text).splitlines(), start=1):
        for path in NAMED_PATH.findall(line):
            if not any(folder.joinpath(path).exists() or any(folder.glob(f"{path}.*"))
                       for folder in (project, project / "plugin")):
                yield f"{number}: names {path}, which there is not"


def faults_of_tables(text):
    """The rows of tables that have other numbers of cells than the head: such a table is not shown as one."""
    cells = None
    for number, line in enumerate(prose_of(text).splitlines(), start=1):
        count = len(BAR.findall(line)) - 1 if line.startswith("|") else None
        if count is not None and cells is not None and count != cells:
            yield f"{number}: has {count} cells in a table of {cells} columns"
        cells = count if count is None or cells is None else cells


def faults_of_readme(text):
    lines = len(text.splitlines())
    if lines > LONGEST_README:
        yield f"{LONGEST_README + 1}: has {lines} lines, more than {LONGEST_README}"


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
    project = pathlib.Path(project).resolve()
    pages = sorted({*extract_blocks.pages_of(project), *reached_from_readme(project)})
    tests = tests_of(project)
    faults = [f"{page}:{fault}" for page in pages for fault in faults_of_tables(page.read_text())]
    faults += [f"{page}:{fault}" for page in pages for fault in faults_of_links(page)]
    faults += [f"{page}:{fault}" for page in pages for fault in faults_of_test_names(page.read_text(), tests)]
    design = project / "docs/design.md"
    faults += [f"{design}:{fault}" for fault in faults_of_paths(design.read_text(), project)]
    readme = project / "README.md"
    faults += [f"{readme}:{fault}" for fault in faults_of_readme(readme.read_text())]
    cookbook = project / "docs/cookbook.md"
    faults += [f"{cookbook}:{fault}" for fault in faults_of_cookbook(cookbook.read_text())]
    faults += [f"{page}:1: no links lead from the README to this page" for page in orphans_of(project)]
    tasks = project / "docs/tasks.md"
    faults += [f"{tasks}:{fault}" for fault in faults_of_tasks(
        tasks.read_text(), (project / "plugin/host/functions.def").read_text(),
        (project / "refhost/script/library/arrays.hvm").read_text())]
    print("\n".join(faults) or f"what {len(pages)} pages name is there")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
