# tests/examples/week_test.py: the checks of examples/week notice what they are for
#
# Usage: week_test.py HVM

import pathlib
import sys
import tempfile
import unittest

import statements
import week

HVM = pathlib.Path(sys.argv.pop(1)).resolve()


class Statements(unittest.TestCase):
    def test_of_python(self):
        for text, count in [
            ("", 0),
            ("import numpy as np\nfrom math import pi\n", 0),
            ('"""About."""\nx = 1  # one\nx += 1; print(x)\n', 3),
            ('def f(x):\n    """About."""\n    return x\n', 2),
            ("if a:\n    b()\nelif c:\n    d()\nelse:\n    e()\n", 5),
            ("for x in y:\n    with z: print(x)\n", 3),
            ("try:\n    a()\nexcept ValueError:\n    b()\n", 3),
        ]:
            with self.subTest(text):
                self.assertEqual(statements.of_python(text), count)

    def test_of_hvm(self):
        for text, count in [
            ("", 0),
            ('use "arrays"\n# if this then that\n', 0),
            ("x = 1  # one\nx += 1; print(x)\n", 3),
            ("fn f(x)\n  return x\nend\n", 2),
            ("fn f(g(x), y) return x end\nf(1, 2)\n", 3),
            ("if a\n  b()\nelseif c\n  d()\nelse\n  e()\nend\n", 5),
            ("if a then b() elseif c then d() else e() end\n", 5),
            ("for x in y do if z then print(x) end end\nprint(1)\n", 4),
            ("while a do b += 1; c() end\n", 3),
            ("try\n  a()\ncatch e\n  b(e)\nend\n", 3),
            ("try a() catch e b(e) end\n", 3),
            ("x = [\n  1,\n  f(2),\n]\ny = a +\n  b\nf(1)\n", 3),
            ("x = a and\n  b\ny = [1, 2][\n  0]\n", 2),
            ('x = "a; b # c \\" then d"; print(w"end")\n', 2),
            ("t[k] *= 1.5e-3\n\n\n;;\nprint(@double(2), -1, a >= 2)\n", 2),
        ]:
            with self.subTest(text):
                self.assertEqual(statements.of_hvm(text), count)


class Comparison(unittest.TestCase):
    def test_the_forms_of_an_array_agree(self):
        self.assertIsNone(week.difference("a: double(2, 2) [[1.0, 0.333333], [2.0, 3.0]]",
                                          "a: [[1.         0.33333333]\n [2. 3.]]\n"))

    def test_differences_are_found(self):
        for text, expected in [
            ("1", ""),
            ("", "1"),
            ("3", "4"),
            ("100000", "100001"),
            ("-100000", "-100001"),
            ("0.1234", "0.1235"),
            ("0.1", "nan"),
            ("red", "blue"),
            ("double(2) [1.0, 2.0]", "[2. 1.]"),
            ("int(1) [1]", "[1 1]"),
        ]:
            with self.subTest(text):
                self.assertIsNotNone(week.difference(text, expected))


class Folder(unittest.TestCase):
    """A folder with one script and its twin, in which single things are wrong."""

    def setUp(self):
        self.place = tempfile.TemporaryDirectory()
        self.folder = pathlib.Path(self.place.name)
        (self.folder / "data").mkdir()
        self.write(script='print(2.0)\nwrite_text("a.txt", "1")\n',
                   twin='import pathlib\nprint(2)\npathlib.Path("a.txt").write_text("1")\n')
        self.table((2, 2))

    def tearDown(self):
        self.place.cleanup()

    def write(self, **texts):
        for part, text in texts.items():
            (self.folder / {"script": "one.hvm", "twin": "one.py"}[part]).write_text(text)

    def table(self, counts):
        (self.folder / "README.md").write_text("| a | [one.hvm](one.hvm) | {} | [one.py](one.py) | {} |\n".format(*counts))

    def faults(self):
        return [fault for fault in week.faults_of(self.folder, HVM) if f"not {week.SCRIPTS}" not in fault]

    def assert_fault(self, words):
        self.assertTrue(any(words in fault for fault in self.faults()), self.faults())

    def test_what_is_right_has_no_fault(self):
        self.assertEqual(self.faults(), [])

    def test_the_number_of_scripts_counts(self):
        self.assertEqual(len(list(week.faults_of(self.folder, HVM))), 1)

    def test_another_output(self):
        self.write(script='print(2.5)\nwrite_text("a.txt", "1")\n')
        self.assert_fault("output: 2.5 instead of 2")

    def test_another_file(self):
        self.write(script='print(2)\nwrite_text("a.txt", "2")\n')
        self.assert_fault("a.txt: 2 instead of 1")

    def test_no_file(self):
        self.write(script="print(2)\nprint()\n")
        self.assert_fault("writes ['output']")

    def test_no_output(self):
        self.write(script="x = 1\ny = 2\n", twin="x = 1\ny = 2\n")
        self.assert_fault("no output")

    def test_a_script_that_fails(self):
        self.write(script="print(2)\nnothing()\n")
        self.assert_fault("status 1")

    def test_a_twin_that_fails(self):
        self.write(twin="print(2)\nnothing()\n")
        self.assert_fault("NameError")

    def test_a_warning(self):
        self.write(twin='import sys, pathlib\nprint(2, file=sys.stderr)\npathlib.Path("a.txt").write_text("1")\n')
        self.assert_fault("status 0")

    def test_another_count(self):
        self.table((2, 3))
        self.assert_fault("one has (2, 3), counted are (2, 2)")

    def test_a_missing_row(self):
        (self.folder / "README.md").write_text("")
        self.assert_fault("one has None")

    def test_a_row_too_many(self):
        with (self.folder / "README.md").open("a") as page:
            page.write("| a | [two.hvm](two.hvm) | 1 | [two.py](two.py) | 1 |\n")
        self.assert_fault("two is no script")

    def test_too_many_statements(self):
        self.write(script='print(2)\nwrite_text("a.txt", "1")\nx = 1\nx = 2\nx = 3\n')
        self.table((5, 2))
        self.assert_fault("5 statements, NumPy takes 2")

    def test_a_missing_twin(self):
        (self.folder / "one.py").unlink()
        self.assert_fault("without its twin")


if __name__ == "__main__":
    unittest.main()
