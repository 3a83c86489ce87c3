// refhost/cli/cli_test.cpp: the command line of hvm, its output and its exit status

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>

#include "program.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;

std::string repeated(const std::string& text, int count) {
  std::string whole;
  for (int i = 0; i < count; ++i) whole += text;
  return whole;
}

TEST(CommandLine, RunsAScriptWithItsArguments) {
  const Workplace place;
  const std::string script = place.write("a.hvm", "print(args, len(args))\nprint(toy_int(2))");
  const Outcome outcome = run_toy({script, "one", "--two", "-e"});
  EXPECT_EQ(outcome.out, "[\"one\", \"--two\", \"-e\"] 3\nint(2) [0, 1]\n");
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.status, 0);
}

TEST(CommandLine, RunsCodeAndTheStandardInput) {
  EXPECT_EQ(run_toy({"-e", "print(1 + 1, args)", "x"}).out, "2 [\"x\"]\n");
  EXPECT_EQ(run_toy({}, "print(\"in\")\n").out, "in\n");
  EXPECT_EQ(run_toy({"-e", "print(args)", "--", "-x", "--list"}).out, "[\"-x\", \"--list\"]\n");
  EXPECT_EQ(run_toy({"-", "a"}, "print(args)").out, "[\"a\"]\n");
  EXPECT_EQ(run_toy({}, "").status, 0);
}

TEST(CommandLine, ErrorsAreShownSafelyAndWhole) {
  EXPECT_THAT(run_toy({"no\x1b[31m\xff.hvm"}).err, HasSubstr("no\ufffd[31m\ufffd.hvm cannot be opened"));
  EXPECT_THAT(run_toy({"-e", "error(\"\\x1b[31m\" + \"\xCF\x80\" * 5000)"}).err,
              HasSubstr("\ufffd[31m" + repeated("\xCF\x80", 5000) + "\n"));
}

TEST(CommandLine, ScriptError_GivesStatusOneAndThePlace) {
  const Workplace place;
  const std::string script = place.write("a.hvm", "x = 1\nprint(x)\n  y = x + \"a\"\nprint(2)");
  const Outcome outcome = run_toy({script});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "1\n");
  EXPECT_EQ(outcome.err, script +
                             ":3:9: error: '+' is not defined for an int and a string; str(x) makes a string of x, "
                             "number(s) a number of s\n" +
                             "      y = x + \"a\"\n            ^\n");
}

