// refhost/script/syntax/foreign_words_test.cpp: what is said of forms of other languages, and that none is reserved

#include "script/syntax/foreign_words.hpp"

#include <gtest/gtest.h>

#include "tree_text.hpp"

namespace hvm::testing {
namespace {

struct Row {
  std::string text;
  std::string expected;  // `line:column message`
};

void expect_errors(const std::vector<Row>& rows) {
  for (const Row& row : rows) EXPECT_EQ(placed_error_of(row.text), row.expected) << row.text;
}

const std::string a_function = "a function is written fn f(x), its statements and end";
const std::string a_block = "a block begins after 'then', 'do' or the end of the line, and ends with 'end'";
const std::string a_loop = "a loop is written for i in range(3), or for k, v in t";
const std::string a_comment = "a comment begins with '#'";
const std::string step_back = "unexpected '--'; " + a_comment + "; to count down, write x -= 1";
const std::string a_quotient = "unexpected '//'; " + a_comment + "; '/' of two integers truncates";

TEST(ForeignWords, AtTheBeginningOfAStatement_LeadToWhatIsWritten) {
  expect_errors(
      {{"import numpy as np",
        "1:1 unexpected 'import'; write use \"arrays\" for the library; functions of the module need nothing"},
       {"def f(x):\n  return x", "1:1 unexpected 'def'; " + a_function},
       {"function f(x)\nend", "1:1 unexpected 'function'; " + a_function},
       {"x = 1\nlocal y = 1", "2:1 unexpected 'local'; a variable that a fn gives a value is local: write x = 1"},
       {"let x = 1", "1:1 unexpected 'let'; a variable needs no declaration: write x = 1"},
       {"if 1\nx = 1\nelif 2\nend", "3:1 unexpected 'elif'; write 'elseif'"},
       {"if 1 then x = 1 elif 2 then x = 2 end", "1:17 unexpected 'elif'; write 'elseif'"},
       {"print x", "1:1 unexpected 'print'; write print(x)"},
       {"raise \"x\"", "1:1 unexpected 'raise'; write error(\"text\")"}});
}

TEST(ForeignSigns, LeadToWhatIsWritten) {
  expect_errors(
      {{"if a && b", "1:6 unexpected characters '&&'; conditions are joined by 'and'"},
       {"if a || b", "1:6 unexpected characters '||'; conditions are joined by 'or'"},
       {"if !a", "1:4 unexpected character '!'; a condition is negated by 'not'"},
       {"x++", "1:2 unexpected '++'; write x += 1 or x -= 1"},
       {"x--\ny = 2", "1:2 " + step_back},
       {"x = 2 ** 3",
        "1:7 unexpected '**'; a power is pow(x, y) of numbers, power(a, p) of an array after use \"arrays\""},
       {"x = 7 // 2", "1:7 " + a_quotient},
       {"// words", "1:1 " + a_quotient},
       {"-- two words", "1:1 " + step_back},
       {"/* words */", "1:1 unexpected '/*'; " + a_comment},
       {"x = a <> b", "1:7 unexpected '<>'; unequal is written '!='"},
       {"x = a === b", "1:7 unexpected '==='; write '=='"},
       {"x := 1", "1:3 unexpected ':='; write '='"},
       {"x = 'abc'", "1:5 unexpected character '''; a string is written in double quotes: \"text\""},
       {"x = \u201Ca\u201D", "1:5 unexpected character '\u201C'; a string is written in straight quotes: \"text\""},
       {"s = f\"x {1}\"", "1:5 unexpected 'f\"'; write \"x \" + str(x), or format(\"x {}\", x)"},
       {"x = a @ b", "1:7 unexpected '@'; '@' quotes what follows; a product of matrices is xdot(a, b)"},
       {"x = a[::2]", "1:7 unexpected '::'; a range has no step"},
       {"x = a[1:3:2]", "1:10 unexpected ':'; a range has no step"},
       {"x = (1, 2)",
        "1:7 unexpected ','; a table is written [1, 2], and arguments need no second parentheses: f(1, 2)"},
       {"fn f(x, k = 2)\nend", "1:11 a parameter of a fn has no default value; each call gives all arguments"},
       {"m = ~n", "1:5 unexpected character '~'; a bool array is negated by as_int(m) < 1, after use \"arrays\""},
       {"x = a & b",
        "1:7 unexpected character '&'; there are no operators for bits; bool arrays are joined by as_int(m) * "
        "as_int(n), "
        "after use \"arrays\""},
       {"x = a | b",
        "1:7 unexpected character '|'; there are no operators for bits; bool arrays are joined by as_int(m) + "
        "as_int(n), "
        "after use \"arrays\""},
       {"a, b = 1, 2", "1:2 unexpected ','; one variable gets a value at a time: a = 1; b = 2"}});
}

TEST(ForeignBlocks, LeadToWhatIsWritten) {
  const std::string colon = "unexpected ':'; " + a_block;
  expect_errors(
      {{"if 1:\nx = 1\nend", "1:5 " + colon},
       {"while 1:\nend", "1:8 " + colon},
       {"for i in range(3):\nend", "1:18 " + colon},
       {"fn f(x):\nend", "1:8 " + colon},
       {"if 1\nelse:\nend", "2:5 " + colon},
       {"try:\ncatch e\nend", "1:4 " + colon},
       {"if 1 begin\nend", "1:6 unexpected 'begin'; " + a_block},
       {"for (i = 0; i < 3; i += 1) print(i) end", "1:5 unexpected '('; " + a_loop},
       {"for i = 1, 3 do print(i) end", "1:7 unexpected '='; " + a_loop},
       {"for i in 1:3 do print(i) end", "1:11 unexpected ':'; a loop over numbers is written for i in range(1, 4)"},
       {"if 1 { x = 1 }",
        "1:6 unexpected character '{'; a block has no braces and ends with 'end'; a table is written [1, 2] "
        "or [\"key\": 1]"},
       // Where header and body are not separated, all that separates them is named.
       {"for i in range(3) print(i) end",
        "1:19 the end of the line, ';', 'then' or 'do' expected, but here is a name"}});
}

TEST(ForeignExpressions, LeadToWhatIsWritten) {
  expect_errors(
      {{"f = lambda x: x", "1:5 unexpected 'lambda'; " + a_function},
       {"x = 1 if c else 2",
        "1:7 unexpected 'if'; a condition is a statement of its own: if c then x = 1 else x = 2 end"},
       {"x = [i for i in t]",
        "1:8 unexpected 'for'; a table is filled in a loop: t = [], and append(t, x) for each value"},
       {"if x in t then y = 1 end",
        "1:6 unexpected 'in'; write has(t, key) of a table, find(s, part) != nil of a string"},
       {"x = a is nil", "1:7 unexpected 'is'; write '==' or '!='"},
       {"x = 5 mod 2", "1:7 unexpected 'mod'; a remainder is written '%'"},
       {"x = math.pi", "1:10 there is no '.pi'; write 3.141592653589793"},
       {"b = a.T", "1:7 there is no '.T'; write transpose(a), after use \"arrays\""},
       {"n = a.ndim + 1", "1:7 there is no '.ndim'; write len(a.shape())"},
       {"s = a.shape",
        "1:7 a method is called with parentheses: .shape(); an entry of a table is written t[\"shape\"]"},
       {"x = xsum(a, axis=0)",
        "1:13 a call takes no named arguments; sum_rows(a) and sum_columns(a) sum along an axis, after use "
        "\"arrays\""},
       {"x = f(n = 3)", "1:9 an assignment is not an expression, and a call takes no named arguments; did you mean =="},
       {"x = [n = 3]", "1:8 an entry of a table is written \"key\": value"}});
}

// A script may use all of these words as names.
TEST(ForeignWords, AreNotReserved) {
  for (const std::string name : {"import", "def", "function", "local", "let", "elif", "lambda", "is", "mod", "new", "T",
                                 "endif", "except", "axis", "print", "f", "begin"}) {
    EXPECT_EQ(parsed(name + " = 1\n" + name), "{(= " + name + " 1) " + name + "}");
    EXPECT_EQ(parsed(name + "(1)"), "{(call " + name + " 1)}");
    EXPECT_EQ(parsed("a." + name + "()"), "{(method a " + name + ")}");
  }
  EXPECT_EQ(parsed("a - -b"), "{(- a (- b))}");
  EXPECT_EQ(parsed("a--b"), "{(- a (- b))}");
}

}  // namespace
}  // namespace hvm::testing
