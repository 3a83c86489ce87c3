// refhost/script/run/interpreter_test.cpp: what scripts do

#include <fmt/format.h>

#include "script/stop/interruption.hpp"
#include "script/stop/script_end.hpp"
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

TEST(ScriptEnds, AsExceptions_SayWhatHasHappened) {
  EXPECT_STREQ(ScriptExit(3).what(), "the script has ended itself");
  EXPECT_STREQ(StepLimitReached().what(), "the script has taken more steps than it may");
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
                  {"print(\"a\" + 1)",
                   "!'+' is not defined for a string and an int; str(x) makes a string of x, number(s) a number of s"},
                  {"print(\"a\"[0][0])", "a"}});
}

TEST(Strings, TimesAnInteger_AreRepeated) {
  expect_outputs({{"print(\"ab\" * 3, \"-\" * 2L, \"\\u{e4}\" * 2)", "ababab -- \xC3\xA4\xC3\xA4"},
                  {"print(type(w\"x\" * 3), len(w\"\\u{1F600}\" * 3))", "string 3"},
                  {"print(\"[\" + \"ab\" * 0 + \"ab\" * -1 + \"\" * 2147483647 + \"]\")", "[]"},
                  {"s = \"ab\"; s *= 2; print(s)", "abab"},
                  {"print(\"a\" * 9223372036854775807L)", "!a string of 9223372036854775807 repetitions is too long"},
                  {"print(\"abc\" * 1000000000)", "!a string of 1000000000 repetitions is too long"},
                  {"print(3 * \"a\")", "!'*' is not defined for an int and a string"},
                  {"print(\"a\" * 1.5)", "!'*' is not defined for a string and a real"}});
}

TEST(Strings, HaveCharactersAndRangesOfThem) {
  const char* text = "s = \"a\\u{e4}\\u{1F600}b\"; ";
  const auto row = [&](const char* expression) { return output_of(std::string(text) + "print(" + expression + ")"); };
  EXPECT_EQ(row("s[0] + s[3], s[1], s[2] == \"\\u{1F600}\""), "ab \xC3\xA4 1");
  EXPECT_EQ(row("s[1:2], s[:2] == s[0:2], s[3:], s[:] == s"), "\xC3\xA4 1 b 1");
  EXPECT_EQ(row("\"[\" + s[2:2] + s[3:1] + s[4:] + s[100:] + s[:0] + \"]\""), "[]");
  EXPECT_EQ(row("s[3:100], s[1L:2L] == s[1]"), "b 1");
  EXPECT_EQ(row("s[4]"), "!the position 4 is beyond the string, which has 4 characters");
  EXPECT_EQ(row("\"\"[0]"), "!the position 0 is beyond the string, which has 0 characters");
  EXPECT_EQ(row("s[-1]"), "!the position -1 in a string is negative");
  EXPECT_EQ(row("s[-1:]"), "!the position -1 in a string is negative");
  EXPECT_EQ(row("s[0:-9223372036854775808L]"), "!the position -9223372036854775808 in a string is negative");
  EXPECT_EQ(row("s[1.0]"), "!the position in a string is an integer, not a real");
  EXPECT_EQ(row("s[:\"b\"]"), "!the position in a string is an integer, not a string");
  EXPECT_EQ(row("s[0, 1]"), "!a string takes one index, not 2");
  EXPECT_EQ(row("s[0, 1:2]"),
            "!a range of keys is allowed in quotations only; row(a, i), column(a, j) and slice(a, from, to) take parts "
            "of an array, after use \"arrays\"");
}

TEST(Strings, WideOnes_HaveCharactersOfTheirOwnKind) {
  expect_outputs({{"w = w\"a\\u{1F600}b\"; print(w[1:] + w[0], len(w[1]), type(w[0:1]))",
                   "\xF0\x9F\x98\x80"
                   "ba 1 string"},
                  {"print(w\"ab\"[2])", "!the position 2 is beyond the string, which has 2 characters"}});
  Interpreter interpreter(toy_functions(), {});
  const auto source = std::make_shared<SourceText>("test.hvm", "w\"abc\"[1:2]");
  const Program program = interpreter.parse(source);
  const auto& statement = std::get<ExpressionStatement>(program.statements.at(0).form);
  EXPECT_EQ(interpreter.evaluate(*statement.expression, source).tag(), ValueTag::wide_string);
}

TEST(Ranges, OfAnythingButAString_AreErrors) {
  expect_outputs(
      {{"t = [1, 2]; print(t[0:1])", "!a range of keys is allowed in quotations only"},
       {"a = toy_int(3); print(a[0:1])",
        "!a range selects characters of a string, and this is $xintarray; slice(a, from, to) takes a part of an array, "
        "after use \"arrays\""},
       {"x = 5; print(x[:])", "!a range selects characters of a string, and this is an int"}});
}

