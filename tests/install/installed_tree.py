# tests/install/installed_tree.py: what `cmake --install` puts somewhere works there, and after the tree has been moved
#
# Usage: installed_tree.py CMAKE CXX_COMPILER BUILD_DIRECTORY PROJECT_DIRECTORY LIBDIR DOCDIR
#
# The folders have a blank in their names.

import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

cmake, compiler = sys.argv[1:3]
build, project = map(pathlib.Path, sys.argv[3:5])
libdir, docdir = sys.argv[5:7]


def run(*words, **settings):
    return subprocess.run([str(word) for word in words], capture_output=True, text=True, **settings)


def install(prefix, **settings):
    return run(cmake, "--install", build, "--prefix", prefix, **settings)


class InstalledTree(unittest.TestCase):
    """The tree is installed once, and moved before anything runs in it."""

    @classmethod
    def setUpClass(cls):
        cls.workplace = tempfile.TemporaryDirectory()
        folder = pathlib.Path(cls.workplace.name)
        week = project / "examples" / "week"
        cls.written = [line[1:] for line in (week / ".gitignore").read_text().splitlines() if line.startswith("/")]
        added = [week / name for name in cls.written if not (week / name).exists()]
        try:
            for path in added:
                path.touch()
            installed = install(folder / "first place")
        finally:
            for path in added:
                path.unlink(missing_ok=True)
        assert installed.returncode == 0, installed.stderr
        cls.tree = folder / "second place" / "and below"
        cls.tree.parent.mkdir()
        (folder / "first place").rename(cls.tree)
        cls.hvm = cls.tree / "bin" / "hvm"
        cls.private = cls.tree / libdir / "hvm"

    @classmethod
    def tearDownClass(cls):
        cls.workplace.cleanup()

    def assert_succeeds(self, *words, **settings):
        ended = run(*words, **settings)
        self.assertEqual(ended.returncode, 0, f"{words}\n{ended.stdout}{ended.stderr}")
        return ended.stdout

    def test_version_names_the_module_and_libraries_of_the_tree(self):
        out = self.assert_succeeds(self.hvm, "--version")
        self.assertIn(f"module {self.private / 'arrayfold.so'}\n", out)
        self.assertIn(f"  with {self.private / 'libHVMInterp.so'}\n", out)

    def test_kernel_library_of_the_tree_is_loaded(self):
        environment = dict(os.environ, LD_DEBUG="files")
        out = run(self.hvm, "-e", "", env=environment).stderr
        self.assertIn(f"calling init: {self.hvm.parent}/../{libdir}/hvm/libHVMkrnl.so", out)
        self.assertNotIn(str(build), out)

    def test_tour_and_the_data_of_examples_run(self):
        pages = self.tree / docdir
        for script in ("tour.hvm", "weather.hvm"):
            self.assert_succeeds(self.hvm, f"examples/{script}", cwd=pages)
        self.assert_succeeds(self.hvm, "masks.hvm", cwd=pages / "examples" / "week")

    def test_messages_name_pages_by_their_place_in_the_tree(self):
        told = run(self.hvm, "-e", "a = 5 - xarange(3)\nxinv(1)").stderr
        pages = re.findall(r"^ +page: ([^#\n]*)", told, re.MULTILINE)
        self.assertEqual([pathlib.Path(page).name for page in pages], ["operator-subtract.md", "xinv.md"], told)
        for page in pages:
            self.assertTrue(pathlib.Path(page).is_file(), page)
            self.assertEqual(pathlib.Path(page).parents[2], self.tree / docdir)

    def test_files_that_examples_have_written_are_not_installed(self):
        self.assertTrue(self.written)
        week = self.tree / docdir / "examples" / "week"
        self.assertEqual([name for name in self.written if (week / name).exists()], [])

    def test_library_of_the_language_is_found(self):
        code = 'use "arrays"\nprint(as_int(xarange(3)))'
        self.assertEqual(self.assert_succeeds(self.hvm, "-e", code), "int(3) [0, 1, 2]\n")

    def test_script_tests_pass(self):
        out = self.assert_succeeds(self.hvm, "--test", project / "tests" / "scripts", cwd=self.workplace.name)
        self.assertRegex(out, r"[1-9]\d\d passed, 0 failed")

    def test_module_of_the_tree_conforms_by_the_calls_and_scripts_of_the_tree(self):
        out = self.assert_succeeds(self.hvm, "--conformance", cwd=self.workplace.name)
        self.assertRegex(out, r"1\d\d\d of 1\d\d\d calls are as recorded, [1-9]\d\d of [1-9]\d\d scripts pass")
        self.assertFalse(list((self.tree / "share" / "hvm" / "conformance").rglob("CMakeLists.txt")))

    def test_module_elsewhere_is_compared_by_the_description_of_the_tree(self):
        with tempfile.TemporaryDirectory() as elsewhere:
            copied = pathlib.Path(elsewhere) / "mine.so"
            shutil.copy(self.private / "arrayfold.so", copied)
            self.assert_succeeds(self.hvm, "--conformance", "--module", copied)

    def test_table_of_calls_that_is_missing_is_named(self):
        table = self.tree / "share" / "hvm" / "conformance" / "calls.jsonl"
        table.rename(table.with_suffix(".away"))
        self.addCleanup(lambda: table.with_suffix(".away").rename(table))
        ended = run(self.hvm, "--conformance")
        self.assertEqual(ended.returncode, 2)
        self.assertEqual(ended.stderr, f"hvm: --conformance: the table of calls {table} cannot be opened: "
                                       "No such file or directory\n")

    def test_description_lies_beside_the_module_and_in_the_data(self):
        beside = self.private / "arrayfold.json"
        self.assertFalse(os.path.isabs(os.readlink(beside)))
        data = self.tree / "share" / "arrayfold"
        self.assertTrue(beside.samefile(data / "functions.json"))
        self.assertEqual(len(json.loads(beside.read_text())["functions"]), 93)
        self.assertTrue((data / "functions.schema.json").is_file())

    def test_errors_are_explained_by_the_description_of_the_tree(self):
        ended = run(self.hvm, "-e", 'xzeros("a")')
        self.assertEqual(ended.returncode, 1)
        self.assertIn("xzeros: argument 1 must be a number; this is a string.", ended.stderr)

    def test_manual_pages_are_in_their_sections(self):
        manual = self.tree / "share" / "man"
        found = sorted(str(path.relative_to(manual)) for path in manual.rglob("*.[17]"))
        self.assertEqual(found, ["man1/hvm.1", "man7/arrayfold.7", "man7/hvm.7"])

    def test_completions_are_where_shells_look(self):
        for path in ("bash-completion/completions/hvm", "zsh/site-functions/_hvm"):
            self.assertIn("--module", (self.tree / "share" / path).read_text())

    def test_pygments_takes_the_lexer_of_the_tree(self):
        folder = self.tree / "share" / "hvm" / "highlighting"
        self.assertTrue((folder / "hvm.tmLanguage.json").is_file())
        out = self.assert_succeeds(sys.executable, "-B", "-m", "pygments", "-l", "hvm", "-f", "raw", input="xsum(a)",
                                   env=dict(os.environ, PYTHONPATH=str(folder)))
        self.assertIn("Token.Name.Function\t'xsum'", out)

    def test_no_file_names_the_build(self):
        for path in self.tree.rglob("*"):
            is_text = path.suffix in (".cmake", ".pc", ".json", ".map", ".hvm", ".h", ".hpp", ".1", ".7")
            if path.is_file() and is_text:
                self.assertNotIn(str(build), path.read_text(), path)

    def test_probe_says_that_hvm_keeps_all_promises(self):
        out = self.assert_succeeds(self.hvm, "--module", self.private / "arrayfold-probe.so",
                                   "-e", "print(probe_summary())")
        self.assertRegex(out, r"^(\d+) promises: \1 kept, 0 broken, 0 not checked\n$")

    def test_host_is_compiled_by_pkg_config(self):
        environment = dict(os.environ, PKG_CONFIG_PATH=str(self.tree / libdir / "pkgconfig"))

        def asked(*what):
            return shlex.split(self.assert_succeeds("pkg-config", *what, "arrayfold", env=environment))

        host = pathlib.Path(self.workplace.name) / "host by pkg-config"
        source = project / "tests" / "install" / "host" / "host.cpp"
        self.assert_succeeds(compiler, "-std=c++17", *asked("--cflags"), source, "-ldl", "-o", host)
        self.assertEqual(self.assert_succeeds(host, *asked("--variable=module")), "93 functions\n")
        for name in ("description", "version_script", "probe"):
            self.assertTrue(os.path.isfile(asked(f"--variable={name}")[0]), name)

    def test_host_in_c_is_compiled_from_the_installed_header(self):
        environment = dict(os.environ, PKG_CONFIG_PATH=str(self.tree / libdir / "pkgconfig"))

        def asked(what):
            return shlex.split(self.assert_succeeds("pkg-config", what, "arrayfold", env=environment))

        folder = pathlib.Path(self.workplace.name) / "host in c"
        folder.mkdir()
        sources = self.tree / docdir / "examples" / "first_host"
        script = asked("--variable=version_script")[0]
        options = ["-std=c11", "-Wall", "-Wextra", "-Wno-unused-parameter", "-Werror", *asked("--cflags")]
        kernel, interp = folder / "libHVMkrnl.so", folder / "libHVMInterp.so"
        self.assert_succeeds("cc", *options, "-shared", "-fPIC", sources / "kernel.c", sources / "rest.c",
                             "-o", kernel)
        self.assert_succeeds("cc", *options, "-shared", "-fPIC", sources / "interp.c",
                             "-lm", f"-Wl,--version-script={script}", "-o", interp)
        self.assert_succeeds("cc", *options, sources / "main.c", kernel, interp,
                             "-Wl,--no-as-needed", "-Wl,-rpath,$ORIGIN", "-ldl", "-o", folder / "first_host")
        self.assertEqual(self.assert_succeeds(folder / "first_host", *asked("--variable=module")), "10\n")

    def test_host_is_compiled_by_find_package(self):
        folder = pathlib.Path(self.workplace.name) / "host by cmake"
        self.assert_succeeds(cmake, "-S", project / "tests" / "install" / "host", "-B", folder, "-G", "Ninja",
                             f"-DCMAKE_CXX_COMPILER={compiler}", f"-DCMAKE_PREFIX_PATH={self.tree}")
        self.assert_succeeds(cmake, "--build", folder)
        found = (folder / "found.txt").read_text().splitlines()
        self.assertEqual(self.assert_succeeds(folder / "host", found[0]), "93 functions\n")
        self.assertTrue(all(map(os.path.isfile, found)), found)


