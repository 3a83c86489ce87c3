// script/run/interpreter.hpp: running scripts
//
// An interpreter holds global variables and functions: those of one script, or all that is typed into a
// REPL. Its trees may come from several sources. Everything that goes wrong is a `ScriptError`; a `ScriptEnd` ends the
// script without one.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "script/explain/explanation.hpp"
#include "script/explain/module_description.hpp"
#include "script/explain/warnings.hpp"
#include "script/library/builtins.hpp"
#include "script/module/module_functions.hpp"
#include "script/run/quotations.hpp"
#include "script/syntax/tree.hpp"

namespace hvm {

class Trace;

struct InterpreterOptions {
  bool has_checks = true;  // check what the module does not
  PrintLine print;         // where `print` goes
  Warn warn = {};          // where warnings go; they are lost without it
  FileAccess files = FileAccess::all;
  std::uint64_t step_limit = 0;  // of the interpreter's steps, beyond which there is `StepLimitReached`; 0: none
  std::function<TextSize()> text_size = {};  // of pictures; the default without it
  /// Of the module's functions; null: there is none. It must outlive the interpreter.
  const ModuleDescription* description = nullptr;
  std::string pages_folder = {};  // in front of the paths of pages, with its slash; empty: as they are in the sources
  WarningMode warnings = WarningMode::on;
  bool explains = false;   // keep the whole story of errors and warnings
  Trace* trace = nullptr;  // tells the calls of the module; it must outlive the interpreter
};

class Interpreter {
 public:
  /// `functions` must outlive the interpreter.
  Interpreter(const ModuleFunctions& functions, InterpreterOptions options);
  ~Interpreter();
  Interpreter(const Interpreter&) = delete;
  Interpreter& operator=(const Interpreter&) = delete;

  Program parse(const SourcePtr& source);
  /// Makes the functions of a program known; a later one of the same name replaces an earlier one.
  void define(const Program& program);
  /// Runs one statement of a program. What it leaves behind after an error stays.
  void run(const Statement& statement, const SourcePtr& source);
  /// Defines the functions of a program and runs its statements.
  void run(const Program& program);
  Value evaluate(const Expression& expression, const SourcePtr& source);

  /// Ends what runs with `ScriptInterrupted`, as soon as it comes to a step. A signal handler may call this, and calls
  /// it again while that has not come about.
  void interrupt() noexcept;

  void set_global(const std::string& name, Value value);
  /// Whether a global variable of this name has a value.
  bool has_global(const std::string& name) const;
  /// The value of a global variable; null when it has none. It lasts until something runs.
  const Value* global(const std::string& name) const;
  /// The names of the global variables that have a value, sorted.
  std::vector<std::string> globals() const;
  /// The fns that were defined or loaded, by name.
  std::vector<std::shared_ptr<const Function>> fns() const;
  /// The fn of a name, null when there is none.
  std::shared_ptr<const Function> fn(const std::string& name) const;
  /// The names of the module's functions.
  const std::vector<std::string>& module_names() const;

  /// `value` as in a printed table, for a prompt: an array in aligned columns that fit into `width`, what is long
  /// shortened.
  std::string shown(const Value& value, const SourcePtr& source, Span span, std::size_t width);
  /// What a global variable holds, in a few words, such as `7`, `double (2, 3)` or `a table of 3 entries`.
  std::string outline(const std::string& name);

  /// The story of the last error or warning; empty before the first one, and unless the options ask for stories.
  const Explanation& last_explanation() const;

 private:
  struct Parts;

  template <class Action>
  auto with_story(Action action);

  std::unique_ptr<Parts> parts_;
};

}  // namespace hvm
