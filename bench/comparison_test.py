# bench/comparison_test.py: ratios, noise, verdicts and the exit status of a comparison of two builds

import unittest
from unittest import mock

import builds
import comparison


def row(*rounds, case="a/one/10"):
    return comparison.Row(case, rounds)


def steady(ratio, noise=0.0, case="a/one/10"):
    """Five rounds whose median ratio is `ratio` and whose largest deviation of the old module is `noise`."""
    return row(*[(100.0, 100.0 * ratio, 100.0 * (1 + noise / part)) for part in (1, 2, 4, 8, 16)], case=case)


def judged(one, floor=0.0):
    return comparison.judged([one], floor)[0]


class Rows(unittest.TestCase):
    def test_the_ratio_is_the_median_of_the_rounds_ratios(self):
        # The ratio of the medians is 2.
        self.assertEqual(row((1, 3, 1), (2, 2, 2), (10, 1, 10)).ratio, 1)

    def test_one_hiccup_changes_no_ratio(self):
        self.assertEqual(row((100, 102, 100), (100, 102, 100), (100, 900, 100)).ratio, 1.02)

    def test_times_are_medians(self):
        one = row((1, 30, 5), (2, 10, 5), (9, 20, 5))
        self.assertEqual((one.old_ns, one.new_ns), (2, 20))

    def test_noise_is_the_largest_deviation_of_the_old_module(self):
        self.assertAlmostEqual(row((100, 1, 101), (100, 1, 98), (100, 1, 103), (100, 1, 100), (100, 1, 99)).own_noise,
                               0.03)

    def test_deviations_count_alike_in_both_directions(self):
        self.assertEqual(row((100, 1, 125)).own_noise, 0.25)
        self.assertEqual(row((125, 1, 100)).own_noise, 0.25)

    def test_of_more_rounds_the_noise_is_two_ranks_above_the_middle_deviation(self):
        for count, rank in ((1, 1), (3, 3), (5, 5), (6, 5), (10, 7), (15, 10)):
            rounds = [(100, 1, 100 + deviation) for deviation in range(count, 0, -1)]
            self.assertAlmostEqual(row(*rounds).own_noise, rank / 100)

    def test_the_new_module_makes_no_noise(self):
        self.assertEqual(row((100, 50, 100), (100, 150, 100)).own_noise, 0)

    def test_the_family_leads_the_name(self):
        self.assertEqual(row(case="linear_algebra/qr/4").family, "linear_algebra")


class Noise(unittest.TestCase):
    def test_the_floor_is_the_lower_quartile_of_the_rows(self):
        rows = [steady(1, noise) for noise in (0.04, 0.01, 0.5, 0.02)]
        self.assertAlmostEqual(comparison.noise_floor(rows), 0.02)

    def test_no_rows_have_no_noise(self):
        self.assertEqual(comparison.noise_floor([]), 0)

    def test_a_row_has_its_own_noise_or_the_floor(self):
        self.assertAlmostEqual(judged(steady(1, 0.04), floor=0.02).noise, 0.04)
        self.assertAlmostEqual(judged(steady(1, 0.01), floor=0.02).noise, 0.02)


class Verdicts(unittest.TestCase):
    def test_rows_within_noise_are_neither_slower_nor_faster(self):
        for ratio in (0.97, 1.0, 1.03):
            one = judged(steady(ratio, 0.04))
            self.assertFalse(one.is_slower or one.is_faster or one.is_too_slow(0.03), ratio)

    def test_rows_outside_noise_are_slower_or_faster(self):
        self.assertTrue(judged(steady(1.05, 0.04)).is_slower)
        self.assertTrue(judged(steady(0.95, 0.04)).is_faster)
        self.assertFalse(judged(steady(1.05, 0.04)).is_faster)
        self.assertFalse(judged(steady(0.95, 0.04)).is_slower)

    def test_the_limit_comes_on_top_of_the_noise(self):
        self.assertFalse(judged(steady(1.07, 0.04)).is_too_slow(0.03))
        self.assertTrue(judged(steady(1.08, 0.04)).is_too_slow(0.03))
        self.assertTrue(judged(steady(1.04)).is_too_slow(0.03))
        self.assertFalse(judged(steady(1.02)).is_too_slow(0.03))

    def test_the_status_is_1_for_a_row_that_is_too_slow(self):
        fine, slow = judged(steady(1.02)), judged(steady(1.2))
        self.assertEqual(comparison.exit_status([fine], 0.03, []), 0)
        self.assertEqual(comparison.exit_status([fine, slow], 0.03, []), 1)
        self.assertEqual(comparison.exit_status([fine, slow], 0.3, []), 0)

    def test_the_status_is_1_for_a_case_that_fails_in_the_new_module(self):
        self.assertEqual(comparison.exit_status([], 0.03, ["a/one/10"]), 1)
        self.assertEqual(comparison.exit_status([], 0.03, []), 0)


