// refhost/cli/use_test.cpp: scripts that use other scripts, and scripts that end themselves

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "program.hpp"

namespace hvm::testing {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

void expect_printed(const std::string& script, const std::string& expected) {
  const Outcome outcome = run_toy({script});
  EXPECT_EQ(outcome.out, expected);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.status, 0);
}

void expect_error(const std::string& script, const std::string& out, const std::string& message) {
  const Outcome outcome = run_toy({script});
  EXPECT_EQ(outcome.out, out);
  EXPECT_THAT(outcome.err, HasSubstr(message));
  EXPECT_EQ(outcome.status, 1);
}

TEST(Use, RunsAScriptAmongTheVariablesAndFunctionsOfItsUser) {
  const Workplace place;
  place.write("b.hvm", "fn twice(x)\n  return n * x\nend\nprint(\"b\")\nn = 2\n");
  expect_printed(place.write("a.hvm", "print(\"a\"); use \"b.hvm\"; print(twice(4)); n = 3; print(twice(4))"),
                 "a\nb\n8\n12\n");
}

TEST(Use, RunsEachScriptOnce) {
  const Workplace place;
  place.write("lib/b.hvm", "use \"../c.hvm\"\nprint(\"b\")");
  place.write("c.hvm", "print(\"c\")");
  std::filesystem::create_symlink("lib", place.path() + "/link");
  expect_printed(place.write("a.hvm",
                             "use \"lib/b.hvm\"\nuse \"c.hvm\"\nuse \"./lib/../lib/b.hvm\"\n"
                             "use \"link/b.hvm\"\nuse \"" +
                                 place.path() + "/c.hvm\"\nprint(\"a\")"),
                 "c\nb\na\n");
}

TEST(Use, OfScriptsByScripts_IsLimitedInDepth) {
  const Workplace place;
  const auto name = [](int number) { return std::to_string(number) + ".hvm"; };
  const auto chain = [&](int first, int last) {
    for (int i = first; i < last; ++i) place.write(name(i), "use \"" + name(i + 1) + "\"");
    return place.path() + "/" + name(first);
  };
  place.write(name(2000), "print(\"the last\")");
  expect_printed(chain(1100, 2000), "the last\n");
  expect_error(chain(900, 1100), "", "the calls nest too deeply");
}

TEST(Use, LooksInTheFolderOfTheScript) {
  const Workplace place;
  place.write("lib/b.hvm", "use \"c.hvm\"");
  place.write("lib/c.hvm", "print(\"lib\")");
  place.write("c.hvm", "print(\"wrong\")");
  expect_printed(place.write("a.hvm", "use \"lib/b.hvm\""), "lib\n");
}

TEST(Use, OfCodeOnTheCommandLine_LooksInTheCurrentFolder) {
  const Workplace place;
  place.write("b.hvm", "print(\"b\")");
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(place.path());
  const Outcome outcome = run_toy({"-e", "use \"b.hvm\""});
  const Outcome from_input = run_toy({}, "use \"./b.hvm\"");
  std::filesystem::current_path(before);
  EXPECT_EQ(outcome.out + outcome.err, "b\n");
  EXPECT_EQ(from_input.out + from_input.err, "b\n");
}

TEST(Use, InACircle_IsAnErrorThatNamesIt) {
  const Workplace place;
  place.write("b.hvm", "use \"c.hvm\"");
  place.write("c.hvm", "use \"a.hvm\"");
  const std::string script = place.write("a.hvm", "print(1)\nuse \"b.hvm\"");
  expect_error(script, "1\n",
               "c.hvm:1:1: error: use: the scripts use each other in a circle: a.hvm uses b.hvm uses c.hvm uses a.hvm");
  expect_error(place.write("self.hvm", "use \"self.hvm\""), "",
               "use: the scripts use each other in a circle: self.hvm uses self.hvm");
}

TEST(Use, OfAScriptThatFails_NamesBothPlaces) {
  const Workplace place;
  place.write("b.hvm", "print(1)\nx = 1 / 0");
  const std::string script = place.write("a.hvm", "y = 1\nuse \"b.hvm\"\nprint(2)");
  expect_error(script, "1\n", place.path() + "/b.hvm:2:7: error: '/' by the integer zero\n");
  EXPECT_THAT(run_toy({script}).err, EndsWith("  in " + place.path() + "/b.hvm, used at " + script + ":2:1\n"));
  place.write("b.hvm", "print(1)\nx = (");
  expect_error(script, "", "b.hvm:2:5: error: '(' is not closed");
}