TEST(Nil, IsALiteralAndComparedWithEverything) {
  expect_outputs({{"x = nil; print(x, type(nil), nil == nil, nil != nil)", "nil nil 1 0"},
                  {"t = [\"a\": nil]; print(t[\"a\"] == nil, t[\"b\"] == nil, len(t))", "1 1 1"},
                  {"print(1 == nil, \"\" == nil, [] == nil, nil != [1], @f == nil)", "0 0 0 1 0"},
                  {"a = toy_int(2); print(a == nil, nil == a, a != nil, nil != a)", "0 0 1 1"},
                  {"if nil then print(1) else print(2) end", "2"},
                  {"fn f() return nil end; print(f())", "nil"},
                  {"print([1, nil, 3])", "[1, nil, 3]"},
                  {"nil + 1", "!'+' is not defined for nil and an int"},
                  {"nil < 1", "!'<' is not defined for nil and an int"}});
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
       {"x = not toy_bool(2)",
        "!a condition must be a number, and $xboolarray is an array or another object; m[0] is the first element; "
        "after use \"arrays\", count(m) > 0 asks for any true one, count(m) == len(m) for all, and as_int(m) * "
        "as_int(n) "
        "joins two arrays"},
       {"for x in toy_int(2) do end",
        "!'for' walks a table or a range, not $xintarray; write for i in range(len(a)), and a[i]"},
       {"x = not toy_int(2)", "!a condition must be a number, and $xintarray is an array or another object"}});
}

TEST(Loops, EndEarlyWithBreakAndPassOverWithContinue) {
  expect_outputs(
      {{"for i in range(9) do if i == 1 then continue end; if i == 4 then break end; print(i) end", "0|2|3"},
       {"for v in [5, 6, 7, 8] do if v == 6 then continue end; if v == 8 then break end; print(v) end", "5|7"},
       {"n = 0; while n < 9 do n += 1; if n == 2 then continue end; if n == 4 then break end; print(n) end", "1|3"},
       {"for i in range(2) do for j in range(9) do if j == 1 then break end; print(i, j) end end", "0 0|1 0"},
       {"for i in range(3) do if i == 1 then if 1 then break end end; print(i) end; print(\"on\")", "0|on"},
       {"fn f() for i in range(9) do while 1 do return i + 5 end end end; print(f())", "5"},
       {"fn f() for i in range(9) do break end; return 7 end; print(f())", "7"}});
}

TEST(Loops, WithAKey_WalkEntries) {
  expect_outputs(
      {{"for k, v in [10, \"x\": 20, 2.5: 30] do print(k, type(k), v) end", "0 int 10|x string 20|2.5 real 30"},
       {"for i, v in range(5, 8) do print(i, v) end", "0 5|1 6|2 7"},
       {"t = [\"a\": 1]; for k, v in t do t[k + k] = v end; print(t)", "[\"a\": 1, \"aa\": 1]"},
       {"for k, v in [] do print(k) end; print(\"none\")", "none"},
       {"for v, v in [7, 8] do print(v) end", "7|8"},
       {"for k, v in 5 do print(k) end", "!'for' walks a table or a range, not an int"},
       {"for k, v in [[1, 2], [3]] do for i, x in v do print(k, i, x) end end", "0 0 1|0 1 2|1 0 3"}});
}

TEST(Try, CatchesTheErrorsOfItsBlock) {
  expect_outputs(
      {{"try print(1); 1 / 0; print(2) catch e print(e) end; print(3)", "1|'/' by the integer zero|3"},
       {"try print(1) catch e print(2) end", "1"},
       {"try missing() catch e end; print(type(e))", "string"},
       {"fn f() 1 / 0 end; try f() catch e print(e) end", "'/' by the integer zero"},
       {"try toy_fail() catch e print(e) end", "toy_fail: the call failed without arguments"},
       {"try error(\"mine\") catch e print(e) end", "mine"},
       {"try try error(\"a\") catch e error(e + \"b\") end catch e print(e) end", "ab"},
       {"try 1 / 0 catch e error(e) end; print(2)", "!'/' by the integer zero"},
       {"fn f(n) return f(n + 1) end; try f(0) catch e print(e) end; print(7)",
        "the calls nest too deeply: more than 1000 levels|7"},
       {"fn f() try return 1 catch e return 2 end end; print(f())", "1"},
       {"fn f() try error(\"x\") catch e return e end end; print(f())", "x"},
       {"for i in range(4) do try if i == 2 then break end; error(\"x\") catch e continue end end; print(i)", "2"},
       {"fn f() try 1 / 0 catch e end end; f(); print(e)", "!there is no variable 'e'"}});
}