TEST(CommandLine, SyntaxError_RunsNothing) {
  const Outcome outcome = run_toy({"-e", "print(1)\nif a = b\nend"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, HasSubstr("<command line>:2:6: error: an assignment is not an expression; did you mean =="));
}

TEST(CommandLine, WrongUsage_GivesStatusTwo) {
  EXPECT_EQ(run_toy({"--nonsense"}).status, 2);
  EXPECT_EQ(run_toy({"-e"}).status, 2);
  EXPECT_EQ(run_toy({"--test", "/no/such/directory"}).status, 2);
  EXPECT_EQ(run_toy({"/no/such/script.hvm"}).status, 2);
  EXPECT_EQ(run_toy({"/tmp"}).status, 2);
  EXPECT_EQ(run_toy({"--list", "-e", "1"}).status, 2);
  EXPECT_EQ(run_toy({"--list", "script.hvm"}).status, 2);
  EXPECT_THAT(run_toy({"--nonsense"}).err, HasSubstr("there is no option --nonsense"));
}

TEST(CommandLine, HelpNeedsNoModule) {
  const Outcome outcome = run_hvm({"--help", "--module", "/no/such/module.so"});
  EXPECT_EQ(outcome.status, 0);
  for (const char* word : {"-e CODE", "--test", "--module", "--list", "--unchecked", "--version", "--leaks"})
    EXPECT_THAT(outcome.out, HasSubstr(word));
}

TEST(CommandLine, ListShowsRowsAndTypesInTheirOrder) {
  const Outcome outcome = run_toy({"--list"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out.rfind("function toy_int\nfunction toy_double\n", 0), 0u);
  EXPECT_THAT(outcome.out, HasSubstr("function toy_end_with\ntype $xintarray\ntype $xdoublearray\ntype $xboolarray\n"));
}

TEST(CommandLine, ListShowsWhatFitsAPattern) {
  EXPECT_EQ(run_toy({"--list", "toy_int"}).out, "function toy_int\n");
  EXPECT_EQ(run_toy({"--list", "toy_se*", "[$]*bool*", "toy_second"}).out,
            "function toy_second\nfunction toy_serve_elements\nfunction toy_set\ntype $xboolarray\n");
  EXPECT_EQ(run_toy({"--list", "*"}).out, run_toy({"--list"}).out);
  EXPECT_EQ(run_toy({"--list", "--", "toy_in?"}).out, "function toy_int\n");
}

TEST(CommandLine, VersionNamesTheModuleAndTheLibrariesItBrought) {
  const Outcome outcome = run_hvm({"--version", "--module", module_path("module_over_interp")});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out.rfind("hvm ", 0), 0u);
  EXPECT_THAT(outcome.out, HasSubstr("module " + module_path("module_over_interp") + "\n"));
  EXPECT_THAT(outcome.out, HasSubstr("libHVMInterp.so\n"));
  EXPECT_THAT(run_toy({"--version"}).out, ::testing::Not(HasSubstr("libHVMInterp.so")));
}

TEST(CommandLine, VersionIsThatOfTheNoteInTheModule) {
  const Outcome outcome = run_hvm({"--version", "--module", module_path("arrayfold")});
  EXPECT_THAT(outcome.out, HasSubstr("hvm " PROJECT_VERSION "\n"));
  EXPECT_THAT(outcome.out, HasSubstr("arrayfold.so\n  version " PROJECT_VERSION "\n"));
  EXPECT_THAT(run_toy({"--version"}).out, ::testing::Not(HasSubstr("  version ")));
}

/// The module with these bytes in place of those at `distance` from the type in its note. Before the type stand the
/// sizes of the owner and of the version, behind it, in 12 bytes, the owner, and then the version.
std::string module_with_note(const Workplace& place, std::ptrdiff_t distance, const std::string& bytes) {
  std::string whole = contents(module_path("arrayfold"));
  const std::size_t type = whole.find(std::string("\1\0\0\0arrayfold\0", 14));
  EXPECT_NE(type, std::string::npos);
  whole.replace(type + static_cast<std::size_t>(distance), bytes.size(), bytes);
  return place.write("arrayfold.so", whole);
}

TEST(CommandLine, VersionOfABrokenOrForeignNote_IsLeftOut) {
  const auto out = [](std::ptrdiff_t distance, const std::string& bytes) {
    const Workplace place;
    Conditions conditions;
    conditions.environment = {{"LD_LIBRARY_PATH", MODULE_DIRECTORY}};
    return run_hvm({"--version", "--module", module_with_note(place, distance, bytes)}, conditions).out;
  };
  const std::string huge = "\xff\xff\xff\xff";
  EXPECT_THAT(out(-8, huge), ::testing::Not(HasSubstr("  version ")));
  EXPECT_THAT(out(-4, huge), ::testing::Not(HasSubstr("  version ")));
  EXPECT_THAT(out(0, "2"), ::testing::Not(HasSubstr("  version ")));
  EXPECT_THAT(out(4, "A"), ::testing::Not(HasSubstr("  version ")));
  EXPECT_THAT(out(16, "7"), HasSubstr("arrayfold.so\n  version 7"));
}

/// The target that --version should name, by the compiler's own look at the processor.
std::string expected_target() {
#if defined(__x86_64__)
  __builtin_cpu_init();
  const bool has_ssse3 = __builtin_cpu_supports("ssse3");
  const bool has_sse4 = has_ssse3 && __builtin_cpu_supports("sse4.1") && __builtin_cpu_supports("sse4.2") &&
                        __builtin_cpu_supports("aes") && __builtin_cpu_supports("pclmul");
  const bool has_avx2 = has_sse4 && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
                        __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
  const bool has_avx512 = has_avx2 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                          __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
  return has_avx512 ? "AVX3" : has_avx2 ? "AVX2" : has_sse4 ? "SSE4" : has_ssse3 ? "SSSE3" : "SCALAR";
#else
  return "(NEON|SCALAR)";
#endif
}

TEST(CommandLine, VersionNamesTheVectorInstructionsOfTheProcessor) {
  const std::string lines = "hvm [0-9.]+\nprocessor " + expected_target() + "\n";
  EXPECT_THAT(run_toy({"--version"}).out, ::testing::ContainsRegex("^" + lines + "module "));
  // They are known without a module.
  const Outcome outcome = run_hvm({"--version", "--module", "/no/such/module.so"});
  EXPECT_EQ(outcome.status, 3);
  EXPECT_THAT(outcome.out, ::testing::MatchesRegex(lines));
}

TEST(CommandLine, Unchecked_LeavesTheChecksOut) {
  EXPECT_EQ(run_toy({"-e", "print(xarange(1, 2, 3, 4))"}).status, 1);
  EXPECT_EQ(run_toy({"--unchecked", "-e", "print(xarange(1, 2, 3, 4))"}).out, "4\n");
}

TEST(CommandLine, Warnings_GoToTheErrorStreamOnce) {
  const Outcome outcome = run_toy({"-e", "for i in range(3) do print(xarray(@double, @[1.0, 2])) end"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "2\n2\n2\n");
  EXPECT_EQ(outcome.err.find("<command line>:1:51: warning: a data literal of reals drops the integer 2"), 0u)
      << outcome.err;
  EXPECT_EQ(outcome.err.find("warning", 30), std::string::npos) << outcome.err;
}

TEST(CommandLine, Warnings_GoAsTheirModeSays) {
  const char* const code = "a = toy_double(3); b = 5 - a; print(b)";
  const std::string words = ": 5 - a computes a - 5: with a number the array stands on the left; write a * -1 + 5\n";
  for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"--warnings", "on"}}) {
    std::vector<std::string> arguments = options;
    arguments.insert(arguments.end(), {"-e", code});
    const Outcome outcome = run_toy(arguments);
    EXPECT_EQ(outcome.out, "double(3) [-5.0, -4.0, -3.0]\n");
    EXPECT_THAT(outcome.err, HasSubstr("<command line>:1:26: warning" + words));
  }
  const Outcome off = run_toy({"--warnings", "off", "-e", code});
  EXPECT_EQ(off.out + off.err, "double(3) [-5.0, -4.0, -3.0]\n");
  const Outcome error = run_toy({"--warnings", "error", "-e", code});
  EXPECT_EQ(error.status, 1);
  EXPECT_EQ(error.out, "");
  EXPECT_THAT(error.err, HasSubstr("<command line>:1:26: error" + words));
  EXPECT_EQ(run_toy({"--warnings", "perhaps", "-e", code}).status, 2);
}

