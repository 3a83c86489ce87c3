# bench/report_test.py: what the report says of many rows, and whether the saved one says it

import fnmatch
import json
import os
import pathlib
import tempfile
import unittest

import peers
import reasons
import report


def row(case, ratio, is_untouched=False, ours_ns=100.0):
    return {"case": case, "n": int(case.rpartition("/")[2]), "ratio": ratio, "is_untouched": is_untouched,
            "ours_ns": ours_ns}


def saved_results():
    """Path without its ending, facts and rows of each saved file."""
    for path in sorted((pathlib.Path(__file__).parent / "results").glob("*.json")):
        saved = json.loads(path.read_text())
        yield path.with_suffix(""), saved["machine"], saved["rows"]


class Summary(unittest.TestCase):
    def test_means_are_of_each_family_and_of_all_rows(self):
        mean, _ = report.summary([row("text/a/1", 0.25), row("text/b/1", 1.0), row("calls/c/1", 0.5)])
        self.assertEqual(mean, "NumPy's time over the module's, geometric mean of 3 rows: 2.00. "
                               "By family: calls 2.00, text 2.00.")

    def test_rows_without_a_peer_and_untouched_ones_do_not_count(self):
        mean, _ = report.summary([row("text/a/1", 0.5), row("text/b/1", None), row("creation/c/1", 0.001, True)])
        self.assertEqual(mean, "NumPy's time over the module's, geometric mean of 1 rows: 2.00. By family: text 2.00.")

    def test_slower_rows_are_counted_from_a_twentieth_on(self):
        _, slower = report.summary([row("text/a/1", 1.04), row("text/b/1", 1.06), row("text/c/1", 3.0)])
        self.assertEqual(slower, "Rows in which NumPy takes less than 0.95 of the module's time: 2.")

    def test_nothing_measured_says_nothing(self):
        self.assertEqual(report.summary([row("text/a/1", None)]), [])


class Explanations(unittest.TestCase):
    def test_a_slower_row_has_its_reason_and_its_bare_row(self):
        table = report.explanations([row("reductions/xmean/1000", 3.2, ours_ns=210.0),
                                     row("limits/add_in_order/1000", None, ours_ns=200.0)])
        self.assertEqual(table[2:], ["| reductions/xmean | 1,000 | 3.20 | add_in_order | 1.05 | Elements are added "
                                     "strictly from left to right; NumPy adds in pairs. |"])

    def test_without_a_bare_row_of_that_size_its_cells_are_empty(self):
        table = report.explanations([row("reductions/xmean/10", 3.2), row("text/a/10", 2.0)])
        self.assertEqual(table[2:], ["| reductions/xmean | 10 | 3.20 |  |  | Elements are added strictly from left to "
                                     "right; NumPy adds in pairs. |", "| text/a | 10 | 2.00 |  |  | unknown |"])

    def test_other_rows_need_none(self):
        self.assertEqual(report.explanations([row("text/a/1", 1.04), row("text/b/1", 3.0, is_untouched=True)]), [])

    def test_each_reason_is_for_some_case_and_its_bare_row_exists(self):
        names = [case.name for case in peers.all_cases()]
        for reason in reasons.REASONS:
            self.assertTrue(fnmatch.filter(names, reason.pattern), reason.pattern)
            self.assertTrue(not reason.bare or fnmatch.filter(names, f"limits/{reason.bare}/*"), reason.bare)


class SavedResults(unittest.TestCase):
    def test_every_row_in_which_numpy_is_faster_has_a_reason(self):
        for path, _, rows in saved_results():
            self.assertEqual([row["case"] for row in report.slower_rows(rows) if not reasons.reason_for(row["case"])],
                             [], path)

    def test_the_saved_page_is_that_of_the_saved_rows(self):
        with tempfile.TemporaryDirectory() as folder:
            for path, facts, rows in saved_results():
                made = report.show(os.path.join(folder, path.name), facts, rows)
                self.assertEqual(pathlib.Path(made).read_text(), path.with_suffix(".md").read_text())


if __name__ == "__main__":
    unittest.main()
