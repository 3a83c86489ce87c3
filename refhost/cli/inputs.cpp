// cli/inputs.cpp: running the inputs of a prompt

#include "cli/inputs.hpp"

#include <fmt/format.h>
#include <unistd.h>

#include <new>

#include "cli/interrupts.hpp"
#include "cli/line_editor.hpp"
#include "cli/streams.hpp"
#include "script/library/script_file.hpp"
#include "script/stop/script_end.hpp"
#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

constexpr const char* shown_name = "_";

bool is_in_name(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

/// Whether `_` stands in the text as a word. In a string or a comment it counts, too, which does no harm.
bool reads_shown(const std::string& text) {
  for (std::size_t at = text.find('_'); at != std::string::npos; at = text.find('_', at + 1)) {
    const bool begins = at == 0 || !is_in_name(text[at - 1]);
    if (begins && (at + 1 == text.size() || !is_in_name(text[at + 1]))) return true;
  }
  return false;
}

/// The line without the line ends behind it.
std::string without_end(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

}  // namespace

Inputs::Inputs(Interpreter& interpreter, Session& session, bool explains,
               std::function<void(const std::string&)> remember)
    : interpreter_(interpreter),
      session_(session),
      explains_(explains),
      remember_(std::move(remember)),
      style_(Style::of_stream(STDOUT_FILENO)),
      error_style_(Style::of_stream(STDERR_FILENO)) {}

SourcePtr Inputs::source_of(const std::string& text) const {
  return std::make_shared<SourceText>(fmt::format("<input {}>", count_), text);
}

bool Inputs::run(const std::string& text, Timing timing) {
  bool is_complete = true;
  Program program;
  const bool is_read = guarded([&] {
    try {
      program = interpreter_.parse(source_of(text));
    } catch (const ScriptError& error) {
      is_complete = !error.is_incomplete();
      if (is_complete) throw;
    }
  });
  if (!is_complete) return false;
  remember_((timing == Timing::told ? ":time " : "") + without_end(text));
  ++count_;
  if (!is_read) return true;
  guarded([&] {
    SessionInput input{without_end(text), std::nullopt, reads_shown(text)};
    const auto begin = std::chrono::steady_clock::now();
    run(program, input);
    if (timing == Timing::told) tell_time(std::chrono::steady_clock::now() - begin);
    const bool is_anything = !program.statements.empty() || !program.functions.empty();
    if (is_anything) session_.add(std::move(input));
  });
  return true;
}

void Inputs::report_unfinished(const std::string& text) {
  guarded([&] { interpreter_.parse(source_of(text)); });
}

void Inputs::run_script(const SourcePtr& source) {
  guarded([&] {
    const Interrupts::Run run(interpreter_);
    interpreter_.run(interpreter_.parse(source));
    session_.add({without_end(source->text()), std::nullopt, reads_shown(source->text())});
  });
}

void Inputs::load(const std::string& path) {
  SourcePtr source;
  guarded([&] {
    const Interrupts::Run run(interpreter_);
    try {
      source = read_script(path);
    } catch (const FileError& error) {
      tell_error(error.what());
    }
  });
  if (source) run_script(source);
}

void Inputs::tell_why() {
  guarded([&] {
    const Explanation& last = interpreter_.last_explanation();
    if (last.is_empty())
      put("nothing has failed\n");
    else
      put(last.has_details() ? last.text() : fmt::format("there is no more to say of: {}\n", last.about));
  });
}

std::string Inputs::outline(const std::string& variable) {
  std::string text = "?";  // an array whose methods fail
  const Interrupts::Run run(interpreter_);
  guarded([&] { text = interpreter_.outline(variable); });
  return text;
}

template <class Action>
bool Inputs::guarded(Action action) {
  try {
    action();
    return true;
  } catch (const ScriptError& error) {
    report(error);
  } catch (ScriptInterrupted& end) {
    put("\n");  // the terminal shows the key
    end.place() ? report(*end.place()) : tell_error(end.what());
  } catch (const std::bad_alloc&) {
    put_error({"error: out of memory\n"});
  }
  return false;
}

/// The variables stay, and may leave no memory for the place of the error.
void Inputs::report(const ScriptError& error) const {
  try {
    put_error({error_style_.report(error.report()), explains_ ? interpreter_.last_explanation().text() : ""});
  } catch (const std::bad_alloc&) {
    put_error({"error: ", error.message(), "\n"});
  }
}

void Inputs::tell_error(const std::string& message) const { put_error({"error: ", message, "\n"}); }

void Inputs::run(const Program& program, SessionInput& input) {
  const Interrupts::Run run(interpreter_);
  interpreter_.define(program);
  for (const Statement& statement : program.statements) {
    const auto* expression = std::get_if<ExpressionStatement>(&statement.form);
    try {
      if (expression)
        show(interpreter_.evaluate(*expression->expression, program.source), statement, program, input);
      else
        interpreter_.run(statement, program.source);
    } catch (ScriptInterrupted& end) {
      end.set_place(program.source, statement.span);
      throw;
    }
  }
}

void Inputs::show(const Value& value, const Statement& statement, const Program& program, SessionInput& input) {
  if (value.is_nil()) {
    const std::string text = shown_nil(*std::get<ExpressionStatement>(statement.form).expression);
    if (!text.empty()) put(style_.faint(text) + "\n");
    return;
  }
  const std::size_t width = terminal_width();
  put(interpreter_.shown(value, program.source, statement.span, width) + "\n");
  interpreter_.set_global(shown_name, value);
  input.shown_at = statement.span.begin;
}

std::string Inputs::shown_nil(const Expression& expression) const {
  constexpr const char* no_value = "(no value)";
  if (const auto* postfix = std::get_if<Postfix>(&expression.form))
    return std::holds_alternative<MethodCall>(postfix->suffixes.back().form) ? no_value : "nil";
  const auto* call = std::get_if<Call>(&expression.form);
  if (!call) return "nil";
  if (interpreter_.fn(call->name)) return {};
  const Builtin* builtin = find_builtin(call->name);
  if (!builtin) return no_value;
  return builtin->gives == Gives::nothing ? "" : "nil";
}

void Inputs::tell_time(std::chrono::steady_clock::duration time) const {
  const double seconds = std::chrono::duration<double>(time).count();
  put(style_.faint(seconds < 1e-3 ? fmt::format("{:.1f} us", seconds * 1e6)
                   : seconds < 1  ? fmt::format("{:.3g} ms", seconds * 1e3)
                                  : fmt::format("{:.2f} s", seconds)) +
      "\n");
}

}  // namespace hvm
