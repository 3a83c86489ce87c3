// script/operators.cpp: operators with an object among their operands, and the choice between those and plain ones

#include "script/operators.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <optional>

#include "script/array_text.hpp"
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

/// The kind of an array, such as "double"; nothing for anything else.
std::optional<std::string> kind_of_array(const Value& value) {
  if (!value.is_object()) return std::nullopt;
  const std::string name = type_name_of(object_of(value.record()));
  const std::string kind = array_kind(name);
  return kind == name ? std::nullopt : std::optional(kind);
}

/// What to do instead, where the kinds of the operands tell; begins with a colon.
std::string advice(BinaryOperator op, const std::optional<std::string>& left, const std::optional<std::string>& right) {
  if (left == "bool" || right == "bool") return ": a bool array takes '*=' with a number, and no other operator";
  if (!left && !right) return "";
  if (op == BinaryOperator::equal || op == BinaryOperator::not_equal)
    return ": it compares whole arrays of one kind; '<=' and '>=' compare element by element, with a number as well";
  const bool has_doubles = left == "double" || right == "double";
  if (op == BinaryOperator::remainder && has_doubles) return ": doubles have no remainder";
  return "";
}

/// What is said of an operator that the type of an object declines. `name` is the operator as it is written.
std::string declined(const ModuleCaller& caller, const std::string& name, BinaryOperator op, Value& left,
                     Value& right) {
  const auto left_kind = kind_of_array(left);
  const auto right_kind = kind_of_array(right);
  if (left_kind && right_kind && left_kind != right_kind)
    return fmt::format("{} array {} {} array: the kinds differ, and only arrays of one kind combine", *left_kind, name,
                       *right_kind);
  return fmt::format("'{}' is not defined for {} and {}{}", name, described(caller, left), described(caller, right),
                     advice(op, left_kind, right_kind));
}

/// Whether two shapes have, counted from the last, equal extents wherever neither has 1.
bool broadcast(const std::vector<std::int64_t>& left, const std::vector<std::int64_t>& right) {
  const std::size_t common = std::min(left.size(), right.size());
  return std::equal(left.rbegin(), left.rbegin() + static_cast<std::ptrdiff_t>(common), right.rbegin(),
                    [](std::int64_t a, std::int64_t b) { return a == b || a == 1 || b == 1; });
}

/// What is said of an operator in which the module throws: what it threw, and the reason where the shapes are one.
std::string thrown(const ModuleCaller& caller, const std::string& message, Value& left, Value& right) {
  if (left.is_object() && right.is_object()) {
    const auto left_shape = shape_of(caller, left);
    const auto right_shape = shape_of(caller, right);
    if (left_shape && right_shape && !broadcast(*left_shape, *right_shape))
      return fmt::format("the shapes ({}) and ({}) do not broadcast; {}", fmt::join(*left_shape, ", "),
                         fmt::join(*right_shape, ", "), message);
  }
  return fmt::format("{} (operands: {} and {})", message, described(caller, left), described(caller, right));
}

/// Hands an operator to the type of its object. `result` may be the record of `left`.
void object_operator(const ModuleCaller& caller, const std::string& name, BinaryOperator op, Value& left, Value& right,
                     Value& result) {
  bool is_served = false;
  try {
    is_served = call_operator(caller, fmt::format("'{}'", name), opcode_of(op), left.address(), right.address(),
                              result.address());
  } catch (const Failure& failure) {
    throw Failure(thrown(caller, failure.message(), left, right));
  }
  if (!is_served) throw Failure(declined(caller, name, op, left, right));
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
