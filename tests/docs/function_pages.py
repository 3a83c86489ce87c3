# tests/docs/function_pages.py: every function of the module and of the library has its page and its script, and every
# page its form
#
# Usage: function_pages.py PROJECT_DIRECTORY
#
# Machines read the pages, so their form is fixed: the name, one sentence, and six sections in their order. What only
# authors of hosts meet has a page of its own, docs/host-cases.md. describe_functions reads the tables of the module's
# functions, methods and operators while the project is built. Here the tables of the library are looked at, whose
# failures are messages. The pages of the callbacks and of element access have the sections alone: they describe no
# function.
#
# A function counts from the moment that its row in functions.def is `working` or `stub`. In the library arrays.hvm
# every fn counts, except those whose names begin with `arrays_`.

import pathlib
import re
import sys

from extract_blocks import blocks_of

SECTIONS = ["Synopsis", "Examples", "Arguments", "Result", "Failures", "See also"]
ARGUMENTS = ["Name", "Accepts", "Default", "Meaning"]
FAILURES = ["When", "What happens", "Remedy"]
ROW = re.compile(r"^FUNCTION\((\w+),\s*(\w+),\s*\d+,\s*(\w+)\)", re.MULTILINE)
FN = re.compile(r"^fn (?!arrays_)(\w+)\(", re.MULTILINE)
METHODS = ["dump", "shape", "reshape"]
OPERATORS = {
    "add": " + ",
    "subtract": " - ",
    "multiply": " * ",
    "divide": " / ",
    "remainder": " % ",
    "less": " < ",
    "equal": " == ",
}
CALLBACKS = ["create", "destroy", "method", "operator"]
EXPECTATION = re.compile(r"# expect( error| ~[^:]+)?:")
LINK = re.compile(r"\]\(([^)#:]+\.md)\)")


def rows_of(listing):
    """Name, family and status of every row of functions.def."""
    return ROW.findall(listing)


def examples_of(text):
    """The hvm blocks of the section Examples, as text."""
    before = text.split("\n## Examples\n")[0]
    first = before.count("\n") + 1
    last = first + text[len(before) + 1:].split("\n## Arguments")[0].count("\n") + 1
    return ["\n".join(b.lines) for b in blocks_of(text) if b.language == "hvm" and first <= b.line <= last]


def line_of(text, section):
    return text.split(f"\n## {section}\n")[0].count("\n") + 2


def line_of_other_sections(text):
    """The line of the first title that is not the one in order, or the end of the text where titles are missing."""
    expected = iter(SECTIONS)
    for number, line in enumerate(text.splitlines(), start=1):
        if line.startswith("## ") and line[3:] != next(expected, None):
            return number
    return text.count("\n")


def faults_of_page(text, title):
    """What is wrong with the form of a page, with the lines."""
    lines = text.splitlines()
    if lines[:2] != [f"# {title}", ""]:
        yield f"1: does not begin with '# {title}' and a blank line"
    summary = lines[2] if len(lines) > 2 else ""
    if not re.fullmatch(r"[A-Z][^.]*(\.\S[^.]*)*\.", summary) or lines[3:4] != [""]:
        yield "3: has no sentence on its third line, or more than that one"
    sections = re.findall(r"^## (.*)$", text, re.MULTILINE)
    if sections != SECTIONS:
        yield f"{line_of_other_sections(text)}: has the sections {sections}, not {SECTIONS}"
        return
    examples = examples_of(text)
    if not examples:
        yield f"{line_of(text, 'Examples')}: has no example"
    if not any(EXPECTATION.search(example) for example in examples):
        yield f"{line_of(text, 'Examples')}: has no example that expects anything"


def table_of(text, section):
    """Line and cells of each row of the first table in a section, with its head and without the line of dashes."""
    lines = text.split(f"\n## {section}\n")[1].split("\n## ")[0].splitlines()
    rows = []
    for number, line in enumerate(lines, start=line_of(text, section) + 1):
        if line.startswith("|"):
            rows.append((number, [cell.strip() for cell in line.strip("|").split("|")]))
        elif rows:
            break
    return rows[:1] + rows[2:]


