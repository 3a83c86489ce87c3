// script/run/statements.cpp: running statements

#include "script/run/statements.hpp"

#include <fmt/format.h>

#include "script/library/range.hpp"
#include "script/module/fault_report.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {

Value Statements::run_body(const Block& body) {
  return execute(body) == Flow::returned ? std::move(returned_) : Value();
}

Statements::Flow Statements::execute(const Block& block) {
  for (const Statement& statement : block)
    if (execute(statement) == Flow::returned) return Flow::returned;
  return Flow::onward;
}

Statements::Flow Statements::execute(const Statement& statement) {
  steps_.take();
  // A fault may also come without a call of the module in the script: when the last reference to an object is dropped.
  const RunningMark mark({site_.source().get(), statement.span.begin, false});
  return std::visit([&](const auto& form) { return execute(form, statement.span); }, statement.form);
}

Statements::Flow Statements::execute(const ExpressionStatement& form, Span) {
  evaluator_.evaluate(*form.expression);
  return Flow::onward;
}

// ---- Assignments

Statements::Flow Statements::execute(const VariableAssignment& form, Span span) {
  const auto& variable = std::get<Variable>(form.variable->form);
  Value value = evaluator_.evaluate(*form.value);
  if (!form.op) {
    scopes_.slot_of(variable) = {std::move(value), true};
    return Flow::onward;
  }
  variables_.read(variable, form.variable->span);
  operators_.compound(*form.op, scopes_.slot_of(variable).value, value, span);
  return Flow::onward;
}

Statements::Flow Statements::execute(const ElementAssignment& form, Span span) {
  Value container = evaluator_.evaluate(*form.container);
  std::vector<Value> indices = evaluator_.evaluate(form.index.indices);
  Value value = evaluator_.evaluate(*form.value);
  if (form.op) {
    Value present = elements_.read(container, indices, form.index_span);
    value = operators_.binary(*form.op, present, value, span);
  }
  elements_.write(form, container, indices, value);
  return Flow::onward;
}

// ---- Conditions and loops

Statements::Flow Statements::execute(const If& form, Span) {
  for (const ConditionalArm& arm : form.arms)
    if (evaluator_.holds(*arm.condition)) return execute(arm.body);
  return execute(form.otherwise);
}

Statements::Flow Statements::execute(const While& form, Span) {
  while (evaluator_.holds(*form.condition)) {
    steps_.take();
    if (execute(form.body) == Flow::returned) return Flow::returned;
  }
  return Flow::onward;
}

Statements::Flow Statements::execute(const For& form, Span) {
  // A range is walked without making its table, unless the script has a `range` of its own.
  const Call* call = std::get_if<Call>(&form.sequence->form);
  const bool is_range = call && call->name == "range" && !functions_.fn("range");
  if (!is_range) return iterate(form, evaluator_.evaluate(*form.sequence));
  const std::vector<Value> arguments = evaluator_.evaluate(call->arguments);
  return iterate(form, site_.placed(form.sequence->span, [&] { return Range(arguments); }));
}

Statements::Flow Statements::iterate(const For& form, Range range) {
  const auto& variable = std::get<Variable>(form.variable->form);
  for (; range.has_more(); range.advance()) {
    steps_.take();
    scopes_.slot_of(variable) = {range.value(), true};
    if (execute(form.body) == Flow::returned) return Flow::returned;
  }
  return Flow::onward;
}

Statements::Flow Statements::iterate(const For& form, const Value& table) {
  if (!table.is_table())
    site_.fail(fmt::format("'for' walks a table or a range, not {}", kind_in_words(table)), form.sequence->span);
  // The body sees the values as they were when the loop began, whatever it does to the table.
  std::vector<Value> values;
  TableWalk walk(table_of(table.record()));
  while (const Entry entry = walk.next()) values.push_back(Value::sharing(*entry.value));
  const auto& variable = std::get<Variable>(form.variable->form);
  for (Value& value : values) {
    steps_.take();
    scopes_.slot_of(variable) = {std::move(value), true};
    if (execute(form.body) == Flow::returned) return Flow::returned;
  }
  return Flow::onward;
}

Statements::Flow Statements::execute(const Return& form, Span) {
  returned_ = form.value ? evaluator_.evaluate(*form.value) : Value();
  return Flow::returned;
}

}  // namespace hvm