TEST(CommandLine, WarningsOfAScriptFromTheStandardInput_NameItsLines) {
  const Outcome outcome = run_toy({"-"}, "a = toy_double(3)\n5 - a\n5 - a\n");
  EXPECT_THAT(outcome.err, HasSubstr("<stdin>:2:3: warning"));
  EXPECT_THAT(outcome.err, HasSubstr("<stdin>:3:3: warning"));
}

TEST(CommandLine, ListWarnings_AlignsNamesSentencesAndPages) {
  const Outcome outcome = run_toy({"--list-warnings"});
  EXPECT_EQ(outcome.status, 0);
  std::istringstream lines(outcome.out);
  std::size_t count = 0, page_column = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    const std::size_t page = line.find("  docs/functions/");
    ASSERT_NE(page, std::string::npos) << line;
    if (count == 0) page_column = page;
    EXPECT_EQ(page, page_column) << line;
    EXPECT_NE(line.find('#', page), std::string::npos) << line;
  }
  EXPECT_GT(count, 25u);
  EXPECT_THAT(outcome.out, HasSubstr("number-on-the-left "));
  EXPECT_EQ(run_toy({"--list-warnings", "x.hvm"}).status, 2);
}

TEST(CommandLine, Explain_TellsTheStoryOfAWarning) {
  const Outcome outcome = run_toy({"--explain", "-e", "a = toy_double(3); b = 5 - a"});
  EXPECT_EQ(outcome.status, 0);
  for (const char* words :
       {"explanation: 5 - a computes a - 5", "$xdoublearray (3)", "number-on-the-left: n - a computes",
        "write a * -1 + 5", "page: docs/functions/operator-subtract.md#result"})
    EXPECT_THAT(outcome.err, HasSubstr(words));
}

