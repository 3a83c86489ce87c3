# tests/coverage/report_test.py: the report of reached lines notices what it is for
#
# Usage: report_test.py PROJECT_DIRECTORY

import contextlib
import io
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

import counts
import report

PROJECT = pathlib.Path(sys.argv.pop(1))
SOURCE = ["int f(int x) {", "  if (x > 0) return 1;", "  return 2;", "}", "// nothing", "  return 2;"]
BOUNDS = {"plugin": (100.0, 95.0)}


def branch(count, fallthrough=False, throw=False):
    return {"count": count, "fallthrough": fallthrough, "throw": throw}


def figures(by_line, ways=(1, 1)):
    """Those of one file: how often its lines run, by number, and the branches of its second line."""
    file = counts.File(SOURCE)
    for number, count in by_line.items():
        file.add(number, count, [branch(way) for way in ways] if number == 2 else [])
    return {"plugin/array/a.cpp": file}


class Counts(unittest.TestCase):
    def test_the_two_ways_of_a_call_that_may_throw_are_no_choice(self):
        call = [branch(3, fallthrough=True), branch(0, throw=True)]
        choice = [branch(2, fallthrough=True), branch(1)]
        self.assertEqual(counts.choices(call), ())
        self.assertEqual(counts.choices(call + choice), (2, 1))
        self.assertEqual(counts.choices(choice + call), (2, 1))
        self.assertEqual(counts.choices(choice + call[::-1]), (2, 1))
        self.assertEqual(counts.choices([branch(0, throw=True)] + choice[::-1]), (1, 2))

    def test_equal_compilations_of_a_line_count_as_one(self):
        file = counts.File(SOURCE)
        file.add(2, 1, [branch(1), branch(0)])
        file.add(2, 2, [branch(0), branch(2)])
        file.add(2, 0, [branch(0), branch(0), branch(0), branch(0)])
        self.assertEqual(dict(file.lines), {2: 3})
        self.assertEqual(file.ways, {(2, 2): (1, 2), (2, 4): (0, 0, 0, 0)})

    def test_a_brace_is_no_line(self):
        file = counts.File(SOURCE)
        file.add(4, 0, [branch(0), branch(0)])
        self.assertEqual((dict(file.lines), file.ways), ({}, {}))

    def test_catch_clauses_are_found(self):
        texts = ["try {", "f();", "} catch (const A& a) {", "if (a) {", "}", "} catch (...) {", "}", "g();"]
        self.assertEqual(counts.lines_of_catches(texts), {3, 4, 5, 6, 7})
        self.assertEqual(counts.lines_of_catches(["} catch (A&) { f(); }", "g();"]), {1})

    @unittest.skipUnless(shutil.which("g++") and shutil.which("gcov"), "takes g++ and gcov")
    def test_what_a_program_writes_is_read_and_what_never_ran_counts_as_nothing(self):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder).resolve()
            (root / "plugin").mkdir()
            for name, call in (("a", "f(1)"), ("b", "0")):
                source = root / f"plugin/{name}.cpp"
                source.write_text("struct S {\n  ~S();\n  int x = 0;\n};\nS::~S() { x = 1; }\n"
                                  "__attribute__((noinline)) int g(int x) {\n  if (x > 5) throw x;\n  return 0;\n}\n"
                                  "static int f(int x) {\n  if (x) return 0;\n  return 1;\n}\n"
                                  "int h(int x) {\n  try {\n    return g(x);\n  } catch (int) {\n    return 2;\n"
                                  f"  }}\n}}\nint main() {{ return {call}; }}\nint (*unused)(int) = f;\n")
                subprocess.run(["g++", "--coverage", "-O0", str(source), "-o", str(root / name)], cwd=root, check=True)
            subprocess.run([str(root / "a")], cwd=root, check=True)
            files = counts.counted(root, root, {"plugin": None})
        reached = {number for number, count in files["plugin/a.cpp"].lines.items() if count}
        self.assertEqual(reached, {10, 11, 21})
        self.assertEqual(set(files["plugin/a.cpp"].lines) - reached, {5, 6, 7, 8, 12, 14, 16, 17, 18})
        self.assertEqual(set(files["plugin/b.cpp"].lines), set(files["plugin/a.cpp"].lines))
        self.assertFalse(any(files["plugin/b.cpp"].lines.values()))
        self.assertEqual(sum(files["plugin/a.cpp"].ways[11, 2]), 1)


