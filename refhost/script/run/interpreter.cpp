// script/run/interpreter.cpp: running scripts

#include "script/run/interpreter.hpp"

#include <algorithm>
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
        failed_calls({&module, options.description, options.has_checks, options.explains, options.pages_folder},
                     last_explanation),
        steps(options.step_limit),
        site(context.handle(), options.trace),
        depth(site),
        scopes(context),
        functions(module),
        variables(site, scopes, functions),
        quotations(site, scopes, variables),
        warnings(module, {options.description, options.warnings, options.warn, options.explains, options.pages_folder},
                 last_explanation),
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

void Interpreter::interrupt() noexcept {
  is_interruption_requested = true;
  parts_->steps.interrupt();
}

void Interpreter::set_global(const std::string& name, Value value) {
  parts_->scopes.set_global(name, std::move(value));
}

bool Interpreter::has_global(const std::string& name) const { return parts_->scopes.is_set_global(name); }

const Value* Interpreter::global(const std::string& name) const { return parts_->scopes.global(name); }

std::vector<std::string> Interpreter::globals() const {
  std::vector<std::string> names = parts_->scopes.set_globals();
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::shared_ptr<const Function>> Interpreter::fns() const { return parts_->functions.fns(); }

std::shared_ptr<const Function> Interpreter::fn(const std::string& name) const { return parts_->functions.fn(name); }

const std::vector<std::string>& Interpreter::module_names() const { return parts_->functions.module().names(); }

std::string Interpreter::shown(const Value& value, const SourcePtr& source, Span span, std::size_t width) {
  const SourceScope scope(parts_->site, source);
  const ModuleCaller caller = parts_->site.caller(span);
  return parts_->site.placed(span, [&] {
    if (value.is_object()) return aligned_object_text(caller, parts_->checks, value, width);
    return Printer(Detail::brief, object_text(caller, parts_->checks, Detail::brief)).shortened_text(value);
  });
}

std::string Interpreter::outline(const std::string& name) {
  constexpr std::size_t most_characters = 50;
  const Value* global = parts_->scopes.global(name);
  if (!global) return {};
  Value value = *global;
  if (value.is_table())
    return "a table of " + counted(static_cast<std::size_t>(entry_count(table_of(value.record()))), "entry", "entries");
  const SourceScope scope(parts_->site, std::make_shared<SourceText>("<outline>", ""));
  const ModuleCaller caller = parts_->site.caller({});
  if (value.is_object()) {
    const std::string words = parts_->site.placed({}, [&] { return described(caller, value); });
    const auto kind = kind_of_array(value);
    return kind ? *kind + words.substr(std::min(words.find(' '), words.size())) : words;
  }
  return Printer(Detail::brief, {}).shortened_text(value, most_characters);
}

const Explanation& Interpreter::last_explanation() const { return parts_->last_explanation; }

}  // namespace hvm
