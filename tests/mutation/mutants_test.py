# tests/mutation/mutants_test.py: the places that scripts/mutate finds in a source, the source that it makes, and what it
# keeps of a run
#
# Usage: mutants_test.py PROJECT_DIRECTORY

import pathlib
import sys
import tempfile
import unittest

PROJECT = pathlib.Path(sys.argv.pop(1)).resolve()
sys.path.insert(0, str(PROJECT / "scripts/mutation"))

from mutants import Finder, with_mutants  # noqa: E402
from trials import Trials  # noqa: E402


def found_in(body):
    return Finder("f.cpp", body).find()


def changes(body, kind):
    found = found_in("int f(int a, int b, int c) {\n" + body + "\n}\n")
    return [f"{m.old} -> {m.new}" for m in found if m.kind == kind]


class Mutants(unittest.TestCase):
    def test_an_operator_takes_its_operands(self):
        self.assertEqual(changes("return a + b * c < f(a, b, c) && c;", "boundary"),
                         ["a + b * c < f(a, b, c) -> a + b * c <= f(a, b, c)"])
        self.assertEqual(changes("if (c) x[a - 1] += b - c - a;", "arithmetic"),
                         ["a - 1 -> a + 1", "x[a - 1] += b - c - a -> x[a - 1] -= b - c - a", "b - c -> b + c",
                          "b - c - a -> b - c + a"])
        self.assertEqual(changes("return !a.empty(b) || !(b);", "logic"),
                         ["!a.empty(b) -> static_cast<bool>(a.empty(b))", "!a.empty(b) || !(b) -> !a.empty(b) && !(b)",
                          "!(b) -> static_cast<bool>((b))"])

    def test_brackets_of_templates_are_no_comparisons(self):
        self.assertEqual(changes("std::vector<std::vector<T>> v; g<T, U>(a);", "boundary"), [])
        self.assertEqual(changes("return static_cast<T>(a) >> 2;", "arithmetic"),
                         ["static_cast<T>(a) >> 2 -> static_cast<T>(a) << 2"])

    def test_a_statement_is_removed_and_a_declaration_stays(self):
        self.assertEqual(changes("int x = g(a); const T& y(b); g<T>(a); x = 1; ++x; return g(b);", "removed statement"),
                         ["g<T>(a) -> nothing", "x = 1 -> nothing", "++x -> nothing"])
        self.assertEqual(changes("if (a)\n  g();\nelse\n  h();", "removed statement"),
                         ["g() -> nothing", "h() -> nothing"])

    def test_a_check_is_removed_and_always_true(self):
        self.assertEqual(changes("if (a == b) return 0; while (a) g();", "condition"),
                         ["if (a == b) -> false", "if (a == b) -> true", "while (a) -> false"])
        self.assertEqual(changes("if (int n = g()) return n;", "condition"), [])

    def test_arguments_change_places(self):
        self.assertEqual(changes("x.g(a, b, c);", "swapped arguments"),
                         ["x.g(a, b, c) -> x.g(b, a, c)", "x.g(a, b, c) -> x.g(a, c, b)"])

    def test_what_the_compiler_computes_stays(self):
        self.assertEqual(found_in("template <int n = 3>\nconstexpr int table[] = {1 + 2, 3};\nenum class E { a = 1 };\n"
                                  "static_assert(1 < 2, \"words\");\nstruct S { int x[4]; };\n"), [])
        self.assertEqual(changes("if constexpr (1 < 2) {} switch (a) { case 1: break; }", "constant"), [])

    def test_names_tell_file_function_and_change(self):
        names = [m.name for m in found_in("bool g() {\n  return a < b;\n}\nbool h() {\n  return a < b || a < b;\n}\n")
                 if m.kind == "boundary"]
        self.assertEqual(names, ["f.cpp | g | boundary | a < b -> a <= b", "f.cpp | h | boundary | a < b -> a <= b",
                                 "f.cpp | h | boundary | a < b -> a <= b | 2"])

    def test_the_source_has_a_choice_for_each_and_keeps_its_lines(self):
        text = "int f(int a, int b) {\n  return a +  // once\n         g(a, 7);\n}\n"
        mutants = found_in(text)
        for number, mutant in enumerate(mutants):
            mutant.number = number
        written, places, refused = with_mutants(text, mutants)
        self.assertEqual(refused, [])
        self.assertEqual(written.count("\n"), text.count("\n"))
        for mutant in mutants:
            first, end = places[mutant.number]
            self.assertTrue(written[first:end].startswith(f"(mutation::runs({mutant.number}) ? "))
            self.assertEqual(written[first:end].count("("), written[first:end].count(")"))
        self.assertIn("(a - g(a, 7))", written)


class Noticing:
    """Tests that fail with every mutant."""

    name = "cases"

    def __init__(self):
        self.mutants = []

    def run(self, cases, seconds, environment):
        self.mutants.append(environment["ARRAYFOLD_MUTANT"])
        return None


class Runs(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.file = pathlib.Path(folder.name) / "results.txt"
        self.mutants = found_in("bool f(int a, int b) {\n  return a < b;\n}\n")
        for number, mutant in enumerate(self.mutants):
            mutant.number = number

    def mutants_run(self, tree_hash="1", forgotten=()):
        """The numbers of the mutants that a case meets. None reaches the last mutant."""
        trials, suite = Trials(self.file, tree_hash), Noticing()
        trials.forget(forgotten)
        batches = {mutant.number: [(0.1, suite, ["case"])] for mutant in self.mutants[:-1]}
        trials.run(self.mutants, batches, 25, 1)
        self.outcomes = trials.outcomes
        return sorted(suite.mutants)

    def test_a_run_goes_on_and_another_tree_begins_anew(self):
        all_but_last = [str(mutant.number) for mutant in self.mutants[:-1]]
        self.assertTrue(all_but_last)
        self.assertEqual(self.mutants_run(), all_but_last)
        self.assertEqual(self.outcomes, {**{mutant.name: "killed by cases" for mutant in self.mutants[:-1]},
                                         self.mutants[-1].name: "is not reached"})
        self.assertEqual(self.mutants_run(), [])
        self.assertEqual(self.mutants_run(tree_hash="2"), all_but_last)

    def test_what_is_forgotten_runs_once_more(self):
        self.mutants_run()
        self.assertEqual(self.mutants_run(forgotten={self.mutants[0].name}), ["0"])
        self.assertEqual(len(self.outcomes), len(self.mutants))
        self.assertEqual(self.mutants_run(), [])


if __name__ == "__main__":
    unittest.main()
