// soak/statements.cpp: statements of the script language at random

#include "statements.hpp"

#include <iterator>

namespace arrayfold::test {

std::string variable_name(std::size_t number) { return "a" + std::to_string(number); }

std::string Statements::one_of(std::initializer_list<const char*> choices) {
  return choices.begin()[below(choices.size())];
}

std::string Statements::number() {
  switch (below(6)) {
    case 0:
      return one_of({"-1", "-2.5", "1e300", "0.0", "-7L", "5000000000L", "2147483647"});
    case 1:
      return std::to_string(below(40)) + ".25";
    case 2:
      return std::to_string(below(40)) + "L";
    default:
      return std::to_string(below(10));
  }
}

std::string Statements::extents() {
  std::string text = std::to_string(below(10));
  for (std::size_t more = below(3); more > 0; --more) text += ", " + std::to_string(below(7));
  return text;
}

std::string Statements::table() {
  const bool is_matrix = below(3) == 0;
  const std::size_t rows = is_matrix ? 1 + below(5) : 1, columns = below(9);
  std::string text;
  for (std::size_t row = 0; row < rows; ++row) {
    std::string elements;
    for (std::size_t column = 0; column < columns; ++column) elements += (column == 0 ? "" : ", ") + number();
    text += (row == 0 ? "" : ", ") + (is_matrix ? "[" + elements + "]" : elements);
  }
  return "[" + text + "]";
}

/// An array of any kind and of most shapes.
std::string Statements::creation() {
  switch (below(5)) {
    case 0:
      return "xarray(@" + one_of({"bool", "int", "int64", "double"}) + "(" + extents() + "))";
    case 1:
      return "xrand(" + extents() + ")";
    case 2: {
      const std::string extent = std::to_string(below(8));
      return below(2) == 0 ? "xeye(" + extent + ")" : "xrand(" + extent + ", " + extent + ")";
    }
    default:
      return "xarray(@" + one_of({"bool", "int", "int64", "double"}) + ", " + table() + ")";
  }
}

std::string Statements::argument() {
  switch (below(12)) {
    case 0:
    case 1:
    case 2:
      return number();
    case 3:
      return table();
    case 4:
      return one_of({"nil", "\"text\"", "@double", "@[1.5,a0]", "@x(a1)", "[\"a\":1]"});
    default:
      return variable();
  }
}

std::string Statements::call() {
  std::string arguments;
  static constexpr std::size_t counts[] = {1, 1, 1, 1, 2, 2, 2, 3, 4, 0};
  for (std::size_t count = counts[below(std::size(counts))]; count > 0; --count)
    arguments += argument() + (count == 1 ? "" : ", ");
  return functions_[below(functions_.size())] + "(" + arguments + ")";
}

std::string Statements::expression() {
  switch (below(5)) {
    case 0:
      return variable() + one_of({"+", "-", "*", "<=", ">=", "<", ">", "==", "!="}) + variable();
    case 1:
      if (below(3) == 0) return variable() + one_of({"/", "%"}) + one_of({"0", "0.5", "1", "3", "7L", "2.5", "1e300"});
      return variable() + one_of({"+", "-", "*", "<=", "<"}) + number();
    case 2:
      return number() + one_of({"+", "-", "*", "<"}) + variable();
    case 3:
      return variable() + "[" + std::to_string(below(4)) + "]";
    default:
      return variable() + "[" + std::to_string(below(3)) + ", " + std::to_string(below(3)) + "]";
  }
}

std::string Statements::next() {
  const std::string target = variable();
  switch (below(20)) {
    case 0:
    case 1:
    case 2:
      return target + " = " + creation();
    case 3:
    case 4:
    case 5:
      return target + " = " + expression();
    case 6:
      return target + one_of({"+=", "-=", "*="}) + (below(2) == 0 ? variable() : number());
    case 7:
      return target + "[" + std::to_string(below(4)) + "] = " + number();
    case 8:
      return target + ".reshape(" + extents() + ")";
    case 9:
      return target + one_of({".shape()", ".dump()", ".dump(2)"});
    case 10:
      return target + " = " + variable();
    default:
      return target + " = " + call();
  }
}

}  // namespace arrayfold::test
