// elementwise/stubs_test.cpp: xclip, xfma, xinterp, xpow and xremainder look at their arguments and compute nothing

#include "support/array_results.hpp"
#include "support/functions.hpp"

namespace arrayfold::test {
namespace {

/// A stub, its minimum count of arguments, and what it asks of the host where all are objects.
struct Stub {
  const char* name;
  std::size_t operands;
  Words operations;
};
const Stub elementwise_stubs[] = {{"xremainder", 2, {"AnyCheck 0", "AnyCheck 1"}},
                                  {"xclip", 3, {"AnyCheck 0", "GetAny 0"}},
                                  {"xfma", 3, {"AnyCheck 0", "GetAny 0"}},
                                  {"xinterp", 3, {"AnyCheck 0", "GetAny 0"}},
                                  {"xpow", 2, {"AnyCheck 0", "GetAny 0"}}};

class ElementwiseStubs : public ArrayResultTest {};

TEST_F(ElementwiseStubs, AreThoseOfTheFamily) {
  std::vector<std::string> names;
  for (const Stub& stub : elementwise_stubs) names.push_back(stub.name);
  EXPECT_EQ(names, stubs_of("elementwise"));
}

TEST_F(ElementwiseStubs, Required_OfObjectsOfAnyKind_AreHandledWithoutAResult) {
  ForeignObject foreign;
  FloatObject floats({2}, {1, 2});
  for (const Stub& stub : elementwise_stubs)
    for (const Value& object : {twos(), twos(Kind::int32), twos(Kind::int64), twos(Kind::boolean), floats.value(),
                                foreign.value(), Value::object(ctx(), "$xintarray")})
      expect_no_result(call(stub.name, std::vector<Value>(stub.operands, object)), 1, stub.operations, stub.name);
}

TEST_F(ElementwiseStubs, LeaveTheirOperandsAsTheyWere) {
  const TestArray array(Kind::float64, {3}, {1, 2, 3});
  for (const Stub& stub : elementwise_stubs) {
    const Value operand = to_host(ctx(), array);
    call(stub.name, std::vector<Value>(stub.operands, operand));
    EXPECT_EQ(from_host(operand), array) << stub.name;
  }
}

TEST_F(ElementwiseStubs, OfWhatIsNoObject_Fail) {
  for (const Stub& stub : elementwise_stubs)
    for (const Value& other : no_objects())
      expect_no_result(call(stub.name, std::vector<Value>(stub.operands, other)), 0, {"AnyCheck 0"}, stub.name);
}

}  // namespace
}  // namespace arrayfold::test
