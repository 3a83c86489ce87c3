"""Which BLAS computes where another one is preloaded: usage: preloaded_blas.py HVM BLAS SCRIPTS SHARED [SELF_CONTAINED]

BLAS is the reference library, which has BLAS and its C interface, and no LAPACK.
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

HVM, BLAS, SCRIPTS, SHARED, *SELF_CONTAINED = sys.argv[1:]

# It takes names of all kinds that are looked for.
SCRIPT = "a = xones(3, 3)\nxdot(a, a)\nxsolve(xeye(3), a)\n"
BINDING = re.compile(r"binding file (\S+) \[\d+\] to (\S+) \[\d+\]: normal symbol "
                     r"`(cblas_dgemm|dgesv_|dgemm_|HVM_AnyCheck)'")


def run(module, *words, **environment):
    return subprocess.run([HVM, "--module", module, *words], capture_output=True, text=True, check=True,
                          env={**os.environ, "LD_PRELOAD": BLAS, **environment})


def bindings(module):
    """The files from which others take a name, by (the last part of the other's path, name)."""
    with tempfile.TemporaryDirectory() as folder:
        run(module, "-e", SCRIPT, LD_DEBUG="bindings", LD_DEBUG_OUTPUT=f"{folder}/log", LD_BIND_NOW="1")
        text = "".join(file.read_text(encoding="utf-8") for file in pathlib.Path(folder).iterdir())
    files = {}
    for source, target, name in BINDING.findall(text):
        files[os.path.basename(source), name] = target
    return files


class PreloadedBlas(unittest.TestCase):
    def test_gives_the_shared_module_its_products(self):
        found = bindings(SHARED)
        self.assertEqual(found["arrayfold.so", "cblas_dgemm"], BLAS)
        # LAPACK stays that of OpenBLAS, and calls the preloaded products.
        self.assertIn("libopenblas", found["arrayfold.so", "dgesv_"])
        self.assertEqual(found["libopenblas.so.0", "dgemm_"], BLAS)

    def test_is_not_seen_by_the_module_for_closed_hosts(self):
        if not SELF_CONTAINED:
            self.skipTest("this build has the shared module alone; the release build has both")
        found = bindings(SELF_CONTAINED[0])
        self.assertEqual([name for file, name in found if file == "arrayfold.so"], ["HVM_AnyCheck"])

    def test_passes_the_scripts_of_linear_algebra(self):
        for module in [SHARED, *SELF_CONTAINED]:
            with self.subTest(module=module):
                self.assertRegex(run(module, "--test", SCRIPTS).stdout, r"^[1-9]\d* passed, 0 failed ")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
