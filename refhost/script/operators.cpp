// script/operators.cpp: operators with an object among their operands, and the choice between those and plain ones

#include "script/operators.hpp"

#include <fmt/format.h>

#include "script/diagnostics.hpp"

namespace hvm {
namespace {

Opcode opcode_of(BinaryOperator op) {
  switch (op) {
    case BinaryOperator::add:
      return Opcode::add;
    case BinaryOperator::subtract:
      return Opcode::subtract;
    case BinaryOperator::multiply:
      return Opcode::multiply;
    case BinaryOperator::divide:
      return Opcode::divide;
    case BinaryOperator::remainder:
      return Opcode::remainder;
    case BinaryOperator::less_equal:
      return Opcode::less_equal;
    case BinaryOperator::greater_equal:
      return Opcode::greater_equal;
    case BinaryOperator::not_equal:
      return Opcode::not_equal;
    case BinaryOperator::less:
      return Opcode::less;
    case BinaryOperator::greater:
      return Opcode::greater;
    case BinaryOperator::equal:
      return Opcode::equal;
  }
  return Opcode::equal;
}

/// Hands an operator to the type of its object. `result` may be the record of `left`.
void object_operator(const ModuleCaller& caller, const std::string& name, BinaryOperator op, Value& left, Value& right,
                     Value& result) {
  const auto operands = [&] { return fmt::format("{} and {}", described(caller, left), described(caller, right)); };
  bool is_served = false;
  try {
    is_served = call_operator(caller, fmt::format("'{}'", name), opcode_of(op), left.address(), right.address(),
                              result.address());
  } catch (const Failure& failure) {
    throw Failure(fmt::format("{} (operands: {})", failure.message(), operands()));
  }
  if (!is_served) throw Failure(fmt::format("'{}' is not defined for {}", name, operands()));
}

}  // namespace

Value binary(const ModuleCaller& caller, BinaryOperator op, Value& left, Value& right) {
  if (!left.is_object() && !right.is_object()) return plain_binary(op, left, right);
  Value result;
  object_operator(caller, spelling(op), op, left, right, result);
  return result;
}

void compound(const ModuleCaller& caller, BinaryOperator op, Value& variable, Value& right) {
  if (!variable.is_object() && !right.is_object()) {
    variable = plain_binary(op, variable, right);
    return;
  }
  object_operator(caller, fmt::format("{}=", spelling(op)), op, variable, right, variable);
}

Value negated(const ModuleCaller& caller, Value& operand) {
  Value minus_one(-1);
  if (!operand.is_object()) {
    if (!operand.is_number()) throw Failure(fmt::format("'-' cannot take {}", described(caller, operand)));
    if (operand.tag() == ValueTag::real) return Value(-HVM_AsDouble(operand.address()));
    return plain_binary(BinaryOperator::multiply, operand, minus_one);
  }
  Value result;
  object_operator(caller, "-", BinaryOperator::multiply, operand, minus_one, result);
  return result;
}

}  // namespace hvm
