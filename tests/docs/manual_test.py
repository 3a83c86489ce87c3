# tests/docs/manual_test.py: the manual pages are formatted without a warning, and hold what they are made of
#
# Usage: manual_test.py PROJECT_DIRECTORY MANUAL_DIRECTORY WRITE_MANUAL

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

project, manual = map(pathlib.Path, sys.argv[1:3])
write_manual = sys.argv[3]
PAGES = ["hvm.1", "hvm.7", "arrayfold.7"]


def run(*words):
    environment = dict(os.environ, LC_ALL="C.UTF-8", MANWIDTH="80", MAN_KEEP_FORMATTING="")
    return subprocess.run([str(word) for word in words], capture_output=True, text=True, env=environment)


def formatted(page, *options):
    return run("man", *options, "-l", manual / page)


class Manual(unittest.TestCase):
    def test_pages_are_formatted_without_a_warning(self):
        for page in PAGES:
            ended = formatted(page, "--warnings=w")
            self.assertEqual((ended.returncode, ended.stderr), (0, ""), page)

    def test_indexes_find_name_and_purpose(self):
        for page in PAGES:
            ended = run("lexgrog", manual / page)
            self.assertRegex(ended.stdout, f'"{page[:-2]} - [a-z].*"', ended.stderr)

    def test_every_function_has_its_entry(self):
        text = formatted("arrayfold.7").stdout
        names = re.findall(r"^FUNCTION\((\w+),", (project / "plugin/host/functions.def").read_text(), re.M)
        self.assertEqual(len(names), 93)
        for name in names + ["dump", "reshape", "shape"]:
            self.assertRegex(text, rf"(?m)^ {{7}}(a\.)?{name}\(", name)

    def test_every_section_about_the_language_is_in_one_page(self):
        titles = re.findall(r"(?m)^## (.*)$", (project / "docs/language.md").read_text())
        text = formatted("hvm.1").stdout + formatted("hvm.7").stdout
        self.assertGreater(len(titles), 10)
        for title in titles:
            self.assertEqual(len(re.findall(rf"(?m)^{re.escape(title)}$", text)), 1, title)

    def test_no_markdown_is_left(self):
        for page in PAGES:
            text = formatted(page).stdout
            self.assertEqual(re.findall(r"\w\]\(|\*\*\w|```|\| ---", text), [], page)

    def test_same_pages_give_the_same_bytes(self):
        with tempfile.TemporaryDirectory() as folder:
            self.assertEqual(run(write_manual, project / "docs", folder).returncode, 0)
            for page in PAGES:
                self.assertEqual((pathlib.Path(folder) / page).read_bytes(), (manual / page).read_bytes(), page)

    def test_without_arguments_the_program_shows_its_usage(self):
        ended = run(write_manual)
        self.assertEqual((ended.returncode, ended.stderr), (2, "usage: write_manual DOCS FOLDER\n"))

    def test_what_is_missing_is_named(self):
        ended = run(write_manual, "/no/docs", ".")
        self.assertEqual((ended.returncode, ended.stderr), (1, "/no/docs/language.md:1: the page is missing\n"))
        ended = run(write_manual, project / "docs", "/no/folder")
        self.assertEqual((ended.returncode, ended.stderr), (1, "/no/folder/hvm.1: cannot be written\n"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
