// cli/inputs.hpp: running the inputs of a prompt

#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "cli/recording.hpp"
#include "cli/style.hpp"
#include "script/run/interpreter.hpp"

namespace hvm {

/// Runs inputs, shows the values of expressions, and reports errors, which end only their own input. What ran becomes
/// part of the session. Ctrl-C ends the input that runs. A `ScriptExit` and an `OutputError` go through.
class Inputs {
 public:
  /// With `explains` every error comes with its story. `remember` gets each input before it runs.
  Inputs(Interpreter& interpreter, Session& session, bool explains,
         std::function<void(const std::string& input)> remember);

  enum class Timing { untold, told };
  /// Runs an input. Returns false when more lines could complete it; it is no input then.
  bool run(const std::string& text, Timing timing = Timing::untold);
  /// Reports what is missing in an input that does not go on.
  void report_unfinished(const std::string& text);
  enum class AtError { end, go_on };
  /// Runs a script. Returns false when it cannot be read.
  bool run_script(const SourcePtr& source, AtError at_error = AtError::end);
  /// Runs the script in a file. That of a lost session goes on behind errors, and is part of this session then.
  void load(const std::string& path);
  /// Writes the session as a script.
  void save(const std::string& path);
  /// Tells the story of the last error.
  void tell_why();
  /// What a variable holds, in a few words.
  std::string outline(const std::string& variable);
  /// Tells of something that is no error of a script.
  void tell_error(const std::string& message) const;

 private:
  SourcePtr source_of(const std::string& text) const;
  void report(const ScriptError& error) const;
  enum class Ending { done, failed, interrupted };
  /// Runs `action`, and reports what it throws.
  template <class Action>
  Ending guarded(Action action);
  /// Runs the statements of a program with `run_one`, which returns whether it showed a value.
  template <class RunOne>
  Ending run(const Program& program, AtError at_error, RunOne run_one);
  template <class RunOne>
  Ending run(const Statement& statement, const SourcePtr& source, Recording& recording, RunOne run_one);
  IsShown show(const Value& value, const Statement& statement, const SourcePtr& source);
  /// What is shown for nil: nothing for a call that is made for what it does.
  std::string shown_nil(const Expression& expression) const;
  void tell_time(std::chrono::steady_clock::duration time) const;

  Interpreter& interpreter_;
  Session& session_;
  bool explains_;
  std::function<void(const std::string&)> remember_;
  Style style_;
  int count_ = 1;
};

}  // namespace hvm
