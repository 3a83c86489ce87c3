# bench/measurement_test.py: what NumPy's side of a round gives

import os
import types
import unittest

import measurement


def case(setup):
    """What `numpy_time` asks of a case."""
    return types.SimpleNamespace(name="text/a/10", n=10, case=types.SimpleNamespace(setup=setup))


class NumpyTime(unittest.TestCase):
    def test_work_of_a_millisecond_takes_as_long(self):
        # A call runs until its thread has used the time, however busy the machine is.
        setup = """
import time
def work():
    end = time.thread_time_ns() + 1_000_000
    while time.thread_time_ns() < end: pass
"""
        self.assertGreaterEqual(measurement.numpy_time(case(setup), "work()", 0.001), 1_000_000)

    def test_it_leaves_nothing_in_this_process(self):
        before = os.environ.copy()
        measurement.numpy_time(case("import os; os.environ['LEFT'] = str(n)"), "n", 0.0001)
        self.assertEqual(os.environ, before)

    def test_a_failure_names_the_case(self):
        # The process that fails says why; its own words are not part of the tests.
        shown = os.dup(2)
        with open(os.devnull, "w") as nothing:
            os.dup2(nothing.fileno(), 2)
        try:
            with self.assertRaisesRegex(RuntimeError, "text/a/10: NumPy's side failed: missing"):
                measurement.numpy_time(case(""), "missing", 0.0001)
        finally:
            os.dup2(shown, 2)
            os.close(shown)


if __name__ == "__main__":
    unittest.main()
