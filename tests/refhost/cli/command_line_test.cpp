// refhost/cli/command_line_test.cpp: the options of hvm, and what it says of wrong ones

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "program.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;

struct WrongUsage {
  std::vector<std::string> arguments;
  std::string message;
};

TEST(Options, WrongOnes_AreToldInOneSentence) {
  const std::string long_text(5000, 'x');
  for (const WrongUsage& usage : std::vector<WrongUsage>{
           {{"--nonsense"}, "there is no option --nonsense; hvm --help lists them"},
           {{"--lists"}, "there is no option --lists (did you mean '--list'?); hvm --help lists them"},
           {{"--modul", "x"}, "there is no option --modul (did you mean '--module'?); hvm --help lists them"},
           {{"--time"}, "there is no option --time (did you mean '--time-limit'?); hvm --help lists them"},
           {{"--modul=x"}, "there is no option --modul (did you mean '--module'?); hvm --help lists them"},
           {{"-test"}, "there is no option -test (did you mean '--test'?); hvm --help lists them"},
           {{"-\xff"}, "there is no option -\ufffd; hvm --help lists them"},
           {{"-x"}, "there is no option -x; hvm --help lists them"},
           {{"-Vx"}, "there is no option -Vx; hvm --help lists them"},
           {{"--"}, ""},
           {{"--=x"}, "there is no option --; hvm --help lists them"},
           {{"-e"}, "-e needs code"},
           {{"--module"}, "--module needs the name of a file"},
           {{"--module", ""}, "--module takes the name of a file, not \"\""},
           {{"--time-limit", "x", "--test", "a"}, "--time-limit takes seconds from 0 to 1000000, not \"x\""},
           {{"--time-limit=", "--test", "a"}, "--time-limit takes seconds from 0 to 1000000, not \"\""},
           {{"--time-limit", "-1", "--test", "a"}, "--time-limit takes seconds from 0 to 1000000, not \"-1\""},
           {{"--time-limit", "nan", "--test", "a"}, "--time-limit takes seconds from 0 to 1000000, not \"nan\""},
           {{"--time-limit", "1e7", "--test", "a"}, "--time-limit takes seconds from 0 to 1000000, not \"1e7\""},
           {{"--time-limit", "1 2", "--test", "a"}, "--time-limit takes seconds from 0 to 1000000, not \"1 2\""},
           {{"--time-limit", "\x1b[1m\xff\n", "--test", "a"},
            "--time-limit takes seconds from 0 to 1000000, not \"\ufffd[1m\ufffd \""},
           {{"--time-limit", long_text, "--test", "a"},
            "--time-limit takes seconds from 0 to 1000000, not \"" + long_text.substr(0, 60) + "...\""},
           {{"--jobs", "0", "--test", "a"}, "--jobs takes a whole number from 1 to 1000, not \"0\""},
           {{"--jobs", "2.5", "--test", "a"}, "--jobs takes a whole number from 1 to 1000, not \"2.5\""},
           {{"--jobs", "9999999999999999999", "--test", "a"},
            "--jobs takes a whole number from 1 to 1000, not \"9999999999999999999\""},
           {{"--junit", "", "--test", "a"}, "--junit takes the name of a file, not \"\""},
           {{"--junit", "/no/such/file", "--test", "/tmp"},
            "--junit: /no/such/file: no file can be made in its folder: No such file or directory"},
           {{"-v"}, "-v needs --test"},
           {{"--list", "-V"}, "-V cannot be combined with --list"},
           {{"-V", "--version", "x"}, "--version takes no arguments, but got \"x\""},
           {{"--filter", "x", "a.hvm"}, "--filter needs --test"},
           {{"--warnings", "maybe"}, "--warnings takes off, on or error, not \"maybe\""},
           {{"--explain", "--test", "a"}, "--explain cannot be combined with --test"},
           {{"--list-warnings", "--list"}, "--list cannot be combined with --list-warnings"},
           {{"--completion", "fish"}, "--completion takes bash or zsh, not \"fish\""},
           {{"--completion", "bash", "a"}, "--completion takes no arguments, but got \"a\""},
           {{"--keep-memory", "2048", "-e", "1"},
            "--keep-memory takes a whole number from 0 to 2047 or off, not \"2048\""},
           {{"--keep-memory", "1", "--list"}, "--keep-memory cannot be combined with --list"},
           {{"--trace-operations", "x", "--trace", "a"},
            "--trace-operations takes a whole number from 0 to 999999999 or off, not \"x\""},
           {{"--trace-operations", "off", "-e", "1"}, "--trace-operations needs --trace"},
           {{"--trace", "a", "--test", "a"}, "--trace cannot be combined with --test"},
           {{"--trace"}, "--trace needs the name of a file"},
           {{"--leaks=yes"}, "--leaks takes no value"},
           {{"-e", "1", "-e", "2"}, "-e is given twice"},
           {{"--module", "a", "--module=a"}, "--module is given twice"},
           {{"--time-limit", "1", "-e", "1"}, "--time-limit needs --test"},
           {{"--time-limit", "1", "--list"}, "--time-limit cannot be combined with --list"},
           {{"--test", "a", "-e", "1"}, "-e cannot be combined with --test"},
           {{"-e", "1", "--version"}, "-e cannot be combined with --version"},
           {{"--leaks", "--list"}, "--leaks cannot be combined with --list"},
           {{"--list", "--test", "a"}, "--test cannot be combined with --list"},
           {{"--version", "a"}, "--version takes no arguments, but got \"a\""},
           {{"--list", "toy_init"}, "no function or type of the module matches \"toy_init\" (did you mean 'toy_int'?)"},
           {{"--list", "toy*", "\x1b*"}, "no function or type of the module matches \"\ufffd*\""},
           {{"--list", ""}, "no function or type of the module matches \"\""},
           {{"--test"}, "--test needs files or folders"},
           {{"--test", "/no/such"}, "--test cannot find \"/no/such\": No such file or directory"},
       }) {
    const std::string& first = usage.arguments.front();
    const bool needs_no_module = first == "--module";
    const Outcome outcome = needs_no_module ? run_hvm(usage.arguments) : run_toy(usage.arguments);
    const bool is_right = usage.message.empty();
    EXPECT_EQ(outcome.status, is_right ? 0 : 2) << usage.message;
    EXPECT_EQ(outcome.err, is_right ? "" : "hvm: " + usage.message + "\n");
    EXPECT_EQ(outcome.out, "");
  }
}

