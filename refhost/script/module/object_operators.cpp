// script/module/object_operators.cpp: operators with an object among their operands

#include "script/module/object_operators.hpp"

#include "script/syntax/diagnostics.hpp"

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
void call_type(const ModuleCaller& caller, const std::string& name, BinaryOperator op, Value& left, Value& right,
               Value& result) {
  bool is_defined = false;
  try {
    is_defined =
        call_operator(caller, '\'' + name + '\'', opcode_of(op), left.address(), right.address(), result.address());
  } catch (const Failure& failure) {
    throw Failure(thrown_operator(caller, failure.message(), left, right));
  }
  if (!is_defined) throw Failure(undefined_operator(caller, name, op, left, right));
}

}  // namespace

Value object_binary(const ModuleCaller& caller, BinaryOperator op, Value& left, Value& right) {
  Value result;
  call_type(caller, spelling(op), op, left, right, result);
  return result;
}

void object_compound(const ModuleCaller& caller, BinaryOperator op, Value& variable, Value& right) {
  call_type(caller, std::string(spelling(op)) + '=', op, variable, right, variable);
}

Value object_negated(const ModuleCaller& caller, Value& operand) {
  Value minus_one(-1);
  Value result;
  call_type(caller, "-", BinaryOperator::multiply, operand, minus_one, result);
  return result;
}

}  // namespace hvm
