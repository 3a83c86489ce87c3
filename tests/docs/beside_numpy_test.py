# tests/docs/beside_numpy_test.py: the comparison with NumPy notices what it is for
#
# Usage: beside_numpy_test.py HVM

import pathlib
import sys
import unittest

import beside_numpy

HVM = pathlib.Path(sys.argv.pop(1)).resolve()
PAGE = """| Name | NumPy | Here |
| --- | --- | --- |
| a | `np.array([1.0, 2.0])` | `xarray(@double, [1, 2])` |

| NumPy | Here | What differs |
| --- | --- | --- |
"""


def faults(*rows):
    return list(beside_numpy.faults_of(PAGE + "".join(f"| {row} |\n" for row in rows), HVM))


class Rows(unittest.TestCase):
    def test_the_same_results_are_in_order(self):
        self.assertEqual(faults("`a + 1` | `a + 1` | ", "`a.shape` | `a.shape()` | ",
                                "`a.sum() > 2` | `xsum(a) > 2` | ", "`'x\\|' * 2` | `\"x\\|\" * 2` | ",
                                "`a * np.nan` | `a * (0.0 / 0)` | ",
                                "`b = a; b[0] = 5; a` | `b = a; b[0] = 5; a` | "), [])

    def test_every_wrong_row_is_noticed_with_its_line(self):
        for row, words in [
            ("`a + 1` | `a + 1.000001` | ", "is [2.000001, 3.000001], not [2.0, 3.0]"),
            ("`a + 1` | `a` | ", "not [2.0, 3.0]"),
            ("`a` | `stack([a])` | ", "has the shape [1, 2], not [2]"),
            ("`a[0]` | `slice(a, 0, 1)` | ", "has the shape [1], not []"),
            ("`'x'` | `\"y\"` | ", "is 'y', not 'x'"),
            ("`1` | `\"1\"` | ", "is a string"),
            ("`'1'` | `1` | ", "is 1, not '1'"),
            ("`1` | `nil` | ", "is nil"),
            ("`[1, 2]` | `[1, 3]` | ", "is [1, 3], not [1, 2]"),
            ("`np.nan` | `1.0` | ", "not nan"),
            ("`a` | `b` | ", "there is no variable 'b'"),
            ("`b` | `a` | ", "NameError"),
        ]:
            with self.subTest(row):
                (fault,) = faults("`a` | `a` | ", row)
                self.assertTrue(fault.startswith("8: "), fault)
                self.assertIn(words, fault)

    def test_a_warning_is_a_fault(self):
        self.assertIn("the array stands on the left", faults("`a - 5` | `5 - a` | ")[0])

    def test_another_kind_must_be_named(self):
        row = "`np.arange(2)` | `xarange(2)` | "
        self.assertIn("is of kind double", faults(row)[0])
        self.assertIn("is of kind double", faults(row + "The int array is in doubles.")[0])
        self.assertEqual(faults(row + "A double array."), [])

    def test_every_row_has_its_operands_anew(self):
        self.assertEqual(faults("`a += 1; a` | `a += 1; a` | ", "`a` | `a` | "), [])


class Reading(unittest.TestCase):
    def test_what_has_no_counterpart_says_what_to_do(self):
        _, rows = beside_numpy.read(PAGE + "| `a.T` | there is none | Do this. |\n")
        self.assertEqual([row.ours for row in rows], [""])
        with self.assertRaisesRegex(ValueError, "line 7: there is none, and nothing says what to do"):
            beside_numpy.read(PAGE + "| `a.T` | there is none | |\n")

    def test_other_columns_and_cells_are_faults(self):
        for row in ("| `a` | `a` |", "| `a` | a | |", "| `a` `b` | `a` | |", "\n| NumPy | There |"):
            with self.assertRaises(ValueError):
                beside_numpy.read(f"{PAGE}{row}\n")

    def test_statements_are_split_at_the_outermost_level(self):
        parts = ['x = "a; \\"end"', "for i in r do x; y end", "if x then y; z end", "range(2)"]
        self.assertEqual(beside_numpy.statements_of("; ".join(parts)), parts)


if __name__ == "__main__":
    unittest.main()
