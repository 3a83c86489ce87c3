# tests/docs/surprises_page.py: docs/surprises.md has every warning, every surprise of the pages, and every function
# without a usable value
#
# Usage: surprises_page.py PROJECT_DIRECTORY HVM DESCRIPTION [--write]
#
# Two tables are made: one of the rows of `hvm --list-warnings`, one of the surprises in the description of the
# functions. --write writes them anew. Every warning has a section of its name with an example that brings it about, a
# paragraph Why and a paragraph Write. The functions that never give a usable value are the stubs in the list of the
# functions and those named here.

import json
import pathlib
import posixpath
import re
import subprocess
import sys

import extract_blocks
import function_pages

WARNINGS_MARK = "<!-- made of hvm --list-warnings -->"
PAGES_MARK = "<!-- made of the pages -->"
END_MARK = "<!-- end -->"
UNUSABLE = "The functions that never give a usable value"
# These compute and then drop what they computed, count draws, or end in an error.
WITHOUT_VALUE = ["xcond", "xeig", "xeigvals", "xpermutation"]


def rows_of(listing):
    """Name, sentence and page of each warning, as `hvm --list-warnings` prints them."""
    return [tuple(re.split(r"\s{2,}", line.strip())) for line in listing.splitlines()]


def from_docs(page):
    return page.removeprefix("docs/")


def cell(text):
    return text.replace("|", "\\|")


def linked_from_docs(text):
    """The text of a function's page with its links as they are from docs."""
    return re.sub(r"\]\((?!#|https?:)([^)]+)\)",
                  lambda link: "](" + posixpath.normpath(posixpath.join("functions", link[1])) + ")", text)


def table_of_warnings(rows):
    lines = ["", "| Warning | What happens, and what to write | Page |", "| --- | --- | --- |"]
    for name, sentence, page in rows:
        title = pathlib.Path(page.split("#")[0]).stem
        lines.append(f"| [{name}](#{name}) | {cell(sentence)} | [{title}]({from_docs(page)}) |")
    return "\n".join(lines + ["", ""])


def table_of_surprises(description):
    """One row for each title, with the words of the first page that has it, and with all pages."""
    texts, pages = {}, {}
    for part in ("functions", "methods", "operators"):
        for entry in description[part]:
            for surprise in entry["surprises"]:
                title = surprise["title"]
                texts.setdefault(title, linked_from_docs(surprise["text"]))
                pages.setdefault(title, []).append(f"[{entry['name']}]({from_docs(entry['page'])}#result)")
    lines = ["", "| What surprises | Why, and what to write | Of |", "| --- | --- | --- |"]
    lines += [f"| {cell(title[0].upper() + title[1:])} | {cell(text)} | {', '.join(pages[title])} |"
              for title, text in texts.items()]
    return "\n".join(lines + ["", ""])


def replaced(text, mark, table):
    """The page with what stands between a mark and the next end replaced by a table."""
    before, rest = text.split(f"{mark}\n", 1)
    return f"{before}{mark}\n{table}{END_MARK}{rest.split(END_MARK, 1)[1]}"


def written(text, rows, description):
    text = replaced(text, WARNINGS_MARK, table_of_warnings(rows))
    return replaced(text, PAGES_MARK, table_of_surprises(description))


def sections_of(text):
    """The text of every section of the third level, by its title, with the line of its title."""
    parts = re.split(r"^(### .*)$", text, flags=re.MULTILINE)
    line = parts[0].count("\n") + 1
    sections = {}
    for title, body in zip(parts[1::2], parts[2::2]):
        sections[title.removeprefix("### ")] = (line, re.split(r"^## ", body, flags=re.MULTILINE)[0])
        line += body.count("\n")
    return sections


def faults_of_sections(sections, names, warnings_of):
    """What is wrong with the sections; `warnings_of` gives the names of the warnings that a script brings about."""
    for name in names:
        if name not in sections:
            yield f"1: the warning {name} has no section"
    for title, (line, body) in sections.items():
        if title not in names:
            yield f"{line}: there is no warning {title}"
        for word in ("Why", "Write"):
            if f"\n**{word}:** " not in body:
                yield f"{line}: {title} has no paragraph {word}"
        scripts = extract_blocks.scripts_of(body)
        if len(scripts) != 1:
            yield f"{line}: {title} has {len(scripts)} examples, not one"
        elif warnings_of(extract_blocks.script_of(scripts[0])) != {title}:
            yield f"{line}: the example does not bring about {title}, and that alone"


def faults_of_functions(text, listing):
    """The functions without a usable value are those of the table, in their order."""
    rows = function_pages.rows_of(listing)
    names = sorted([name for name, _, status in rows if status == "stub"] + WITHOUT_VALUE)
    part = text.split(f"## {UNUSABLE}\n")[1].split("\n## ")[0]
    listed = re.findall(r"^\| \[(\w+)\]\(functions/\1\.md\) \|", part, re.MULTILINE)
    if listed != names:
        yield f"1: the functions without a usable value are {names}, and listed are {listed}"
    if not re.search(rf"^{len(names)} of the {len(rows)} functions", part, re.MULTILINE):
        yield f"1: the page does not begin that section with '{len(names)} of the {len(rows)} functions'"


def warnings_by(hvm):
    def warnings_of(script):
        run = subprocess.run([hvm], input=script, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True,
                             check=False)
        names = re.findall(r"^ *allow: # allow: (\S+)$", run.stderr, re.MULTILINE)
        return set(names) if run.returncode == 0 else set()
    return warnings_of


def main(project, hvm, description, *options):
    project, hvm = pathlib.Path(project), pathlib.Path(hvm).resolve()
    page = project / "docs/surprises.md"
    text = page.read_text()
    listing = subprocess.run([hvm, "--list-warnings"], stdout=subprocess.PIPE, text=True, check=True).stdout
    rows = rows_of(listing)
    wanted = written(text, rows, json.loads(pathlib.Path(description).read_text()))
    if "--write" in options:
        page.write_text(wanted)
        return 0
    faults = [f"{number}: a table is not up to date; run this with --write"
              for number, (line, other) in enumerate(zip(text.splitlines() + [""], wanted.splitlines() + [""]), start=1)
              if line != other][:1]
    faults += faults_of_sections(sections_of(text), [name for name, *_ in rows], warnings_by(hvm))
    faults += faults_of_functions(text, (project / "plugin/host/functions.def").read_text())
    print("\n".join(f"{page}:{fault}" for fault in faults) or f"{len(rows)} warnings have their sections")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