TEST(Options, TakeTheirValuesInEveryUsualForm) {
  const std::string module = module_path("toy_module");
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"--module", module, "-e", "print(args)", "x"},
                                             {"--module=" + module, "-eprint(args)", "x"},
                                             {"-e", "print(args)", "--module", module, "--leaks", "--leaks", "x"},
                                             {"-e", "print(args)", "--module", module, "--", "x"}}) {
    const Outcome outcome = run_hvm(arguments);
    EXPECT_EQ(outcome.out, "[\"x\"]\n") << outcome.err;
    EXPECT_EQ(outcome.status, 0);
  }
}

TEST(Options, EndAtTwoDashesAndAtTheScript) {
  const Workplace place;
  const std::string script = place.write("-a.hvm", "print(args)");
  EXPECT_EQ(run_toy({script, "--", "--list", "-e"}).out, "[\"--\", \"--list\", \"-e\"]\n");
  EXPECT_EQ(run_toy({"--", script, "-x"}).out, "[\"-x\"]\n");
  EXPECT_EQ(run_toy({"-e", "print(args)", "a", "--", "-x"}).out, "[\"a\", \"--\", \"-x\"]\n");
  EXPECT_EQ(run_toy({"--", "-"}, "print(1)").out, "1\n");
  EXPECT_EQ(run_toy({"--", "-a.hvm"}).status, 2) << "it is a script, not an option";
}

TEST(Options, MayFollowThePathsOfTests) {
  const Workplace place;
  place.write("a.hvm", "print(1) # expect: 1");
  EXPECT_EQ(run_tests({"--test", place.path(), "--time-limit", "10"}).out, "1 passed, 0 failed\n");
}

TEST(Options, VersionHasALetter) { EXPECT_EQ(run_toy({"-V"}).out, run_toy({"--version"}).out); }

TEST(Help, IsGroupedAndHidesWhatFollowsIt) {
  const Outcome help = run_toy({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(help.err, "");
  for (const char* heading : {"\nScripts:\n", "\nTests:\n", "\nThe module:\n", "\nAbout hvm:\n", "\nExit status: "})
    EXPECT_THAT(help.out, HasSubstr(heading));
  EXPECT_EQ(run_toy({"-h", "--nonsense", "-e"}).out, help.out);
  EXPECT_EQ(run_toy({"--list", "--leaks", "-h"}).out, help.out);
}

TEST(Help, FitsIntoEightyColumns) {
  std::istringstream lines(run_toy({"--help"}).out);
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) EXPECT_LE(line.size(), 80u) << line;
  EXPECT_GT(count, 20);
}

}  // namespace
}  // namespace hvm::testing
