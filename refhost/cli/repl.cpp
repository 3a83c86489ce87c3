// cli/repl.cpp: the prompt at a terminal

#include "cli/repl.hpp"

#include <editline/readline.h>
#include <fmt/format.h>
#include <langinfo.h>
#include <locale.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <sstream>

#include "cli/streams.hpp"

namespace hvm {
namespace {

/// A line without its end; no value at the end of file.
std::optional<std::string> read_line(const char* prompt) {
  const std::unique_ptr<char, decltype(&std::free)> line(readline(prompt), &std::free);
  return line ? std::optional<std::string>(line.get()) : std::nullopt;
}

/// Makes the line editor read UTF-8, also when the user's locale has only ASCII.
void use_unicode() {
  const bool has_locale = setlocale(LC_CTYPE, "") != nullptr;
  if (!has_locale || std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0) setlocale(LC_CTYPE, "C.UTF-8");
}

class Repl {
 public:
  Repl(Interpreter& interpreter, bool explains) : interpreter_(interpreter), explains_(explains) {}

  void run() {
    using_history();
    while (const auto line = read_line(pending_.empty() ? "> " : "... ")) {
      if (line->find_first_not_of(" \t") != std::string::npos) add_history(line->c_str());
      if (asks_why(*line)) {
        tell_why();
        continue;
      }
      pending_ += *line + "\n";
      take_pending();
    }
    put("\n");
    if (!pending_.empty()) report_unfinished();
  }

 private:
  SourcePtr source() const { return std::make_shared<SourceText>(fmt::format("<input {}>", count_), pending_); }

  void take_pending() {
    try {
      const Program program = interpreter_.parse(source());
      finish_input();
      run(program);
    } catch (const ScriptError& error) {
      if (error.is_incomplete()) return;
      finish_input();
      report(error);
    } catch (const std::bad_alloc&) {
      finish_input();
      put_error({"error: out of memory\n"});
    }
  }

  /// Whether a line is the word `why` alone, where that is neither a variable nor part of a longer input.
  bool asks_why(const std::string& line) const {
    std::istringstream words(line);
    std::string first;
    std::string second;
    return pending_.empty() && words >> first && first == "why" && !(words >> second) &&
           !interpreter_.has_global(first);
  }

  void tell_why() const {
    const Explanation& last = interpreter_.last_explanation();
    try {
      if (last.is_empty())
        put("nothing has failed\n");
      else
        put(last.has_details() ? last.text() : fmt::format("there is no more to say of: {}\n", last.about));
    } catch (const std::bad_alloc&) {
      put_error({"error: out of memory\n"});
    }
  }

  /// The variables stay, and may leave no memory for the place of the error.
  void report(const ScriptError& error) const {
    try {
      put_error({error.report(), explains_ ? interpreter_.last_explanation().text() : ""});
    } catch (const std::bad_alloc&) {
      put_error({"error: ", error.message(), "\n"});
    }
  }

  void finish_input() {
    pending_.clear();
    ++count_;
  }

  void run(const Program& program) {
    interpreter_.define(program);
    for (const Statement& statement : program.statements) {
      const auto* expression = std::get_if<ExpressionStatement>(&statement.form);
      if (!expression) {
        interpreter_.run(statement, program.source);
        continue;
      }
      const Value value = interpreter_.evaluate(*expression->expression, program.source);
      if (!value.is_nil()) put(interpreter_.shown(value, program.source, statement.span) + "\n");
    }
  }

  void report_unfinished() {
    try {
      interpreter_.parse(source());
    } catch (const ScriptError& error) {
      report(error);
    }
  }

  Interpreter& interpreter_;
  bool explains_;  // tell the whole story with every error
  std::string pending_;
  int count_ = 1;
};

}  // namespace

void run_repl(Interpreter& interpreter, bool explains) {
  use_unicode();
  Repl(interpreter, explains).run();
}

}  // namespace hvm
