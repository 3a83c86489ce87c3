# bench/report_test.py: what the report says of many rows

import unittest

import report


def row(case, ratio, is_untouched=False):
    return {"case": case, "ratio": ratio, "is_untouched": is_untouched}


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


if __name__ == "__main__":
    unittest.main()
