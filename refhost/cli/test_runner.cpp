// cli/test_runner.cpp: every script below a directory as a test

#include "cli/test_runner.hpp"

#include <fmt/format.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <vector>

#include "cli/process_end.hpp"
#include "cli/streams.hpp"
#include "script/library/script_file.hpp"

namespace hvm {
namespace {

namespace fs = std::filesystem;

/// The scripts below a directory, and the folders that cannot be read.
class ScriptSearch {
 public:
  explicit ScriptSearch(const fs::path& directory) {
    search(directory);
    std::sort(scripts.begin(), scripts.end());
  }

  std::vector<std::string> scripts;
  std::vector<std::string> problems;

 private:
  void search(const fs::path& folder) {
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) take(*entry);
    if (error) problems.push_back(fmt::format("{}: the folder cannot be read: {}", folder.string(), error.message()));
  }

  void take(const fs::directory_entry& entry) {
    std::error_code error;
    const bool is_folder = !entry.is_symlink(error) && entry.is_directory(error);
    if (is_folder) return search(entry.path());
    if (entry.is_regular_file(error) && entry.path().extension() == ".hvm") scripts.push_back(entry.path().string());
  }
};

class TestRunner {
 public:
  TestRunner(const ModuleFunctions& functions, const TestOptions& options) : functions_(functions), options_(options) {}

  /// Whether a script passes, asked in a process of its own.
  bool passes_apart(const std::string& path) const {
    std::fflush(nullptr);  // or both processes would write what waits
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (child == 0) {
      end_with(parent);
      start_clock();
      end_process(passes(path) ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
      if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "waitpid");
    if (WIFSIGNALED(status)) put(fmt::format("{}: {}\n", path, cause_of_end(WTERMSIG(status))));
    return WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
  }

 private:
  // ---- In the script's process

  /// Lets the system end this process when `parent` ends, in whatever way.
  static void end_with(pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) std::_Exit(EXIT_FAILURE);  // it has ended already
  }

  /// Lets SIGALRM end this process after the time limit.
  void start_clock() const {
    if (options_.time_limit <= 0) return;
    signal(SIGALRM, SIG_DFL);
    sigset_t alarm = {};
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    sigprocmask(SIG_UNBLOCK, &alarm, nullptr);
    itimerval timer = {};
    timer.it_value.tv_sec = static_cast<time_t>(options_.time_limit);
    // At least a microsecond: a timer of zero never ends.
    const double fraction = options_.time_limit - std::floor(options_.time_limit);
    timer.it_value.tv_usec = std::max(static_cast<suseconds_t>(fraction * 1e6), suseconds_t{1});
    setitimer(ITIMER_REAL, &timer, nullptr);
  }

  /// Runs the script and prints what failed. Nothing is thrown: this process has one task.
  bool passes(const std::string& path) const noexcept {
    try {
      const auto failures = unmet_expectations(read_script(path), functions_, options_.conditions);
      for (const std::string& failure : failures) put(failure + "\n");
      const bool ends_well = options_.ends_well();
      finish_output();
      return ends_well && failures.empty();
    } catch (const std::exception& error) {
      put_error({path, ": ", error.what(), "\n"});
      return false;
    }
  }

  // ---- In the process that waits

  std::string cause_of_end(int signal) const {
    if (signal == SIGALRM) return fmt::format("took longer than {} s", options_.time_limit);
    return fmt::format("ended by signal {}", signal);
  }

  const ModuleFunctions& functions_;
  const TestOptions& options_;
};

}  // namespace

bool run_tests_below(const std::string& directory, const ModuleFunctions& functions, const TestOptions& options) {
  const ScriptSearch found(directory);
  for (const std::string& problem : found.problems) put(problem + "\n");
  const TestRunner runner(functions, options);
  std::size_t failed = 0;
  for (const std::string& path : found.scripts) failed += runner.passes_apart(path) ? 0 : 1;
  if (found.scripts.empty()) put(fmt::format("no scripts below {}\n", directory));
  put(fmt::format("{} passed, {} failed\n", found.scripts.size() - failed, failed));
  return failed == 0 && found.problems.empty() && !found.scripts.empty();
}

}  // namespace hvm
