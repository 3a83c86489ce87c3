// script/run/module_callbacks.hpp: what a module asks for when it reads a quotation

#pragma once

#include "script/run/calls.hpp"
#include "script/run/evaluator.hpp"

namespace hvm {

/// Serves a module that reads variables and calls functions out of quotations. An exception there is kept in the site,
/// and the call returns 0: no exception of the host passes through a module.
class ModuleCallbacks {
 public:
  /// Makes `context` ask this.
  ModuleCallbacks(Context& context, Site& site, Steps& steps, Scopes& scopes, Calls& calls, Evaluator& evaluator);
  ModuleCallbacks(const ModuleCallbacks&) = delete;
  ModuleCallbacks& operator=(const ModuleCallbacks&) = delete;

 private:
  static int call_function(const void* callee, HostContext ctx, HostValue* args, int nargs, HostValue* result);
  static HostValue* read_slot(HostContext ctx, int slot);

  bool call(const Callee& callee, HostValue* args, int nargs, HostValue& result);
  /// The value of the call. Throws `ScriptError` or `ScriptEnd`.
  Value placed_value_of(const Callee& callee, HostValue* args, int nargs);
  Value value_of(const Callee& callee, HostValue* args, int nargs);

  Site& site_;
  Steps& steps_;
  Scopes& scopes_;
  Calls& calls_;
  Evaluator& evaluator_;
};

}  // namespace hvm