class Means(unittest.TestCase):
    def test_means_are_geometric(self):
        self.assertAlmostEqual(comparison.geometric_mean([0.5, 2]), 1)
        self.assertAlmostEqual(comparison.geometric_mean([1, 4]), 2)

    def test_every_family_has_its_mean_and_all_have_theirs(self):
        rows = [steady(4, case="b/one/10"), steady(1, case="b/two/10"), steady(0.5, case="a/one/10")]
        found = comparison.means(rows)
        self.assertEqual([(name, count) for name, count, _, _ in found], [("a", 1), ("b", 2), ("all", 3)])
        for (_, _, ratio, same), wanted in zip(found, (0.5, 2, 2 ** (1 / 3))):
            self.assertAlmostEqual(ratio, wanted)
            self.assertAlmostEqual(same, 1)


class Texts(unittest.TestCase):
    def test_slower_rows_come_first_and_rows_within_noise_not_at_all(self):
        rows = [steady(0.5, case="a/fast/10"), steady(1, case="a/same/10"), steady(1.02, case="a/slow/10"),
                steady(2, case="a/slowest/10")]
        text = comparison.changes(comparison.judged(rows, 0.01), 0.03)
        lines = [(line.split("|")[1].strip(), line.split("|")[-2].strip()) for line in text.splitlines()[2:]]
        self.assertEqual(lines, [("a/slowest/10", "TOO SLOW"), ("a/slow/10", "slower"), ("a/fast/10", "faster")])

    def test_nothing_outside_noise_is_said(self):
        self.assertEqual(comparison.changes(comparison.judged([steady(1)], 0), 0.03), "No row is outside noise.")

    def test_the_summary_counts(self):
        rows = [steady(0.5, case="a/fast/10"), steady(1, case="a/same/10"), steady(2, case="b/slow/10")]
        text = comparison.summary(comparison.judged(rows, 0), 0.03, (1000, 1100))
        self.assertIn("Rows: 3. Slower beyond noise: 1. Faster: 1. Within: 1.", text)
        self.assertIn("Worst row beyond noise: b/slow/10, 100.0 %.", text)
        self.assertIn("old 1,000 bytes, new 1,100 bytes, ratio 1.100", text)
        self.assertIn("TOO SLOW, by more than 3.0 % beyond noise: b/slow/10.", text)

    def test_the_summary_of_equal_builds_names_no_row(self):
        text = comparison.summary([judged(steady(1))], 0.03, (1000, 1000))
        self.assertIn("No row is slower beyond noise.", text)
        self.assertIn("No row is slower than 3.0 % beyond noise.", text)


class FakeWorker:
    """A process whose calls take what `costs` says: module -> case -> nanoseconds, or the message of a failure."""

    costs = {}
    requests = []
    open_workers = 0

    def __init__(self, program, module):
        self.module = module
        FakeWorker.open_workers += 1

    def times(self, case, calls, samples):
        FakeWorker.requests.append((self.module, case, calls, samples))
        cost = FakeWorker.costs[self.module][case]
        cost = cost() if callable(cost) else cost
        if isinstance(cost, str):
            raise builds.CaseFailed(cost)
        return [cost] * samples

    def close(self):
        FakeWorker.open_workers -= 1


