// refhost/cli/description_test.cpp: descriptions of a module that are good, missing or bad, --explain, and why

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "program.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const char* const toy_names[] = {
    "toy_int",     "toy_double", "toy_nothing", "toy_bool", "toy_fail", "toy_count", "toy_second", "toy_throw",
    "toy_end",     "toy_set",    "toy_deep",    "xarange",  "xarray",   "toy_leak",  "toy_wait",   "toy_serve_elements",
    "toy_end_with"};

/// The head of a description of the toy module, up to its functions.
std::string toy_head(const std::string& format = "1", const std::string& more = "") {
  std::string counts;
  for (const std::string name : toy_names)
    if (name != "toy_end") counts += "\"" + name + "\": null, ";
  return "{\"format\": " + format + ", \"module\": \"toy\", \"most_arguments\": {" + counts + more + "\"toy_end\": 1}";
}

/// A description of the toy module; `more` stands behind its functions.
std::string toy_description(const std::string& more = "", const std::string& format = "1") {
  std::string functions;
  for (const std::string name : toy_names) {
    const std::string failures =
        R"("failures": [{"when": "every call", "condition": {"always": true}, "outcome": "fails",
                         "remedy": "call another one"}])";
    functions += (functions.empty() ? "" : ",\n") + ("{\"name\": \"" + name + "\", ") +
                 (name == "toy_fail" ? failures + ", " : "") + "\"synopsis\": [\"" + name +
                 "(a)\"], \"page\": \"pages/" + name + ".md\"}";
  }
  return "{\"format\": " + format + ", \"module\": \"toy\", \"functions\": [" + functions + more + "]}";
}

/// A folder with a copy of the toy module.
class ToyFolder {
 public:
  ToyFolder() : module_(place_.path() + "/lib/toy.so") {
    std::filesystem::create_directory(place_.path() + "/lib");
    std::filesystem::copy_file(module_path("toy_module"), module_);
  }
  /// Beside the module.
  std::string beside() const { return place_.path() + "/lib/toy.json"; }
  std::string write(const std::string& name, const std::string& text) const { return place_.write(name, text); }
  const std::string& path() const { return place_.path(); }
  Outcome run(std::vector<std::string> arguments, const Conditions& conditions = {}) const {
    arguments.insert(arguments.begin(), {"--module", module_});
    return run_hvm(arguments, conditions);
  }

 private:
  Workplace place_;
  std::string module_;
};

const char* const failing_script = "toy_fail(3)";

TEST(DescriptionFile, BesideTheModuleOrInShare_IsRead) {
  for (const char* place : {"lib/toy.json", "share/toy/functions.json"}) {
    const ToyFolder folder;
    folder.write(place, toy_description());
    const Outcome outcome = folder.run({"-e", failing_script});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err,
              "<command line>:1:1: error: toy_fail: no arguments give a value. Call another one.\n"
              "    toy_fail(3)\n    ^\n  usage: toy_fail(a)\n  page: pages/toy_fail.md\n")
        << place;
  }
}

TEST(DescriptionFile, BesideTheModule_HasPrecedence) {
  const ToyFolder folder;
  folder.write("lib/toy.json", toy_description());
  folder.write("share/toy/functions.json", "broken");
  EXPECT_THAT(folder.run({"-e", failing_script}).err, HasSubstr("Call another one."));
}

TEST(DescriptionFile, ThatIsMissing_IsToldWithExplanationsAlone) {
  const ToyFolder folder;
  EXPECT_EQ(folder.run({"-e", "print(toy_count(1, 2))"}).err, "");
  const Outcome silent = folder.run({"-e", failing_script});
  EXPECT_EQ(silent.err, "<command line>:1:1: error: toy_fail: the call failed with an int\n    toy_fail(3)\n    ^\n");
  const Outcome explained = folder.run({"--explain", "-e", failing_script});
  EXPECT_THAT(explained.err, HasSubstr("argument 1: the int 3\n"));
  EXPECT_THAT(explained.err, HasSubstr("there is no description of the module's functions; hvm looks for it at " +
                                       folder.beside() + " or " + folder.path() + "/share/toy/functions.json\n"));
}

struct BadFile {
  const char* what;
  std::string text;
  const char* cause;
};

