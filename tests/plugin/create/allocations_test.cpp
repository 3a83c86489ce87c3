// create/allocations_test.cpp: what a small array costs in allocations

#include "support/allocations.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {
namespace {

class CreationCost : public ModuleTest {
 protected:
  /// C++ and host allocations of one call, the result destroyed.
  std::pair<std::int64_t, std::int64_t> cost(const char* name, std::vector<Value> args) const {
    const EntryFunction function = Module::loaded().entry(name);
    Value result;
    const auto cpp = allocations();
    const auto host = hvm::allocation_count();
    EXPECT_EQ(function(ctx(), hvm::records_of(args), static_cast<int>(args.size()), result.address()), 1);
    const auto made = allocations().made - cpp.made;
    const auto host_made = hvm::allocation_count() - host;
    result = Value();
    return {made, host_made};
  }
};

// The elements, their container with its shared count, the array, the object; and the host's record.
const std::pair<std::int64_t, std::int64_t> five = {4, 1};

TEST_F(CreationCost, OfASmallArray_IsFiveAllocations) {
  EXPECT_EQ(cost("xzeros", {Value(10)}), five);
  EXPECT_EQ(cost("xones", {Value(2), Value(1), Value(1), Value(5)}), five);
  EXPECT_EQ(cost("xempty", {Value(10)}), five);
  EXPECT_EQ(cost("xeye", {Value(3)}), five);
  EXPECT_EQ(cost("xarange", {Value(10)}), five);
  EXPECT_EQ(cost("xlinspace", {Value(0.0), Value(1.0), Value(10)}), five);
  EXPECT_EQ(cost("xlogspace", {Value(0), Value(1), Value(10)}), five);
}

TEST_F(CreationCost, OfAFailure_IsNone) {
  const EntryFunction function = Module::loaded().entry("xzeros");
  std::vector<Value> args = {Value("text")};
  Value result;
  const auto before = allocations().made;
  EXPECT_EQ(function(ctx(), hvm::records_of(args), 1, result.address()), 0);
  EXPECT_EQ(allocations().made, before);
}

}  // namespace
}  // namespace arrayfold::test
