// cli/test_runner.cpp: scripts as tests

#include "cli/test_runner.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <signal.h>

#include <algorithm>
#include <string_view>

#include "cli/junit_report.hpp"
#include "cli/process_pool.hpp"
#include "cli/safe_text.hpp"
#include "cli/script_search.hpp"
#include "cli/streams.hpp"
#include "script/data/data_error.hpp"
#include "script/data/output_file.hpp"
#include "script/library/script_file.hpp"

namespace hvm {
namespace {

constexpr std::size_t slowest_shown = 5;
/// The bytes of a script's output that the JUnit file takes.
constexpr std::size_t most_kept = std::size_t{1} << 16;

class TestRunner {
 public:
  TestRunner(const FoundScripts& found, const ModuleFunctions& functions, const TestOptions& options)
      : found_(found), functions_(functions), options_(options) {}

  /// Runs and reports all scripts. Returns whether they passed, and there are some.
  bool run() {
    for (const std::string& problem : found_.unreadable) report_folder(problem);
    ProcessPool pool(
        {options_.jobs, options_.time_limit}, [&](std::size_t index) { return passes(found_.scripts[index]); },
        [&](std::size_t index, const TestProcess& process) { report(found_.scripts[index], process); });
    pool.run(found_.scripts.size());
    report_all();
    return failed_ == 0 && found_.unreadable.empty() && !found_.scripts.empty();
  }

 private:
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

  void report(const std::string& path, const TestProcess& process) {
    const TestEnd& end = process.how_it_ended();
    ReportedTest test;
    test.path = path;
    test.seconds = end.seconds;
    process.read_output([&](std::string_view piece) {
      put(piece);
      keep(test.output, piece);
    });
    process.read_errors([&](std::string_view piece) {
      put_error_as_it_is({piece});
      keep(test.errors, piece);
    });
    const bool passed = end.kind == TestEnd::Kind::passed;
    if (!passed) ++failed_;
    if (end.kind == TestEnd::Kind::failed) {
      test.kind = ReportedTest::Kind::failed;
      test.message = first_line(test.output.empty() ? test.errors : test.output);
    } else if (!passed) {
      test.kind = ReportedTest::Kind::broken;
      test.message = cause_of_end(end);
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

  std::string cause_of_end(const TestEnd& end) const {
    if (end.kind == TestEnd::Kind::ended_early) return "the module ended the process";
    if (end.signal == SIGALRM) return fmt::format("took longer than {} s", options_.time_limit);
    return fmt::format("ended by signal {}", end.signal);
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
  std::size_t failed_ = 0;
  std::vector<ReportedTest> tests_;
};

}  // namespace

std::string seconds_text(double seconds) {
  const int decimals = seconds < 0.1 ? 3 : seconds < 1 ? 2 : 1;
  return fmt::format("{:.{}f} s", seconds, decimals);
}

void check_report_path(const char* option, const std::string& path) {
  try {
    if (!path.empty()) OutputFile file(path);
  } catch (const DataError& error) {
    throw FileError(fmt::format("{}: {}", option, error.what()));
  }
}

bool run_tests(const std::vector<std::string>& paths, const ModuleFunctions& functions, const TestOptions& options) {
  const FoundScripts found = find_scripts(paths, options.filter);
  check_report_path("--junit", options.junit_path);
  if (found.scripts.empty()) {
    const std::string fitting = options.filter.empty() ? "" : fmt::format(" match \"{}\"", briefly(options.filter));
    put(fmt::format("no scripts below {}{}\n", fmt::join(paths, ", "), fitting));
  }
  return TestRunner(found, functions, options).run();
}

}  // namespace hvm