class Report(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        (self.root / "plugin/array").mkdir(parents=True)
        (self.root / "plugin/array/a.cpp").write_text("\n".join(SOURCE))

    def listed(self, text):
        path = self.root / "list.txt"
        path.write_text(text)
        return report.read_list(path)

    def errors(self, figures_of_file, text="", bounds=None):
        listed, errors = self.listed(text)
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            errors += report.report(figures_of_file, listed, bounds or BOUNDS, self.root)
        self.printed = printed.getvalue()
        return errors

    def test_whatever_is_reached_is_no_error(self):
        self.assertEqual(self.errors(figures({1: 1, 2: 1, 3: 1})), [])
        self.assertIn("plugin/array       3 of      3  100.0%       2 of      2  100.0%", self.printed)

    def test_a_line_that_is_not_in_the_list_is_an_error(self):
        errors = self.errors(figures({1: 1, 2: 1, 3: 0}))
        self.assertEqual(len(errors), 2)
        self.assertIn("66.67% of the lines", errors[0])
        self.assertIn("plugin/array/a.cpp:3: no test reaches it", errors[1])

    def test_a_line_of_the_list_may_move_and_is_no_error(self):
        text = "# Remark.\n\nNobody calls it\nso.\n  plugin/array/a.cpp: return 2;\n"
        self.assertEqual(self.errors(figures({1: 1, 2: 1, 3: 0}), text), [])
        self.assertEqual(self.errors(figures({1: 1, 2: 1, 6: 0}), text), [])

    def test_each_of_two_equal_lines_takes_a_place_in_the_list(self):
        line = "  plugin/array/a.cpp: return 2;\n"
        both = figures({1: 1, 2: 1, 3: 0, 6: 0})
        self.assertIn("a.cpp:3, 6: no test reaches", " ".join(self.errors(both, "Reason.\n" + line)))
        self.assertEqual(self.errors(both, "Reason.\n" + line + line), [])

    def test_a_line_of_the_list_that_is_reached_is_an_error(self):
        (error,) = self.errors(figures({1: 1, 2: 1, 3: 1}), "Reason.\n  plugin/array/a.cpp: return 2;\n")
        self.assertIn("a test reaches it", error)

    def test_a_line_of_the_list_that_is_no_more_is_an_error(self):
        for line in ("plugin/array/a.cpp: return 3;", "plugin/array/b.cpp: return 2;"):
            (error,) = self.errors(figures({1: 1, 2: 1, 3: 1}), f"Reason.\n  {line}\n")
            self.assertIn("there is no such line", error)

    def test_a_line_of_the_list_without_a_reason_is_an_error(self):
        _, errors = self.listed("  plugin/array/a.cpp: return 2;\n")
        self.assertEqual(len(errors), 1)

    def test_too_few_branches_are_an_error(self):
        (error,) = self.errors(figures({1: 1, 2: 1, 3: 1}, ways=(1, 0)))
        self.assertIn("50.00% of the branches", error)

    def test_lines_of_the_list_count_where_the_bound_is_below_all(self):
        text = "Reason.\n  plugin/array/a.cpp: return 2;\n"
        (error,) = self.errors(figures({1: 1, 2: 1, 3: 0}), text, {"plugin": (98.0, 0.0)})
        self.assertIn("66.67% of the lines", error)

    def test_a_part_without_figures_is_an_error(self):
        self.assertEqual(self.errors({}), ["plugin: there are no figures"])

    def test_the_list_has_reasons_and_lines_of_the_project(self):
        listed, errors = report.read_list(report.LIST)
        self.assertEqual(errors, [])
        for file, text in listed:
            self.assertIn(text, [line.strip() for line in (PROJECT / file).read_text().splitlines()], file)


if __name__ == "__main__":
    unittest.main()