TEST(DescriptionFile, ThatIsBroken_IsToldInOneSentenceAndLeftOut) {
  const std::string good = toy_description();
  const BadFile files[] = {
      {"empty", "", "line 1, column 1: unexpected end of input"},
      {"cut off", good.substr(0, good.size() / 2), "line "},
      {"no JSON", "functions = []", "line 1, column 2: invalid literal"},
      {"a list", "[1, 2]", "it has no 'format'"},
      {"a number", "7", "it is no object"},
      {"without a format", "{}", "it has no 'format'"},
      {"of another format", toy_description("", "2"), "its format is 2, and this hvm knows format 1"},
      {"of a format that is no number", toy_description("", "\"1\""), "format is no integer"},
      {"with a function too many", toy_description(", {\"name\": \"toy_more\"}"),
       "it is of another module or version: toy_more is a function of the description alone"},
      {"with a function too few", R"({"format": 1, "module": "toy", "functions": []})",
       "is a function of the module alone"},
      {"with a function without a name", toy_description(", {\"page\": \"p\"}"), "functions[17] has no 'name'"},
      {"with a name that is no string", toy_description(", {\"name\": 3}"), "functions[17].name is no string"},
      {"with an outcome that is none",
       toy_description(R"(, {"name": "f", "failures": [{"when": "w", "condition": {}, "outcome": "explodes"}]})"),
       "functions[17].failures[0].outcome is 'explodes', which is no outcome"},
      {"with kinds that are no list",
       toy_description(R"(, {"name": "f", "failures": [{"when": "w", "condition": {"kind_in": 3}}]})"),
       "functions[17].failures[0].condition.kind_in is no list"},
      {"with bytes that are no text", "{\"format\": \"\xFF\"}", "line 1, character 13: the bytes are not valid UTF-8"},
      {"with a byte of zero", std::string("{\0}", 3), "line 1, character 2: a byte is 0"},
      {"a million levels deep", std::string(1000000, '['), "the text nests deeper than 10000 levels"},
      {"of more than 16 MiB", "{\"format\": 1" + std::string(17 << 20, ' ') + "}", "it has more than 16777216 bytes"},
  };
  for (const BadFile& file : files) {
    const ToyFolder folder;
    folder.write("lib/toy.json", file.text);
    const Outcome outcome = folder.run({"-e", "print(toy_count(1, 2))\ntoy_fail(3)"});
    EXPECT_EQ(outcome.out, "2\n") << file.what;
    EXPECT_THAT(outcome.err, HasSubstr("hvm: the description " + folder.beside() + " is not used: ")) << file.what;
    EXPECT_THAT(outcome.err, HasSubstr(file.cause)) << file.what;
    EXPECT_THAT(outcome.err, HasSubstr("toy_fail: the call failed with an int\n")) << file.what;
    const std::string sentence = outcome.err.substr(0, outcome.err.find('\n'));
    EXPECT_LT(sentence.size(), 400u) << file.what;
    EXPECT_EQ(outcome.err.find("hvm: ", 1), std::string::npos) << file.what;
  }
}

TEST(DescriptionFile, WithAHead_IsReadWhenItIsNeeded) {
  const ToyFolder folder;
  folder.write("lib/toy.json", toy_head() + ", \"functions\": broken");
  const std::string sentence = "hvm: the description " + folder.beside() + " is not used: line 1, column ";
  EXPECT_EQ(folder.run({"-e", "print(toy_count(1, 2))"}).err, "");
  const Outcome failed = folder.run({"-e", "try toy_fail(1) catch e print(e) end\ntoy_fail(2)"});
  EXPECT_EQ(failed.out, "toy_fail: the call failed with an int\n");
  EXPECT_EQ(failed.err.rfind(sentence, 0), 0u) << failed.err;
  EXPECT_THAT(failed.err, HasSubstr("\n<command line>:2:1: error: toy_fail: the call failed with an int\n"));
  EXPECT_EQ(failed.err.find("hvm: ", 1), std::string::npos) << "it is told once: " << failed.err;
  const Outcome explained = folder.run({"--explain", "-e", failing_script});
  EXPECT_THAT(explained.err, HasSubstr("  the description " + folder.beside() + " is not used: line 1, column "));
  EXPECT_EQ(folder.run({"--list"}).err.rfind(sentence, 0), 0u);
  folder.write("tests/a.hvm", "print(1) # expect: 1");
  const Outcome tests = folder.run({"--test", folder.path() + "/tests"});
  EXPECT_EQ(tests.status, 0);
  EXPECT_EQ(tests.err.rfind(sentence, 0), 0u) << tests.err;
}

