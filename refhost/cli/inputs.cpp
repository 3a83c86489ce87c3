// cli/inputs.cpp: running the inputs of a prompt

#include "cli/inputs.hpp"

#include <fmt/format.h>
#include <unistd.h>

#include <new>
#include <stdexcept>

#include "cli/interrupts.hpp"
#include "cli/reports.hpp"
#include "cli/safe_text.hpp"
#include "cli/streams.hpp"
#include "cli/terminal.hpp"
#include "script/library/script_file.hpp"
#include "script/stop/script_end.hpp"
#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

constexpr const char* shown_name = "_";

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
      style_(Style::of_stream(STDOUT_FILENO)) {}

SourcePtr Inputs::source_of(const std::string& text) const {
  return std::make_shared<SourceText>(fmt::format("<input {}>", count_), text, Origin::prompt);
}

bool Inputs::run(const std::string& text, Timing timing) {
  bool is_complete = true;
  Program program;
  const Ending reading = guarded([&] {
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
  if (reading != Ending::done) return true;
  const auto begin = std::chrono::steady_clock::now();
  const Ending ending = run(program, AtError::end, [&](const Statement& statement) {
    const auto* expression = std::get_if<ExpressionStatement>(&statement.form);
    if (expression)
      return show(interpreter_.evaluate(*expression->expression, program.source), statement, program.source);
    interpreter_.run(statement, program.source);
    return IsShown::no;
  });
  if (timing == Timing::told && ending == Ending::done)
    guarded([&] { tell_time(std::chrono::steady_clock::now() - begin); });
  return true;
}

void Inputs::report_unfinished(const std::string& text) {
  guarded([&] { interpreter_.parse(source_of(text)); });
}

bool Inputs::run_script(const SourcePtr& source, AtError at_error) {
  Program program;
  const Ending reading = guarded([&] { program = interpreter_.parse(source); });
  if (reading != Ending::done) return false;
  run(program, at_error, [&](const Statement& statement) {
    interpreter_.run(statement, source);
    return IsShown::no;
  });
  return true;
}

void Inputs::load(const std::string& path) {
  SourcePtr source;
  guarded([&] {
    const Interrupts::Run run(interpreter_);
    try {
      source = read_script(path);
    } catch (const std::runtime_error& error) {
      tell_error(error.what());
    }
  });
  if (!source) return;
  const bool is_lost = session_.is_lost(path);
  const bool is_read = run_script(source, is_lost ? AtError::go_on : AtError::end);
  if (is_lost && is_read) session_.forget(path);
}

void Inputs::save(const std::string& path) {
  guarded([&] {
    const Interrupts::Run run(interpreter_);
    const std::string failure = save_script(path, session_.script());
    failure.empty() ? put(fmt::format("saved in {}\n", safe_text(path))) : tell_error(failure);
  });
}

void Inputs::tell_why() {
  guarded([&] {
    const Explanation& last = interpreter_.last_explanation();
    if (last.is_empty())
      put("there was no error yet\n");
    else
      put(last.has_details() ? last.text() : fmt::format("there are no more details of this error: {}\n", last.about));
  });
}

std::string Inputs::outline(const std::string& variable) {
  std::string text = "?";  // an array whose methods fail
  const Interrupts::Run run(interpreter_);
  guarded([&] { text = interpreter_.outline(variable); });
  return text;
}

template <class Action>
Inputs::Ending Inputs::guarded(Action action) {
  try {
    action();
    return Ending::done;
  } catch (const ScriptError& error) {
    report(error);
  } catch (ScriptInterrupted& end) {
    put("\n");  // the terminal shows the key
    end.place() ? report(*end.place()) : tell_error(end.what());
    return Ending::interrupted;
  } catch (const std::bad_alloc&) {
    put_error({"error: out of memory\n"});
  }
  return Ending::failed;
}

/// The variables stay, and may leave no memory for the place of the error.
void Inputs::report(const ScriptError& error) const {
  try {
    put_report(error.report(), explains_ ? interpreter_.last_explanation().text() : std::string());
  } catch (const std::bad_alloc&) {
    put_error({"error: ", error.message(), "\n"});
  }
}

void Inputs::tell_error(const std::string& message) const { put_error({"error: ", message, "\n"}); }

template <class RunOne>
Inputs::Ending Inputs::run(const Program& program, AtError at_error, RunOne run_one) {
  Ending ending = Ending::done;
  const Ending recorded = guarded([&] {
    const Interrupts::Run run(interpreter_);
    interpreter_.define(program);
    Recording recording(session_, program);
    bool goes_on = true;
    for (const Statement& statement : program.statements) {
      recording.begin(statement);
      if (goes_on)
        ending = this->run(statement, program.source, recording, run_one);
      else
        recording.leave_out(statement);
      goes_on = ending == Ending::done || (ending == Ending::failed && at_error == AtError::go_on);
    }
    recording.end();
  });
  return recorded == Ending::done ? ending : recorded;
}

template <class RunOne>
Inputs::Ending Inputs::run(const Statement& statement, const SourcePtr& source, Recording& recording, RunOne run_one) {
  return guarded([&] {
    try {
      recording.finish(statement, run_one(statement));
    } catch (const ScriptError& error) {
      recording.fail(statement, error);
      throw;
    } catch (ScriptInterrupted& end) {
      end.set_place(source, statement.span);
      recording.leave_out(statement, end.what());
      throw;
    } catch (const std::bad_alloc&) {
      recording.leave_out(statement, "out of memory");
      throw;
    }
  });
}

IsShown Inputs::show(const Value& value, const Statement& statement, const SourcePtr& source) {
  if (value.is_nil()) {
    const std::string text = shown_nil(*std::get<ExpressionStatement>(statement.form).expression);
    if (!text.empty()) put(style_.faint(text) + "\n");
    return IsShown::no;
  }
  const std::size_t width = terminal_width();
  put(interpreter_.shown(value, source, statement.span, width) + "\n");
  interpreter_.set_global(shown_name, value);
  return IsShown::yes;
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
