// script/run/statements.cpp: running statements

#include "script/run/statements.hpp"

#include <fmt/format.h>

#include <new>

#include "script/library/range.hpp"
#include "script/module/array_module.hpp"
#include "script/module/fault_report.hpp"
#include "script/run/uses.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {

Value Statements::run_body(const Block& body) {
  return execute(body) == Flow::returned ? std::move(returned_) : Value();
}

Statements::Flow Statements::execute(const Block& block) {
  for (const Statement& statement : block) {
    const Flow flow = execute(statement);
    if (flow != Flow::onward) return flow;
  }
  return Flow::onward;
}

Statements::Flow Statements::execute(const Statement& statement) {
  // A fault may also come without a call of the module in the script: when the last reference to an object is dropped.
  const RunningMark mark(site_.source().get(), statement.span.begin, false);
  try {
    steps_.take();
    return std::visit([&](const auto& form) { return execute(form, statement.span); }, statement.form);
  } catch (const std::bad_alloc&) {
    site_.fail("out of memory", statement.span);
  } catch (ScriptInterrupted& end) {
    end.set_place(site_.source(), statement.span);
    throw;
  }
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
    give(form.variable, std::move(value));
    return Flow::onward;
  }
  variables_.read(variable, form.variable->span);
  operators_.compound(*form.op, scopes_.slot_of(variable).value, value, span, form);
  return Flow::onward;
}

Statements::Flow Statements::execute(const ElementAssignment& form, Span span) {
  Value container = evaluator_.evaluate(*form.container);
  Evaluator::IndexValues values;
  const ValueSpan indices = evaluator_.indices(form.index, values);
  Value value = evaluator_.evaluate(*form.value);
  if (form.op) {
    Value present = elements_.read(container, indices, form.index_span);
    value = operators_.binary(*form.op, present, value, {span});
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

Statements::Flow Statements::turn(const Block& body) {
  steps_.take();
  const Flow flow = execute(body);
  return flow == Flow::continued ? Flow::onward : flow;
}

Statements::Flow Statements::execute(const While& form, Span) {
  Flow flow = Flow::onward;
  while (flow == Flow::onward && evaluator_.holds(*form.condition)) flow = turn(form.body);
  return flow == Flow::returned ? flow : Flow::onward;
}

Statements::Flow Statements::execute(const For& form, Span) {
  // A range is walked without making its table, unless a fn is called `range`.
  const Call* call = std::get_if<Call>(&form.sequence->form);
  const bool is_range = call && !form.key && call->name == "range" && !functions_.fn("range", *site_.source());
  if (!is_range) return iterate(form, evaluator_.evaluate(*form.sequence));
  const std::vector<Value> arguments = evaluator_.evaluate(call->arguments);
  return iterate(form, site_.placed(form.sequence->span, [&] { return Range(arguments); }));
}

Statements::Flow Statements::iterate(const For& form, Range range) {
  Flow flow = Flow::onward;
  for (; flow == Flow::onward && range.has_more(); range.advance()) {
    give(form.variable, range.value());
    flow = turn(form.body);
  }
  return flow == Flow::returned ? flow : Flow::onward;
}

Statements::Flow Statements::iterate(const For& form, const Value& table) {
  if (!table.is_table())
    site_.fail(fmt::format("'for' walks a table or a range, not {}{}", kind_in_words(table),
                           kind_of_array(table) ? "; write for i in range(len(a)), and a[i]" : ""),
               form.sequence->span);
  // The body sees the entries as they were when the loop began, whatever it does to the table.
  std::vector<std::pair<Value, Value>> entries;
  TableWalk walk(table_of(table.record()));
  while (const Entry entry = walk.next())
    entries.emplace_back(form.key ? key_value(*entry.key) : Value(), Value::sharing(*entry.value));
  Flow flow = Flow::onward;
  for (auto entry = entries.begin(); flow == Flow::onward && entry != entries.end(); ++entry) {
    if (form.key) give(form.key, std::move(entry->first));
    give(form.variable, std::move(entry->second));
    flow = turn(form.body);
  }
  return flow == Flow::returned ? flow : Flow::onward;
}

void Statements::give(const ExpressionPtr& variable, Value value) {
  scopes_.slot_of(std::get<Variable>(variable->form)).give(std::move(value));
}

Statements::Flow Statements::execute(const Break&, Span) { return Flow::broken; }
Statements::Flow Statements::execute(const Continue&, Span) { return Flow::continued; }

Statements::Flow Statements::execute(const Return& form, Span) {
  returned_ = form.value ? evaluator_.evaluate(*form.value) : Value();
  return Flow::returned;
}

// ---- Errors and other scripts

Statements::Flow Statements::execute(const Try& form, Span) {
  std::string message;
  try {
    return execute(form.body);
  } catch (const ScriptError& error) {
    message = error.message();
  }
  give(form.variable, Value(std::string_view(message)));
  return execute(form.handler);
}

Statements::Flow Statements::execute(const Use& form, Span span) {
  uses_.run(form.path, span);
  return Flow::onward;
}

}  // namespace hvm