TEST(DescriptionFile, WithABadHead_IsToldAtTheStart) {
  const std::string rest = toy_description().substr(toy_description().find(", \"functions\""));
  const std::pair<std::string, const char*> files[] = {
      {toy_head("2") + rest, "its format is 2, and this hvm knows format 1"},
      {toy_head("1", "\"toy_more\": 2, ") + rest,
       "it is of another module or version: toy_more is a function of the description alone"},
      {"{\"format\": 1, \"most_arguments\": {}" + rest, "is a function of the module alone"},
      {toy_head("1", "\"toy_more\": \"2\", ") + rest, "most_arguments.toy_more is no integer"},
      {R"({"format": 1, "most_arguments": 3, "kinds": {}})", "most_arguments is no object"},
  };
  for (const auto& [text, cause] : files) {
    const ToyFolder folder;
    folder.write("lib/toy.json", text);
    const Outcome outcome = folder.run({"-e", "print(toy_count(1, 2))"});
    EXPECT_EQ(outcome.out, "2\n");
    EXPECT_THAT(outcome.err, HasSubstr("hvm: the description " + folder.beside() + " is not used: ")) << text;
    EXPECT_THAT(outcome.err, HasSubstr(cause)) << text;
  }
}

TEST(DescriptionFile, WithAHead_GivesTheSameAnswers) {
  const ToyFolder folder;
  folder.write("lib/toy.json", toy_head() + toy_description().substr(toy_description().find(", \"functions\"")));
  EXPECT_EQ(folder.run({"-e", failing_script}).err,
            "<command line>:1:1: error: toy_fail: no arguments give a value. Call another one.\n"
            "    toy_fail(3)\n    ^\n  usage: toy_fail(a)\n  page: pages/toy_fail.md\n");
  const Outcome outcome = folder.run({"--leaks", "--explain", "-e", "try toy_fail(toy_int(3)) catch e print(e) end"});
  EXPECT_EQ(outcome.out, "toy_fail: no arguments give a value. Call another one.\n");
  EXPECT_THAT(outcome.err, HasSubstr("left behind: 0 objects, 0 tables, 0 strings, 0 blocks, 0 records, 0 pieces"));
}

TEST(DescriptionFile, ThatIsAFolderOrADeviceOrUnreadable_IsLeftOut) {
  Conditions user;
  user.obeys_permissions = true;
  const auto expect_left_out = [&](const ToyFolder& folder, const char* cause) {
    const Outcome outcome = folder.run({"-e", "print(toy_count(1))"}, user);
    EXPECT_EQ(outcome.out, "1\n") << outcome.err;
    EXPECT_EQ(outcome.err, "hvm: the description " + folder.beside() + " is not used: " + cause + "\n");
  };
  const ToyFolder with_folder;
  std::filesystem::create_directory(with_folder.beside());
  expect_left_out(with_folder, "it is not a regular file");
  const ToyFolder with_device;
  std::filesystem::create_symlink("/dev/zero", with_device.beside());
  expect_left_out(with_device, "it is not a regular file");
  const ToyFolder with_pipe;
  ASSERT_EQ(mkfifo(with_pipe.beside().c_str(), 0600), 0);
  expect_left_out(with_pipe, "it is not a regular file");
  const ToyFolder with_secret;
  with_secret.write("lib/toy.json", toy_description());
  chmod(with_secret.beside().c_str(), 0);
  expect_left_out(with_secret, "Permission denied");
}

TEST(DescriptionFile, WithControlCharacters_SendsNoneToTheTerminal) {
  const ToyFolder folder;
  std::string text = toy_description();
  text.replace(text.find("call another one"), 16, "\\u001b[2Jcall\\nit");
  folder.write("lib/toy.json", text);
  const std::string report = folder.run({"-e", failing_script}).err;
  EXPECT_THAT(report, HasSubstr("call it"));
  EXPECT_EQ(report.find('\x1b'), std::string::npos);
}

