# tests/docs/site_test.py: the maker of the site changes what MkDocs reads in another way, and the check of the site
# notices what it is for
#
# Usage: site_test.py PROJECT_DIRECTORY

import json
import pathlib
import sys
import tempfile
import unittest

import site_check
from pages import reached_from_readme

PROJECT = pathlib.Path(sys.argv.pop(1)).resolve()
sys.path.insert(0, str(PROJECT / "scripts/site"))
import site_maker  # noqa: E402


class Folder(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name).resolve()

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)


class Making(Folder):
    def made(self, text):
        """The pages that are made of a README, by their names."""
        self.write("project/README.md", text)
        site = site_maker.Site(self.root / "project", self.root)
        site.place(pathlib.Path("README.md"))
        site.make_all()
        return {str(path.relative_to(self.root / "pages")): path.read_text()
                for path in (self.root / "pages").rglob("*.md")}

    def test_lists_and_tables_get_a_blank_line_before_them_and_remarks_go(self):
        text = "text\n- one\n- two\n<!-- remark -->\n\nmore\n| a |\n| --- |\n```text\nx\n- y\n```\n"
        self.assertEqual(self.made(text)["README.md"],
                         "text\n\n- one\n- two\n\nmore\n\n| a |\n| --- |\n```text\nx\n- y\n```\n")

    def test_a_bar_within_code_in_a_table_has_no_backslash(self):
        self.assertEqual(self.made("| `k \\| <l>` | `k` |\n")["README.md"],
                         "| <code>k &#124; &lt;l></code> | `k` |\n")

    def test_links_to_files_and_folders_lead_to_pages_of_them(self):
        self.write("project/a/one.hvm", "print(1)\n")
        self.write("project/a/.hidden", "")
        self.write("project/b/README.md", "[up](../README.md#x)\n")
        pages = self.made("[one](a/one.hvm) [a](a) [b](b) [web](https://example.org/x) `[none](none.md)`\n")
        self.assertEqual(pages, {
            "README.md": "[one](a/one.hvm.md) [a](a/README.md) [b](b/README.md) [web](https://example.org/x) "
                         "`[none](none.md)`\n",
            "a/README.md": "# a\n\n- [one.hvm](one.hvm.md)\n",
            "a/one.hvm.md": "# a/one.hvm\n\n````hvm\nprint(1)\n````\n",
            "b/README.md": "[up](../README.md#x)\n",
        })

    def test_a_link_that_leads_nowhere_is_an_error_that_names_it(self):
        with self.assertRaisesRegex(LookupError, "README.md: docs/none.md leads to docs/none.md, which there is not"):
            self.made("[x](docs/none.md)\n")

    def test_the_families_of_an_index_are_its_titles_with_tables(self):
        index = "# Index\n[z](z.md)\n## One\n[y](y.md)\n| [a](a.md), [b](b.md) | x |\n"
        index += "## Two\ntext\n## Three\n| [c](c.md) |\n"
        self.assertEqual(list(site_maker.families_of(index)), [("One", ["a.md", "b.md"]), ("Three", ["c.md"])])

    def test_every_page_that_links_lead_to_is_in_the_navigation_except_results_of_benchmarks(self):
        navigation = json.dumps(site_maker.navigation_of(site_maker.Site(PROJECT, self.root)))
        reached = {str(page.relative_to(PROJECT)) for page in reached_from_readme(PROJECT)}
        self.assertEqual([page for page in sorted(reached)
                          if f'"{page}"' not in navigation and not page.startswith("bench/results/")], [])

    def test_a_search_finds_names_without_their_x_and_no_code_of_files(self):
        self.write("project/one.hvm", "print(1)\n")
        self.write("project/README.md", "[one](one.hvm)\n")
        site = site_maker.Site(self.root / "project", self.root)
        site.place(pathlib.Path("one.hvm"))
        entries = [{"location": place, "title": "x"} for place in
                   ("docs/functions/xsum.html", "docs/functions/xsum.html#result", "one.hvm.html", "one.hvm.html#a")]
        index = site_maker.with_better_index({"config": 1, "docs": entries}, site, {})
        self.assertEqual([entry["title"] for entry in index["docs"]], ["x · sum", "x"])
        self.assertEqual(index["config"], 1)

    def test_words_that_people_search_for_stand_behind_titles(self):
        self.write("project/docs/README.md", "# Index\n")
        site = site_maker.Site(self.root / "project", self.root)
        site.place(pathlib.Path("docs/README.md"))
        entries = [{"location": place, "title": "x"} for place in ("docs/index.html", "docs/index.html#a", "b.html")]
        words = site_maker.words_of("# Words\n\ndocs/README.md: list, all\ndocs/README.md#a: first\n")
        index = site_maker.with_better_index({"docs": entries}, site, words)
        self.assertEqual([entry["title"] for entry in index["docs"]], ["x · list, all", "x · first", "x"])

    def test_words_for_no_page_and_lines_that_are_none_are_errors(self):
        self.write("project/docs/README.md", "# Index\n")
        site = site_maker.Site(self.root / "project", self.root)
        site.place(pathlib.Path("docs/README.md"))
        index = {"docs": [{"location": "docs/index.html", "title": "x"}]}
        for page in ("docs/none.md", "docs/README.md#none"):
            with self.subTest(page), self.assertRaisesRegex(LookupError, f"the site has no {page}"):
                site_maker.with_better_index(index, site, {page: "word"})
        for line in ("docs/README.md", "a.md: one\na.md: two"):
            with self.subTest(line), self.assertRaisesRegex(LookupError, "is not `PAGE: words`"):
                site_maker.words_of(line + "\n")


