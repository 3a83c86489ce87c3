// refhost/cli/expectations_test.cpp: the comments of a script that say what a line must print, or how it must fail

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "program.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;

/// What `--test` says of a directory with this one script, which it names `a.hvm`.
Outcome tested(const std::string& script, std::vector<std::string> options = {}) {
  const Workplace place;
  place.write("deep/er/a.hvm", script);
  options.insert(options.end(), {"--test", place.path()});
  Outcome outcome = run_tests(options);
  const std::string prefix = place.path() + "/deep/er/";
  for (std::size_t at = outcome.out.find(prefix); at != std::string::npos; at = outcome.out.find(prefix))
    outcome.out.erase(at, prefix.size());
  return outcome;
}

void expect_passed(const std::string& script) {
  const Outcome outcome = tested(script);
  EXPECT_EQ(outcome.out, "1 passed, 0 failed\n") << script;
  EXPECT_EQ(outcome.status, 0) << script;
}

void expect_failed(const std::string& script, const std::string& line) {
  const Outcome outcome = tested(script);
  EXPECT_EQ(outcome.out, line + "\n0 passed, 1 failed\n") << script;
  EXPECT_EQ(outcome.status, 1) << script;
}

TEST(Expectations, ThatAreMet_Pass) {
  for (const char* script :
       {"print(1 + 1)    # expect: 2", "print(\"a # b\") # expect: a # b",
        "for i in range(3)\nprint(i) # expect: 0 1 2\nend", "print(1 / 3.0) # expect ~1e-5: 0.33333333",
        "print(\"x = 1.50000001\") # expect ~1e-6: x = 1.5", "print([1.0, 2.0]) # expect ~1e-12: 1.0 2.0",
        "print(0.0/0, 1.0/0) # expect ~0: nan inf",
        "toy_fail() # expect error: toy_fail: the call failed\nprint(2) # expect: 2",
        "toy_fail() # expect error: the call failed",
        "fn f()\ntoy_fail() # expect error: failed\nend\nf()\nprint(1) # expect: 1",
        "if 1\n  toy_fail()\nend # expect error: failed",
        "x = * 2 # expect error: expression expected\nprint(1) # expect: 1",
        "print(toy_double(2, 12))\n# expect: double(2, 12) [[0.0, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0,\n"
        "# expect: 10.0, 11.0], [12.0, 13.0, 14.0, 15.0, 16.0, 17.0, 18.0, 19.0, 20.0, 21.0, 22.0, 23.0]]",
        "# expectations are words too\nassert(1)", "print(5)"})
    expect_passed(script);
}

TEST(Expectations, ThatAreNotMet_FailWithExpectedAndGot) {
  expect_failed("\nprint(1 + 1) # expect: 3", "a.hvm:2: expected 3; got 2");
  expect_failed("x = 1 # expect: 1", "a.hvm:1: expected 1; nothing was printed");
  expect_failed("print(0.5) # expect ~1e-3: 0.502", "a.hvm:1: expected 0.502; got 0.5");
  expect_failed("print(0.5, 1) # expect ~1e-3: 0.5", "a.hvm:1: expected 0.5; got 0.5 1");
  expect_failed("print(\"y = 1.5\") # expect ~1e-3: x = 1.5", "a.hvm:1: expected x = 1.5; got y = 1.5");
  expect_failed("print(\"nothing\") # expect ~1: 5", "a.hvm:1: expected 5; got nothing");
  expect_failed("print(1) # expect error: failed", "a.hvm:1: expected error: failed; there was none");
  expect_failed("toy_fail() # expect error: other",
                "a.hvm:1: expected error: other; got error: toy_fail: the call failed without arguments");
  expect_failed(
      "print(1) # expect: 1\ntoy_fail()\nprint(2) # expect: 2",
      "a.hvm:2: error: toy_fail: the call failed without arguments\na.hvm:3: expected 2; nothing was printed");
  expect_failed("assert(0)", "a.hvm:1: error: assertion failed");
  expect_failed("x = * 2", "a.hvm:1: error: an expression expected, but here is '*'");
  for (const char* script : {"print(1) # expect ~x: 1", "print(1) # expect one", "print(1) # Expect: 1",
                             "print(1) ## expect: 1", "print(1) # EXPECT: 1", "1 / 0 # Expect error: zero"})
    expect_failed(
        script,
        "a.hvm:1: error: an expectation is '# expect: text', '# expect ~tolerance: numbers', '# expect error: text' or "
        "'# expect warning: text'");
}