TEST(Error, HasTheMessageOfItsArgument) {
  expect_outputs({{"error(\"no such month\")", "!no such month"},
                  {"error(5)", "!5"},
                  {"error()", "!error: it takes 1 argument, not 0"}});
}

TEST(Library, ErrorsAreThoseOfTheLineThatCallsIt) {
  const Counts before = counts();
  const auto error_of = [](const std::string& script) {
    Interpreter interpreter(toy_functions(), {});
    const char* text =
        "fn quarter(x)\n  if x < 0 then error(\"quarter: x is negative\") end\n  return half(half(x))\nend\n"
        "fn half(x)\n  return x / 2\nend\n";
    interpreter.run(interpreter.parse(std::make_shared<SourceText>("library.hvm", text, Origin::library)));
    try {
      interpreter.run(interpreter.parse(std::make_shared<SourceText>("test.hvm", script)));
    } catch (const ScriptError& error) {
      return error.report();
    }
    return std::string("no error");
  };
  EXPECT_EQ(error_of("assert(quarter(8) == 2)"), "no error");
  EXPECT_EQ(error_of("a = 1\nquarter(-1)"), "test.hvm:2:1: error: quarter: x is negative\n    quarter(-1)\n    ^\n");
  EXPECT_EQ(error_of("quarter(nil)"),
            "test.hvm:1:1: error: quarter: '<' is not defined for nil and an int\n    quarter(nil)\n    ^\n");
  EXPECT_EQ(error_of("half()"), "test.hvm:1:1: error: half: it takes 1 argument, not 0\n    half()\n    ^\n");
  EXPECT_EQ(error_of("fn f()\n  half(\"x\")\nend\nf()"),
            "test.hvm:2:3: error: half: '/' is not defined for a string and an int\n      half(\"x\")\n      ^\n"
            "  in f, called at test.hvm:4:1\n");
  EXPECT_TRUE(counts() == before);
}

TEST(Library, ErrorsOfTheModuleKeepTheirNotes) {
  Description description;
  description.functions.resize(1);
  description.functions[0].name = "toy_fail";
  description.functions[0].synopsis = {"toy_fail(x)"};
  description.functions[0].page = "docs/functions/toy_fail.md";
  const ModuleDescription known(std::move(description));
  InterpreterOptions options;
  options.description = &known;
  Interpreter interpreter(toy_functions(), options);
  interpreter.run(interpreter.parse(
      std::make_shared<SourceText>("library.hvm", "fn outer(x)\n  toy_fail(x)\nend\n", Origin::library)));
  try {
    interpreter.run(interpreter.parse(std::make_shared<SourceText>("test.hvm", "outer(2)")));
    FAIL() << "there was no error";
  } catch (const ScriptError& error) {
    EXPECT_EQ(error.report(),
              "test.hvm:1:1: error: outer: toy_fail: the call failed with an int\n    outer(2)\n    ^\n"
              "  usage: toy_fail(x)\n  page: docs/functions/toy_fail.md\n");
  }
}

