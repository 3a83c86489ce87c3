# tests/install/targets.py: which sets of vector instructions a build has loops for, as ARRAYFOLD_TARGETS says
#
# Usage: targets.py PROJECT_DIRECTORY CMAKE

import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

project, cmake = sys.argv[1:3]
X86_TARGETS = ["HWY_AVX3", "HWY_AVX2", "HWY_SSE4", "HWY_SSSE3"]


def configure(folder, *options):
    words = [cmake, "--preset", "release", "-B", folder, "-DARRAYFOLD_BUILD_BENCH=OFF", *options]
    return subprocess.run(words, cwd=project, capture_output=True, text=True, check=False)


class Targets(unittest.TestCase):
    def setUp(self):
        self.place = tempfile.TemporaryDirectory()
        self.addCleanup(self.place.cleanup)

    def disabled(self, *options):
        """The sets of x86-64 that the loops are not compiled for."""
        ended = configure(self.place.name, *options)
        self.assertEqual(ended.returncode, 0, ended.stderr)
        commands = json.loads((pathlib.Path(self.place.name) / "compile_commands.json").read_text())
        of_loops = next(each["command"] for each in commands if each["file"].endswith("kernels/arithmetic.cpp"))
        found = re.search(r"HWY_DISABLED_TARGETS=\S*", of_loops)[0]
        return [target for target in X86_TARGETS if re.search(rf"{target}\b", found)]

    def test_all_are_there_unless_another_wish_is_told(self):
        self.assertEqual(self.disabled("-DARRAYFOLD_BUILD_TESTS=OFF"), [])

    def test_here_leaves_the_widest_of_this_processor_alone(self):
        here = self.disabled("-DARRAYFOLD_BUILD_TESTS=OFF", "-DARRAYFOLD_TARGETS=here")
        instructions = re.search(r"^flags\s*:(.*)$", pathlib.Path("/proc/cpuinfo").read_text(), re.MULTILINE)
        if not instructions:  # not an x86-64 processor
            return self.assertEqual(here, [])
        has = [name in instructions[1].split() for name in ("avx512bw", "avx2", "sse4_2", "ssse3")]
        kept = X86_TARGETS[has.index(True)] if True in has else None
        self.assertEqual(here, [target for target in X86_TARGETS if target != kept])

    def test_wrong_wishes_are_refused(self):
        for options in (["-DARRAYFOLD_TARGETS=here"], ["-DARRAYFOLD_BUILD_TESTS=OFF", "-DARRAYFOLD_TARGETS=wide"]):
            ended = configure(self.place.name, *options)
            self.assertEqual(ended.returncode, 1, options)
            self.assertIn("ARRAYFOLD_TARGETS is all or, without tests, here.", ended.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
