// script/run/calls.cpp: calls of fns, built-in functions, module functions and methods

#include "script/run/calls.hpp"

#include <fmt/format.h>

#include <new>

#include "script/explain/script_words.hpp"
#include "script/run/statements.hpp"
#include "script/text/number_text.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {

Value Calls::call(const std::string& name, std::vector<Value> arguments, Span span, const Call* form) {
  steps_.take();
  if (const auto function = functions_.fn(name, *site_.source())) return call_fn(*function, std::move(arguments), span);
  if (const Builtin* builtin = find_builtin(name)) {
    const ModuleCaller caller = site_.caller(span);
    Value result = site_.placed(span, [&] {
      return call_builtin(*builtin, {caller, span, functions_.module(), checks_, print_, files_, pictures_, arguments});
    });
    warnings_.made(result);
    return result;
  }
  return call_module(name, arguments, span, form);
}

namespace {

/// What advice calls an argument: the name of its variable, or the text of a short table; empty for all others.
std::string advice_text(const Expression& argument, const SourceText& source) {
  if (!std::holds_alternative<TableLiteral>(argument.form)) return variable_name(argument);
  return short_text(source.text(argument.span), "");
}

/// Whether something takes the value of a call; null is one that a module makes.
bool is_used(const Call* form) { return !form || !form->is_statement; }

}  // namespace

Value Calls::call_module(const std::string& name, std::vector<Value>& arguments, Span span, const Call* form) {
  const ModuleFunctions::Entry* function = functions_.of_module(name);
  if (!function) fail_unknown(name, span);
  quotations_.require_live(arguments, span);
  Value result = site_.placed(span, [&] {
    try {
      checks_.call(name, arguments);
      return call_function(site_.caller(span), name, function->function, arguments);
    } catch (const Failure& failure) {
      throw explained(failure, name, nullptr, arguments, span, form ? &form->arguments : nullptr, nullptr);
    }
  });
  if (warnings_.are_on()) {
    const Warnings::Watch& watch = warnings_.watch(function->number);
    if (warnings_.is_notable(watch, arguments, result, is_used(form)))
      look_at(watch, name, arguments, result, span, form);
  }
  return result;
}

void Calls::look_at(const Warnings::Watch& watch, const std::string& name, std::vector<Value>& arguments, Value& result,
                    Span span, const Call* form) {
  const QuotedArguments quoted = watch.reads_data ? quotations_.quoted(arguments) : QuotedArguments();
  warnings_.call(
      site_.source(), watch,
      {untraced(site_.caller(span)), span, name, arguments, result, is_used(form), quoted, watch.most_arguments,
       warnings_.columns(), warnings_.elements_of(result), form ? &form->arguments : nullptr, functions_.module()});
}

Failure Calls::explained(const Failure& failure, const std::string& name, Value* self, std::vector<Value>& arguments,
                         Span span, const Expressions* written, const Expression* operand) const {
  try {
    ModuleCaller caller = site_.caller(span);
    caller.trace = nullptr;  // what is asked for an explanation is no call of the script
    MadeCall made{caller, name, self, arguments};
    if (operand) made.self_name = variable_name(*operand);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      const Code* code = arguments[i].tag() == ValueTag::code ? scopes_.find_code(arguments[i]) : nullptr;
      made.names.push_back(written && i < written->size() ? advice_text(*(*written)[i], *site_.source())
                                                          : std::string());
      made.quotations.push_back(code ? code->quotation.get() : nullptr);
    }
    return failed_calls_.explained(failure, made);
  } catch (const std::bad_alloc&) {
    return failure;
  }
}

void Calls::fail_unknown(const std::string& name, Span span) const {
  if (scopes_.is_set_global(name)) site_.fail(fmt::format("'{}' is a variable, not a function", name), span);
  site_.fail(fmt::format("there is no function '{}'{}", name, functions_.advice(name)), span);
}

Value Calls::call_fn(const Function& function, std::vector<Value> arguments, Span span) {
  if (arguments.size() != function.parameter_count)
    site_.fail(fmt::format("{}: it takes {}, not {}", function.name,
                           counted(function.parameter_count, "argument", "arguments"), arguments.size()),
               span);
  require_room(span);
  try {
    return run_fn(function, std::move(arguments));
  } catch (ScriptError& error) {
    if (function.source->is_library() && !site_.source()->is_library()) fail_in_library(function.name, error, span);
    error.add_call(function.name, *site_.source(), span);
    throw;
  } catch (ScriptInterrupted& end) {
    if (function.source->is_library() && !site_.source()->is_library()) end.move_to(site_.source(), span);
    if (end.place() && !function.source->is_library()) end.place()->add_call(function.name, *site_.source(), span);
    throw;
  }
}

void Calls::fail_in_library(const std::string& name, const ScriptError& error, Span span) const {
  const std::string front = name + ": ";
  const bool is_named = error.message().compare(0, front.size(), front) == 0;
  site_.fail(Failure(is_named ? error.message() : front + error.message(), error.notes()), span);
}

Value Calls::run_fn(const Function& function, std::vector<Value> arguments) {
  const CallDepth::Level level(depth_);
  const CallScope scope(scopes_, function, std::move(arguments));
  const SourceScope source(site_, function.source);
  return statements_.run_body(function.body);
}

Value Calls::method(Value& self, const MethodCall& form, std::vector<Value> arguments, Span span,
                    const Expression* operand) {
  const std::string& name = form.name;
  steps_.take();
  if (!self.is_object()) site_.fail(fmt::format("{} has no methods", kind_in_words(self)), span);
  quotations_.require_live(arguments, span);
  Value result;
  site_.placed(span, [&] {
    const ModuleCaller caller = site_.caller(span);
    try {
      checks_.method(caller, self, name, arguments);
      if (!call_method(caller, self, name, arguments, result))
        throw CallFailure(fmt::format("{}: the call failed on {}", name, described(caller, self)));
    } catch (const Failure& failure) {
      throw explained(failure, name, &self, arguments, span, &form.arguments, operand);
    }
  });
  if (warnings_.are_on() && name == "reshape")
    warnings_.method(site_.source(), {untraced(site_.caller(span)), span, name, !form.is_statement}, self, arguments);
  return result;
}

}  // namespace hvm
