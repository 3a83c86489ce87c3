// script/run/operators.cpp: the choice between operators on objects and plain ones

#include "script/run/operators.hpp"

#include <fmt/format.h>

#include "script/module/object_operators.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

Value plain_negated(const Value& operand) {
  if (!operand.is_number()) throw Failure(fmt::format("'-' cannot take {}", kind_in_words(operand)));
  HostValue record = operand.record();
  if (operand.tag() == ValueTag::real) return Value(-HVM_AsDouble(&record));
  return plain_binary(BinaryOperator::multiply, operand, Value(-1));
}

/// Whether a value is nil can be asked of every value, so the type of an object does not decide it.
bool is_comparison_with_nil(BinaryOperator op, const Value& left, const Value& right) {
  return (op == BinaryOperator::equal || op == BinaryOperator::not_equal) && (left.is_nil() || right.is_nil());
}

/// The operands beside a link, null where another operator stands between.
const Expression* written_before(const Operators::Place& place) {
  return place.link && place.link == place.chain->links.data() ? place.chain->first.get() : nullptr;
}
const Expression* written_behind(const Operators::Place& place) {
  return place.link ? place.link->operand.get() : nullptr;
}

}  // namespace

template <class Action>
auto Operators::explained(const FailedOperation& operation, Span span, Action action) const {
  ModuleCaller caller = site_.caller(span);
  try {
    return action(caller);
  } catch (const Failure& failure) {
    caller.trace = nullptr;  // what is asked for an explanation is no call of the script
    throw failed_calls_.explained(failure, caller, operation);
  }
}

Value Operators::binary(BinaryOperator op, Value& left, Value& right, const Place& place) const {
  return site_.placed(place.span, [&] {
    const bool has_object = left.is_object() || right.is_object();
    if (!has_object || is_comparison_with_nil(op, left, right)) return plain_binary(op, left, right);
    const FailedOperation operation{op, left, right, written_before(place), written_behind(place)};
    return explained(operation, place.span, [&](const ModuleCaller& caller) {
      const auto look = [&] {
        warnings_.operation(site_.source(), place.span,
                            {untraced(caller), op, left, right, place.chain, place.link, nullptr});
      };
      checks_.operation(caller, op, left, right);
      if (warnings_.is_notable(op, left, right)) look();
      Value result = object_binary(caller, op, left, right);
      if (result.is_nil() && op == BinaryOperator::multiply) look();
      warnings_.combined(result, left, right);
      return result;
    });
  });
}

void Operators::compound(BinaryOperator op, Value& variable, Value& right, Span span,
                         const VariableAssignment& form) const {
  site_.placed(span, [&] {
    if (!variable.is_object() && !right.is_object()) {
      variable = plain_binary(op, variable, right);
      return;
    }
    const FailedOperation operation{op, variable, right, form.variable.get(), form.value.get()};
    explained(operation, span, [&](const ModuleCaller& caller) {
      const auto look = [&] {
        warnings_.operation(site_.source(), span, {untraced(caller), op, variable, right, nullptr, nullptr, &form});
      };
      checks_.operation(caller, op, variable, right);
      if (warnings_.is_notable(op, variable, right)) look();
      object_compound(caller, op, variable, right);
      if (op == BinaryOperator::multiply && !variable.is_object()) look();
      warnings_.combined(variable, variable, right);
    });
  });
}

Value Operators::negated(Value& operand, Span span) const {
  return site_.placed(span, [&] {
    if (!operand.is_object()) return plain_negated(operand);
    Value minus_one(-1);
    return explained({BinaryOperator::multiply, operand, minus_one}, span, [&](const ModuleCaller& caller) {
      checks_.extents(caller, operand);
      Value result = object_negated(caller, operand);
      if (result.is_nil())
        warnings_.operation(
            site_.source(), span,
            {untraced(caller), BinaryOperator::multiply, operand, minus_one, nullptr, nullptr, nullptr});
      warnings_.combined(result, operand, operand);
      return result;
    });
  });
}

}  // namespace hvm
