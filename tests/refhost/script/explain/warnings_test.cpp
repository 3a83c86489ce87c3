// refhost/script/explain/warnings_test.cpp: how warnings are told, taken back and left out, and what hostile scripts
// get

#include "script/explain/warnings.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "explain/warned_run.hpp"
#include "explain/warning_rows.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

// ---- How warnings are told

TEST(Warnings, HaveALineACaretAPageAndAWayBack) {
  const ToldRun result = run("a = xarange(3)\n  b = 5 - a");
  ASSERT_EQ(result.warnings.size(), 1u);
  EXPECT_EQ(result.warnings[0].report,
            "test.hvm:2:9: warning: 5 - a computes a - 5: with a number the array stands on the left; write a * -1 + "
            "5\n      b = 5 - a\n            ^\n  page: docs/functions/operator-subtract.md#result\n"
            "  allow: # allow: number-on-the-left\n");
}

// What is asked for a warning may fail; the script goes on.
TEST(Warnings, WithoutMemoryForTheLookAtNaN_AreNotTold) {
  int told_nothing = 0;
  for (int nth = 1;; ++nth) {
    fail_allocation(nth);
    const ToldRun result = run("a = xarange(3) * (0.0 / 0); b = xsort(a); print(1)");
    const bool has_failed = allocation_has_failed();
    fail_allocation(0);
    const bool is_right = result.output == "1";
    EXPECT_TRUE(is_right || result.output.front() == '!') << result.output;
    told_nothing += is_right && result.warnings.empty();
    if (!has_failed) break;
    ASSERT_LT(nth, 1000);
  }
  EXPECT_GE(told_nothing, 1) << "no allocation of the look failed";
}

TEST(Warnings, NameWhatTheirLineAllowsAndNoWarningIs) {
  const auto report = [](const std::string& comment) { return run("5 - xarange(3) " + comment).warnings.at(0).report; };
  EXPECT_THAT(report("# allow: column, number-on-left"),
              HasSubstr("\n  the line allows 'number-on-left', and no warning has this name\n"));
  EXPECT_THAT(report("# allow: column"), Not(HasSubstr("the line allows")));
}

TEST(Warnings, OfADataLiteral_PointAtTheElement) {
  const ToldRun result = run("d = @[1.5,\n  2]\na = xarray(@double, d)");
  ASSERT_EQ(result.warnings.size(), 1u);
  EXPECT_THAT(result.warnings[0].report, HasSubstr("test.hvm:2:3: warning: a data literal of reals drops"));
}

TEST(Warnings, ComeOnceALine) {
  EXPECT_EQ(run("a = xarange(3)\nfor k in range(9)\n5 - a\nend").warnings.size(), 1u);
  EXPECT_EQ(run("a = xarange(3); 5 - a; 6 - a").warnings.size(), 1u);
  EXPECT_EQ(run("a = xarange(3)\n5 - a\n6 - a").warnings.size(), 2u);
  EXPECT_EQ(run("a = xarange(3); 5 - a; xpow(a, 2)").warnings.size(), 2u) << "two warnings on a line";
  EXPECT_EQ(run("a = xarange(3)\nfn f(a)\nreturn 5 - a\nend\nf(a)\nf(a)").warnings.size(), 1u);
}

TEST(Warnings, OfManyPlaces_ComeForEach) {
  std::string script = "a = xarange(3)\nfor k in range(3)\n";
  for (int i = 0; i < 500; ++i) script += "5 - a\n";
  EXPECT_EQ(run(script + "end").warnings.size(), 500u);
}

TEST(Warnings, AreTakenBackByACommentOnTheirLine) {
  const auto count = [](const std::string& comment) {
    return run("a = xarange(3)\n5 - a " + comment + "\n").warnings.size();
  };
  EXPECT_EQ(count("# allow: number-on-the-left"), 0u);
  EXPECT_EQ(count("# allow: column, number-on-the-left"), 0u);
  EXPECT_EQ(count("# expect: 5  # allow: column number-on-the-left # why"), 0u);
  EXPECT_EQ(count("# allow: column  # allow: number-on-the-left"), 0u);
  EXPECT_EQ(count("# allow: column"), 1u);
  EXPECT_EQ(count("# number-on-the-left"), 1u);
  EXPECT_EQ(count("# allow: number-on-the-left-side"), 1u);
  EXPECT_EQ(count("; \"# allow: number-on-the-left\""), 1u) << "a string is no comment";
  EXPECT_EQ(run("# allow: number-on-the-left\na = xarange(3)\n5 - a").warnings.size(), 1u) << "another line";
  EXPECT_EQ(run("a = xarange(3)\n5 - a # allow: number-on-the-left\n6 - a").warnings.size(), 1u);
}

