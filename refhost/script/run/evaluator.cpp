// script/run/evaluator.cpp: the values of expressions

#include "script/run/evaluator.hpp"

#include "script/library/truth.hpp"
#include "script/run/calls.hpp"

namespace hvm {

Value Evaluator::evaluate(const Expression& expression) {
  // Most expressions of a loop are variables and operators.
  if (const auto* variable = std::get_if<Variable>(&expression.form)) return evaluate(*variable, expression.span);
  if (const auto* chain = std::get_if<Chain>(&expression.form)) return evaluate(*chain, expression.span);
  return std::visit([&](const auto& form) { return evaluate(form, expression.span); }, expression.form);
}

std::vector<Value> Evaluator::evaluate(const Expressions& expressions) {
  std::vector<Value> values;
  values.reserve(expressions.size());
  for (const ExpressionPtr& expression : expressions) values.push_back(evaluate(*expression));
  return values;
}

bool Evaluator::holds(const Expression& condition) {
  const Value value = evaluate(condition);
  return site_.placed(condition.span, [&] { return truth(value); });
}

// ---- Literals

Value Evaluator::evaluate(const IntegerLiteral& form, Span) { return Value(static_cast<int>(form.value)); }
Value Evaluator::evaluate(const Integer64Literal& form, Span) { return Value(form.value); }
Value Evaluator::evaluate(const RealLiteral& form, Span) { return Value(form.value); }
Value Evaluator::evaluate(const StringLiteral& form, Span) { return Value(std::string_view(form.text)); }
Value Evaluator::evaluate(const WideStringLiteral& form, Span) { return Value(std::u16string_view(form.text)); }
Value Evaluator::evaluate(const NilLiteral&, Span) { return {}; }

Value Evaluator::evaluate(const TableLiteral& form, Span span) {
  Value table = Value::table();
  int position = 0;
  for (const TableEntry& entry : form.entries) {
    const Value key = entry.key ? evaluate(*entry.key) : Value(position++);
    const Value value = evaluate(*entry.value);
    elements_.write_entry(table, key, value, entry.key ? entry.key->span : span);
  }
  return table;
}

Value Evaluator::evaluate(const QuotationLiteral& form, Span) { return quotations_.value_of(form); }

// ---- Names, calls and brackets

Value Evaluator::evaluate(const Variable& form, Span span) { return variables_.read(form, span); }

Value Evaluator::evaluate(const Call& form, Span span) {
  return calls_.call(form.name, evaluate(form.arguments), span, &form);
}

Value Evaluator::evaluate(const Postfix& form, Span) {
  auto suffix_at = form.suffixes.begin();
  Value value;
  // An element of a variable is read where the variable is: a copy of an array or a table counts its references.
  const auto* variable = std::get_if<Variable>(&form.operand->form);
  const auto* index = std::get_if<Index>(&suffix_at->form);
  if (variable && index) {
    value = element(variables_.place(*variable, form.operand->span), *index, suffix_at->span);
    ++suffix_at;
  } else {
    value = evaluate(*form.operand);
  }
  for (; suffix_at != form.suffixes.end(); ++suffix_at) {
    const Suffix& suffix = *suffix_at;
    if (const auto* method = std::get_if<MethodCall>(&suffix.form)) {
      const Expression* operand = &suffix == &form.suffixes.front() ? form.operand.get() : nullptr;
      value =
          calls_.method(value, *method, evaluate(method->arguments), joined(form.operand->span, suffix.span), operand);
      continue;
    }
    value = element(value, std::get<Index>(suffix.form), suffix.span);
  }
  return value;
}

Value Evaluator::element(Value& container, const Index& index, Span span) {
  const Expression& first = *index.indices.front();
  const auto* range = index.indices.size() == 1 ? std::get_if<KeyRange>(&first.form) : nullptr;
  if (!range) {
    IndexValues values;
    return elements_.read(container, indices(index, values), span);
  }
  const Value low = range->low ? evaluate(*range->low) : Value();
  const Value high = range->high ? evaluate(*range->high) : Value();
  return elements_.read_range(container, low, high, first.span);
}

ValueSpan Evaluator::indices(const Index& index, IndexValues& values) {
  const std::size_t count = index.indices.size();
  if (count > values.few.size()) {
    values.many = evaluate(index.indices);
    return values.many;
  }
  for (std::size_t i = 0; i < count; ++i) values.few[i] = evaluate(*index.indices[i]);
  return {values.few.data(), count};
}

/// Any range that is not the only index of a string.
Value Evaluator::evaluate(const KeyRange&, Span span) {
  site_.fail(
      "a range of keys is allowed in quotations only; row(a, i), column(a, j) and slice(a, from, to) take parts of an "
      "array, after use \"arrays\"",
      span);
}

// ---- Operators

Value Evaluator::evaluate(const Chain& form, Span) {
  Value value = evaluate(*form.first);
  for (const Link& link : form.links) {
    Value operand = evaluate(*link.operand);
    value = operators_.binary(link.op, value, operand, {link.op_span, &form, &link});
  }
  return value;
}

Value Evaluator::evaluate(const Negation& form, Span span) {
  Value operand = evaluate(*form.operand);
  return operators_.negated(operand, span);
}

Value Evaluator::evaluate(const Not& form, Span) { return Value(holds(*form.operand) ? 0 : 1); }

Value Evaluator::evaluate(const Logic& form, Span) {
  for (const ExpressionPtr& operand : form.operands)
    if (holds(*operand) != form.is_and) return Value(form.is_and ? 0 : 1);
  return Value(form.is_and ? 1 : 0);
}

}  // namespace hvm