TEST(Exit, EndsTheScriptWithAStatus) {
  const auto status_of = [](const std::string& script) {
    const Counts before = counts();
    int status = -1;
    try {
      output_of(script);
    } catch (const ScriptExit& end) {
      status = end.status();
    }
    EXPECT_TRUE(counts() == before) << "left behind by: " << script;
    return status;
  };
  EXPECT_EQ(status_of("exit()"), 0);
  EXPECT_EQ(status_of("exit(3); error(1)"), 3);
  EXPECT_EQ(status_of("exit(255L)"), 255);
  EXPECT_EQ(status_of("fn f(t) for v in t do while 1 do exit(v) end end end; f([7])"), 7);
  EXPECT_EQ(status_of("try exit(4) catch e print(e) end"), 4);
  expect_outputs({{"exit(256)", "!exit: the status is from 0 to 255, not 256"},
                  {"exit(-1)", "!exit: the status is from 0 to 255, not -1"},
                  {"exit(\"1\")", "!exit: it takes an integer, not a string"}});
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
  expect_outputs(
      {{"fn area(w, h)\nreturn w * h\nend\nprint(area(2, 3))", "6"},
       {"g = 5\nfn f()\nreturn g + 1\nend\nprint(f())", "6"},
       {"g = 5\nfn f()\ng = 1\nreturn g\nend\nprint(f(), g)", "1 5"},
       {"print(f(2))\nfn f(n)\nif n == 0 then return 1 end\nreturn n * f(n - 1)\nend", "2"},
       {"fn f()\nend\nprint(f(), type(f()))", "nil nil"},
       {"fn f()\nfor i in range(5)\nwhile 1\nif i == 0 then return 7 end\nend\nend\nend\nprint(f())", "7"},
       {"fn f()\nx += 1\nend\nf()", "!'x' has no value yet in this fn"},
       {"fn f()\nx += 1\nend\nx = 1\nf()",
        "!'x' has no value yet in this fn; a fn cannot change the global variable: pass its value as an argument, and "
        "return the new one"},
       {"fn f(a)\nend\nf()", "!f: it takes 1 argument, not 0"},
       {"fn print(x)\nend\nprint(1)", ""},
       {"x = 1; x(2)", "!'x' is a variable, not a function"},
       {"fn f()\nend\nx = f", "!'f' is a function; it is called with parentheses: f()"},
       {"f(int, [1])",
        "!'int' is a function; it is called with parentheses: int(); write @int for the kind of an array"},
       {"f(bool, [1])", "!there is no variable 'bool'; write @bool for the kind of an array, x != 0 of a number"},
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
  EXPECT_EQ(interpreter.shown(value, shown.source, {}, 80), "1");
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

/// Runs a script whose first `print` interrupts it. Gives where it was; empty when it came to its end.
std::string interrupted_place(const char* script, std::uint64_t step_limit = 0) {
  Interpreter* running = nullptr;
  InterpreterOptions options;
  options.print = [&](const std::string&, const SourceText&, std::size_t) { running->interrupt(); };
  options.step_limit = step_limit;
  Interpreter interpreter(toy_functions(), std::move(options));
  running = &interpreter;
  try {
    interpreter.run(interpreter.parse(std::make_shared<SourceText>("a.hvm", script)));
    return {};
  } catch (ScriptInterrupted& end) {
    const std::string report = end.place() ? end.place()->report() : "";
    return report.substr(0, report.find('\n'));
  }
}

TEST(Interruption, EndsTheStatementThatRuns) {
  EXPECT_EQ(interrupted_place("x = 1\nprint(1)\nx = 2"), "a.hvm:3:1: error: interrupted");
  EXPECT_EQ(interrupted_place("print(1)\nwhile 1\nx = 2\nend"), "a.hvm:2:1: error: interrupted");
  EXPECT_EQ(interrupted_place("fn f()\nprint(1)\nx = 1\nend\nf()"), "a.hvm:3:1: error: interrupted");
  EXPECT_EQ(interrupted_place("fn f()\nprint(1)\nreturn len(\"a\")\nend\nx = f()"), "a.hvm:3:1: error: interrupted");
  EXPECT_EQ(interrupted_place("print(1)\nx = range(10000000)"), "a.hvm:2:1: error: interrupted");
  EXPECT_EQ(interrupted_place("try\nprint(1)\nx = 1\ncatch e\nprint(e)\nend"), "a.hvm:3:1: error: interrupted");
  EXPECT_EQ(interrupted_place("print(1)"), "");
}

TEST(Interruption, LeavesTheInterpreterAsItWas) {
  Interpreter* running = nullptr;
  InterpreterOptions options;
  options.print = [&](const std::string&, const SourceText&, std::size_t) { running->interrupt(); };
  options.step_limit = 20;
  Interpreter interpreter(toy_functions(), std::move(options));
  running = &interpreter;
  const auto run = [&](const char* text) {
    interpreter.run(interpreter.parse(std::make_shared<SourceText>("a.hvm", text)));
  };
  run("kept = 7");
  EXPECT_THROW(run("print(1)\nkept = 8"), ScriptInterrupted);
  EXPECT_NO_THROW(run("assert(kept == 7)"));
  EXPECT_THROW(run("while 1 do end"), StepLimitReached) << "required: an interruption gives no steps back";
}

TEST(Interruption, InALibrary_IsAtTheLineThatCallsIt) {
  is_interruption_requested = false;
  Interpreter interpreter(toy_functions(), {});
  interpreter.run(interpreter.parse(
      std::make_shared<SourceText>("tools.hvm", "fn spin()\nwhile 1 do range(9) end\nend", Origin::library)));
  const Program program = interpreter.parse(std::make_shared<SourceText>("a.hvm", "x = 1\nspin()"));
  is_interruption_requested = true;  // the range looks for it
  try {
    interpreter.run(program);
    FAIL() << "nothing was interrupted";
  } catch (ScriptInterrupted& end) {
    ASSERT_TRUE(end.place());
    EXPECT_EQ(end.place()->source()->name(), "a.hvm");
    EXPECT_EQ(end.place()->line(), 2u);
  }
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
