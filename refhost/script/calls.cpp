// script/calls.cpp: calls of fns, built-ins, module functions and methods

#include <fmt/format.h>

#include "script/frame_scope.hpp"
#include "script/guards.hpp"
#include "script/interpreter.hpp"
#include "script/number_text.hpp"
#include "script/source_scope.hpp"
#include "script/value_kinds.hpp"

namespace hvm {

Value Interpreter::evaluate(const Call& form, Span span) { return call(form.name, evaluate(form.arguments), span); }

Value Interpreter::call(const std::string& name, std::vector<Value> arguments, Span span) {
  // The function is held while it runs: an input that it reads may not take it away.
  const auto entry = functions_.find(name);
  const std::shared_ptr<const Function> function = entry == functions_.end() ? nullptr : entry->second;
  if (function) return call_fn(*function, std::move(arguments), span);
  if (const Builtin* builtin = find_builtin(name)) {
    const ModuleCaller from = caller(span);
    return placed(span, [&] {
      return call_builtin(*builtin, {from, span, options_.has_guards, options_.print, arguments});
    });
  }
  return call_module(name, arguments, span);
}

Value Interpreter::call_module(const std::string& name, std::vector<Value>& arguments, Span span) {
  const arrayfold::EntryFunction function = module_functions_.find(name);
  if (!function) fail_unknown_function(name, span);
  require_live(arguments, span);
  warn_of_lost_elements(name, arguments);
  return placed(span, [&] {
    if (options_.has_guards) guard_call(name, arguments);
    return call_function(caller(span), name, function, arguments);
  });
}

void Interpreter::fail_unknown_function(const std::string& name, Span span) const {
  const auto global = global_names_.find(name);
  const bool is_variable = global && globals_[*global].is_set;
  if (is_variable) fail(fmt::format("'{}' is a variable, not a function", name), span);
  std::vector<std::string_view> known = builtin_names();
  for (const auto& [defined, function] : functions_) known.push_back(defined);
  known.insert(known.end(), module_functions_.names().begin(), module_functions_.names().end());
  fail(fmt::format("there is no function '{}'{}", name, suggestion(name, known)), span);
}

Value Interpreter::call_fn(const Function& function, std::vector<Value> arguments, Span span) {
  if (arguments.size() != function.parameter_count)
    fail(fmt::format("{}: it takes {}, not {}", function.name,
                     counted(function.parameter_count, "argument", "arguments"), arguments.size()),
         span);
  require_room(span);
  try {
    return run_body(function, std::move(arguments));
  } catch (ScriptError& error) {
    error.add_call(function.name, *source_, span);
    throw;
  }
}

void Interpreter::require_room(Span span) const {
  if (call_depth_ >= call_limit) fail(fmt::format("the calls nest too deeply: more than {} levels", call_limit), span);
  const char* here = static_cast<const char*>(__builtin_frame_address(0));
  const std::size_t used = static_cast<std::size_t>(here < stack_base_ ? stack_base_ - here : here - stack_base_);
  if (used > stack_room_) fail("the calls nest too deeply: the stack is used up", span);
}

Value Interpreter::run_body(const Function& function, std::vector<Value> arguments) {
  Frame frame(function, frames_.empty() ? nullptr : frames_.back(), live_codes_);
  for (std::size_t i = 0; i < arguments.size(); ++i) frame.locals[i] = {std::move(arguments[i]), true};
  frames_.push_back(&frame);
  struct LivingFrame {
    Interpreter& interpreter;
    ~LivingFrame() {
      interpreter.frames_.pop_back();
      --interpreter.call_depth_;
    }
  } const living{*this};
  ++call_depth_;
  const FrameScope scope(*this, &frame);
  const SourceScope source(source_, function.source);
  const Flow flow = execute(function.body);
  return flow == Flow::returned ? std::move(returned_) : Value();
}

Value Interpreter::method(Value& self, const MethodCall& form, Span span) {
  std::vector<Value> arguments = evaluate(form.arguments);
  if (!self.is_object()) fail(fmt::format("{} has no methods", kind_in_words(self)), span);
  require_live(arguments, span);
  Value result;
  placed(span, [&] {
    const ModuleCaller from = caller(span);
    if (options_.has_guards) guard_method(from, self, form.name, arguments);
    if (!call_method(from, self, form.name, arguments, result))
      throw Failure(fmt::format("{}: the call failed on {}", form.name, described(from, self)));
  });
  return result;
}

}  // namespace hvm
