# tests/docs/surprises_page_test.py: the check of docs/surprises.md notices what it is for
#
# Usage: surprises_page_test.py PROJECT_DIRECTORY HVM

import pathlib
import sys
import unittest

import surprises_page

PROJECT = pathlib.Path(sys.argv.pop(1))
HVM = pathlib.Path(sys.argv.pop(1)).resolve()
PAGE = """# Surprises

## Numbers

### number-on-the-left

```hvm
print(5 - xarange(3))
```

**Why:** So.

**Write:** This.

## More
"""


def faults(page, names=("number-on-the-left",)):
    warnings_of = surprises_page.warnings_by(HVM)
    return list(surprises_page.faults_of_sections(surprises_page.sections_of(page), names, warnings_of))


class Sections(unittest.TestCase):
    def test_a_section_for_each_warning_is_in_order(self):
        self.assertEqual(faults(PAGE), [])

    def test_a_new_warning_is_noticed(self):
        self.assertEqual(faults(PAGE, ["number-on-the-left", "column"]), ["1: the warning column has no section"])

    def test_other_faults_are_noticed(self):
        for old, new, words in [
            ("### number-on-the-left", "### number", "5: there is no warning number"),
            ("**Why:**", "Why:", "5: number-on-the-left has no paragraph Why"),
            ("**Write:**", "Write:", "5: number-on-the-left has no paragraph Write"),
            ("```hvm", "```text", "5: number-on-the-left has 0 examples"),
            ("5 - xarange(3)", "xarange(3)", "5: the example does not bring about"),
            ("5 - xarange(3)", "5 - xarange(0, 2.5)", "5: the example does not bring about"),
            ("5 - xarange(3)", "5 - xarange(3)) error(1", "5: the example does not bring about"),
        ]:
            with self.subTest(new):
                found = faults(PAGE.replace(old, new))
                self.assertTrue(any(fault.startswith(words) for fault in found), found)


class Tables(unittest.TestCase):
    DESCRIPTION = {"functions": [
        {"name": "xone", "page": "docs/functions/xone.md",
         "surprises": [{"title": "a | b.", "text": "See [two](xtwo.md#result) and [it](../library/README.md)."}]},
        {"name": "xtwo", "page": "docs/functions/xtwo.md", "surprises": [{"title": "a | b.", "text": "Other."}]},
    ], "methods": [], "operators": []}

    def test_surprises_of_one_title_are_one_row(self):
        row = surprises_page.table_of_surprises(self.DESCRIPTION).splitlines()[3]
        self.assertEqual(row, "| A \\| b. | See [two](functions/xtwo.md#result) and [it](library/README.md). | "
                              "[xone](functions/xone.md#result), [xtwo](functions/xtwo.md#result) |")

    def test_tables_replace_what_stands_between_the_marks(self):
        marks = "\n".join([surprises_page.WARNINGS_MARK, "old", surprises_page.END_MARK, "text",
                           surprises_page.PAGES_MARK, surprises_page.END_MARK, ""])
        rows = surprises_page.rows_of("name   what  docs/functions/xone.md#result\n")
        text = surprises_page.written(marks, rows, self.DESCRIPTION)
        self.assertIn("| [name](#name) | what | [xone](functions/xone.md#result) |", text)
        self.assertNotIn("old", text)
        self.assertEqual(surprises_page.written(text, rows, self.DESCRIPTION), text)


class Functions(unittest.TestCase):
    def setUp(self):
        self.page = (PROJECT / "docs/surprises.md").read_text()
        self.listing = (PROJECT / "plugin/host/functions.def").read_text()

    def found(self):
        return "\n".join(surprises_page.faults_of_functions(self.page, self.listing))

    def test_page_and_list_agree(self):
        self.assertEqual(self.found(), "")

    def test_a_function_that_the_page_lacks_is_noticed(self):
        self.page = self.page.replace("| [xclip]", "| xclip ")
        self.assertIn("the functions without a usable value are", self.found())

    def test_another_count_is_noticed(self):
        self.listing += "FUNCTION(xnew, create, 1, working)\n"
        self.assertIn("does not begin that section with '14 of the 94 functions'", self.found())
        self.listing += "FUNCTION(xother, create, 1, stub)\n"
        self.assertIn("does not begin that section with '15 of the 95 functions'", self.found())


if __name__ == "__main__":
    unittest.main()
