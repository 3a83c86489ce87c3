// refhost/cli/program.cpp: runs hvm as a process of its own

#include "program.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace hvm::testing {
namespace {

// ---- In the child

void redirect(Stream stream, const std::string& path, int descriptor) {
  int pipe_ends[2] = {-1, -1};
  switch (stream) {
    case Stream::file:
      dup2(open(path.c_str(), O_WRONLY | O_CREAT, 0600), descriptor);
      break;
    case Stream::full:
      dup2(open("/dev/full", O_WRONLY), descriptor);
      break;
    case Stream::without_reader:
      if (pipe(pipe_ends) != 0) _exit(127);
      dup2(pipe_ends[1], descriptor);
      close(pipe_ends[0]);
      close(pipe_ends[1]);
      break;
    case Stream::closed:
      break;
  }
}

/// The standard streams are as `conditions` say, the environment has its additions, and hvm takes over.
[[noreturn]] void become_hvm(const std::vector<std::string>& arguments, const Workplace& place,
                             const Conditions& conditions) {
  dup2(open((place.path() + "/in").c_str(), O_RDONLY), STDIN_FILENO);
  redirect(conditions.out, place.path() + "/out", STDOUT_FILENO);
  redirect(conditions.err, place.path() + "/err", STDERR_FILENO);
  // Last, so that no file is opened in the place of a closed stream.
  if (!conditions.has_input) close(STDIN_FILENO);
  if (conditions.out == Stream::closed) close(STDOUT_FILENO);
  if (conditions.err == Stream::closed) close(STDERR_FILENO);
  for (const auto& [name, value] : conditions.environment) setenv(name.c_str(), value.c_str(), 1);
  if (conditions.obeys_permissions) drop_rights_of_root();
  limit(RLIMIT_AS, conditions.memory);
  limit(RLIMIT_FSIZE, conditions.file_size);
  std::vector<char*> words{const_cast<char*>(HVM_PROGRAM)};
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  execv(HVM_PROGRAM, words.data());
  _exit(127);
}

}  // namespace

void limit(decltype(RLIMIT_AS) resource, std::size_t most) {
  const rlimit limits = {most, most};
  if (most > 0 && setrlimit(resource, &limits) != 0) _exit(127);
}

void drop_rights_of_root() {
  prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0);
  prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH, 0, 0, 0);
}

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

std::string contents(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

Outcome run_hvm(const std::vector<std::string>& arguments, const Conditions& conditions) {
  const Workplace place;
  place.write("in", conditions.input);
  const pid_t child = fork();
  if (child == 0) become_hvm(arguments, place, conditions);
  int status = 0;
  waitpid(child, &status, 0);
  Outcome outcome;
  outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  outcome.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  outcome.out = contents(place.path() + "/out");
  outcome.err = contents(place.path() + "/err");
  return outcome;
}

Outcome run_toy(std::vector<std::string> arguments, const Conditions& conditions) {
  arguments.insert(arguments.begin(), {"--module", module_path("toy_module")});
  return run_hvm(arguments, conditions);
}

std::string without_time(const std::string& report) {
  static const std::regex time("( passed, [0-9]+ failed) in [0-9]+\\.[0-9]+ s\n$");
  return std::regex_replace(report, time, "$1\n");
}

Outcome run_tests(std::vector<std::string> arguments, const Conditions& conditions) {
  Outcome outcome = run_toy(std::move(arguments), conditions);
  outcome.out = without_time(outcome.out);
  return outcome;
}

void LimitedMemory::SetUp() {
#ifdef ARRAYFOLD_ADDRESS_SANITIZER
  GTEST_SKIP() << "the address sanitizer reserves more addresses than the limit allows; every other build runs this, "
                  "and script_memory_test lets every allocation fail";
#endif
}

std::string module_path(const std::string& name) { return std::string(MODULE_DIRECTORY) + "/" + name + ".so"; }

}  // namespace hvm::testing
