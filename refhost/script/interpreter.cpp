// script/interpreter.cpp: its own life, and the statements

#include "script/interpreter.hpp"

#include <fmt/format.h>
#include <sys/resource.h>

#include <algorithm>
#include <new>

#include "script/fault_report.hpp"
#include "script/guards.hpp"
#include "script/number_text.hpp"
#include "script/operators.hpp"
#include "script/parser.hpp"
#include "script/printer.hpp"
#include "script/source_scope.hpp"
#include "script/value_kinds.hpp"

namespace hvm {
namespace {

/// Half of the stack is for scripts; the rest is for what they call.
std::size_t stack_share() {
  constexpr std::size_t usual = std::size_t{8} << 20;
  rlimit limit = {};
  const bool is_known = getrlimit(RLIMIT_STACK, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
  return (is_known ? std::min<std::size_t>(limit.rlim_cur, usual) : usual) / 2;
}

}  // namespace

Interpreter::Interpreter(const ModuleFunctions& functions, InterpreterOptions options)
    : module_functions_(functions),
      options_(std::move(options)),
      stack_base_(static_cast<const char*>(__builtin_frame_address(0))),
      stack_room_(stack_share()) {
  context_.carry(this);
  context_.call_through(answer_call);
  context_.read_through(answer_slot);
  outermost_frame_ = frame_record(LiteralText::may_be_referenced);
  context_.use_frame(&outermost_frame_);
}

Interpreter::~Interpreter() = default;

Program Interpreter::parse(const SourcePtr& source) {
  Program program = hvm::parse(source, global_names_);
  globals_.resize(global_names_.size());
  return program;
}

void Interpreter::define(const Program& program) {
  for (const auto& function : program.functions) functions_[function->name] = function;
}

void Interpreter::run(const Statement& statement, const SourcePtr& source) {
  const SourceScope scope(source_, source);
  try {
    execute(statement);
  } catch (const std::bad_alloc&) {
    throw ScriptError("out of memory", source, statement.span);
  }
}

void Interpreter::run(const Program& program) {
  define(program);
  for (const Statement& statement : program.statements) run(statement, program.source);
}

Value Interpreter::evaluate(const Expression& expression, const SourcePtr& source) {
  const SourceScope scope(source_, source);
  return evaluate(expression);
}

void Interpreter::set_global(const std::string& name, Value value) {
  const std::size_t slot = global_names_.slot_of(name);
  globals_.resize(global_names_.size());
  globals_[slot] = {std::move(value), true};
}

std::string Interpreter::shown(const Value& value, const SourcePtr& source, Span span) const {
  const ModuleCaller place{context_.handle(), source.get(), span.begin};
  try {
    return Printer(place, Detail::brief, options_.has_guards).text_in_table(value);
  } catch (const Failure& failure) {
    throw ScriptError(failure.message(), source, span);
  }
}

void Interpreter::fail(std::string message, Span span) const { throw ScriptError(std::move(message), source_, span); }

// ---- Statements

Interpreter::Flow Interpreter::execute(const Block& block) {
  for (const Statement& statement : block)
    if (execute(statement) == Flow::returned) return Flow::returned;
  return Flow::onward;
}

Interpreter::Flow Interpreter::execute(const Statement& statement) {
  // A fault may also come where no call of the module is written: when the last reference to an object goes away.
  const RunningMark mark({source_.get(), statement.span.begin, false});
  return std::visit([&](const auto& form) { return execute(form, statement.span); }, statement.form);
}

Interpreter::Flow Interpreter::execute(const ExpressionStatement& form, Span) {
  evaluate(*form.expression);
  return Flow::onward;
}

Interpreter::Flow Interpreter::execute(const VariableAssignment& form, Span span) {
  const auto& variable = std::get<Variable>(form.variable->form);
  Value value = evaluate(*form.value);
  if (!form.op) {
    slot_of(variable) = {std::move(value), true};
    return Flow::onward;
  }
  evaluate(variable, form.variable->span);
  Value& target = slot_of(variable).value;
  placed(span, [&] {
    if (options_.has_guards) guard_operator(caller(span), *form.op, target, value);
    compound(caller(span), *form.op, target, value);
  });
  return Flow::onward;
}

Interpreter::Flow Interpreter::execute(const ElementAssignment& form, Span span) {
  Value container = evaluate(*form.container);
  std::vector<Value> indices = evaluate(form.index.indices);
  Value value = evaluate(*form.value);
  if (form.op) {
    Value present = element(container, indices, form.index_span);
    value = operate(*form.op, span, present, value);
  }
  set_element(form, container, indices, value);
  return Flow::onward;
}

void Interpreter::set_element(const ElementAssignment& form, Value& container, std::vector<Value>& indices,
                              Value& value) {
  if (container.is_table()) return set_entry(form, container, indices, value);
  if (!container.is_object())
    fail(fmt::format("{} has no elements to assign to", kind_in_words(container)), form.container->span);
  placed(form.index_span, [&] {
    const ModuleCaller from = caller(form.index_span);
    if (options_.has_guards) guard_indices(from, container, indices);
    if (write_element(from, container, indices, value)) return;
    if (!value.is_number())
      throw Failure(
          fmt::format("{} takes numbers as elements, not {}", described(from, container), described(from, value)));
    throw Failure(fmt::format("{} has no element to write with {}", described(from, container),
                              counted(indices.size(), "index", "indices")));
  });
}

void Interpreter::set_entry(const ElementAssignment& form, Value& table, std::vector<Value>& indices,
                            const Value& value) {
  if (indices.size() != 1) fail("a table takes one key", form.index_span);
  if (!is_key(indices[0].record()))
    fail(fmt::format("{} is no key of a table", kind_in_words(indices[0])), form.index_span);
  HostHash* hash = table_of(table.record());
  // A variable's table with two references, the variable's and the container's here, lies in no other table.
  const bool is_variable = std::holds_alternative<Variable>(form.container->form);
  const bool may_lie_in_value = !is_variable || references(hash) > 2;
  const bool is_value = table_of(value.record()) == hash;
  if (is_value || (may_lie_in_value && holds_table(value, hash))) fail("a table cannot hold itself", form.value->span);
  HostValue* entry = slot(hash, indices[0].record());
  if (!entry) fail("out of memory", form.index_span);
  assign(*entry, value.record());
}

bool Interpreter::holds(const Expression& condition) {
  const Value value = evaluate(condition);
  return placed(condition.span, [&] { return truth(value); });
}

Interpreter::Flow Interpreter::execute(const If& form, Span) {
  for (const ConditionalArm& arm : form.arms)
    if (holds(*arm.condition)) return execute(arm.body);
  return execute(form.otherwise);
}

Interpreter::Flow Interpreter::execute(const While& form, Span) {
  while (holds(*form.condition))
    if (execute(form.body) == Flow::returned) return Flow::returned;
  return Flow::onward;
}

Interpreter::Flow Interpreter::execute(const For& form, Span) {
  // A range is walked without making its table, unless the script has a `range` of its own.
  const Call* range = std::get_if<Call>(&form.sequence->form);
  const bool is_range = range && range->name == "range" && functions_.count("range") == 0;
  return is_range ? iterate_range(form, *range) : iterate_table(form);
}

Interpreter::Flow Interpreter::iterate_range(const For& form, const Call& call) {
  std::vector<Value> arguments = evaluate(call.arguments);
  const Range range = placed(form.sequence->span, [&] { return range_of(arguments); });
  const auto& variable = std::get<Variable>(form.variable->form);
  for (Range walk = range; walk.has_more(); walk.advance()) {
    slot_of(variable) = {walk.value(), true};
    if (execute(form.body) == Flow::returned) return Flow::returned;
  }
  return Flow::onward;
}

Interpreter::Flow Interpreter::iterate_table(const For& form) {
  const Value table = evaluate(*form.sequence);
  if (!table.is_table())
    fail(fmt::format("'for' walks a table or a range, not {}", kind_in_words(table)), form.sequence->span);
  // The body sees the values as they were when the loop began, whatever it does to the table.
  std::vector<Value> values;
  TableWalk walk(table_of(table.record()));
  while (const Entry entry = walk.next()) values.push_back(Value::sharing(*entry.value));
  const auto& variable = std::get<Variable>(form.variable->form);
  for (Value& value : values) {
    slot_of(variable) = {std::move(value), true};
    if (execute(form.body) == Flow::returned) return Flow::returned;
  }
  return Flow::onward;
}

Interpreter::Flow Interpreter::execute(const Return& form, Span) {
  returned_ = form.value ? evaluate(*form.value) : Value();
  return Flow::returned;
}

}  // namespace hvm