class Measurements(unittest.TestCase):
    CASES = ["a/one/10", "a/two/10", "a/one/1000"]

    def setUp(self):
        FakeWorker.requests, FakeWorker.open_workers = [], 0
        patch = mock.patch.object(builds, "Worker", FakeWorker)
        patch.start()
        self.addCleanup(patch.stop)
        output = mock.patch("builtins.print")
        output.start()
        self.addCleanup(output.stop)

    def compared(self, old, new):
        FakeWorker.costs = {"old": {case: old for case in self.CASES}, "new": {case: new for case in self.CASES}}
        return builds.Comparison("program", "old", "new", 0.01)

    def test_every_case_has_a_row_of_all_rounds(self):
        rows = self.compared(1000.0, 1500.0).rows(self.CASES, 5)
        self.assertEqual(sorted(row.case for row in rows), sorted(self.CASES))
        for one in rows:
            self.assertEqual(one.rounds, ((1000.0, 1500.0, 1000.0),) * 5)

    def test_every_process_ends(self):
        self.compared(1000.0, 1500.0).rows(self.CASES, 2)
        self.assertEqual(FakeWorker.open_workers, 0)

    def test_both_modules_run_a_case_equally(self):
        self.compared(1000.0, 1500.0).rows(["a/one/10"], 1)
        runs = [request for request in FakeWorker.requests if request[3] > 1]
        self.assertEqual(len(runs), 6)
        self.assertEqual(len({(calls, samples) for _, _, calls, samples in runs}), 1)
        self.assertAlmostEqual(runs[0][2] * runs[0][3] * 1000.0, 1e7, delta=2e6)

    def test_every_order_of_the_processes_occurs_in_six_rounds(self):
        for cases in (self.CASES[:1], self.CASES[:2]):  # the direction changes with the round, which is not to matter
            compared = self.compared(1e9, 1e9)
            FakeWorker.requests = []
            compared.rows(cases, 6)
            runs = [module for module, case, _, _ in FakeWorker.requests if case == "a/one/10"][2:]  # without the plan
            rounds = [runs[start:start + 9] for start in range(0, len(runs), 9)]
            for turns in rounds:
                self.assertEqual(turns[:3] * 3, turns)
            places = [turns.index("new") for turns in rounds]
            self.assertEqual(sorted(places), [0, 0, 1, 1, 2, 2])

    def test_a_long_call_is_run_once_in_a_sample(self):
        self.compared(1e9, 1e9).rows(["a/one/10"], 1)
        self.assertEqual({(calls, samples) for _, _, calls, samples in FakeWorker.requests}, {(1, 1)})

    def test_the_smaller_of_two_visits_counts(self):
        compared = self.compared(1e9, 1e9)
        times = iter([1e9, 5e9, 2e9])  # the first run of the process, and two visits
        FakeWorker.costs["new"]["a/one/10"] = lambda: next(times)
        self.assertEqual(compared.rows(["a/one/10"], 1)[0].rounds, ((1e9, 2e9, 1e9),))

    def test_a_case_that_fails_has_no_row(self):
        compared = self.compared(1000.0, 1500.0)
        FakeWorker.costs["new"]["a/two/10"] = "broken"
        self.assertEqual(sorted(row.case for row in compared.rows(self.CASES, 2)), ["a/one/10", "a/one/1000"])
        self.assertEqual(compared.failures, {"a/two/10": "new module: broken"})
        self.assertEqual(FakeWorker.open_workers, 0)

    def test_only_rows_that_are_too_slow_are_measured_again_with_twice_as_many_rounds(self):
        compared = self.compared(1000.0, 1000.0)
        FakeWorker.costs["new"]["a/two/10"] = 2000.0
        rows = builds.measured(compared, self.CASES, 3, 0.03)
        self.assertEqual({one.row.case: len(one.row.rounds) for one in rows},
                         {"a/one/10": 3, "a/two/10": 6, "a/one/1000": 3})

    def test_the_second_measurement_decides(self):
        compared = self.compared(1e9, 1e9)
        first_measurement = [2e9] * 3 * 3  # three rounds of a first run and two visits
        times = iter(first_measurement + [1e9] * 6 * 3)
        FakeWorker.costs["new"]["a/two/10"] = lambda: next(times)
        rows = builds.measured(compared, self.CASES, 3, 0.03)
        self.assertEqual(next(times, None), None)
        self.assertEqual(comparison.exit_status(rows, 0.03, []), 0)

    def test_a_row_that_stays_slow_decides_the_status(self):
        rows = builds.measured(self.compared(1000.0, 1100.0), self.CASES, 3, 0.03)
        self.assertEqual(comparison.exit_status(rows, 0.03, []), 1)


class Choices(unittest.TestCase):
    def test_cases_are_grouped_by_family_and_size(self):
        self.assertEqual(builds.group_of("linear_algebra/qr/1024"), ("linear_algebra", 1024))

    def test_the_largest_size_is_left_out_where_there_are_several(self):
        cases = ["a/one/10", "a/one/1000", "a/one/100000", "a/only/10", "b/one/4", "b/one/1024"]
        self.assertEqual(builds.without_largest(cases), ["a/one/10", "a/one/1000", "a/only/10", "b/one/4"])

    def test_families_without_the_module_are_left_out_unless_the_filter_names_one(self):
        names = mock.Mock(stdout="calls/shape/10\nhost/add/10\nlimits/read/10\n")
        for text, cases in (("", ["calls/shape/10"]), ("/10", ["calls/shape/10"]), ("host", ["host/add/10"]),
                            ("limits/read", ["limits/read/10"])):
            with mock.patch.object(builds.subprocess, "run", return_value=names):
                chosen = builds.chosen_cases("program", mock.Mock(filter=text, quick=False))
            self.assertEqual(chosen, cases, text)

    def test_a_folder_without_a_module_is_an_error(self):
        with self.assertRaises(RuntimeError):
            builds.module_of("/nonexistent")


if __name__ == "__main__":
    unittest.main()