TEST(DescriptionFile, IsUsedByTests) {
  const ToyFolder folder;
  folder.write("lib/toy.json", toy_description());
  folder.write("tests/a.hvm", "toy_fail(3) # expect error: toy_fail: no arguments give a value. Call another one.");
  EXPECT_EQ(without_time(folder.run({"--test", folder.path() + "/tests"}).out), "1 passed, 0 failed\n");
}

TEST(DescriptionFile, LeavesNothingBehind) {
  const ToyFolder folder;
  folder.write("lib/toy.json", toy_description());
  const Outcome outcome = folder.run({"--leaks", "--explain", "-e", "try toy_fail(toy_int(3)) catch e print(e) end"});
  EXPECT_EQ(outcome.out, "toy_fail: no arguments give a value. Call another one.\n");
  EXPECT_THAT(outcome.err, HasSubstr("left behind: 0 objects, 0 tables, 0 strings, 0 blocks, 0 records, 0 pieces"));
}

TEST(Explain, TellsTheArgumentsTheRowsTheRemedyAndThePage) {
  const ToyFolder folder;
  folder.write("lib/toy.json", toy_description());
  const Outcome outcome = folder.run({"--explain", "-e", "toy_fail(toy_int(9), \"text\", [1], nil)"});
  EXPECT_THAT(outcome.err, HasSubstr("explanation: toy_fail: no arguments give a value. Call another one.\n"
                                     "  arguments\n"
                                     "    argument 1: $xintarray (9): 0, 1, 2, 3, 4, 5, ...\n"
                                     "    argument 2: the string \"text\"\n"
                                     "    argument 3: a table of 1 entry\n"
                                     "    argument 4: nil\n"
                                     "  what was looked at\n"
                                     "    every call: yes\n"
                                     "    (the section Failures of pages/toy_fail.md)\n"
                                     "  what to do\n"
                                     "    Call another one.\n"
                                     "  usage: toy_fail(a)\n"
                                     "  page: pages/toy_fail.md\n"));
}

TEST(Explain, AsksTheModuleWithoutTellingATrace) {
  const ToyFolder folder;
  folder.write("lib/toy.json", toy_description());
  const std::string trace = folder.write("trace.json", "");
  const Outcome outcome = folder.run({"--explain", "--trace", trace, "-e", "toy_fail(toy_int(9))"});
  EXPECT_THAT(outcome.err, HasSubstr("$xintarray (9): 0, 1, 2"));
  const std::string calls = contents(trace);
  EXPECT_THAT(calls, HasSubstr("toy_fail"));
  EXPECT_THAT(calls, Not(HasSubstr("shape")));
}

TEST(Explain, OfWarnings_AsksTheModuleWithoutTellingATrace) {
  const ToyFolder folder;
  const std::string trace = folder.write("trace.json", "");
  const Outcome outcome = folder.run({"--explain", "--trace", trace, "-e", "a = toy_double(3); b = 5 - a"});
  EXPECT_THAT(outcome.err, HasSubstr("$xdoublearray (3): "));
  const std::string calls = contents(trace);
  EXPECT_THAT(calls, HasSubstr("\"subtract\""));
  EXPECT_THAT(calls, Not(HasSubstr("read_element")));
}

TEST(Explain, SaysNothingOfErrorsWithoutAStoryAndOfScriptsThatEndWell) {
  EXPECT_THAT(run_toy({"--explain", "-e", "print(unknown)"}).err, Not(HasSubstr("explanation")));
  EXPECT_THAT(run_toy({"--explain", "-e", "print("}).err, Not(HasSubstr("explanation")));
  EXPECT_EQ(run_toy({"--explain", "-e", "try toy_fail(1) catch e print(e) end"}).err, "");
}

TEST(Explain, OfAnErrorAfterAnotherOne_IsOfTheLastOne) {
  const Outcome outcome = run_toy({"--explain", "-e", "try toy_fail(1) catch e print(e) end\ntoy_fail(2)"});
  EXPECT_THAT(outcome.err, HasSubstr("the int 2"));
  EXPECT_THAT(outcome.err, Not(HasSubstr("the int 1")));
  EXPECT_THAT(run_toy({"--explain", "-e", "try toy_fail(1) catch e print(e) end\nunknown"}).err,
              Not(HasSubstr("explanation")));
}

}  // namespace
}  // namespace hvm::testing
