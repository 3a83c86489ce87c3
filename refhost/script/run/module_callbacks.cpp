// script/run/module_callbacks.cpp: what a module asks for when it reads a quotation

#include "script/run/module_callbacks.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <new>

#include "script/library/script_end.hpp"
#include "script/module/fault_report.hpp"
#include "script/module/trace.hpp"

namespace hvm {

ModuleCallbacks::ModuleCallbacks(Context& context, Site& site, Steps& steps, Scopes& scopes, Calls& calls,
                                 Evaluator& evaluator)
    : site_(site), steps_(steps), scopes_(scopes), calls_(calls), evaluator_(evaluator) {
  context.carry(this);
  context.call_through(call_function);
  context.read_through(read_slot);
}

HostValue* ModuleCallbacks::read_slot(HostContext ctx, int slot) {
  auto& callbacks = *static_cast<ModuleCallbacks*>(user_of(ctx));
  HostValue* value = callbacks.scopes_.numbered(slot);
  if (Trace* trace = callbacks.site_.trace()) trace->slot_read(slot, value);
  return value;
}

int ModuleCallbacks::call_function(const void* callee, HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  auto& callbacks = *static_cast<ModuleCallbacks*>(user_of(ctx));
  const auto& called = *static_cast<const Callee*>(static_cast<const arrayfold::HostSymbol*>(callee));
  const auto call = [&] { return callbacks.call(called, args, nargs, *result) ? 1 : 0; };
  Trace* trace = callbacks.site_.trace();
  return trace ? trace->called_out(called.text.get(), args, nargs, result, call) : call();
}

bool ModuleCallbacks::call(const Callee& callee, HostValue* args, int nargs, HostValue& result) {
  KeptException& kept = site_.kept();
  if (kept) return false;
  try {
    assign(result, placed_value_of(callee, args, nargs).record());
    return true;
  } catch (...) {
    kept = std::current_exception();
    return false;
  }
}

Value ModuleCallbacks::placed_value_of(const Callee& callee, HostValue* args, int nargs) {
  const auto error = [&](const char* message) {
    return ScriptError(message, callee.code->source, callee.expression ? callee.expression->span : Span{});
  };
  try {
    return value_of(callee, args, nargs);
  } catch (const ScriptError&) {
    throw;
  } catch (const ScriptEnd&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw error("out of memory");
  } catch (const std::exception& other) {
    throw error(other.what());
  }
}

Value ModuleCallbacks::value_of(const Callee& callee, HostValue* args, int nargs) {
  const FrameScope frame(scopes_, callee.code->frame);
  const SourceScope source(site_, callee.code->source);
  const Expression* expression = callee.expression;
  if (!expression) site_.fail(fmt::format("'{}' names no function here", callee.text.get()), {});
  const RunningMark mark(site_.source().get(), expression->span.begin, false);
  steps_.take();
  calls_.require_room(expression->span);
  if (!callee.takes_arguments) return evaluator_.evaluate(*expression);
  std::vector<Value> arguments;
  arguments.reserve(static_cast<std::size_t>(std::max(nargs, 0)));
  for (int i = 0; i < nargs; ++i) arguments.push_back(Value::sharing(args[i]));
  return calls_.call(std::get<Call>(expression->form).name, std::move(arguments), expression->span);
}

}  // namespace hvm
