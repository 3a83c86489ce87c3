// plugin/object/operator_fixture.hpp: operators as the tests of the module write them

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "support/allocations.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {

using Words = std::vector<std::string>;

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

  static void expect_declined(const Answer& answer) {
    EXPECT_EQ(answer.returned, 0);
    EXPECT_TRUE(answer.untouched);
  }
  /// The text of what the operator gave.
  std::string given(Answer answer) const {
    EXPECT_EQ(answer.returned, 1);
    return dump(answer.result);
  }
};

/// An object of a type that is none of the module's.
class ForeignType {
 public:
  ForeignType() {
    AnyMan* man = HVM_NewAnyMan(
        "$foreign", [] { return static_cast<void*>(new int(7)); }, destroy, nullptr, nullptr, nullptr);
    HVM_RegisterAnyMan("$foreign", man);
  }
  ~ForeignType() { hvm::forget_type("$foreign"); }
  ForeignType(const ForeignType&) = delete;
  ForeignType& operator=(const ForeignType&) = delete;

  Value object(HostContext ctx) const { return Value::object(ctx, "$foreign"); }

 private:
  static void destroy(HostContext, void* content) { delete static_cast<int*>(content); }
};

}  // namespace arrayfold::test