def faults_of_tables(text):
    """What is wrong with the tables on a page of the library, with the lines."""
    for section, columns in (("Arguments", ARGUMENTS), ("Failures", FAILURES)):
        (line, head), *rows = table_of(text, section) or [(line_of(text, section), [])]
        if head != columns:
            yield f"{line}: has no table with the columns {columns} under {section}"
        for number, row in rows:
            if len(row) != len(columns):
                yield f"{number}: has a row of {len(row)} cells under {section}: {row}"
            elif section == "Arguments" and not (row[0] and row[1] and row[3]):
                yield f"{number}: has an argument without name, kind or meaning: {row}"
            elif section == "Failures" and not (row[0] and re.fullmatch(r"`[^`]+`", row[1])):
                yield (f"{number}: has a failure without a condition or without the words of the error in backticks: "
                       f"{row}")


def faults_of_script(scripts, family, name, call):
    """A script of the name lies in the family's folder and in no other, calls what it is for, and expects something."""
    found = sorted(scripts.glob(f"*/{name}.hvm"))
    if len(found) != 1:
        yield f"{scripts}: {len(found)} scripts {name}.hvm, expected one in the folder of its family"
        return
    if found[0].parent.name != family:
        yield f"{found[0]}: lies in another folder than that of its family, {family}"
    text = found[0].read_text()
    code = "\n".join(line.split("#")[0] for line in text.splitlines())
    if call not in code:
        yield f"{found[0]}: does not call {name}"
    if not EXPECTATION.search(text):
        yield f"{found[0]}: expects nothing"


def faults_of_pages(pages, titles):
    """A page for each title, with a link in the index, and no other page."""
    index = pages / "README.md"
    linked = set(LINK.findall(index.read_text())) if index.is_file() else set()
    for file, title in titles.items():
        page = pages / file
        if not page.is_file():
            yield f"{page}:1: there is no such page"
            continue
        yield from (f"{page}:{fault}" for fault in faults_of_page(page.read_text(), title))
        if file not in linked:
            yield f"{index}:1: does not link to {file}"
    for page in sorted(pages.glob("*.md")):
        if page.name not in titles and page.name != "README.md":
            yield f"{page}:1: is of nothing that is served"


def faults_of_library(project):
    pages = project / "docs" / "library"
    names = FN.findall((project / "refhost" / "script" / "library" / "arrays.hvm").read_text())
    if not names:
        yield "arrays.hvm: defines no function"
    yield from faults_of_pages(pages, {f"{name}.md": name for name in names})
    for page in (pages / f"{name}.md" for name in names):
        text = page.read_text() if page.is_file() else ""
        if all(f"\n## {section}\n" in text for section in SECTIONS):
            yield from (f"{page}:{fault}" for fault in faults_of_tables(text))
            yield from faults_of_costs(page)
    for name in names:
        yield from faults_of_script(project / "tests" / "scripts", "library", name, f"{name}(")


def faults_of_costs(page):
    """What a call costs stands in one paragraph of the page's result."""
    text = page.read_text()
    count = len(re.findall(r"^\*\*Cost:\*\* \S", text.split("\n## Failures\n")[0], re.MULTILINE))
    if count != 1:
        yield f"{page}:{line_of(text, 'Result')}: has {count} paragraphs '**Cost:** …' before its failures, not one"


def faults_of_module(project):
    pages = project / "docs" / "functions"
    scripts = project / "tests" / "scripts"
    rows = rows_of((project / "plugin" / "host" / "functions.def").read_text())
    served = {name: family for name, family, status in rows if status in ("working", "stub")}
    if not served:
        yield "functions.def: no function is served"
    titles = {f"{name}.md": name for name in served}
    titles.update({f"method-{name}.md": name for name in METHODS})
    titles.update({f"operator-{name}.md": name for name in OPERATORS})
    titles["element-access.md"] = "element access"
    titles.update({f"callback-{name}.md": name for name in CALLBACKS})

    yield from faults_of_pages(pages, titles)
    costly = [name for name, _, status in rows if status == "working"]
    costly += [f"method-{name}" for name in METHODS] + [f"operator-{name}" for name in OPERATORS] + ["element-access"]
    for page in (pages / f"{name}.md" for name in costly):
        if page.is_file():
            yield from faults_of_costs(page)
    for name, family in served.items():
        yield from faults_of_script(scripts, family, name, f"{name}(")
    for name in METHODS:
        yield from faults_of_script(scripts, "object", name, f".{name}(")
    for name, sign in OPERATORS.items():
        yield from faults_of_script(scripts, "object", name, sign)
    yield from faults_of_script(scripts, "object", "element_access", "[")


def faults_of_project(project):
    yield from faults_of_module(project)
    yield from faults_of_library(project)


def main(project):
    faults = list(faults_of_project(pathlib.Path(project)))
    print("\n".join(faults) or "every function has its page and its script")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
