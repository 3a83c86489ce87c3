// cli/expectation_runner.cpp: scripts that say in their comments what they must print

#include "cli/expectation_runner.hpp"

#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <system_error>

#include "cli/expectations.hpp"
#include "script/library/script_file.hpp"
#include "script/run/interpreter.hpp"

namespace hvm {
namespace {

namespace fs = std::filesystem;

class ExpectationRun {
 public:
  ExpectationRun(SourcePtr source, const ModuleFunctions& functions, bool has_guards)
      : source_(std::move(source)),
        interpreter_(functions, {has_guards, [this](const std::string& text, const SourceText&, std::size_t line) {
                                   printed_[line] += (printed_.count(line) ? "\n" : "") + text;
                                 }}) {}

  std::vector<std::string> failures() {
    try {
      expected_ = expectations_of(source_, lex(source_));
      run();
    } catch (const ScriptError& error) {
      report(error.line(), fmt::format("error: {}", error.message()));
    }
    compare_output();
    return std::move(failures_);
  }

 private:
  void run() {
    interpreter_.set_global("args", Value::table());
    const Program program = parsed();
    interpreter_.define(program);
    for (const Statement& statement : program.statements) run(statement, program.source);
    for (const auto& [line, expectation] : expected_)
      if (expectation.form == Expectation::Form::error && !failed_lines_.count(line))
        report(line, fmt::format("expected error: {}; there was none", expectation.text));
  }

  /// The program. A line that cannot be read, as it expects of itself, is left out.
  Program parsed() {
    SourcePtr text = source_;
    while (true) {
      try {
        return interpreter_.parse(text);
      } catch (const ScriptError& error) {
        const std::size_t line = error.line();
        if (!settle(line, line, error)) throw;
        text = without_line(*text, line);
      }
    }
  }

  static SourcePtr without_line(const SourceText& source, std::size_t line) {
    const std::string_view text = source.line_text(line);
    std::string whole = source.text();
    const auto begin = static_cast<std::size_t>(text.data() - source.text().data());
    whole.replace(begin, text.size(), text.size(), ' ');
    return std::make_shared<SourceText>(source.name(), std::move(whole));
  }

  void run(const Statement& statement, const SourcePtr& source) {
    try {
      interpreter_.run(statement, source);
    } catch (const ScriptError& error) {
      const std::size_t first = source->line(statement.span.begin);
      const std::size_t last = source->line(std::max(statement.span.begin + 1, statement.span.end) - 1);
      if (!settle(error.line(), error.line(), error) && !settle(first, last, error)) throw;
    }
  }

  /// Whether an expectation on these lines is of this error, met or not.
  bool settle(std::size_t first, std::size_t last, const ScriptError& error) {
    for (auto entry = expected_.lower_bound(first); entry != expected_.end() && entry->first <= last; ++entry) {
      const auto& [line, expectation] = *entry;
      if (expectation.form != Expectation::Form::error) continue;
      failed_lines_[line] = true;
      if (!is_met_by_error(expectation, error.message()))
        report(line, fmt::format("expected error: {}; got error: {}", expectation.text, error.message()));
      return true;
    }
    return false;
  }

  void compare_output() {
    for (const auto& [line, expectation] : expected_) {
      if (expectation.form == Expectation::Form::error) continue;
      const auto printed = printed_.find(line);
      if (printed == printed_.end())
        report(line, fmt::format("expected {}; nothing was printed", expectation.text));
      else if (!is_met(expectation, printed->second))
        report(line, fmt::format("expected {}; got {}", expectation.text, with_single_blanks(printed->second)));
    }
  }

  void report(std::size_t line, const std::string& what) {
    failures_.push_back(fmt::format("{}:{}: {}", source_->name(), line, what));
  }

  SourcePtr source_;
  std::map<std::size_t, std::string> printed_;
  std::map<std::size_t, Expectation> expected_;
  std::map<std::size_t, bool> failed_lines_;
  std::vector<std::string> failures_;
  Interpreter interpreter_;
};

std::vector<std::string> scripts_below(const std::string& directory) {
  std::vector<std::string> paths;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(directory))
    if (entry.is_regular_file() && entry.path().extension() == ".hvm") paths.push_back(entry.path().string());
  std::sort(paths.begin(), paths.end());
  return paths;
}

/// Whether `passes` holds, asked in a process of its own.
bool passes_apart(const std::string& path, const std::function<bool()>& passes) {
  std::fflush(nullptr);  // or both processes would write what waits
  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) std::exit(passes() ? EXIT_SUCCESS : EXIT_FAILURE);
  int status = 0;
  while (waitpid(child, &status, 0) < 0)
    if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "waitpid");
  if (WIFSIGNALED(status)) fmt::print("{}: ended by signal {}\n", path, WTERMSIG(status));
  return WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
}

}  // namespace

std::vector<std::string> run_expectations(const SourcePtr& source, const ModuleFunctions& functions, bool has_guards) {
  return ExpectationRun(source, functions, has_guards).failures();
}

bool run_expectations_below(const std::string& directory, const ModuleFunctions& functions, bool has_guards,
                            const std::function<bool()>& ends_well) {
  const std::vector<std::string> paths = scripts_below(directory);
  const auto passes = [&](const std::string& path) {
    const auto failures = run_expectations(read_script(path), functions, has_guards);
    for (const std::string& failure : failures) fmt::print("{}\n", failure);
    return ends_well() && failures.empty();
  };
  std::size_t failed = 0;
  for (const std::string& path : paths) failed += !passes_apart(path, [&] { return passes(path); });
  if (paths.empty()) fmt::print("no scripts below {}\n", directory);
  fmt::print("{} passed, {} failed\n", paths.size() - failed, failed);
  return failed == 0 && !paths.empty();
}

}  // namespace hvm