@unittest.skipUnless((build / "self-contained" / "arrayfold.so").exists(), "the build has no module for closed hosts")
class SelfContained(unittest.TestCase):
    """The module for closed hosts is installed alone, where somebody names it."""

    @classmethod
    def setUpClass(cls):
        cls.workplace = tempfile.TemporaryDirectory()
        words = [cmake, "--install", build, "--strip", "--component", "self_contained", "--prefix", cls.workplace.name]
        installed = run(*words)
        assert installed.returncode == 0, installed.stderr
        cls.tree = pathlib.Path(cls.workplace.name)
        cls.folder = cls.tree / libdir / "hvm" / "self-contained"

    @classmethod
    def tearDownClass(cls):
        cls.workplace.cleanup()

    def test_everything_is_in_one_folder(self):
        files = [path for path in self.tree.rglob("*") if not path.is_dir()]
        self.assertEqual([path for path in files if not path.is_relative_to(self.folder)], [])
        self.assertEqual({path.name for path in self.folder.iterdir()}, {"arrayfold.so", "arrayfold.json", "licenses"})

    def test_licenses_of_what_is_inside_lie_beside_it(self):
        words = {"arrayfold": "Redistribution", "Apache-2.0": "Apache License", "libopenblas-pthread-dev": "OpenBLAS",
                 "liblapack3": "LAPACK", "libhwy-dev": "highway", "libxtensor-dev": "xtensor", "xtl-dev": "xtl",
                 "libxsimd-dev": "xsimd", "libxtensor-blas-dev": "xtensor-blas", "nlohmann-json3-dev": "MIT"}
        licenses = {path.stem: path.read_text() for path in (self.folder / "licenses").iterdir()}
        self.assertEqual(set(licenses), set(words))
        for name, word in words.items():
            self.assertIn(word, licenses[name], name)

    def test_stripped_module_runs_with_its_description(self):
        ended = run(build / "bin" / "hvm", "--module", self.folder / "arrayfold.so", "-e", "print(xsum(xsort(xarange(1000))))")
        self.assertEqual((ended.stdout, ended.stderr), ("499500.0\n", ""))
        self.assertLess((self.folder / "arrayfold.so").stat().st_size, 40_000_000)
        ended = run(build / "bin" / "hvm", "--module", self.folder / "arrayfold.so", "-e", 'xzeros("a")')
        self.assertIn("xzeros: argument 1 must be a number; this is a string.", ended.stderr)


