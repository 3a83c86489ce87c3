# tests/second_host/probe_test.py: the probe says that the second host keeps the contract
#
# Usage: probe_test.py PROBE_HOST PROBE KERNEL_FOLDER INTERPRETER_FOLDER

import os
import re
import subprocess
import sys
import unittest

probe_host, probe, kernel, interpreter = sys.argv[1:5]


class SecondHost(unittest.TestCase):
    def test_keeps_every_promise_whatever_it_chooses(self):
        for seed in range(4):
            with self.subTest(seed=seed):
                self.keeps_every_promise(str(seed))

    def keeps_every_promise(self, seed):
        environment = {**os.environ, "LD_LIBRARY_PATH": f"{kernel}:{interpreter}", "SECOND_HOST_SEED": seed,
                       "ASAN_OPTIONS": "detect_leaks=0:allocator_may_return_null=1"}
        ended = subprocess.run([probe_host, probe], capture_output=True, env=environment)
        # The text may be in a form of the host, whose payload begins with something else.
        summary = ended.stdout.decode(errors="ignore")
        self.assertEqual(ended.returncode, 0, summary)
        count, kept = re.search(r"(\d+) promises: (\d+) kept, 0 broken, 0 not checked", summary).groups()
        self.assertEqual(count, kept)
        self.assertGreater(int(count), 50)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
