// script/run/interpreter.cpp: running scripts

#include "script/run/interpreter.hpp"

#include <new>

#include "script/module/object_text.hpp"
#include "script/module/trace.hpp"
#include "script/run/calls.hpp"
#include "script/run/evaluator.hpp"
#include "script/run/module_callbacks.hpp"
#include "script/run/statements.hpp"
#include "script/run/uses.hpp"
#include "script/syntax/parser.hpp"
#include "script/text/printer.hpp"

namespace hvm {

/// The parts, each of which knows those that it is given. Expressions, calls and statements know each other.
struct Interpreter::Parts {
  Parts(const ModuleFunctions& module, InterpreterOptions chosen)
      : options(std::move(chosen)),
        checks(options.has_checks),
        failed_calls({&module, options.description, options.no_description, options.has_checks, options.explains},
                     last_explanation),
        steps(options.step_limit),
        site(context.handle(), options.trace),
        depth(site),
        scopes(context),
        functions(module),
        variables(site, scopes, functions),
        quotations(site, scopes, variables),
        warnings(module, {options.description, options.warnings, options.warn, options.explains}, last_explanation),
        elements(site, checks, warnings),
        operators(site, checks, failed_calls, warnings),
        evaluator(site, variables, elements, operators, quotations, calls),
        statements(site, steps, scopes, functions, variables, elements, operators, evaluator, uses),
        uses(site, depth, scopes, functions, statements, options.files),
        pictures{options.text_size, std::nullopt},
        calls(site, steps, depth, scopes, functions, quotations, checks, failed_calls, warnings, options.print,
              options.files, pictures, statements),
        callbacks(context, site, steps, scopes, calls, evaluator) {
    if (options.trace) options.trace->read_quotations_by([this](const HostValue& record) { return quoted(record); });
  }

  /// The text of a quotation.
  std::string_view quoted(const HostValue& record) const {
    const Code* code = scopes.find_code(record);
    return code ? code->source->text(code->quotation->span) : std::string_view();
  }

  InterpreterOptions options;
  Explanation last_explanation;
  ArrayChecks checks;
  FailedCalls failed_calls;
  Steps steps;
  Context context;
  Site site;
  CallDepth depth;
  Scopes scopes;
  Functions functions;
  Variables variables;
  Quotations quotations;
  Warnings warnings;
  Elements elements;
  Operators operators;
  Evaluator evaluator;
  Statements statements;
  Uses uses;
  Pictures pictures;
  Calls calls;
  ModuleCallbacks callbacks;
};

/// Runs `action`. An error without a story of its own becomes the last one.
template <class Action>
auto Interpreter::with_story(Action action) {
  try {
    return action();
  } catch (const ScriptError& error) {
    Explanation& last = parts_->last_explanation;
    try {
      if (parts_->options.explains && last.about != error.message()) last = {error.message(), {}, {}, {}, {}};
    } catch (const std::bad_alloc&) {
      last = {};
    }
    throw;
  }
}

Interpreter::Interpreter(const ModuleFunctions& functions, InterpreterOptions options)
    : parts_(std::make_unique<Parts>(functions, std::move(options))) {}

Interpreter::~Interpreter() = default;

Program Interpreter::parse(const SourcePtr& source) {
  return with_story([&] {
    try {
      Program program = hvm::parse(source, parts_->scopes.global_names());
      parts_->scopes.make_room();
      return program;
    } catch (const std::bad_alloc&) {
      throw ScriptError("out of memory while the script is read", source, {});
    }
  });
}

void Interpreter::define(const Program& program) { parts_->functions.define(program); }

void Interpreter::run(const Statement& statement, const SourcePtr& source) {
  with_story([&] {
    const SourceScope scope(parts_->site, source);
    parts_->statements.run(statement);
  });
}

void Interpreter::run(const Program& program) {
  define(program);
  for (const Statement& statement : program.statements) run(statement, program.source);
}

Value Interpreter::evaluate(const Expression& expression, const SourcePtr& source) {
  return with_story([&] {
    const SourceScope scope(parts_->site, source);
    return parts_->evaluator.evaluate(expression);
  });
}

void Interpreter::set_global(const std::string& name, Value value) {
  parts_->scopes.set_global(name, std::move(value));
}

std::string Interpreter::shown(const Value& value, const SourcePtr& source, Span span) {
  const SourceScope scope(parts_->site, source);
  const ObjectText objects = object_text(parts_->site.caller(span), parts_->checks, Detail::brief);
  return parts_->site.placed(span, [&] { return Printer(Detail::brief, objects).text_in_table(value); });
}

const Explanation& Interpreter::last_explanation() const { return parts_->last_explanation; }

bool Interpreter::has_global(const std::string& name) const { return parts_->scopes.is_set_global(name); }

}  // namespace hvm