const char* const subtraction = "a = toy_double(3)\nprint(5 - a)";

TEST(ExpectedWarnings, ThatCome_Pass) {
  for (const char* comment : {"# expect warning: 5 - a computes a - 5",
                              "# expect: double(3) [-5.0, -4.0, -3.0]  # expect warning: write a * -1",
                              "# expect warning:", "\n# expect warning: write a   * -1 + 5"})
    EXPECT_EQ(tested(std::string(subtraction) + " " + comment).out, "1 passed, 0 failed\n") << comment;
  EXPECT_EQ(
      tested("a = toy_double(3)\nx = 5 - a; xarray(@double, @[1, 2]) # expect warning: 5 - a  # expect warning: drops")
          .out,
      "1 passed, 0 failed\n");
}

TEST(ExpectedWarnings, ThatDoNotCome_Fail) {
  expect_failed("x = 1 # expect warning: 5 - a", "a.hvm:1: expected warning: 5 - a; there was none");
  expect_failed(std::string(subtraction) + " # expect warning: 6 - a",
                "a.hvm:2: expected warning: 6 - a; there was none");
  expect_failed(std::string(subtraction) + " # expect warning: 5 - a # expect warning: 5 - a",
                "a.hvm:2: expected warning: 5 - a; there was none");
  const Outcome off = tested(std::string(subtraction) + " # expect warning: 5 - a", {"--warnings", "off"});
  EXPECT_THAT(off.out, HasSubstr("a.hvm:2: expected warning: 5 - a; there was none"));
}

TEST(ExpectedWarnings, OthersFailAScriptInTheModeErrorAlone) {
  EXPECT_EQ(tested(subtraction).out, "1 passed, 0 failed\n");
  const Outcome failed = tested(std::string(subtraction) + "\nprint(1) # expect: 1", {"--warnings", "error"});
  EXPECT_EQ(
      failed.out,
      "a.hvm:2: unexpected warning: number-on-the-left: 5 - a computes a - 5: with a number the array stands on the "
      "left; write a * -1 + 5\n0 passed, 1 failed\n");
  for (const char* comment : {" # expect warning: 5 - a", " # allow: number-on-the-left"})
    EXPECT_EQ(tested(subtraction + std::string(comment), {"--warnings", "error"}).out, "1 passed, 0 failed\n");
}

TEST(Expectations, OfABlockThatStaysOpen_AreMetByTheErrorAtTheEnd) {
  for (const char* script :
       {"if 1 then # expect error: 'if' has no 'end'", "if 1 then\n# expect error: 'if' has no 'end'\n",
        "if 1 then\nprint(1) # expect error: 'if' has no 'end'\n",
        "print(1) # expect: 1\nif 1 then # expect error: 'if' has no 'end'",
        "print(1) # expect: 1\nx = f( # expect error: '(' is not closed"})
    expect_passed(script);
  expect_failed("if 1 then # expect error: other", "a.hvm:1: expected error: other; got error: 'if' has no 'end'");
  expect_failed("if 1 then\nx = ) # expect error: an expression", "a.hvm:1: error: 'if' has no 'end'");
  expect_failed("print(1) # expect: 1\nif 1 then\nx = 1 # expect error: 'if' has no 'end'",
                "a.hvm:1: expected 1; nothing was printed");
}

TEST(Expectations, OfAnErrorInABlock_AreSoughtOnItsOwnLineFirst) {
  const Outcome outcome = tested("if 1\n  x = 1 # expect error: never\n  toy_fail() # expect error: failed\nend");
  EXPECT_EQ(outcome.out, "a.hvm:2: expected error: never; there was none\n0 passed, 1 failed\n");
}

}  // namespace
}  // namespace hvm::testing
