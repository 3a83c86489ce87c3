// cli/expectation_run.cpp: a script against the comments that say what it must print

#include "cli/expectation_run.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

#include "cli/expectations.hpp"
#include "cli/help_page.hpp"
#include "script/run/interpreter.hpp"
#include "script/stop/script_end.hpp"

namespace hvm {
namespace {

class ExpectationRun {
 public:
  ExpectationRun(SourcePtr source, const ModuleFunctions& functions, const RunConditions& conditions)
      : source_(std::move(source)), warnings_(conditions.warnings), interpreter_(functions, options(conditions)) {}

  std::vector<std::string> failures() {
    try {
      const TokenList words = lex(source_);
      expected_ = expectations_of(source_, words);
      expected_warnings_ = expected_warnings_of(source_, words);
      for (const Token& word : words.tokens)
        if (word.kind != TokenKind::newline && word.kind != TokenKind::end_of_source)
          last_code_line_ = source_->line(word.span.begin);
      run();
    } catch (const ScriptExit& end) {
      if (end.status() != 0) report(running_line_, fmt::format("the script ended with the status {}", end.status()));
    } catch (const ScriptError& error) {
      report(error.line(), fmt::format("error: {}", error.message()));
    }
    compare_output();
    compare_warnings();
    return std::move(failures_);
  }

 private:
  /// Warnings are gathered here, and never end a statement.
  InterpreterOptions options(const RunConditions& conditions) {
    InterpreterOptions options;
    options.has_checks = conditions.has_checks;
    options.description = conditions.description;
    options.pages_folder = pages_folder();
    options.print = [this](const std::string& text, const SourceText& from, std::size_t line) {
      print(text, from.name() == source_->name() ? line : running_line_);
    };
    options.warn = [this](const Warning& warning) {
      const bool is_here = warning.source->name() == source_->name();
      told_.push_back({is_here ? warning.line() : running_line_, warning.row.name, warning.message, false});
    };
    options.warnings = warnings_ == WarningMode::off ? WarningMode::off : WarningMode::on;
    return options;
  }

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
    std::set<std::size_t> left_out;
    while (true) {
      try {
        return interpreter_.parse(text);
      } catch (const ScriptError& error) {
        const std::size_t line = line_of(error);
        const bool is_left_out = left_out.count(line) != 0;
        // Leaving the last line out does not help: a block stays open, so that nothing can run.
        if (is_left_out && error.is_incomplete() && is_met_by_error(expected_.at(line), error.message()))
          return {source_, {}, {}};
        if (is_left_out || !settle(line, line, error)) throw;
        left_out.insert(line);
        text = without_line(*text, line);
      }
    }
  }

  /// The line of an error; that of the last code when the script ends too early.
  std::size_t line_of(const ScriptError& error) const {
    return error.is_incomplete() && expected_.count(error.line()) == 0 ? last_code_line_ : error.line();
  }

  static SourcePtr without_line(const SourceText& source, std::size_t line) {
    const std::string_view text = source.line_text(line);
    std::string whole = source.text();
    const auto begin = static_cast<std::size_t>(text.data() - source.text().data());
    whole.replace(begin, text.size(), text.size(), ' ');
    return std::make_shared<SourceText>(source.name(), std::move(whole));
  }

  void print(const std::string& text, std::size_t line) { printed_[line] += (printed_.count(line) ? "\n" : "") + text; }

  void run(const Statement& statement, const SourcePtr& source) {
    const std::size_t first = source->line(statement.span.begin);
    running_line_ = first;
    try {
      interpreter_.run(statement, source);
    } catch (const ScriptError& error) {
      const std::size_t last = source->line(std::max(statement.span.begin + 1, statement.span.end) - 1);
      const bool is_here = error.source() == source;
      if (is_here && settle(error.line(), error.line(), error)) return;
      if (!settle(first, last, error)) throw;
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

  void compare_warnings() {
    for (const auto& [line, text] : expected_warnings_) {
      const auto is_meant = [&, expected = line, &words = text](const ToldWarning& warning) {
        return !warning.is_expected && warning.line == expected && is_contained(words, warning.message);
      };
      const auto met = std::find_if(told_.begin(), told_.end(), is_meant);
      if (met != told_.end())
        met->is_expected = true;
      else
        report(line, fmt::format("expected warning: {}; there was none", text));
    }
    if (warnings_ != WarningMode::error) return;
    for (const ToldWarning& warning : told_)
      if (!warning.is_expected)
        report(warning.line, fmt::format("unexpected warning: {}: {}", warning.name, warning.message));
  }

  void report(std::size_t line, const std::string& what) {
    failures_.push_back(fmt::format("{}:{}: {}", source_->name(), line, what));
  }

  struct ToldWarning {
    std::size_t line;
    std::string_view name;
    std::string message;
    bool is_expected;
  };

  SourcePtr source_;
  WarningMode warnings_;
  std::vector<ToldWarning> told_;
  std::multimap<std::size_t, std::string> expected_warnings_;
  std::map<std::size_t, std::string> printed_;
  std::map<std::size_t, Expectation> expected_;
  std::map<std::size_t, bool> failed_lines_;
  std::size_t last_code_line_ = 0;
  std::size_t running_line_ = 0;  // of the statement that runs: what another script prints belongs to it
  std::vector<std::string> failures_;
  Interpreter interpreter_;
};

}  // namespace

std::vector<std::string> unmet_expectations(const SourcePtr& source, const ModuleFunctions& functions,
                                            const RunConditions& conditions) {
  return ExpectationRun(source, functions, conditions).failures();
}

}  // namespace hvm
