// refhost/script/run/interpreter_test.cpp: what scripts do

#include <fmt/format.h>

#include "script/library/script_end.hpp"
#include "script_run.hpp"

namespace hvm::testing {
namespace {

TEST(Numbers, IntegerArithmetic_StaysIn32BitsWhileItFits) {
  expect_outputs({{"print(1 + 2, 7 - 9, 6 * 7)", "3 -2 42"},
                  {"print(7 / 2, -7 / 2, 7 % 3, -7 % 3)", "3 -3 1 -1"},
                  {"print(type(1 + 2), type(5L + 1), type(1 + 2.0))", "int int64 real"},
                  {"print(2147483647 + 1, type(2147483647 + 1))", "2147483648 int64"},
                  {"print(-2147483648 / -1, -2147483648 % -1)", "2147483648 0"},
                  {"print(type(-(-2147483648)))", "int64"},
                  {"print(3000000000L - 2999999999L, type(3000000000L - 2999999999L))", "1 int64"},
                  {"print(9223372036854775807L + 1)", "!the result of '+' does not fit in 64 bits"},
                  {"print(-9223372036854775808L / -1)", "!the result of '/' does not fit in 64 bits"},
                  {"print(-9223372036854775808L % -1)", "0"},
                  {"print(1 / 0)", "!'/' by the integer zero"},
                  {"print(1L % 0)", "!'%' by the integer zero"}});
}

TEST(Numbers, RealArithmetic_IsThatOf64BitFloats) {
  expect_outputs({{"print(1.0 / 0, -1.0 / 0, 0.0 / 0)", "inf -inf nan"},
                  {"print(7.5 % 2, 1 / 2.0, 0.1 + 0.2)", "1.5 0.5 0.3"},
                  {"print(str(0.1 + 0.2), str(1.0), str(1e300 * 10))", "0.30000000000000004 1.0 1e+301"},
                  {"print(-0.0, 1e20, 123456789.0, 1234567.0)", "-0.0 1e+20 1.23457e+08 1.23457e+06"}});
}

TEST(Numbers, Comparison_GivesOneOrZeroAndIsExact) {
  expect_outputs({{"print(1 < 2, 2 <= 1, 1 == 1.0, 1 != 1, true, false)", "1 0 1 0 1 0"},
                  {"print(9007199254740993L == 9007199254740992.0)", "0"},
                  {"print(9223372036854775807L < 9223372036854775808.0)", "1"},
                  {"print(0.0/0 == 0.0/0, 0.0/0 != 0.0/0)", "0 1"}});
}

TEST(Strings, AreJoinedAndCompared) {
  expect_outputs({{"print(\"a\" + \"b\", \"a\" < \"b\", \"a\" == w\"a\")", "ab 1 1"},
                  {"print(len(\"abc\"), len(w\"\\u{e4}\"), type(w\"x\" + \"y\"))", "3 1 string"},
                  {"print(w\"\\u{1F600}\" + \"!\")", "\xF0\x9F\x98\x80!"},
                  {"print(\"a\" == 1, \"a\" != 1)", "0 1"},
                  {"print(\"a\" + 1)", "!'+' is not defined for a string and an int"},
                  {"print(\"a\"[0][0])", "a"}});
}

TEST(Conditions, TakeNumbersAndNilOnly) {
  expect_outputs(
      {{"if 2 then print(1) end", "1"},
       {"if 0.0 then print(1) else print(2) end", "2"},
       {"if toy_nothing() then print(1) else print(2) end", "2"},
       {"print(1 and 2, 0 or 3, not 0, not 5)", "1 1 1 0"},
       {"print(0 and missing, 1 or missing)", "0 1"},
       {"if \"a\" then end", "!a condition must be a number, not a string"},
       {"if [] then end", "!a condition must be a number, not a table"},
       {"if toy_int(2) then end", "!a condition must be a number, and $xintarray is an array or another object"},
       {"x = not toy_int(2)", "!a condition must be a number, and $xintarray is an array or another object"}});
}

TEST(Tables, AreWrittenReadAndShared) {
  expect_outputs(
      {{"print([1, 2, \"a\": 3, 2.0: 4, [\"x\"], \"k\": [5]])", "[1, 2, [\"x\"], \"a\": 3, 2.0: 4, \"k\": [5]]"},
       {"t = [1, 2]; t[2] = 3; t[\"k\"] = w\"w\"; print(t, len(t))", "[1, 2, 3, \"k\": \"w\"] 4"},
       {"t = [1]; u = t; u[0] = 5; print(t[0])", "5"},
       {"t = [1]; t[0] += 4; t[0] *= 2; print(t)", "[10]"},
       {"t = [[1, 2]]; t[0][1] = 7; print(t)", "[[1, 7]]"},
       {"print([1][5], type([1][5]))", "nil nil"},
       {"print([5: 1, -1: 2])", "[5: 1, -1: 2]"},
       {"print([])", "[]"},
       {"t = []; t[[1]] = 1", "!a table is not a key of a table"},
       {"print([1][1, 2])", "!a table takes one key"},
       {"print([1] == [1])", "!'==' is not defined for a table and a table"},
       {"print([1] + 1)", "!'+' is not defined for a table and an int"}});
}

TEST(Tables, CannotHoldThemselves) {
  expect_outputs({{"t = []; t[0] = t", "!a table cannot hold itself"},
                  {"t = []; u = [t]; t[0] = u", "!a table cannot hold itself"},
                  {"t = [[]]; t[0][0] = t", "!a table cannot hold itself"},
                  {"t = [[]]; u = t[0]; u[0] = t", "!a table cannot hold itself"},
                  {"t = []; u = []; t[0] = u; t[1] = u; print(t)", "[[], []]"}});
}

TEST(Loops, WalkTablesAndRanges) {
  expect_outputs(
      {{"for v in [1, \"a\", \"k\": 2] do print(v) end", "1|a|2"},
       {"for i in range(3) do print(i) end", "0|1|2"},
       {"for i in range(2, 8, 3) do print(i) end", "2|5"},
       {"for i in range(3, 0, -1) do print(i) end", "3|2|1"},
       {"for i in range(9223372036854775806L, 9223372036854775807L, 5) do print(i) end", "9223372036854775806"},
       {"n = 0\nfor i in range(100000000000L)\nn += 1\nif n > 2 then assert(0, \"stop\") end\nend",
        "!assertion failed: stop"},
       {"print(range(3), type(range(3L)[0]))", "[0, 1, 2] int64"},
       {"t = [1, 2]\nfor v in t\nt[len(t)] = v\nend\nprint(t)", "[1, 2, 1, 2]"},
       {"i = 0\nwhile i < 3\ni += 1\nend\nprint(i)", "3"},
       {"for v in 5 do end", "!'for' walks a table or a range, not an int"},
       {"for i in range(1, 2, 0) do end", "!range: the step is zero"},
       {"print(range(2.0))", "!range: it takes integers, not a real"},
       {"print(range(20000000))", "!range: a table of 20000000 numbers is too long; 'for' walks a range without one"}});
}

TEST(Functions, HaveLocalsAndReadGlobals) {
  expect_outputs({{"fn area(w, h)\nreturn w * h\nend\nprint(area(2, 3))", "6"},
                  {"g = 5\nfn f()\nreturn g + 1\nend\nprint(f())", "6"},
                  {"g = 5\nfn f()\ng = 1\nreturn g\nend\nprint(f(), g)", "1 5"},
                  {"print(f(2))\nfn f(n)\nif n == 0 then return 1 end\nreturn n * f(n - 1)\nend", "2"},
                  {"fn f()\nend\nprint(f(), type(f()))", "nil nil"},
                  {"fn f()\nfor i in range(5)\nwhile 1\nif i == 0 then return 7 end\nend\nend\nend\nprint(f())", "7"},
                  {"fn f()\nx += 1\nend\nx = 1\nf()", "!'x' has no value yet in this fn"},
                  {"fn f(a)\nend\nf()", "!f: it takes 1 argument, not 0"},
                  {"fn print(x)\nend\nprint(1)", ""},
                  {"x = 1; x(2)", "!'x' is a variable, not a function"},
                  {"fn f()\nend\nx = f", "!'f' is a function; it is called with parentheses: f()"},
                  {"value = 1; print(valeu)", "!there is no variable 'valeu' (did you mean 'value'?)"},
                  {"toy_inth(2)", "!there is no function 'toy_inth' (did you mean 'toy_int'?)"}});
}

TEST(Functions, DeepRecursion_IsAScriptError) {
  expect_outputs({{"fn f(n)\nif n == 0 then return 0 end\nreturn f(n - 1)\nend\nprint(f(900))\nf(1001)",
                   "0!the calls nest too deeply: more than 1000 levels"}});
  std::string nested = "f(n + 1)";
  for (int i = 0; i < 90; ++i) nested = "(0 + " + nested + ")";
  EXPECT_NE(output_of("fn f(n)\nreturn " + nested + "\nend\nf(0)").find("!the calls nest too deeply"),
            std::string::npos);
}

TEST(Functions, ErrorInsideACall_NamesTheCalls) {
  Interpreter interpreter(toy_functions(), {});
  try {
    interpreter.run(
        interpreter.parse(std::make_shared<SourceText>("a.hvm", "fn f()\nreturn 1 / 0\nend\n\nx = 1 + f()")));
    FAIL() << "no error";
  } catch (const ScriptError& error) {
    EXPECT_EQ(error.report(),
              "a.hvm:2:10: error: '/' by the integer zero\n    return 1 / 0\n             ^\n"
              "  in f, called at a.hvm:5:9\n");
  }
}

TEST(Assignment, InASingleStatement_KeepsTheOldValueOnError) {
  expect_outputs({{"a = 1\na = 2 + missing", "!there is no variable 'missing'"}});
  Interpreter interpreter(toy_functions(), {});
  const auto source = std::make_shared<SourceText>("a.hvm", "a = 1\na = 2 / 0");
  const Program program = interpreter.parse(source);
  EXPECT_THROW(interpreter.run(program), ScriptError);
  const Program shown = interpreter.parse(std::make_shared<SourceText>("b.hvm", "a"));
  const auto& statement = std::get<ExpressionStatement>(shown.statements[0].form);
  const Value value = interpreter.evaluate(*statement.expression, shown.source);
  EXPECT_EQ(interpreter.shown(value, shown.source, {}), "1");
}

/// Whether a script comes to its end in this many steps.
bool ends_within(std::uint64_t steps, const char* script) {
  Interpreter interpreter(
      toy_functions(), {true, [](const std::string&, const SourceText&, std::size_t) {}, {}, FileAccess::none, steps});
  try {
    interpreter.run(interpreter.parse(std::make_shared<SourceText>("a.hvm", script)));
    return true;
  } catch (const StepLimitReached&) {
    return false;
  }
}

TEST(Steps, AreStatementsTurnsOfLoopsAndCalls) {
  struct Row {
    const char* script;
    std::uint64_t steps;
  };
  for (const Row& row : std::initializer_list<Row>{
           {"x = 1; x += 1", 2},
           {"if 1 then x = 1 end", 2},
           {"print(len(\"abc\"))", 3},
           {"i = 0\nwhile i < 5 do i += 1 end", 12},
           {"i = 0\nwhile i < 5\ni += 1\nif i == 3 then i = 4 end\nend", 15},
           {"for i in range(5)\nend", 6},
           {"for i in [1, 2]\nend", 3},
           {"fn f()\nreturn 1\nend\nx = f() + f()", 5},
           {"a = toy_int(2); a.dump()", 4},
       }) {
    EXPECT_TRUE(ends_within(row.steps, row.script)) << row.script;
    EXPECT_FALSE(ends_within(row.steps - 1, row.script)) << row.script;
    EXPECT_TRUE(ends_within(0, row.script)) << row.script;
  }
}

TEST(Steps, BeyondTheLimit_EndEverythingThatTheInterpreterRuns) {
  const auto source = [](const char* text) { return std::make_shared<SourceText>("a.hvm", text); };
  const Counts before = counts();
  {
    Interpreter interpreter(toy_functions(), {true, {}, {}, FileAccess::none, 1000});
    const Program endless = interpreter.parse(source("t = [[1], \"text\"]\nwhile 1\nt[1] += \"x\"\nend"));
    EXPECT_THROW(interpreter.run(endless), StepLimitReached);
    const Program one_more = interpreter.parse(source("x = 1"));
    EXPECT_THROW(interpreter.run(one_more), StepLimitReached);
  }
  EXPECT_TRUE(counts() == before);
}

TEST(Deep, Tables_ArePrintedAndDestroyed) {
  const std::string text = output_of("t = toy_deep(100000)\nprint(len(str(t)))\nt = 0\nprint(t)");
  EXPECT_EQ(text, "200000|0");
  expect_outputs({{"t = []\nfor i in range(100000)\nu = []\nu[0] = t\nt = u\nend\nprint(len(str(t)))", "200002"}});
}

TEST(Deep, LongChainsRun) {
  std::string sum = "print(1";
  for (int i = 0; i < 100000; ++i) sum += "+1";
  EXPECT_EQ(output_of(sum + ")"), "100001");
}

}  // namespace
}  // namespace hvm::testing
