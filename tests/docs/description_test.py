# tests/docs/description_test.py: the description of the functions holds what its schema and docs/description.md promise
#
# Usage: description_test.py PROJECT_DIRECTORY DESCRIPTION DESCRIBE_FUNCTIONS

import copy
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import jsonschema

from surprises_page import WITHOUT_VALUE

DESCRIBE = sys.argv.pop()
DESCRIPTION = pathlib.Path(sys.argv.pop())
PROJECT = pathlib.Path(sys.argv.pop())

SCHEMA = json.loads((PROJECT / "share/arrayfold/functions.schema.json").read_text())
VALIDATOR = jsonschema.Draft202012Validator(SCHEMA)
LISTED = re.findall(r"^FUNCTION\((\w+),\s*(\w+),\s*(\d+),\s*(\w+)\)",
                    (PROJECT / "plugin/host/functions.def").read_text(), re.MULTILINE)


def entry_of(description, name):
    return next(entry for entry in description["functions"] if entry["name"] == name)


def entries_of(description):
    return description["functions"] + description["methods"] + description["operators"]


def conditions_of(condition):
    """The condition, or those that it joins."""
    return [part for one in condition["all"] for part in conditions_of(one)] if "all" in condition else [condition]


class Description(unittest.TestCase):
    def setUp(self):
        self.description = json.loads(DESCRIPTION.read_text())

    def test_it_is_as_the_schema_says(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)
        self.assertEqual([error.message for error in VALIDATOR.iter_errors(self.description)], [])

    def test_its_functions_are_those_of_the_module_in_their_order(self):
        rows = [(entry["name"], entry["family"], str(entry["least_arguments"]), entry["status"])
                for entry in self.description["functions"]]
        self.assertEqual(rows, LISTED)
        self.assertGreater(len(rows), 90)

    def test_its_head_ends_with_the_first_brace_and_has_the_numbers_of_arguments_of_the_entries(self):
        text = DESCRIPTION.read_text()
        head = json.loads(text[:text.index("}") + 1] + "}")
        self.assertEqual(head["format"], 1)
        self.assertEqual(list(head["most_arguments"].items()),
                         [(entry["name"], entry["most_arguments"]) for entry in self.description["functions"]])

    def test_readme_names_what_never_gives_a_usable_value(self):
        readme = (PROJECT / "README.md").read_text()
        paragraph = next(part for part in readme.split("\n\n") if "never give a usable value" in part)
        # That the results of the others are no use, only their pages tell.
        useless = {"xeig": "An empty table.", "xeigvals": "Nothing, which is nil in `hvm`.", "xcond": "None.",
                   "xpermutation": "The integer 0."}
        self.assertEqual(sorted(useless), WITHOUT_VALUE)
        for name, result in useless.items():
            self.assertEqual(entry_of(self.description, name)["result"], result)
        stubs = {entry["name"] for entry in self.description["functions"] if entry["status"] == "stub"}
        self.assertEqual(set(re.findall(r"`(x\w+)`", paragraph)), stubs | set(useless))
        self.assertEqual(len(stubs | set(useless)), 14)
        self.assertTrue(paragraph.startswith("Fourteen of the 93 functions"))

    def test_every_page_that_it_names_is_there(self):
        for entry in entries_of(self.description):
            self.assertTrue((PROJECT / entry["page"]).is_file(), entry["page"])

    def test_every_kind_that_it_names_is_in_its_table_of_kinds(self):
        for entry in entries_of(self.description):
            named = [kind for argument in entry["arguments"] for kind in argument["kinds"]]
            for failure in entry["failures"]:
                for condition in conditions_of(failure["condition"]):
                    named += condition.get("kind_in", []) + condition.get("kind_not_in", [])
            self.assertLessEqual(set(named), set(self.description["kinds"]), entry["name"])

    def test_conditions_speak_of_arguments_of_their_entry(self):
        for entry in entries_of(self.description):
            known = {argument["name"] for argument in entry["arguments"] + [entry.get("receiver", {"name": "a"})]}
            for failure in entry["failures"]:
                for condition in conditions_of(failure["condition"]):
                    if condition.get("of", "any") != "any":
                        self.assertLessEqual(set(condition["of"]), known, entry["name"])

    def test_every_stub_says_what_to_write_instead(self):
        for entry in self.description["functions"]:
            if entry["status"] == "stub":
                self.assertEqual(entry["failures"][-1]["condition"], {"always": True}, entry["name"])
                self.assertIn("remedy", entry["failures"][-1], entry["name"])
                self.assertTrue(entry["surprises"], entry["name"])

    def test_a_known_failure_stands_as_it_is_documented(self):
        failure = next(failure for failure in entry_of(self.description, "xinv")["failures"]
                       if failure["when"] == "`a` is an int or int64 array")
        self.assertEqual(failure, {
            "when": "`a` is an int or int64 array",
            "condition": {"of": ["a"], "kind_in": ["int array", "int64 array"]},
            "outcome": "fails",
            "remedy": "make doubles of it with `xminimum(a, a)`"})

    def test_the_example_of_the_guide_is_the_entry_itself(self):
        guide = (PROJECT / "docs/description.md").read_text()
        (block,) = re.findall(r"```json\n(.*?)```", guide, re.DOTALL)
        example = json.loads(block)
        self.assertEqual(example, entry_of(self.description, example["name"]))


