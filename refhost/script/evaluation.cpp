// script/evaluation.cpp: the expressions

#include <fmt/format.h>

#include "script/guards.hpp"
#include "script/interpreter.hpp"
#include "script/number_text.hpp"
#include "script/operators.hpp"
#include "script/value_kinds.hpp"

namespace hvm {

Value Interpreter::evaluate(const Expression& expression) {
  return std::visit([&](const auto& form) { return evaluate(form, expression.span); }, expression.form);
}

std::vector<Value> Interpreter::evaluate(const Expressions& expressions) {
  std::vector<Value> values;
  values.reserve(expressions.size());
  for (const ExpressionPtr& expression : expressions) values.push_back(evaluate(*expression));
  return values;
}

Value Interpreter::evaluate(const IntegerLiteral& form, Span) { return Value(static_cast<int>(form.value)); }
Value Interpreter::evaluate(const Integer64Literal& form, Span) { return Value(form.value); }
Value Interpreter::evaluate(const RealLiteral& form, Span) { return Value(form.value); }
Value Interpreter::evaluate(const StringLiteral& form, Span) { return Value(std::string_view(form.text)); }
Value Interpreter::evaluate(const WideStringLiteral& form, Span) { return Value(std::u16string_view(form.text)); }

Value Interpreter::evaluate(const TableLiteral& form, Span span) {
  Value table = Value::table();
  int position = 0;
  for (const TableEntry& entry : form.entries) {
    const Value key = entry.key ? evaluate(*entry.key) : Value(position++);
    const Value value = evaluate(*entry.value);
    if (!is_key(key.record())) fail(fmt::format("{} is no key of a table", kind_in_words(key)), entry.key->span);
    HostValue* place = slot(table_of(table.record()), key.record());
    if (!place) fail("out of memory", span);
    assign(*place, value.record());
  }
  return table;
}

Slot& Interpreter::slot_of(const Variable& variable) {
  return variable.is_local ? frame_->locals[variable.slot] : globals_[variable.slot];
}

const Slot& Interpreter::slot_of(const Variable& variable) const {
  return variable.is_local ? frame_->locals[variable.slot] : globals_[variable.slot];
}

Value Interpreter::evaluate(const Variable& form, Span span) {
  const Slot& slot = slot_of(form);
  if (!slot.is_set) fail_unset(form, span);
  return slot.value;
}

void Interpreter::fail_unset(const Variable& form, Span span) const {
  if (form.is_local) fail(fmt::format("'{}' has no value yet in this fn", form.name), span);
  if (functions_.count(form.name) != 0 || find_builtin(form.name) || module_functions_.find(form.name))
    fail(fmt::format("'{0}' is a function; it is called with parentheses: {0}()", form.name), span);
  std::vector<std::string_view> known;
  for (std::size_t i = 0; i < globals_.size(); ++i)
    if (globals_[i].is_set) known.push_back(global_names_.name(i));
  if (frame_) known.insert(known.end(), frame_->function->locals.begin(), frame_->function->locals.end());
  fail(fmt::format("there is no variable '{}'{}", form.name, suggestion(form.name, known)), span);
}

Value Interpreter::evaluate(const Postfix& form, Span) {
  Value value = evaluate(*form.operand);
  for (const Suffix& suffix : form.suffixes) {
    const Span span = joined(form.operand->span, suffix.span);
    if (const auto* call = std::get_if<MethodCall>(&suffix.form)) {
      value = method(value, *call, span);
      continue;
    }
    std::vector<Value> indices = evaluate(std::get<Index>(suffix.form).indices);
    value = element(value, indices, suffix.span);
  }
  return value;
}

Value Interpreter::element(Value& container, std::vector<Value>& indices, Span span) {
  if (container.is_table()) {
    if (indices.size() != 1) fail("a table takes one key", span);
    if (!is_key(indices[0].record())) fail(fmt::format("{} is no key of a table", kind_in_words(indices[0])), span);
    const HostValue* found = find(table_of(container.record()), indices[0].record());
    return found ? Value::sharing(*found) : Value();
  }
  if (!container.is_object()) fail(fmt::format("{} has no elements", kind_in_words(container)), span);
  return placed(span, [&] {
    if (options_.has_guards) guard_indices(caller(span), container, indices);
    if (auto read = read_element(caller(span), container, indices)) return std::move(*read);
    throw Failure(fmt::format("{} gives no element with {}", described(caller(span), container),
                              counted(indices.size(), "index", "indices")));
  });
}

Value Interpreter::operate(BinaryOperator op, Span span, Value& left, Value& right) {
  return placed(span, [&] {
    if (options_.has_guards) guard_operator(caller(span), op, left, right);
    return binary(caller(span), op, left, right);
  });
}

Value Interpreter::evaluate(const Chain& form, Span) {
  Value value = evaluate(*form.first);
  for (const Link& link : form.links) {
    Value operand = evaluate(*link.operand);
    value = operate(link.op, link.op_span, value, operand);
  }
  return value;
}

Value Interpreter::evaluate(const Negation& form, Span span) {
  Value operand = evaluate(*form.operand);
  return placed(span, [&] {
    if (options_.has_guards && operand.is_object()) guard_extents(caller(span), operand);
    return negated(caller(span), operand);
  });
}

Value Interpreter::evaluate(const Not& form, Span) { return Value(holds(*form.operand) ? 0 : 1); }

Value Interpreter::evaluate(const Logic& form, Span) {
  for (const ExpressionPtr& operand : form.operands)
    if (holds(*operand) != form.is_and) return Value(form.is_and ? 0 : 1);
  return Value(form.is_and ? 1 : 0);
}

}  // namespace hvm