TEST(Warnings, SwitchedOff_AreNotLookedFor) {
  for (const WarnedScript& row : warned_scripts())
    EXPECT_TRUE(run(row.script, WarningMode::off).warnings.empty()) << row.script;
}

TEST(Warnings, AsErrors_AreCaughtAtTheirPlace) {
  for (const WarnedScript& row : warned_scripts())
    EXPECT_EQ(run(row.script, WarningMode::error).output, std::string("!") + row.message) << row.script;
  const ToldRun caught =
      run("a = xarange(3)\nfor k in range(2)\ntry\n5 - a\ncatch e\nprint(e)\nend\nend", WarningMode::error);
  const std::string words = "5 - a computes a - 5: with a number the array stands on the left; write a * -1 + 5";
  EXPECT_EQ(caught.output, words + "|" + words) << "as often as its cause";
  EXPECT_EQ(run("a = xarange(3)\n5 - a # allow: number-on-the-left\nprint(1)", WarningMode::error).output, "1");
}

TEST(Warnings, AsErrors_NameTheLine) {
  InterpreterOptions options;
  options.warnings = WarningMode::error;
  Interpreter interpreter(arrays(), options);
  try {
    interpreter.run(interpreter.parse(std::make_shared<SourceText>("test.hvm", "a = xarange(3)\nb = 5 - a")));
    FAIL() << "there was no error";
  } catch (const ScriptError& error) {
    EXPECT_EQ(error.line(), 2u);
    EXPECT_THAT(error.report(), HasSubstr("test.hvm:2:7: error: 5 - a computes a - 5"));
    EXPECT_THAT(error.report(), HasSubstr("  page: docs/functions/operator-subtract.md#result\n"
                                          "  allow: # allow: number-on-the-left\n"));
  }
}

TEST(Warnings, OfWhatALibraryDoes_DoNotCome) {
  const std::string script = "a = xarange(3); 5 - a; xpow(a, 2); a.reshape(3, 1); xsum(a); b = xshuffle(a)";
  EXPECT_EQ(run(script).warnings.size(), 4u);
  EXPECT_TRUE(run(script, WarningMode::on, Origin::library).warnings.empty());
  EXPECT_EQ(run(script + "; print(1)", WarningMode::error, Origin::library).output, "1");
}

TEST(Warnings, OfColumnsThatALibraryMade_ComeInTheScript) {
  ToldRun result;
  InterpreterOptions options;
  options.warn = [&](const Warning& warning) { result.output += warning.message; };
  Interpreter interpreter(arrays(), options);
  interpreter.run(interpreter.parse(
      std::make_shared<SourceText>("library.hvm", "fn made()\nreturn xones(3, 1)\nend", Origin::library)));
  interpreter.run(interpreter.parse(std::make_shared<SourceText>("test.hvm", "xsum(made())")));
  EXPECT_THAT(result.output, HasSubstr("xsum of a column (3, 1)"));
}

TEST(Warnings, OfAnotherModule_DoNotCome) {
  ModuleFunctions without_xarray;
  for (const std::string& name : arrays().names())
    if (name != "xarray") without_xarray.add(name, arrays().find(name));
  const ToldRun result = run("a = xarange(3); 5 - a; xpow(a, 2)", WarningMode::error, Origin::script, without_xarray);
  EXPECT_EQ(result.output, "");
  EXPECT_TRUE(result.warnings.empty());
}

