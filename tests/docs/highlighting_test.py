# tests/docs/highlighting_test.py: the lexer sees what hvm sees, and the checks of words and grammar notice faults
#
# Usage: highlighting_test.py PROJECT_DIRECTORY

import os
import pathlib
import subprocess
import sys
import unittest

import highlighting

PROJECT = pathlib.Path(sys.argv.pop(1))
LEXER = highlighting.lexer_in(PROJECT / highlighting.FOLDER)
GRAMMAR = highlighting.grammar_of(LEXER)


def seen(line):
    return [(text, kind.removeprefix("Token.")) for text, kind in highlighting.seen_by_lexer(LEXER, line)]


class Lexer(unittest.TestCase):
    def test_words_have_their_kinds(self):
        for line, expected in {
            "while": ("while", "Keyword"), "nil": ("nil", "Keyword.Constant"), "not": ("not", "Operator.Word"),
            "print": ("print", "Name.Builtin"), "xarange": ("xarange", "Name.Function"),
            "mean_columns": ("mean_columns", "Name.Function"), "@int64": ("@int64", "Keyword.Type"),
            "whiles": ("whiles", "Name"), "my_print": ("my_print", "Name"), "7L": ("7L", "Literal.Number.Integer"),
            "1e-5": ("1e-5", "Literal.Number.Float"), "2.50": ("2.50", "Literal.Number.Float"),
            "# expect: 1": ("# expect: 1", "Comment.Single"), "é": ("é", "Error"),
        }.items():
            with self.subTest(line):
                self.assertEqual(seen(line), [expected])

    def test_strings_end_at_their_mark_or_their_line(self):
        self.assertEqual(highlighting.joined(seen(r'x = "a\n\"b" + 1'))[2:],
                         [('"a', "Literal.String.Double"), (r'\n\"', "Literal.String.Escape"),
                          ('b"', "Literal.String.Double"), ("+", "Operator"), ("1", "Literal.Number.Integer")])
        self.assertEqual(seen('"open\nif')[-1], ("if", "Keyword"))

    def test_methods_and_defined_functions_are_functions(self):
        self.assertEqual(seen("fn next(a)")[1], ("next", "Name.Function"))
        self.assertEqual(seen("a.shape()")[2], ("shape", "Name.Function"))
        self.assertEqual(seen("shape")[0], ("shape", "Name"))

    def test_Pygments_finds_the_lexer_by_its_name(self):
        run = subprocess.run([sys.executable, "-B", "-m", "pygments", "-l", "hvm", "-f", "raw"], input="fn f()",
                             stdout=subprocess.PIPE, text=True, check=True,
                             env={**os.environ, "PYTHONPATH": str(PROJECT / highlighting.FOLDER)})
        self.assertIn("Token.Keyword\t'fn'", run.stdout)


class Checks(unittest.TestCase):
    def test_an_unknown_character_is_a_fault(self):
        self.assertIn("does not know 'é'", highlighting.fault_of_line(LEXER, GRAMMAR, "a = é"))
        self.assertEqual(highlighting.fault_of_line(LEXER, GRAMMAR, 'a = "é"  # é'), "")

    def test_a_grammar_that_lacks_a_rule_or_has_another_order_is_a_fault(self):
        line = 'fn f() while xsum(a) and clip(a.shape(), @int, @b) >= 2.5 + 1 do print("x\\t", nil) end  # why'
        self.assertEqual(highlighting.fault_of_line(LEXER, GRAMMAR, line), "")
        for rule in GRAMMAR["patterns"]:
            patterns = [other for other in GRAMMAR["patterns"] if other is not rule]
            with self.subTest(rule["name"]):
                self.assertNotEqual(highlighting.fault_of_line(LEXER, {"patterns": patterns}, line), "")
        self.assertNotEqual(
            highlighting.fault_of_line(LEXER, {"patterns": list(reversed(GRAMMAR["patterns"]))}, line), "")

    def test_words_stand_in_one_group(self):
        groups = highlighting.words_of(["and", "if", "nil"], ["print", "abs"],
                                       {"functions": [{"name": "xabs"}], "methods": [{"name": "dump"}]},
                                       "fn count(a)\nfn arrays_check(a)\n")
        self.assertEqual((groups["keyword"], groups["builtin"], groups["module"], groups["library"], groups["method"]),
                         (["if"], ["abs", "print"], ["xabs"], ["count"], ["dump"]))


if __name__ == "__main__":
    unittest.main()
