// cli/test_runner.cpp: scripts as tests

#include "cli/test_runner.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <signal.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

#include "cli/junit_report.hpp"
#include "cli/safe_text.hpp"
#include "cli/script_search.hpp"
#include "cli/streams.hpp"
#include "cli/test_process.hpp"
#include "script/data/data_error.hpp"
#include "script/data/output_file.hpp"
#include "script/library/script_file.hpp"

namespace hvm {
namespace {

/// So many scripts may have started before the first of them is reported. Each may hold two open files.
constexpr std::size_t most_unreported = 256;
constexpr std::size_t slowest_shown = 5;
/// The bytes of a script's output that the JUnit file takes.
constexpr std::size_t most_kept = std::size_t{1} << 16;

/// `1.3 s`, with more digits where it is short.
std::string seconds_text(double seconds) {
  const int decimals = seconds < 0.1 ? 3 : seconds < 1 ? 2 : 1;
  return fmt::format("{:.{}f} s", seconds, decimals);
}

class TestRunner {
 public:
  TestRunner(const FoundScripts& found, const ModuleFunctions& functions, const TestOptions& options)
      : found_(found), functions_(functions), options_(options) {}

  /// Runs and reports all scripts. Returns whether they passed, and there are some.
  bool run() {
    // Where it is ignored, the system forgets how a process ended.
    signal(SIGCHLD, SIG_DFL);
    for (const std::string& problem : found_.unreadable) report_folder(problem);
    processes_.resize(found_.scripts.size());
    while (reported_ < processes_.size()) {
      while (may_start() && start())
        ;
      wait_for_one();
      while (reported_ < started_ && processes_[reported_]->has_ended()) report(reported_++);
    }
    report_all();
    return failed_ == 0 && found_.unreadable.empty() && !found_.scripts.empty();
  }

 private:
  // ---- Processes

  bool may_start() const {
    return started_ < processes_.size() && running_ < options_.jobs && started_ - reported_ < most_unreported;
  }

  /// Starts the next script. Returns false when the system allows no more processes or files for now.
  bool start() {
    const std::string& path = found_.scripts[started_];
    try {
      processes_[started_] = std::make_unique<TestProcess>([&] { return passes(path); }, options_.time_limit);
    } catch (const std::system_error&) {
      if (running_ == 0) throw;
      return false;
    }
    ++started_, ++running_;
    return true;
  }

  void wait_for_one() {
    int status = 0;
    const pid_t id = uninterrupted([&] { return waitpid(-1, &status, 0); });
    if (id < 0) throw std::system_error(errno, std::generic_category(), "waitpid");
    for (std::size_t i = reported_; i < started_; ++i)
      if (processes_[i]->id() == id && !processes_[i]->has_ended()) processes_[i]->end(status), --running_;
  }

  /// In the script's process: runs it and prints what failed. Nothing is thrown: this process has one task.
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

  // ---- Reports

  void report_folder(const std::string& problem) {
    put(problem + "\n");
    ReportedTest test;
    test.path = problem.substr(0, problem.find(": "));
    test.kind = ReportedTest::Kind::broken;
    test.message = problem;
    tests_.push_back(test);
  }

  void report(std::size_t index) {
    const std::unique_ptr<TestProcess> process = std::move(processes_[index]);
    const TestEnd& end = process->how_it_ended();
    ReportedTest test;
    test.path = found_.scripts[index];
    test.seconds = end.seconds;
    process->read_output([&](std::string_view piece) {
      put(piece);
      keep(test.output, piece);
    });
    process->read_errors([&](std::string_view piece) {
      put_error_as_it_is({piece});
      keep(test.errors, piece);
    });
    const bool passed = end.kind == TestEnd::Kind::passed;
    if (!passed) ++failed_;
    if (end.kind == TestEnd::Kind::failed) {
      test.kind = ReportedTest::Kind::failed;
      test.message = first_line(test.output.empty() ? test.errors : test.output);
    } else if (end.kind == TestEnd::Kind::ended_by_signal) {
      test.kind = ReportedTest::Kind::broken;
      test.message = cause_of_end(end.signal);
      put(fmt::format("{}: {}\n", test.path, test.message));
    }
    if (options_.is_verbose)
      put(fmt::format("{} in {}: {}\n", passed ? "passed" : "failed", seconds_text(end.seconds), safe_text(test.path)));
    tests_.push_back(std::move(test));
  }

  static void keep(std::string& text, std::string_view piece) {
    text += piece.substr(0, most_kept - std::min(most_kept, text.size()));
  }

  static std::string first_line(const std::string& text) { return text.substr(0, text.find('\n')); }

  std::string cause_of_end(int signal) const {
    if (signal == SIGALRM) return fmt::format("took longer than {} s", options_.time_limit);
    return fmt::format("ended by signal {}", signal);
  }

  void report_all() {
    const double seconds = std::chrono::duration<double>(TestProcess::Clock::now() - start_).count();
    if (options_.is_verbose && tests_.size() > 1) report_slowest();
    put(fmt::format("{} passed, {} failed in {}\n", found_.scripts.size() - failed_, failed_, seconds_text(seconds)));
    if (!options_.junit_path.empty()) write_junit(seconds);
  }

  void write_junit(double seconds) const {
    OutputFile file(options_.junit_path);
    file.write(junit_report(tests_, seconds));
    file.finish();
  }

  void report_slowest() const {
    std::vector<const ReportedTest*> tests;
    for (const ReportedTest& test : tests_) tests.push_back(&test);
    std::stable_sort(tests.begin(), tests.end(), [](const auto* a, const auto* b) { return a->seconds > b->seconds; });
    tests.resize(std::min(tests.size(), slowest_shown));
    put("the slowest:\n");
    for (const ReportedTest* test : tests)
      put(fmt::format("  {}: {}\n", seconds_text(test->seconds), safe_text(test->path)));
  }

  const FoundScripts& found_;
  const ModuleFunctions& functions_;
  const TestOptions& options_;
  TestProcess::Clock::time_point start_ = TestProcess::Clock::now();
  std::vector<std::unique_ptr<TestProcess>> processes_;  // of the scripts; null before the start and behind the report
  std::size_t started_ = 0;
  std::size_t running_ = 0;
  std::size_t reported_ = 0;
  std::size_t failed_ = 0;
  std::vector<ReportedTest> tests_;
};

/// Fails at once if the JUnit file cannot be made, and not after an hour of tests.
void check_junit_path(const std::string& path) {
  try {
    if (!path.empty()) OutputFile file(path);
  } catch (const DataError& error) {
    throw FileError(fmt::format("--junit: {}", error.what()));
  }
}

}  // namespace

bool run_tests(const std::vector<std::string>& paths, const ModuleFunctions& functions, const TestOptions& options) {
  const FoundScripts found = find_scripts(paths, options.filter);
  check_junit_path(options.junit_path);
  if (found.scripts.empty()) {
    const std::string fitting = options.filter.empty() ? "" : fmt::format(" match \"{}\"", briefly(options.filter));
    put(fmt::format("no scripts below {}{}\n", fmt::join(paths, ", "), fitting));
  }
  return TestRunner(found, functions, options).run();
}

}  // namespace hvm
