// refhost/cli/cli_test.cpp: the command line of hvm, its output and its exit status

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "program.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;

std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// In the child: the standard streams are files, the environment has its additions, and hvm takes over.
[[noreturn]] void become_hvm(const std::vector<std::string>& arguments, const Workplace& place,
                             const Environment& environment) {
  const auto redirect = [&](const char* name, int flags, int stream) {
    dup2(open((place.path() + name).c_str(), flags, 0600), stream);
  };
  redirect("/in", O_RDONLY, STDIN_FILENO);
  redirect("/out", O_WRONLY | O_CREAT, STDOUT_FILENO);
  redirect("/err", O_WRONLY | O_CREAT, STDERR_FILENO);
  for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
  std::vector<char*> words{const_cast<char*>(HVM_PROGRAM)};
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  execv(HVM_PROGRAM, words.data());
  _exit(127);
}

}  // namespace

Workplace::Workplace() {
  std::string name = ::testing::TempDir() + "hvm-test-XXXXXX";
  if (!mkdtemp(name.data())) std::abort();
  path_ = name;
}

Workplace::~Workplace() {
  std::error_code error;
  std::filesystem::remove_all(path_, error);
}

std::string Workplace::write(const std::string& name, const std::string& text) const {
  const std::filesystem::path file = std::filesystem::path(path_) / name;
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << text;
  return file;
}

Outcome run_hvm(const std::vector<std::string>& arguments, const std::string& input, const Environment& environment) {
  const Workplace place;
  place.write("in", input);
  const pid_t child = fork();
  if (child == 0) become_hvm(arguments, place, environment);
  int status = 0;
  waitpid(child, &status, 0);
  Outcome outcome;
  outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  outcome.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  outcome.out = contents(place.path() + "/out");
  outcome.err = contents(place.path() + "/err");
  return outcome;
}

Outcome run_toy(std::vector<std::string> arguments, const std::string& input) {
  arguments.insert(arguments.begin(), {"--module", module_path("toy_module")});
  return run_hvm(arguments, input);
}

std::string module_path(const std::string& name) { return std::string(MODULE_DIRECTORY) + "/" + name + ".so"; }

namespace {

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

TEST(CommandLine, ScriptError_GivesStatusOneAndThePlace) {
  const Workplace place;
  const std::string script = place.write("a.hvm", "x = 1\nprint(x)\n  y = x + \"a\"\nprint(2)");
  const Outcome outcome = run_toy({script});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "1\n");
  EXPECT_EQ(outcome.err, script + ":3:9: error: '+' is not defined for an int and a string\n" +
                             "      y = x + \"a\"\n            ^\n");
}

TEST(CommandLine, SyntaxError_RunsNothing) {
  const Outcome outcome = run_toy({"-e", "print(1)\nif a = b\nend"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, HasSubstr("<command line>:2:6: error: an assignment is no expression; did you mean =="));
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

TEST(CommandLine, VersionNamesTheModuleAndTheLibrariesItBrought) {
  const Outcome outcome = run_hvm({"--version", "--module", module_path("module_over_interp")});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out.rfind("hvm ", 0), 0u);
  EXPECT_THAT(outcome.out, HasSubstr("module " + module_path("module_over_interp") + "\n"));
  EXPECT_THAT(outcome.out, HasSubstr("libHVMInterp.so\n"));
  EXPECT_THAT(run_toy({"--version"}).out, ::testing::Not(HasSubstr("libHVMInterp.so")));
}

TEST(CommandLine, Unchecked_LeavesTheGuardsOut) {
  EXPECT_EQ(run_toy({"-e", "print(xarange(1, 2, 3, 4))"}).status, 1);
  EXPECT_EQ(run_toy({"--unchecked", "-e", "print(xarange(1, 2, 3, 4))"}).out, "4\n");
}

TEST(CommandLine, Warnings_GoToTheErrorStreamOnce) {
  const Outcome outcome = run_toy({"-e", "for i in range(3) do print(xarray(@double, @[1.0, 2])) end"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "2\n2\n2\n");
  EXPECT_EQ(outcome.err.find("<command line>:1:51: warning: in a data literal of reals the integer 2"), 0u)
      << outcome.err;
  EXPECT_EQ(outcome.err.find("warning", 30), std::string::npos) << outcome.err;
}

TEST(CommandLine, Leaks_AreCountedAtTheEnd) {
  const Outcome clean =
      run_toy({"--leaks", "-e", "a = toy_int(2); t = [a, [a, \"s\", w\"s\"]]; fn f()\nend\nf(); a = 1 / 0"});
  EXPECT_THAT(clean.err, HasSubstr("left behind: 0 objects, 0 tables, 0 strings, 0 blocks, 0 records, 0 pieces\n"));
  const Outcome leaky = run_toy({"--leaks", "-e", "toy_leak()"});
  EXPECT_EQ(leaky.status, 1);
  EXPECT_THAT(leaky.err, HasSubstr("left behind: 0 objects, 0 tables, 0 strings, 1 blocks"));
}

}  // namespace
}  // namespace hvm::testing
