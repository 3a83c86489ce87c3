// soak/statements.hpp: statements of the script language at random, each with a call of the module

#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

namespace arrayfold::test {

/// The variables of the statements: a0, a1, ... They hold what the calls gave, arrays most often.
inline constexpr std::size_t variable_count = 12;
std::string variable_name(std::size_t number);

class Statements {
 public:
  /// `functions` are the names of the module's functions.
  Statements(std::vector<std::string> functions, std::uint64_t seed)
      : functions_(std::move(functions)), random_(seed) {}

  /// A statement that calls a function, a method or an operator, or reads or writes an element. It may be refused, fail
  /// or throw. It divides arrays by none, and by no negative number: the division of an integer by zero, and of the
  /// smallest by -1, ends the process.
  std::string next();

 private:
  std::size_t below(std::size_t limit) { return static_cast<std::size_t>(random_() % limit); }
  std::string one_of(std::initializer_list<const char*> choices);

  std::string variable() { return variable_name(below(variable_count)); }
  std::string number();
  std::string extents();
  std::string table();
  std::string creation();
  std::string argument();
  std::string call();
  std::string expression();

  std::vector<std::string> functions_;
  std::mt19937_64 random_;
};

}  // namespace arrayfold::test
