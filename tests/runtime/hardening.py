"""Reads what guards memory from the built files, and from the commands that made them.

    hardening.py SOURCE BUILD COMPILER [--checks-by-compiler] [--fortified] --files FILE... [--with-text FILE...]

FILE is a library or program that people run; those after --with-text call functions of the C library that
_FORTIFY_SOURCE replaces. The last test builds files without the guards, and requires that each check misses them.
"""

import argparse
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

sys.path.append(str(pathlib.Path(__file__).parent.parent / "support"))
from compile_commands import commands_of

OPTIONS = None


def output_of(*command):
    return subprocess.run([str(word) for word in command], check=True, capture_output=True, text=True).stdout


def segment_flags(file, kind):
    """The flags of the segment of that type; None where there is no such segment."""
    for line in output_of("readelf", "-lW", file).splitlines():
        words = line.split()
        if words and words[0] == kind:
            # Offset, two addresses and two sizes come before the flags, the alignment after them.
            return "".join(words[6:-1])
    return None


def has_read_only_relocations(file):
    """RELRO for all of the table of addresses: that takes binding at load."""
    return segment_flags(file, "GNU_RELRO") is not None and binds_at_load(file)


def binds_at_load(file):
    dynamic = output_of("readelf", "-dW", file)
    return re.search(r"\(FLAGS\).*\bBIND_NOW\b", dynamic) is not None or re.search(
        r"\(FLAGS_1\).*\bNOW\b", dynamic) is not None


def has_no_executable_stack(file):
    flags = segment_flags(file, "GNU_STACK")
    return flags is not None and "E" not in flags


def writes_no_code(file):
    """No segment is both writable and executable, and the loader changes no code."""
    segments = [line.split() for line in output_of("readelf", "-lW", file).splitlines() if line.split()[:1] == ["LOAD"]]
    flags = ["".join(words[6:-1]) for words in segments]
    return bool(flags) and not any("W" in each and "E" in each for each in flags) and (
        "TEXTREL" not in output_of("readelf", "-dW", file))


def can_be_loaded_anywhere(file):
    return "DYN (" in output_of("readelf", "-hW", file)


def imported_names(file):
    return set(re.findall(r" U ([^@\s]+)", output_of("nm", "-D", "--undefined-only", file)))


def guards_stack(file):
    return "__stack_chk_fail" in imported_names(file)


def calls_checked_functions(file):
    return any(re.fullmatch(r"__\w+_chk", name) for name in imported_names(file))


LOADER_CHECKS = (has_read_only_relocations, binds_at_load, has_no_executable_stack, writes_no_code,
                 can_be_loaded_anywhere)


class BuiltFiles(unittest.TestCase):
    def expect_all(self, files, *checks):
        self.assertGreater(len(files), 0)
        for file in files:
            for check in checks:
                with self.subTest(file=file, check=check.__name__):
                    self.assertTrue(check(file))

    def test_the_loader_protects_them(self):
        self.expect_all(OPTIONS.files, *LOADER_CHECKS)

    def test_the_compiler_guards_their_stack(self):
        if not OPTIONS.checks_by_compiler:
            self.skipTest("the sanitizers check more; every other build runs this")
        self.expect_all(OPTIONS.files, guards_stack)

    def test_they_call_the_checked_functions_of_the_c_library(self):
        if not OPTIONS.fortified:
            self.skipTest("they take an optimising compiler and no sanitizer; the release build has them")
        self.expect_all(OPTIONS.with_text, calls_checked_functions)

    def test_every_source_is_compiled_with_the_guards(self):
        if not OPTIONS.checks_by_compiler:
            self.skipTest("the sanitizers check more; every other build runs this")
        guards = ["-fstack-protector-strong"] + ["-D_FORTIFY_SOURCE=2"] * OPTIONS.fortified
        source = OPTIONS.source
        seen = 0
        for file, command in commands_of(OPTIONS.build):
            if not file.is_relative_to(source):  # made by the build, in a folder elsewhere
                continue
            folder = file.relative_to(source).parts[0]
            words = command.split()
            output = words[words.index("-o") + 1]
            if folder not in ("plugin", "refhost", "probe") or output.startswith(("tests/", "bench/")):
                continue
            if re.search(r"CMakeFiles/(describe_functions|write_manual)\.dir", output):  # run by the build alone
                continue
            seen += 1
            for guard in guards:
                with self.subTest(file=file, guard=guard):
                    self.assertIn(guard, words)
            self.assertNotIn("-fno-stack-protector", words)
        self.assertGreater(seen, 150)


class Checks(unittest.TestCase):
    SOURCE = """
        #include <stdio.h>
        int written(const char* format, ...) { char text[64]; return sprintf(text, format, 1) + text[3]; }
        """
    GOOD = ("-shared", "-fPIC", "-O2", "-fstack-protector-strong", "-U_FORTIFY_SOURCE", "-D_FORTIFY_SOURCE=2",
            "-Wl,-z,relro,-z,now,-z,noexecstack")

    def test_find_each_missing_guard(self):
        with tempfile.TemporaryDirectory() as folder:
            def built(name, *options, keeping=self.GOOD, source=self.SOURCE):
                file = pathlib.Path(folder) / name
                subprocess.run([OPTIONS.compiler, "-xc", "-w", "-", *keeping, *options, "-o", file], input=source,
                               text=True, check=True)
                return file

            good = built("good")
            for check in (*LOADER_CHECKS, guards_stack, calls_checked_functions):
                self.assertTrue(check(good), check.__name__)

            for check, options in (
                    (has_read_only_relocations, ["-Wl,-z,norelro"]),
                    (has_read_only_relocations, ["-Wl,-z,lazy"]),
                    (binds_at_load, ["-Wl,-z,lazy"]),
                    (has_no_executable_stack, ["-Wl,-z,execstack"]),
                    (writes_no_code, ["-nostdlib", "-Wl,-N"]),
                    (guards_stack, ["-fno-stack-protector"]),
                    (calls_checked_functions, ["-U_FORTIFY_SOURCE"])):
                with self.subTest(check=check.__name__, options=options):
                    self.assertFalse(check(built("bad", *options)))
            fixed = built("fixed", keeping=["-no-pie", "-fno-pie"], source="int main() { return 0; }")
            self.assertFalse(can_be_loaded_anywhere(fixed))


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("source", type=pathlib.Path)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("compiler")
    parser.add_argument("--checks-by-compiler", action="store_true")
    parser.add_argument("--fortified", action="store_true")
    parser.add_argument("--files", nargs="+")
    parser.add_argument("--with-text", nargs="*", default=[])
    OPTIONS = parser.parse_args()
    unittest.main(argv=sys.argv[:1])
