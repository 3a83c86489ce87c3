# refhost/cli/kept_memory.py: the memory of freed arrays serves the next ones
#
# Usage: kept_memory.py HVM MODULE

import resource
import subprocess
import sys
import unittest

HVM, MODULE = sys.argv[1:3]

# Arrays of 40 MB each: larger than what the C library keeps by itself.
SCRIPT = """
a = xones(5000000)
for i in range(20)
  b = a + 1
end
print(b[4999999])
"""


def page_faults(*options):
    """How many pages the system made for the script."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_minflt
    outcome = subprocess.run([HVM, "--module", MODULE, *options, "-e", SCRIPT], capture_output=True, text=True)
    if (outcome.returncode, outcome.stdout) != (0, "2.0\n"):
        raise RuntimeError(f"hvm {options}: {outcome}")
    return resource.getrusage(resource.RUSAGE_CHILDREN).ru_minflt - before


class KeptMemory(unittest.TestCase):
    def test_the_next_array_takes_the_pages_of_the_last(self):
        # Twenty arrays, of at least as many huge pages each.
        self.assertLess(page_faults() + 20 * 15, page_faults("--keep-memory", "off"))

    def test_less_than_an_array_keeps_none(self):
        self.assertLess(page_faults() + 20 * 15, page_faults("--keep-memory", "20"))

    def test_the_largest_bound_is_taken(self):
        self.assertLess(page_faults("--keep-memory", "2047") + 20 * 15, page_faults("--keep-memory", "off"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