class Schema(unittest.TestCase):
    """Documents that the schema refuses: the description of the project with one change."""

    def setUp(self):
        self.description = json.loads(DESCRIPTION.read_text())
        self.assertTrue(VALIDATOR.is_valid(self.description))

    def assert_refused(self, change):
        broken = copy.deepcopy(self.description)
        change(broken)
        self.assertNotEqual(broken, self.description, "the change changes nothing")
        self.assertFalse(VALIDATOR.is_valid(broken))

    def test_another_format_is_refused(self):
        for value in (2, "1", None):
            self.assert_refused(lambda broken, value=value: broken.update(format=value))

    def test_missing_keys_are_refused(self):
        for key in SCHEMA["required"]:
            self.assert_refused(lambda broken, key=key: broken.pop(key))
        for key in SCHEMA["$defs"]["entry"]["required"]:
            self.assert_refused(lambda broken, key=key: broken["functions"][0].pop(key))
        for key in SCHEMA["$defs"]["argument"]["required"]:
            self.assert_refused(lambda broken, key=key: broken["functions"][0]["arguments"][0].pop(key))
        for key in SCHEMA["$defs"]["failure"]["required"]:
            self.assert_refused(lambda broken, key=key: broken["functions"][0]["failures"][0].pop(key))
        self.assert_refused(lambda broken: broken["methods"][0].pop("receiver"))

    def test_unknown_keys_are_refused(self):
        self.assert_refused(lambda broken: broken.update(more=1))
        self.assert_refused(lambda broken: broken["functions"][0].update(more=1))
        self.assert_refused(lambda broken: broken["functions"][0]["arguments"][0].update(more=1))
        self.assert_refused(lambda broken: broken["functions"][0]["failures"][0].update(more=1))

    def test_unknown_outcomes_and_conditions_are_refused(self):
        def failure(broken):
            return broken["functions"][0]["failures"][0]

        self.assert_refused(lambda broken: failure(broken).update(outcome="breaks"))
        for condition in ({}, {"of": ["a"]}, {"kind_in": ["int"]}, {"of": [], "kind_in": ["int"]}, {"told": False},
                          {"all": [{"told": True}]}, {"of": ["a"], "below": "0"}, {"of": ["a"], "above": 0},
                          {"of": ["a"], "below": 0, "equals": 0}, {"arguments_below": 1, "told": True}):
            self.assert_refused(lambda broken, condition=condition: failure(broken).update(condition=condition))

    def test_an_exception_belongs_to_what_throws_and_to_nothing_else(self):
        def throwing(broken):
            return next(failure for failure in entry_of(broken, "xinv")["failures"] if failure["outcome"] == "throws")

        self.assert_refused(lambda broken: throwing(broken).pop("exception"))
        self.assert_refused(lambda broken: throwing(broken).update(exception="no type"))
        self.assert_refused(lambda broken: throwing(broken).update(outcome="fails"))


class Program(unittest.TestCase):
    """describe_functions over a copy of the pages."""

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.pages = pathlib.Path(self.folder.name) / "functions"
        self.output = pathlib.Path(self.folder.name) / "functions.json"
        shutil.copytree(PROJECT / "docs/functions", self.pages)

    def tearDown(self):
        self.folder.cleanup()

    def run_program(self):
        return subprocess.run([DESCRIBE, self.pages, self.output], capture_output=True, text=True, check=False)

    def test_without_arguments_it_shows_its_usage(self):
        finished = subprocess.run([DESCRIBE], capture_output=True, text=True, check=False)
        self.assertEqual((finished.returncode, finished.stderr), (2, "usage: describe_functions PAGES OUTPUT\n"))

    def test_the_same_pages_give_the_same_bytes(self):
        self.assertEqual(self.run_program().returncode, 0)
        self.assertEqual(self.output.read_bytes(), DESCRIPTION.read_bytes())

    def test_what_is_wrong_is_told_with_its_line_and_nothing_is_written(self):
        (self.pages / "xsum.md").unlink()
        page = self.pages / "xinv.md"
        text = page.read_text().replace("| double array, square matrix |", "| double arrays |")
        page.write_text(text)
        line = text.splitlines().index("| `a` | double arrays | | a square matrix that is not singular |") + 1
        finished = self.run_program()
        self.assertEqual(finished.returncode, 1)
        self.assertEqual(finished.stderr.splitlines(), [
            f"{self.pages}/xsum.md:1: the page is missing",
            f"{page}:{line}: not in the vocabulary of Accepts: double arrays"])
        self.assertFalse(self.output.exists())

    def test_an_output_that_cannot_be_written_is_told(self):
        self.output = self.pages / "no" / "functions.json"
        finished = self.run_program()
        self.assertEqual((finished.returncode, finished.stderr), (1, f"{self.output}: cannot be written\n"))


if __name__ == "__main__":
    unittest.main()
