# refhost/cli/junit_files.py: the JUnit files of hvm --test, as a parser of XML reads them
#
# Usage: junit_files.py HVM MODULE

import os
import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

HVM, MODULE = sys.argv[1:]
REPLACEMENT = "\ufffd"


class JUnitFiles(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = os.path.realpath(temporary.name)
        self.tests = os.path.join(self.folder, "tests")

    def write(self, name, text):
        path = os.path.join(os.fsencode(self.tests), os.fsencode(name))
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(text if isinstance(text, bytes) else text.encode())

    def run_tests(self, *options, file=None):
        """The outcome and the root of the file that was written."""
        self.file = file or os.path.join(self.folder, "results.xml")
        outcome = subprocess.run([HVM, "--module", MODULE, *options, "--junit", self.file, "--test", self.tests],
                                 capture_output=True)
        return outcome, xml.etree.ElementTree.parse(self.file).getroot()

    def test_every_test_has_a_case_in_the_order_of_names(self):
        self.write("b/good.hvm", "print(1) # expect: 1")
        self.write("a.hvm", "print(1) # expect: 2\nprint(2) # expect: 3")
        self.write("c.hvm", 'toy_end("segv")')
        self.write("d.hvm", "while 1\nend")
        outcome, root = self.run_tests("--time-limit", "0.5")
        self.assertEqual(outcome.returncode, 1)
        self.assertEqual(root.tag, "testsuites")
        [suite] = root
        for counted in root, suite:
            self.assertEqual([counted.get(name) for name in ("tests", "failures", "errors")], ["4", "1", "2"])
            self.assertGreater(float(counted.get("time")), 0.4)
        failed, good, ended, endless = suite
        self.assertEqual([case.tag for case in suite], ["testcase"] * 4)
        self.assertEqual([case.get("name") for case in suite], ["a.hvm", "good.hvm", "c.hvm", "d.hvm"])
        self.assertEqual(good.get("classname"), self.tests + "/b")
        self.assertEqual(good.get("file"), self.tests + "/b/good.hvm")
        self.assertEqual(len(good), 0)
        first = self.tests + "/a.hvm:1: expected 2; got 1"
        [failure] = failed
        self.assertEqual((failure.tag, failure.get("message")), ("failure", first))
        self.assertEqual(failure.text, first + "\n" + self.tests + "/a.hvm:2: expected 3; got 2\n")
        self.assertEqual((ended[0].tag, ended[0].get("message")), ("error", "ended by signal 11"))
        self.assertEqual(ended[1].tag, "system-err")
        self.assertIn("the module ended the process: SIGSEGV", ended[1].text)
        self.assertEqual((endless[0].tag, endless[0].get("message")), ("error", "took longer than 0.5 s"))
        self.assertGreater(float(endless.get("time")), 0.4)

    def test_text_that_xml_cannot_hold_is_replaced(self):
        self.write("a.hvm", 'print("\\xff\\x1b[31m\\x00\\xed\\xa0\\x80") # expect: <b a="1">&amp;]]>\x07\x9b\uffff')
        outcome, root = self.run_tests()
        text = root[0][0][0].text
        self.assertIn('<b a="1">&amp;]]>', text)
        self.assertIn(f"got {REPLACEMENT}{REPLACEMENT}[31m{REPLACEMENT}", text)
        self.assertIsNone(re.search("[\x00-\x08\x0b-\x1f\x7f-\x9f\ufffe\uffff]", text))
        with open(self.file, "rb") as file:
            file.read().decode()

    def test_names_of_files_are_kept_as_far_as_possible(self):
        for name in [b'"quoted" & <b>.hvm', b"\xff\x01.hvm", b"line\nend.hvm", "\u03c0.hvm".encode()]:
            self.write(name, "x = 1")
        outcome, root = self.run_tests("--verbose")
        self.assertEqual(outcome.returncode, 0, outcome)
        names = [case.get("name") for case in root[0]]
        # A parser makes a space of a line end in an attribute.
        self.assertEqual(names, ['"quoted" & <b>.hvm', "line end.hvm", "\u03c0.hvm", REPLACEMENT * 2 + ".hvm"])

    def test_a_long_message_is_cut(self):
        self.write("a.hvm", "print(1) # expect: " + "x" * 300000)
        outcome, root = self.run_tests()
        self.assertEqual(len(root[0][0][0].text), 1 << 16)
        self.assertIn(b"x" * 300000, outcome.stdout)

    def test_without_scripts_the_file_has_no_cases(self):
        os.mkdir(self.tests)
        outcome, root = self.run_tests()
        self.assertEqual(outcome.returncode, 1)
        self.assertEqual((root.get("tests"), len(root[0])), ("0", 0))

    def test_the_file_is_replaced_in_one_step(self):
        self.write("a.hvm", "x = 1")
        file = os.path.join(self.folder, "old.xml")
        with open(file, "w") as old:
            old.write("old" * 10000)
        outcome, root = self.run_tests(file=file)
        self.assertEqual(root.get("tests"), "1")
        self.assertEqual(sorted(os.listdir(self.folder)), ["old.xml", "tests"])

    def test_a_file_that_cannot_be_made_is_told_before_anything_runs(self):
        self.write("a.hvm", f'write_text("{self.folder}/ran", "")')
        outcome = subprocess.run([HVM, "--module", MODULE, "--test", self.tests, "--junit", self.folder + "/no/file"],
                                 capture_output=True, text=True)
        self.assertEqual(outcome.returncode, 2)
        reason = "no file can be made in its folder: No such file or directory"
        self.assertEqual(outcome.stderr, f"hvm: --junit: {self.folder}/no/file: {reason}\n")
        self.assertEqual(outcome.stdout, "")
        self.assertFalse(os.path.exists(self.folder + "/ran"))


unittest.main(argv=sys.argv[:1])
