# scripts/site/site_maker.py: makes a site of the pages
#
# Usage: site_maker.py PROJECT_DIRECTORY OUTPUT_DIRECTORY
#
# The pages keep their places in the project, so that links between them hold. Whatever else they link to gets a page,
# too: a file of text is shown with its code in colours, a folder without a README lists its files. Under the output
# directory, mkdocs.yml and pages are what MkDocs reads, and html is the site. A link that leads nowhere is an error.

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
from typing import NamedTuple

HERE = pathlib.Path(__file__).resolve().parent
LEXER = "share/hvm/highlighting"
WORDS = "search_words.txt"
FENCE = re.compile(r"^ *```")
CODE = re.compile(r"(`[^`\n]+`)")
LINK = re.compile(r"\]\(([^)\s#]+)(#[^)\s]*)?\)")
COMMENT = re.compile(r"^<!--.*-->$")
LIST = re.compile(r"^(?:[-*]|\d+\.) ")
PICTURES = {".svg", ".png"}
LANGUAGES = {".hvm": "hvm", ".py": "python", ".c": "c", ".cpp": "cpp", ".h": "c", ".hpp": "cpp", ".json": "json",
             ".txt": "text"}

# The parts of the site and their pages. A folder's README gives a part for each of its titles, with the pages in the
# table below the title. What is named nowhere stands in the last part.
LEARN = ["docs/tutorial.md", "docs/cookbook.md", "docs/numpy.md", "docs/surprises.md"]
LANGUAGE = ["docs/language.md", "docs/prompt.md"]
EXAMPLES = ["examples", "examples/week/README.md"]
DETAILS = ["docs/behaviour.md", "docs/accuracy.md", "docs/processors.md", "docs/linear-algebra.md"]


class Line(NamedTuple):
    text: str
    is_prose: bool  # outside blocks of code


def lines_of(text):
    is_prose = True
    for line in text.splitlines():
        if FENCE.match(line):
            is_prose = not is_prose
            yield Line(line, False)
        else:
            yield Line(line, is_prose)


def spaced(lines):
    """MkDocs wants a blank line before a list or a table, and takes remarks for text."""
    before = ""
    for line in lines:
        if line.is_prose:
            if COMMENT.match(line.text):
                continue
            begins_list = LIST.match(line.text) and not LIST.match(before) and not before.startswith(" ")
            begins_table = line.text.startswith("|") and not before.startswith("|")
            if before and (begins_list or begins_table):
                yield Line("", True)
        before = line.text
        yield line


def with_bars(line):
    """A bar within code in a table's cell has a backslash before it, which MkDocs would show."""
    def as_html(match):
        code = match.group()[1:-1].replace("&", "&amp;").replace("<", "&lt;").replace("\\|", "&#124;")
        return f"<code>{code}</code>" if "\\|" in match.group() else match.group()
    return CODE.sub(as_html, line) if line.startswith("|") else line


class Site:
    def __init__(self, project, output):
        self.project = project
        self.pages = output / "pages"
        self.made = {}  # the page in `pages` that shows a file or folder of the project
        self.waiting = []

    def place(self, path):
        """Where a file or folder of the project is shown, as a path below `pages`; None if it is not there."""
        if path in self.made:
            return self.made[path]
        source = self.project / path
        if not source.exists():
            return None
        if source.is_dir():
            place = path / "README.md"
            if (source / "README.md").exists():
                return self.place(place)
        elif path.suffix == ".md" or path.suffix in PICTURES:
            place = path
        else:
            place = path.with_name(path.name + ".md")
        self.made[path] = place
        self.waiting.append(path)
        return place

    def make_all(self):
        while self.waiting:
            path = self.waiting.pop()
            target = self.pages / self.made[path]
            target.parent.mkdir(parents=True, exist_ok=True)
            source = self.project / path
            if path.suffix in PICTURES:
                shutil.copy(source, target)
            elif source.is_dir():
                target.write_text(self.listing(path))
            elif path.suffix == ".md":
                target.write_text(self.page(path, source.read_text()))
            else:
                language = LANGUAGES.get(path.suffix, "text")
                target.write_text(f"# {path}\n\n````{language}\n{source.read_text().rstrip()}\n````\n")

    def listing(self, path):
        rows = []
        for entry in sorted((self.project / path).iterdir()):
            shown = not entry.name.startswith(".") and entry.suffix not in PICTURES
            if shown and (entry.is_file() or (entry / "README.md").exists()):
                rows.append(f"- [{entry.name}]({self.link(path, entry.name)})")
        return f"# {path}\n\n" + "\n".join(rows) + "\n"

    def link(self, folder, way):
        """A link of a page in a folder, as it leads to the page of the site."""
        path = pathlib.Path(os.path.normpath(folder / way))
        place = self.place(path)
        if place is None:
            raise LookupError(f"{way} leads to {path}, which there is not")
        return os.path.relpath(place, folder)

    def page(self, path, text):
        result = []
        for number, line in enumerate(spaced(lines_of(text)), start=1):
            if not line.is_prose:
                result.append(line.text)
                continue
            def to_site(match):
                way, anchor = match.group(1), match.group(2) or ""
                if re.match(r"[a-z]+:", way):
                    return match.group()
                try:
                    return f"]({self.link(path.parent, way)}{anchor})"
                except LookupError as fault:
                    raise LookupError(f"{path}: {fault}") from None
            pieces = CODE.split(with_bars(line.text))
            pieces[::2] = [LINK.sub(to_site, piece) for piece in pieces[::2]]
            result.append("".join(pieces).replace("<details>", '<details markdown="1">'))
        return "\n".join(result) + "\n"


