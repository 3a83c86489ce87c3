// script/interpreter.hpp: running scripts
//
// An interpreter holds global variables and functions: those of one script, or all that is typed into a
// REPL. Its trees may come from several sources. Everything that goes wrong is a `ScriptError`.

#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "kernel/kernel.hpp"
#include "script/builtins.hpp"
#include "script/code.hpp"
#include "script/diagnostics.hpp"
#include "script/frames.hpp"
#include "script/module_functions.hpp"
#include "script/names.hpp"
#include "script/syntax.hpp"

namespace hvm {

struct InterpreterOptions {
  bool has_guards = true;                                    // check what the module does not
  PrintLine print;                                           // where `print` goes
  std::function<void(const std::string& report)> warn = {};  // where warnings go; they are lost without it
};

/// The deepest row of calls of `fn`s.
inline constexpr int call_limit = 1000;

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

  void set_global(const std::string& name, Value value);
  /// `value` as it stands in a printed table, for a REPL.
  std::string shown(const Value& value, const SourcePtr& source, Span span) const;

 private:
  enum class Flow { onward, returned };
  class SourceScope;
  class FrameScope;
  class RunningVariables;

  // Statements.
  Flow execute(const Block& block);
  Flow execute(const Statement& statement);
  Flow execute(const ExpressionStatement& form, Span span);
  Flow execute(const VariableAssignment& form, Span span);
  Flow execute(const ElementAssignment& form, Span span);
  Flow execute(const If& form, Span span);
  Flow execute(const While& form, Span span);
  Flow execute(const For& form, Span span);
  Flow execute(const Return& form, Span span);
  Flow iterate_range(const For& form, const Call& range);
  Flow iterate_table(const For& form);
  bool holds(const Expression& condition);
  void set_element(const ElementAssignment& form, Value& container, std::vector<Value>& indices, Value& value);
  void set_entry(const ElementAssignment& form, Value& table, std::vector<Value>& indices, const Value& value);

  // Expressions.
  Value evaluate(const Expression& expression);
  Value evaluate(const IntegerLiteral& form, Span span);
  Value evaluate(const Integer64Literal& form, Span span);
  Value evaluate(const RealLiteral& form, Span span);
  Value evaluate(const StringLiteral& form, Span span);
  Value evaluate(const WideStringLiteral& form, Span span);
  Value evaluate(const TableLiteral& form, Span span);
  Value evaluate(const Variable& form, Span span);
  Value evaluate(const Call& form, Span span);
  Value evaluate(const Postfix& form, Span span);
  Value evaluate(const Negation& form, Span span);
  Value evaluate(const Not& form, Span span);
  Value evaluate(const Chain& form, Span span);
  Value evaluate(const Logic& form, Span span);
  Value evaluate(const KeyRange& form, Span span);
  Value evaluate(const QuotationLiteral& form, Span span);
  std::vector<Value> evaluate(const Expressions& expressions);
  Value element(Value& container, std::vector<Value>& indices, Span span);
  Value operate(BinaryOperator op, Span span, Value& left, Value& right);
  Slot& slot_of(const Variable& variable);
  const Slot& slot_of(const Variable& variable) const;
  [[noreturn]] void fail_unset(const Variable& variable, Span span) const;

  // Quotations, and what a module asks for when it reads one.
  static int answer_call(const void* callee, HostContext ctx, HostValue* args, int nargs, HostValue* result);
  static HostValue* answer_slot(HostContext ctx, int slot);
  Value call_back(const Callee& callee, HostValue* args, int nargs);
  HostValue* variable_at(int slot);
  void require_live(const std::vector<Value>& values, Span span) const;
  void warn_of_lost_elements(const std::string& name, const std::vector<Value>& arguments);

  // Calls.
  Value call(const std::string& name, std::vector<Value> arguments, Span span);
  Value call_fn(const Function& function, std::vector<Value> arguments, Span span);
  Value call_module(const std::string& name, std::vector<Value>& arguments, Span span);
  Value method(Value& self, const MethodCall& form, Span span);
  Value run_body(const Function& function, std::vector<Value> arguments);
  void require_room(Span span) const;
  [[noreturn]] void fail_unknown_function(const std::string& name, Span span) const;

  // Places and failures.
  ModuleCaller caller(Span span) const { return {context_.handle(), source_.get(), span.begin, &kept_error_}; }
  [[noreturn]] void fail(std::string message, Span span) const;
  /// Runs `action`, and gives its failure the place `span`.
  template <class Action>
  decltype(auto) placed(Span span, Action action) const {
    try {
      return action();
    } catch (const Failure& failure) {
      fail(failure.message(), span);
    }
  }

  const ModuleFunctions& module_functions_;
  InterpreterOptions options_;
  Context context_;
  HostFrame outermost_frame_ = {};
  LiveCodes live_codes_;
  ScopeCodes outermost_codes_{live_codes_};
  NameTable global_names_;
  std::deque<Slot> globals_;
  std::vector<Frame*> frames_;  // of the fns that have not returned, the youngest last
  std::unordered_map<std::string, std::shared_ptr<const Function>> functions_;
  SourcePtr source_;
  Frame* frame_ = nullptr;  // of the running fn; null at the outermost level
  int call_depth_ = 0;
  mutable KeptError kept_error_;  // of a call out of the module that runs
  bool has_warned_ = false;
  Value returned_;
  const char* stack_base_;
  std::size_t stack_room_;
};

}  // namespace hvm
