// script/run/calls.hpp: calls of fns, built-in functions, module functions and methods

#pragma once

#include <string>
#include <vector>

#include "script/explain/failed_calls.hpp"
#include "script/explain/warnings.hpp"
#include "script/library/builtins.hpp"
#include "script/run/call_depth.hpp"
#include "script/run/quotations.hpp"
#include "script/run/steps.hpp"

namespace hvm {

class Statements;

/// Calls functions by name: a fn before a built-in function, and that before one of the module. Everything that fails
/// is a `ScriptError` at the call.
class Calls {
 public:
  Calls(Site& site, Steps& steps, CallDepth& depth, Scopes& scopes, const Functions& functions, Quotations& quotations,
        const ArrayChecks& checks, const FailedCalls& failed_calls, Warnings& warnings, const PrintLine& print,
        FileAccess files, Pictures& pictures, Statements& statements)
      : site_(site),
        steps_(steps),
        depth_(depth),
        scopes_(scopes),
        functions_(functions),
        quotations_(quotations),
        checks_(checks),
        failed_calls_(failed_calls),
        warnings_(warnings),
        print_(print),
        files_(files),
        pictures_(pictures),
        statements_(statements) {}

  /// `form` is the call in the script, null when it does not stand there.
  Value call(const std::string& name, std::vector<Value> arguments, Span span, const Call* form = nullptr);
  /// A method of the object `self`, which `operand` gives where it is no other call's.
  Value method(Value& self, const MethodCall& form, std::vector<Value> arguments, Span span,
               const Expression* operand = nullptr);
  /// Fails when calls nest too deeply for another one.
  void require_room(Span span) const { depth_.require_room(span); }

 private:
  Value call_fn(const Function& function, std::vector<Value> arguments, Span span);
  Value run_fn(const Function& function, std::vector<Value> arguments);
  Value call_module(const std::string& name, std::vector<Value>& arguments, Span span, const Call* form);
  /// Lets the warnings look at a call that the module has answered.
  void look_at(const Warnings::Watch& watch, const std::string& name, std::vector<Value>& arguments, Value& result,
               Span span, const Call* form);
  /// What the description says of a failed call. `self` is null for a function.
  Failure explained(const Failure& failure, const std::string& name, Value* self, std::vector<Value>& arguments,
                    Span span, const Expressions* written, const Expression* operand) const;
  /// Fails at the call of a fn of a library, with its name before the message.
  [[noreturn]] void fail_in_library(const std::string& name, const ScriptError& error, Span span) const;
  [[noreturn]] void fail_unknown(const std::string& name, Span span) const;

  Site& site_;
  Steps& steps_;
  CallDepth& depth_;
  Scopes& scopes_;
  const Functions& functions_;
  Quotations& quotations_;
  const ArrayChecks& checks_;
  const FailedCalls& failed_calls_;
  Warnings& warnings_;
  const PrintLine& print_;
  FileAccess files_;
  Pictures& pictures_;
  Statements& statements_;
};

}  // namespace hvm