class Checking(Folder):
    def faults(self, text):
        self.write("html/other.html", '<h1 id="here">x</h1>')
        self.write("html/page.html", text)
        return [fault.removeprefix(f"{self.root}/html/") for fault in site_check.faults_of_site(self.root / "html")]

    def test_a_whole_page_is_in_order(self):
        self.assertEqual(self.faults('<a href="other.html#here">x</a> <a href="https://example.org">y</a> '
                                     '<a href="#p"></a> <p id="p"><span class="n">a</span>'), [])

    def test_each_fault_is_noticed_with_its_line(self):
        for text, fault in [
            ('<a href="none.html">', "links to none.html, which there is not"),
            ('<a href="other.html#there">', "links to other.html#there, and there is no such place"),
            ('<a href="#there">', "links to #there, and there is no such place"),
            ('<img src="none.svg">', "links to none.svg, which there is not"),
            ('<script src="https://example.org/x.js"></script>', "takes https://example.org/x.js from the web"),
            ('<link rel="stylesheet" href="//example.org/x.css">', "takes //example.org/x.css from the web"),
            ('<span class="err">é</span>', "the lexer does not know 'é'"),
        ]:
            with self.subTest(text):
                self.assertIn(f"page.html:2: {fault}", self.faults("<p>\n" + text))

    def test_a_style_that_takes_a_font_from_the_web_is_noticed(self):
        for text, link in [("x { src: url(https://example.org/font) }", "https://example.org/font"),
                           ("x { src: url('//example.org/font') }", "//example.org/font"),
                           ('@import "https://example.org/a.css";', "https://example.org/a.css")]:
            with self.subTest(text):
                self.write("html/a.css", text)
                self.assertEqual(self.faults(""), [f"a.css:1: takes {link} from the web"])

    def test_a_page_that_a_search_does_not_find_is_noticed(self):
        index = {"docs": [{"location": "docs/a.html"}, {"location": "docs/b.html#x"}]}
        self.assertEqual(list(site_check.faults_of_search(index, ["docs/a.html", "docs/b.html"])), [])
        self.assertEqual(len(list(site_check.faults_of_search(index, ["docs/c.html"]))), 1)


if __name__ == "__main__":
    unittest.main()
