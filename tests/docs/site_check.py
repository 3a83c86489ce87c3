# tests/docs/site_check.py: the site of the pages is whole
#
# Usage: site_check.py PROJECT_DIRECTORY OUTPUT_DIRECTORY
#
# Builds the site and reads all of it. Every link leads to a file of the site and to a place there, no page takes
# anything from the web, no code is unknown to its lexer, and the search has every page of the folder docs. Where MkDocs
# or its theme is not installed, the exit status is 77, which ctest takes for skipped.

import html.parser
import json
import pathlib
import re
import shutil
import subprocess
import sys
import urllib.parse

SKIPPED = 77
THEME = pathlib.Path("/usr/share/mkdocs/themes/material")
# What a browser loads by itself, by element.
LOADED = {"script": "src", "img": "src", "link": "href", "iframe": "src", "source": "src", "object": "data"}


class Page(html.parser.HTMLParser):
    """What one page links to and loads, the anchors that it has, and code that its lexer does not know."""

    def __init__(self, text):
        super().__init__()
        self.links, self.loads, self.anchors, self.unknown = [], [], set(), []
        self.in_error = False
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        self.anchors.update(attributes[key] for key in ("id", "name") if attributes.get(key))
        if tag == "a" and attributes.get("href"):
            self.links.append((self.getpos()[0], attributes["href"]))
        if tag in LOADED and attributes.get(LOADED[tag]):
            self.loads.append((self.getpos()[0], attributes[LOADED[tag]]))
        self.in_error = tag == "span" and attributes.get("class") == "err"

    def handle_data(self, data):
        if self.in_error:
            self.unknown.append((self.getpos()[0], data))
            self.in_error = False


def is_of_web(link):
    return bool(re.match(r"[a-z]+:|//", link))


def faults_of_site(folder):
    """What is wrong with the pages of a folder, with their lines."""
    pages = {path: Page(path.read_text()) for path in sorted(folder.rglob("*.html"))}
    for path, page in pages.items():
        for line, link in page.loads:
            if is_of_web(link):
                yield f"{path}:{line}: takes {link} from the web"
        for line, link in page.loads + page.links:
            # The page of missing pages names all others from the root of a server.
            if is_of_web(link) or link.startswith("/"):
                continue
            way, _, anchor = urllib.parse.unquote(link).partition("#")
            target = (path.parent / way).resolve() if way else path
            if target.is_dir():
                target /= "index.html"
            if not target.exists():
                yield f"{path}:{line}: links to {link}, which there is not"
            elif anchor and target in pages and anchor not in pages[target].anchors:
                yield f"{path}:{line}: links to {link}, and there is no such place"
        for line, code in page.unknown:
            yield f"{path}:{line}: the lexer does not know {code!r}"
    for path in sorted(folder.rglob("*.css")):
        for link in re.findall(r"(?:url\(|@import) *[\"']?((?:https?:)?//[^)\"']+)", path.read_text()):
            yield f"{path}:1: takes {link} from the web"


def faults_of_search(index, pages):
    """The pages that a search cannot find."""
    found = {urllib.parse.unquote(entry["location"]).partition("#")[0] for entry in index["docs"]}
    for page in pages:
        if page not in found:
            yield f"search/search_index.json:1: does not have {page}"


def html_of(path):
    return str(path.with_name("index.html") if path.name == "README.md" else path.with_suffix(".html"))


def main(project, output):
    project, folder = pathlib.Path(project), pathlib.Path(output).resolve() / "html"
    if not shutil.which("mkdocs") or not THEME.is_dir():
        print("skipped: MkDocs or its theme is not installed; scripts/install-packages packages-docs.txt installs both")
        return SKIPPED
    maker = project / "scripts/site/site_maker.py"
    if subprocess.run([sys.executable, "-B", maker, project, output], check=False).returncode:
        return 1
    faults = list(faults_of_site(folder))
    wanted = [html_of(path.relative_to(project)) for path in sorted((project / "docs").rglob("*.md"))]
    faults += [f"{folder}/{fault}"
               for fault in faults_of_search(json.loads((folder / "search/search_index.json").read_text()), wanted)]
    print("\n".join(faults) or f"the links of {sum(1 for _ in folder.rglob('*.html'))} pages lead somewhere")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