TEST(Warnings, OfReplacedSources_ComeForEachInput) {
  int warnings = 0;
  InterpreterOptions options;
  options.warn = [&](const Warning&) { ++warnings; };
  Interpreter interpreter(arrays(), options);
  for (int i = 0; i < 50; ++i)
    interpreter.run(interpreter.parse(std::make_shared<SourceText>("<input>", "a = xarange(3); 5 - a")));
  EXPECT_EQ(warnings, 50);
}

// ---- Hostile scripts

TEST(Warnings, OfAnyArguments_DoNotCrash) {
  const std::vector<std::string> values = {"nil",
                                           "1",
                                           "-1",
                                           "2.5",
                                           "1e308",
                                           "0.0 / 0",
                                           "1.0 / 0",
                                           "5L",
                                           "-9223372036854775808L",
                                           "\"s\"",
                                           "w\"w\"",
                                           "[]",
                                           "[[1], [2]]",
                                           "[\"a\": 1]",
                                           "@x",
                                           "@double",
                                           "@[1, 2.5]",
                                           "@double(2, 1)",
                                           "xones(3)",
                                           "xones(3, 1)",
                                           "xlinspace(1, 3, 3)",
                                           "xones(3) > 0",
                                           "xarray(@int64, [3, 1])",
                                           "xzeros(0)",
                                           "xzeros(0, 1)",
                                           "xnorm(xones(2))"};
  int calls = 0;
  for (const std::string& name : arrays().names()) {
    if (name == "xarange" || name.compare(0, 5, "xrand") == 0) continue;
    for (const std::string& first : values) {
      const bool is_extent = name == "xzeros" || name == "xones" || name == "xempty" || name == "xeye" ||
                             name == "xlinspace" || name == "xlogspace" || name == "xhistogram";
      for (const std::string& second : values) {
        if (is_extent &&
            (first == "1e308" || second == "1e308" || first == "1.0 / 0" || second == "1.0 / 0" || second == "5L"))
          continue;
        const std::string call = name + "(" + first + ", " + second + ")";
        run("try\nx = " + call + "\ncatch e\nend");
        ++calls;
      }
    }
  }
  EXPECT_GT(calls, 10000);
}

TEST(Warnings, OfTablesSharedManyTimesOver_EndSoon) {
  // The module reads 0 of 2^40 rows, since the table below is a row of nil.
  EXPECT_THAT(told("t = [nil]\nfor k in range(40)\nt = [t, t]\nend\nxarray(@double, t)"), HasSubstr("at nil"));
  EXPECT_THAT(told("t = [1, 2]\nfor k in range(10)\nt = [t, t]\nend\nxarray(@double, [t, 1])"), HasSubstr("ragged"));
  EXPECT_EQ(told("t = [1]\nfor k in range(2000)\nt = [t]\nend\na = xarray(@double, t)"), "");
}

TEST(Warnings, OfHugeAndOddNumbers_AreQuiet) {
  EXPECT_EQ(told("xlinspace(-9223372036854775807L, 9223372036854775807L, 3)"), "");
  EXPECT_EQ(told("xarange(2147483647, -2147483647, 1)"), "");
  EXPECT_EQ(told("a = xones(2); a * (0.0 / 0); a + 1.0 / 0; a[0] = 0.0 / 0"), "");
  EXPECT_THAT(told("i = xlinspace(1, 2, 2); i * (0.0 / 0)"), HasSubstr("reads nan as "));
}

TEST(Warnings, OfLongLines_KeepTheirSentencesShort) {
  std::string sum = "1";
  for (int i = 0; i < 5000; ++i) sum += " + 1";
  const ToldRun result = run("a = xarange(3); (" + sum + ") - a; " + sum + " - a");
  ASSERT_EQ(result.warnings.size(), 1u);
  EXPECT_EQ(result.warnings[0].message,
            "n - a computes a - n: with a number the array stands on the left; write a * -1 + n");
}

TEST(Warnings, ForgetAColumnWhoseAddressIsUsedAgain) {
  EXPECT_EQ(told("for k in range(1000)\nc = xones(5, 1)\nc = nil\nv = xones(5)\nxsum(v)\nend"), "");
  EXPECT_EQ(told("for k in range(5000)\nc = xones(4, 1)\nxsum(c)\nend"), "");
}

}  // namespace
}  // namespace hvm::testing
