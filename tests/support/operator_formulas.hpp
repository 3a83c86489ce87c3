// support/operator_formulas.hpp: the operators as functions of two operands, for references

#pragma once

#include <stdexcept>
#include <type_traits>

#include "support/test_array.hpp"

namespace arrayfold::test {

/// Calls `use(formula)` with the operator as a function of two operands; floating-point numbers have no remainder.
template <class T, class Use>
TestArray with_formula(Opcode opcode, Use use) {
  switch (opcode) {
    case Opcode::add:
      return use([](const auto& a, const auto& b) { return a + b; });
    case Opcode::subtract:
      return use([](const auto& a, const auto& b) { return a - b; });
    case Opcode::multiply:
      return use([](const auto& a, const auto& b) { return a * b; });
    case Opcode::divide:
      return use([](const auto& a, const auto& b) { return a / b; });
    case Opcode::less_equal:
      return use([](const auto& a, const auto& b) { return a <= b; });
    case Opcode::greater_equal:
      return use([](const auto& a, const auto& b) { return a >= b; });
    case Opcode::less:
      return use([](const auto& a, const auto& b) { return a < b; });
    case Opcode::greater:
      return use([](const auto& a, const auto& b) { return a > b; });
    default:
      if constexpr (std::is_integral_v<T>) return use([](const auto& a, const auto& b) { return a % b; });
      throw std::invalid_argument("no such operator");
  }
}

/// The elements of a result: truth values of a comparison, else of the operands' own type.
template <class T, class Result>
using ResultElement = std::conditional_t<std::is_same_v<Result, bool>, bool, T>;

}  // namespace arrayfold::test
