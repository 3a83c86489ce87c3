// contract/stubs_test.cpp: the entries that check their arguments and compute nothing
//
// What they return and which host operations they call is final. None of them touches the result record.

#include "support/module_test.hpp"

namespace arrayfold::test {
namespace {

class Stubs : public ModuleTest {
 protected:
  Value array() const { return array_of<XTDouble>(ctx(), {2}, {1.0, 2.0}); }

  void expect(const std::string& name, std::vector<Value> args, int returned, const Words& operations) const {
    const Answer answer = call(name, std::move(args));
    EXPECT_EQ(answer.returned, returned) << name;
    EXPECT_EQ(answer.operations, operations) << name;
    EXPECT_TRUE(answer.untouched) << name;
  }
};

struct OneCheck {
  const char* name;
  int minimum;
};
constexpr OneCheck one_check_stubs[] = {{"xclip", 3}, {"xfma", 3},          {"xinterp", 3},
                                        {"xpow", 2},  {"xsearchsorted", 1}, {"xmatrix_power", 1}};

TEST_F(Stubs, Required_OneObjectCheck_WithAnObjectFirst_FetchesItAndReturnsOne) {
  for (const auto& stub : one_check_stubs) {
    std::vector<Value> args(static_cast<std::size_t>(stub.minimum));
    args[0] = array();
    expect(stub.name, args, 1, {"AnyCheck 0", "GetAny 0"});
  }
}

TEST_F(Stubs, OneObjectCheck_WithoutAnObjectFirst_ReturnsZero) {
  for (const auto& stub : one_check_stubs) {
    std::vector<Value> args(static_cast<std::size_t>(stub.minimum), array());
    args[0] = Value(3);
    expect(stub.name, args, 0, {"AnyCheck 0"});
  }
}

TEST_F(Stubs, Xclip_WithTwoArguments_ReturnsZero) { expect("xclip", {array(), array()}, 0, {}); }

TEST_F(Stubs, Required_Xremainder_AsksForTwoObjectsAndFetchesNone) {
  expect("xremainder", {array(), array()}, 1, {"AnyCheck 0", "AnyCheck 1"});
  expect("xremainder", {array(), Value(2)}, 0, {"AnyCheck 0", "AnyCheck 1"});
  expect("xremainder", {Value(2), array()}, 0, {"AnyCheck 0"});
}

TEST_F(Stubs, Required_Xsetdiff1d_FetchesTheFirstTwiceAndReturnsZero) {
  expect("xsetdiff1d", {array(), array()}, 0, {"AnyCheck 0", "AnyCheck 1", "GetAny 0", "GetAny 0"});
  expect("xsetdiff1d", {array(), Value(2)}, 0, {"AnyCheck 0", "AnyCheck 1"});
  expect("xsetdiff1d", {Value(2), array()}, 0, {"AnyCheck 0"});
}

TEST_F(Stubs, Required_Xrandint_ReturnsOneWithAnyArgumentAndZeroWithNone) {
  expect("xrandint", {}, 0, {});
  expect("xrandint", {Value(1)}, 1, {});
  expect("xrandint", {Value(), Value("text"), array()}, 1, {});
}

TEST_F(Stubs, Required_Xchoice_ReturnsOneWhateverTheCount) {
  expect("xchoice", {}, 1, {});
  expect("xchoice", {array(), Value(7)}, 1, {});
  const Answer negative = call_with_count("xchoice", {}, -5);
  EXPECT_EQ(negative.returned, 1);
  EXPECT_TRUE(negative.untouched);
}

}  // namespace
}  // namespace arrayfold::test