TEST(Use, OfAScriptWithAFnOfTheSameName_IsAnError) {
  const Workplace place;
  place.write("b.hvm", "fn f()\n  return 1\nend\nfn g()\n  return f()\nend");
  const std::string script = place.write("a.hvm", "print(1)\nuse \"b.hvm\"\nfn f()\n  return 2\nend");
  expect_error(script, "1\n",
               script + ":2:1: error: use: " + script + " and " + place.path() + "/b.hvm both have a fn 'f'");
}

TEST(Use, OfWhatCannotBeRead_IsAnError) {
  const Workplace place;
  std::filesystem::create_directory(place.path() + "/folder.hvm");
  place.write("text.hvm", "x = \"\xFF\"");
  expect_error(place.write("a.hvm", "use \"none.hvm\""), "",
               "error: use: the script " + place.path() + "/none.hvm cannot be opened: No such file or directory");
  expect_error(place.write("b.hvm", "use \"folder.hvm\""), "", "/folder.hvm is a directory, not a script");
  expect_error(place.write("c.hvm", "use \"data.csv\""), "",
               "use: the name of a script ends in .hvm, and \"data.csv\" does not");
  expect_error(place.write("d.hvm", "use \"\""), "", "use: the name of a script ends in .hvm, and \"\" does not");
  std::filesystem::create_symlink("/proc/self/mem", place.path() + "/memory.hvm");
  expect_error(place.write("f.hvm", "use \"memory.hvm\""), "", "/memory.hvm cannot be read: Input/output error");
  expect_error(place.write("e.hvm", "use \"text.hvm\""), "", "text.hvm:1:6: error: the source is not valid UTF-8");
}

TEST(Use, OfALibraryThatIsNotThere_IsAnError) {
  const Workplace place;
  expect_error(place.write("a.hvm", "use \"nothing_of_this_name\""), "",
               "error: use: there is no library \"nothing_of_this_name\"; the name of a script ends in .hvm");
}

TEST(Use, InATest_PrintsForItsOwnLine) {
  const Workplace place;
  place.write("lib/b.txt", "");
  place.write("used/b.hvm", "print(7) # expect: 7\nfn f()\n  print(8)\nend");
  place.write("tests/a.hvm",
              "use \"../used/b.hvm\" # expect: 7\nf() # expect: 8\nuse \"../used/c.hvm\" # expect error: "
              "cannot be opened");
  const Outcome outcome = run_tests({"--test", place.path() + "/tests"});
  EXPECT_EQ(outcome.out, "1 passed, 0 failed\n");
}

TEST(Exit, GivesTheStatusOfTheScript) {
  for (const auto& [code, status] : {std::pair{"print(1); exit(7); print(2)", 7}, std::pair{"print(1); exit()", 0},
                                     std::pair{"print(1); try exit(3) catch e print(e) end", 3}}) {
    const Outcome outcome = run_toy({"--leaks", "-e", code});
    EXPECT_EQ(outcome.out, "1\n") << code;
    EXPECT_THAT(outcome.err, HasSubstr("left behind: 0 objects, 0 tables, 0 strings, 0 blocks, 0 records, 0 pieces"));
    EXPECT_EQ(outcome.status, status) << code;
  }
}

TEST(Exit, OfATest_FailsUnlessItIsZero) {
  const Workplace place;
  place.write("a.hvm", "print(1) # expect: 1\nexit()\nprint(2)");
  place.write("b.hvm", "print(1) # expect: 1\n\nexit(4)");
  const Outcome outcome = run_tests({"--test", place.path()});
  EXPECT_THAT(outcome.out, HasSubstr("b.hvm:3: the script ended with the status 4\n"));
  EXPECT_THAT(outcome.out, EndsWith("1 passed, 1 failed\n"));
}

TEST(Exit, InAUsedScript_EndsItsUser) {
  const Workplace place;
  place.write("b.hvm", "exit(9)");
  const Outcome outcome = run_toy({place.write("a.hvm", "use \"b.hvm\"\nprint(1)")});
  EXPECT_EQ(outcome.out + outcome.err, "");
  EXPECT_EQ(outcome.status, 9);
}

}  // namespace
}  // namespace hvm::testing
