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
  explicit Repl(Interpreter& interpreter) : interpreter_(interpreter) {}

  void run() {
    using_history();
    while (const auto line = read_line(pending_.empty() ? "> " : "... ")) {
      if (line->find_first_not_of(" \t") != std::string::npos) add_history(line->c_str());
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

  /// The variables stay, and may leave no memory for the place of the error.
  static void report(const ScriptError& error) {
    try {
      put_error({error.report()});
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
  std::string pending_;
  int count_ = 1;
};

}  // namespace

void run_repl(Interpreter& interpreter) {
  use_unicode();
  Repl(interpreter).run();
}

}  // namespace hvm
