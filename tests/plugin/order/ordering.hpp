// order/ordering.hpp: the functions of ordering, and elements that sorts have trouble with

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/array_results.hpp"
#include "support/functions.hpp"

namespace arrayfold::test {

/// All of one array; the two partitions read a rank, too.
inline const std::vector<std::string> orderings = working_functions_of("order");

inline bool reads_rank(const std::string& name) { return name == "xpartition" || name == "xargpartition"; }

/// A way to fill an array of any shape.
struct Pattern {
  std::string name;
  std::function<TestArray(const Extents& extents)> fill;
};
std::vector<Pattern> patterns(Kind kind);

/// An array of one dimension whose elements are drawn from a few, with an engine that begins the same way for each
/// length.
TestArray drawn_from(Kind kind, std::size_t length, const Numbers& few);

/// All around the length from which on another way of sorting is taken, and well beyond.
std::vector<std::size_t> lengths();

/// Of one to four dimensions and of nine: with short rows and long ones, of one element and of none.
inline const Extents shapes[] = {
    {7},          {1, 1},    {3, 5},    {5, 1},      {1, 300},     {7, 300},
    {300, 7},     {3, 1000}, {2, 3, 4}, {3, 1, 260}, {2, 2, 2, 5}, {2, 3, 4, 256},
    {4, 1, 3, 1}, {0, 3},    {3, 0},    {2, 0, 3},   {2, 3, 0},    {2, 1, 2, 1, 2, 1, 2, 1, 3}};

class OrderingTest : public ArrayResultTest {
 protected:
  /// Calls `check(operand, array, what)` with every pattern of the kind in every length and in every shape.
  using Check = std::function<void(const Value& operand, const TestArray& array, const std::string& what)>;
  void for_each_array(Kind kind, const Check& check) const;

  /// What a function gives of an array, of the kind that is expected.
  TestArray given_by(const std::string& name, const TestArray& array, Kind kind) const {
    Operand operand(ctx(), array);
    return given(call(name, {operand.value()}), kind);
  }
};

}  // namespace arrayfold::test
