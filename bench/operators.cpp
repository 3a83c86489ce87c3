// bench/operators.cpp: arithmetic, comparisons and elements, through the operator callback

#include <cmath>

#include "arrays.hpp"
#include "families.hpp"
#include "module.hpp"

namespace arrayfold::bench {
namespace {

using Extents = std::vector<std::size_t>;

std::size_t count(int n) { return static_cast<std::size_t>(n); }
/// The side of the square of about `n` elements.
std::size_t side(int n) { return static_cast<std::size_t>(std::sqrt(static_cast<double>(n))); }

std::vector<Value> doubles(int n) { return {normal_doubles({count(n)}), normal_doubles({count(n)}, 2)}; }
std::vector<Value> doubles_and_number(int n) { return {normal_doubles({count(n)}), Value(1.5)}; }
std::vector<Value> equal_doubles(int n) { return {normal_doubles({count(n)}), normal_doubles({count(n)})}; }

std::vector<Value> ints(int n) { return {small_ints({count(n)}), small_ints({count(n)}, 2)}; }
std::vector<Value> ints_and_number(int n) { return {small_ints({count(n)}), Value(7)}; }
std::vector<Value> ints_and_divisors(int n) { return {small_ints({count(n)}), divisors({count(n)})}; }
std::vector<Value> equal_ints(int n) { return {small_ints({count(n)}), small_ints({count(n)})}; }
std::vector<Value> long_ints(int n) { return {small_long_ints({count(n)}), small_long_ints({count(n)}, 2)}; }

std::vector<Value> square_and_row(int n) { return {normal_doubles({side(n), side(n)}), normal_doubles({side(n)}, 2)}; }
std::vector<Value> square_and_column(int n) {
  return {normal_doubles({side(n), side(n)}), normal_doubles({side(n), 1}, 2)};
}
std::vector<Value> column_and_row(int n) { return {normal_doubles({side(n), 1}), normal_doubles({side(n)}, 2)}; }

/// A matrix, the two indices of one of its elements, and a number.
std::vector<Value> matrix_and_indices(int) { return {normal_doubles({2, 5}), Value(1), Value(3), Value(2.5)}; }

void add_arithmetic() {
  add_operator("operators/add", Opcode::add, four_sizes, doubles);
  add_operator("operators/subtract", Opcode::subtract, four_sizes, doubles);
  add_operator("operators/multiply", Opcode::multiply, four_sizes, doubles);
  add_operator("operators/divide", Opcode::divide, four_sizes, doubles);
  add_operator("operators/add_number", Opcode::add, four_sizes, doubles_and_number);
  add_operator("operators/subtract_number", Opcode::subtract, four_sizes, doubles_and_number);
  add_operator("operators/multiply_number", Opcode::multiply, four_sizes, doubles_and_number);
  add_operator("operators/divide_number", Opcode::divide, four_sizes, doubles_and_number);
  add_operator("operators/add_ints", Opcode::add, four_sizes, ints);
  add_operator("operators/subtract_ints", Opcode::subtract, four_sizes, ints);
  add_operator("operators/multiply_ints", Opcode::multiply, four_sizes, ints);
  add_operator("operators/add_number_ints", Opcode::add, four_sizes, ints_and_number);
  add_operator("operators/multiply_number_ints", Opcode::multiply, four_sizes, ints_and_number);
  add_operator("operators/add_int64s", Opcode::add, four_sizes, long_ints);
  add_operator("operators/multiply_int64s", Opcode::multiply, four_sizes, long_ints);
}

void add_integer_division() {
  add_operator("operators/divide_ints", Opcode::divide, four_sizes, ints_and_divisors);
  add_operator("operators/remainder_ints", Opcode::remainder, four_sizes, ints_and_divisors);
  add_operator("operators/divide_number_ints", Opcode::divide, four_sizes, ints_and_number);
  add_operator("operators/remainder_number_ints", Opcode::remainder, four_sizes, ints_and_number);
}

void add_broadcasting() {
  add_operator("operators/broadcast_row", Opcode::add, four_sizes, square_and_row);
  add_operator("operators/broadcast_column", Opcode::add, four_sizes, square_and_column);
  add_operator("operators/broadcast_outer", Opcode::add, four_sizes, column_and_row);
}

void add_comparisons() {
  add_operator("operators/less", Opcode::less, four_sizes, doubles);
  add_operator("operators/less_number", Opcode::less, four_sizes, doubles_and_number);
  add_operator("operators/less_ints", Opcode::less, four_sizes, ints);
  add_operator("operators/less_number_ints", Opcode::less, four_sizes, ints_and_number);
  add_operator("operators/equal", Opcode::equal, four_sizes, equal_doubles);
  add_operator("operators/equal_ints", Opcode::equal, four_sizes, equal_ints);
}

void add_in_place() {
  add_operator_in_place("operators/in_place", Opcode::add, four_sizes, doubles);
  add_operator_in_place("operators/in_place_number", Opcode::add, four_sizes, doubles_and_number);
  add_operator_in_place("operators/in_place_ints", Opcode::add, four_sizes, ints);
  add_operator_in_place("operators/in_place_number_ints", Opcode::add, four_sizes, ints_and_number);
}

}  // namespace

void add_operators() {
  add_arithmetic();
  add_integer_division();
  add_broadcasting();
  add_comparisons();
  add_in_place();
  add_element_read("operators/element_read", {10}, matrix_and_indices);
  add_element_write("operators/element_write", {10}, matrix_and_indices);
}

}  // namespace arrayfold::bench