class Installing(unittest.TestCase):
    def setUp(self):
        self.workplace = tempfile.TemporaryDirectory()
        self.addCleanup(self.workplace.cleanup)
        self.folder = pathlib.Path(self.workplace.name)

    def test_destdir_stands_before_the_prefix(self):
        ended = install("/opt/arrays", env=dict(os.environ, DESTDIR=str(self.folder)))
        self.assertEqual(ended.returncode, 0, ended.stderr)
        self.assertTrue((self.folder / "opt" / "arrays" / "bin" / "hvm").is_file())

    def assert_refused(self, prefix, sentence, **settings):
        ended = install(prefix, **settings)
        self.assertEqual(ended.returncode, 1)
        self.assertIn(sentence, " ".join(ended.stderr.split()))

    def test_prefix_that_is_no_folder_is_named(self):
        (self.folder / "file").write_text("")
        for prefix in ("file", "file/below"):
            self.assert_refused(self.folder / prefix, f"below {self.folder}/file: it is no folder.")

    @unittest.skipIf(os.geteuid() == 0 and not os.path.exists("/usr/bin/setpriv"), "root has every permission")
    def test_prefix_without_permission_is_named(self):
        (self.folder / "closed").mkdir(mode=0o555)
        self.folder.chmod(0o755)
        words = [cmake, "--install", build, "--prefix", self.folder / "closed" / "below"]
        if os.geteuid() == 0:
            words = ["setpriv", "--bounding-set=-dac_override", "--inh-caps=-all"] + words
        ended = run(*words)
        self.assertEqual(ended.returncode, 1)
        self.assertIn(f"below {self.folder}/closed: there is no permission to write into it.",
                      " ".join(ended.stderr.split()))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