TEST(CommandLine, Leaks_AreCountedAtTheEnd) {
  const Outcome clean =
      run_toy({"--leaks", "-e", "a = toy_int(2); t = [a, [a, \"s\", w\"s\"]]; fn f()\nend\nf(); a = 1 / 0"});
  EXPECT_THAT(clean.err, HasSubstr("left behind: 0 objects, 0 tables, 0 strings, 0 blocks, 0 records, 0 pieces\n"));
  const Outcome leaky = run_toy({"--leaks", "-e", "toy_leak()"});
  EXPECT_EQ(leaky.status, 1);
  EXPECT_THAT(leaky.err, HasSubstr("left behind: 0 objects, 0 tables, 0 strings, 1 blocks"));
}

TEST(CommandLine, OutputThatCannotBeWritten_GivesStatusOneAndTheReason) {
  const std::string full = "hvm: the output cannot be written: No space left on device\n";
  const std::string module = module_path("toy_module");
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"-e", "print(1)"},
                                             {"-e", "for i in range(100000) do print(i) end"},
                                             {"--list"},
                                             {"--version"},
                                             {"--help"}}) {
    std::vector<std::string> all{"--module", module};
    all.insert(all.end(), arguments.begin(), arguments.end());
    Conditions conditions;
    conditions.out = Stream::full;
    const Outcome outcome = run_hvm(all, conditions);
    EXPECT_EQ(outcome.status, 1) << arguments.front();
    EXPECT_EQ(outcome.err, full) << arguments.front();
  }
}

TEST(CommandLine, AClosedOutput_GivesStatusOneOnceSomethingIsPrinted) {
  Conditions conditions;
  conditions.out = Stream::closed;
  const std::string closed = "hvm: the output cannot be written: Bad file descriptor\n";
  EXPECT_EQ(run_toy({"-e", "x = 1"}, conditions).status, 0);
  for (const char* script :
       {"print(1)", "try print(1) catch e end", "print(1)\nexit(0)", "for i in [1] do print(i) end"}) {
    const Outcome outcome = run_toy({"-e", script}, conditions);
    EXPECT_EQ(outcome.status, 1) << script;
    EXPECT_EQ(outcome.err, closed) << script;
  }
}

TEST(CommandLine, AReaderThatIsGone_EndsTheScript) {
  Conditions conditions;
  conditions.out = Stream::without_reader;
  const Outcome outcome = run_toy({"-e", "while 1 do print(\"y\") end"}, conditions);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "hvm: the output cannot be written: Broken pipe\n");
}

TEST(CommandLine, ErrorsThatCannotBeWritten_KeepTheirStatus) {
  for (const Stream stream : {Stream::full, Stream::without_reader, Stream::closed}) {
    Conditions conditions;
    conditions.err = stream;
    EXPECT_EQ(run_toy({"-e", "print(1)\nx = 1 / 0"}, conditions).status, 1);
    EXPECT_EQ(run_toy({"-e", "x = ("}, conditions).status, 1);
    EXPECT_EQ(run_toy({"--leaks", "-e", "print(1)"}, conditions).status, 0);
    EXPECT_EQ(run_toy({"-e", "print(xarray(@double, @[1.0, 2]))"}, conditions).out, "2\n");
    EXPECT_EQ(run_toy({"--nonsense"}, conditions).status, 2);
    EXPECT_EQ(run_hvm({"--module", "/no/such/module.so", "--list"}, conditions).status, 3);
    conditions.out = Stream::full;
    EXPECT_EQ(run_toy({"-e", "print(1)"}, conditions).status, 1);
  }
}

}  // namespace
}  // namespace hvm::testing