def families_of(index):
    """The titles of an index, each with the pages that the table below it links to."""
    for section in index.split("\n## ")[1:]:
        title, _, body = section.partition("\n")
        rows = "\n".join(line for line in body.splitlines() if line.startswith("|"))
        pages = re.findall(r"\]\(([\w-]+\.md)\)", rows)
        if pages:
            yield title, pages


def navigation_of(site):
    """The parts of the site; each page of the folder docs stands in one of them."""
    def shown(paths):
        return [str(site.place(pathlib.Path(path))) for path in paths]

    def by_family(folder):
        index = (site.project / folder / "README.md").read_text()
        return [f"{folder}/README.md"] + [
            {title: shown(f"{folder}/{page}" for page in pages)} for title, pages in families_of(index)]

    parts = [
        {"Home": "README.md"},
        {"Learn": shown(LEARN)},
        {"By task": "docs/tasks.md"},
        {"Language": shown(LANGUAGE)},
        {"Functions": by_family("docs/functions")},
        {"Library": by_family("docs/library")},
        {"Examples": shown(EXAMPLES)},
        {"Details": shown(DETAILS)},
    ]
    named = json.dumps(parts)
    rest = [str(path.relative_to(site.project)) for path in sorted((site.project / "docs").rglob("*.md"))]
    rest += ["SECURITY.md", "bench/README.md", "plugin/README.md", "refhost/README.md", "tests/README.md",
             "CONTRIBUTING.md", "CHANGELOG.md", "LICENSE"]
    parts.append({"Hosts and module": shown(path for path in rest if f'"{path}"' not in named)})
    return parts


def configuration_of(output, navigation):
    """JSON is YAML, too."""
    return json.dumps({"INHERIT": str(HERE / "mkdocs.yml"), "docs_dir": str(output / "pages"),
                       "site_dir": str(output / "html"), "nav": navigation,
                       "theme": {"custom_dir": str(HERE / "theme")}}, indent=1)


def html_of(place):
    return str(place.with_name("index.html") if place.name == "README.md" else place.with_suffix(".html"))


def words_of(text):
    """The words that people search for, by page, or by page and section."""
    words = {}
    for number, line in enumerate(text.splitlines(), start=1):
        if not line or line.startswith("# "):
            continue
        page, _, found = line.partition(": ")
        if not found or page in words:
            raise LookupError(f"{WORDS}:{number}: is not `PAGE: words`, or names a page for the second time")
        words[page] = found
    return words


def with_better_index(index, site, words):
    """
    Leaves the code of files to their pages, and finds a function of the module without its `x`, too. The words for a
    page stand behind its title: a word of a title counts more than any number of words in texts.
    """
    html_of_code = {html_of(place) for path, place in site.made.items()
                    if place.suffix == ".md" and place != path and place.name != "README.md"}
    entries = [entry for entry in index["docs"] if entry["location"].partition("#")[0] not in html_of_code]
    for entry in entries:
        if function := re.fullmatch(r"docs/functions/x(\w+)\.html", entry["location"]):
            entry["title"] += f" · {function.group(1)}"
    titles = {entry["location"]: entry for entry in entries}
    for page, found in words.items():
        path, _, section = page.partition("#")
        place = site.made.get(pathlib.Path(path))
        location = place and html_of(place) + (f"#{section}" if section else "")
        if location not in titles:
            raise LookupError(f"{WORDS}: the site has no {page}")
        titles[location]["title"] += f" · {found}"
    return {**index, "docs": entries}


def build(project, output):
    output.mkdir(parents=True, exist_ok=True)
    for folder in ("pages", "html"):
        shutil.rmtree(output / folder, ignore_errors=True)
    site = Site(project, output)
    site.place(pathlib.Path("README.md"))
    navigation = navigation_of(site)
    site.make_all()
    shutil.copy(HERE / "site.css", output / "pages")
    (output / "mkdocs.yml").write_text(configuration_of(output, navigation))
    paths = [str(project / LEXER), os.environ.get("PYTHONPATH", "")]
    environment = {**os.environ, "PYTHONPATH": os.pathsep.join(filter(None, paths)), "PYTHONDONTWRITEBYTECODE": "1"}
    subprocess.run(["mkdocs", "build", "--quiet", "--strict", "--config-file", output / "mkdocs.yml"], check=True,
                   env=environment)
    index = output / "html/search/search_index.json"
    better = with_better_index(json.loads(index.read_text()), site, words_of((HERE / WORDS).read_text()))
    index.write_text(json.dumps(better, ensure_ascii=False))
    return sum(1 for _ in (output / "html").rglob("*.html"))


def main(project, output):
    output = pathlib.Path(output).resolve()
    try:
        count = build(pathlib.Path(project).resolve(), output)
    except LookupError as fault:
        print(f"error: {fault.args[0]}", file=sys.stderr)
        return 1
    except subprocess.CalledProcessError:
        return 1
    print(f"{count} pages in {output / 'html'}")
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
