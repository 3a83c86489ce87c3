// plugin/object/operator_fixture.hpp: operators as the tests of the module write them

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "support/allocations.hpp"
#include "support/hand_made.hpp"

namespace arrayfold::test {

constexpr Opcode comparisons[] = {Opcode::less_equal, Opcode::greater_equal, Opcode::less, Opcode::greater};
constexpr Opcode calculations[] = {Opcode::add, Opcode::subtract, Opcode::multiply, Opcode::divide, Opcode::remainder};

class OperatorTest : public ModuleTest {
 protected:
  /// `left op right` into a record of its own, by the callback of the left object's type, else of the right's.
  Answer operate(Opcode opcode, Value left, Value right) const {
    const std::string type = type_of(left.is_object() ? left : right);
    return apply(type.c_str(), static_cast<int>(opcode), left.address(), right.address());
  }
  /// `left op= right`.
  Answer change(Opcode opcode, Value& left, Value right) const {
    return apply_into(left.address(), type_of(left).c_str(), static_cast<int>(opcode), left.address(), right.address());
  }
  /// `left op right` with the record of the array on the right as the result.
  Answer change_right(Opcode opcode, Value left, Value& right) const {
    return apply_into(right.address(), type_of(right).c_str(), static_cast<int>(opcode), left.address(),
                      right.address());
  }

  Value bools(const std::vector<bool>& x) const { return array_of<XTBool>(ctx(), {x.size()}, x); }
  Value ints(const std::vector<int>& x) const { return array_of<XTInt>(ctx(), {x.size()}, x); }
  Value int64s(const std::vector<std::int64_t>& x) const { return array_of<XTInt64>(ctx(), {x.size()}, x); }
  Value doubles(const std::vector<double>& x) const { return array_of<XTDouble>(ctx(), {x.size()}, x); }

  /// [1, 2, 3] of each kind; as bools [true, true, true].
  std::vector<Value> one_of_each_kind() const {
    return {bools({true, true, true}), ints({1, 2, 3}), int64s({1, 2, 3}), doubles({1, 2, 3})};
  }
  std::vector<Value> one_of_each_number_kind() const {
    std::vector<Value> arrays = one_of_each_kind();
    arrays.erase(arrays.begin());
    return arrays;
  }

  static void expect_false(const Answer& answer) { expect_no_result(answer, 0); }
  /// The text of what the operator gave.
  std::string given(Answer answer) const {
    EXPECT_EQ(answer.returned, 1);
    return dump(answer.result);
  }
};

/// Operands that several tests combine.
class Operands : public OperatorTest {
 protected:
  Value matrix(const std::vector<std::size_t>& extents, const std::vector<int>& elements) const {
    return array_of<XTInt>(ctx(), extents, elements);
  }
  /// An int array of nine dimensions with 2 elements.
  Value deep() const { return matrix({1, 1, 1, 1, 2, 1, 1, 1, 1}, {1, 2}); }
  /// Six elements under a shape whose product is not six.
  Value overdrawn() const {
    Value array = ints({1, 2, 3, 4, 5, 6});
    EXPECT_EQ(method(array, "reshape", {Value(-2), Value(-3)}).returned, 1);
    return array;
  }

  int content_ = 7;
  ForeignObject foreign_{"$foreign", &content_};
};

}  // namespace arrayfold::test
