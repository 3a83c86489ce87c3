// order/ordering_frame_test.cpp: what the functions ask of the host, what they accept, and what they leave alone

#include "ordering.hpp"
#include "support/allocations.hpp"

namespace arrayfold::test {
namespace {

class OrderFrame : public OrderingTest {
 protected:
  /// The arguments of a call: partitions get a rank, too.
  static std::vector<Value> arguments(const std::string& name, const Value& operand) {
    if (reads_rank(name)) return {operand, Value(1)};
    return {operand};
  }
  Answer ask(const std::string& name, const Value& operand) const { return call(name, arguments(name, operand)); }

  /// The operations of a call that gives an array.
  static Words asked(const std::string& name, const char* rank_operation) {
    if (!reads_rank(name)) return {"AnyCheck 0", "GetAny 0", "NewAny", "SetTypeAny result"};
    return {"AnyCheck 0", "GetAny 0", "NumberCheck 1", rank_operation, "AnyCheck 0", "NewAny", "SetTypeAny result"};
  }
};

const Words looked_at = {"AnyCheck 0", "GetAny 0"};

/// Do the functions that find positions give ints of every kind?
bool gives_ints(const std::string& name) { return name.rfind("xarg", 0) == 0; }

TEST_F(OrderFrame, EachKind_GivesItsOwnKindOrInts_ByTheSameOperations) {
  const FloatKindRegistered registered;
  for (const Extents& extents : {Extents{4}, Extents{}, Extents{0}, Extents{2, 3}, Extents{2, 1, 1, 1, 1, 2}}) {
    FloatObject floats(extents, std::vector<float>(size_of(extents), 2));
    for (const std::string& name : orderings) {
      const auto expect = [&](const Value& operand, const char* type, const char* rank_operation) {
        const Answer answer = ask(name, operand);
        EXPECT_EQ(answer.returned, 1) << name;
        EXPECT_EQ(type_of(answer.result), gives_ints(name) ? "$xintarray" : type) << name;
        EXPECT_EQ(answer.operations, asked(name, rank_operation)) << name;
      };
      expect(twos(Kind::float64, extents), "$xdoublearray", "AsInt 1");
      expect(floats.value(), "$xfloatarray", "AsInt 1");
      expect(twos(Kind::int32, extents), "$xintarray", "AsInt 1");
      expect(twos(Kind::int64, extents), "$xint64array", "AsInt64 1");
    }
  }
}

TEST_F(OrderFrame, FloatsWhereTheHostKnowsNoSuchName_TellItOfNull) {
  FloatObject floats({3}, {3, 1, 2});
  for (const std::string name : {"xsort", "xpartition", "xunique", "xdiff"}) {
    const Answer answer = ask(name, floats.value());
    EXPECT_EQ(answer.returned, 1) << name;
    EXPECT_EQ(answer.operations, asked(name, "AsInt 1")) << name;
    EXPECT_EQ(type_of(answer.result), "") << name;
  }
  for (const std::string name : {"xargsort", "xargpartition", "xargmin", "xargmax"})
    EXPECT_EQ(type_of(ask(name, floats.value()).result), "$xintarray") << name;
}

TEST_F(OrderFrame, WithTooFewArguments_Fail) {
  for (const std::string& name : orderings) {
    for (const int nargs : {0, -1}) expect_no_result(call_with_count(name, {twos(), Value(1)}, nargs), 0, {}, name);
    if (reads_rank(name)) expect_no_result(call(name, {twos()}), 0, {}, name);
  }
  for (const int nargs : {1, 0, -1})
    expect_no_result(call_with_count("xsetdiff1d", {twos(), twos()}, nargs), 0, {}, "xsetdiff1d");
}

TEST_F(OrderFrame, OfWhatIsNoObject_Fail) {
  for (const std::string& name : orderings)
    for (const Value& operand : no_objects())
      expect_no_result(ask(name, operand), 0, {"AnyCheck 0"},
                       name + " of tag " + std::to_string(static_cast<int>(operand.tag())));
}

TEST_F(OrderFrame, Required_Bools_AreHandledWithoutResult) {
  for (const std::string& name : orderings) {
    expect_no_result(ask(name, array_of<XTBool>(ctx(), {2}, {true, false})), 1, looked_at, name);
    expect_no_result(ask(name, array_of<XTBool>(ctx(), {0}, {})), 1, looked_at, name);
    expect_no_result(ask(name, array_of<XTBool>(ctx(), {}, {true})), 1, looked_at, name);
  }
}

TEST_F(OrderFrame, Required_ForeignObjects_AreHandledWithoutResult) {
  for (const char* type_name : {"$foreign", "", "$xdoublearra", "$xdoublearrays", "$XINTARRAY"}) {
    ForeignObject foreign(type_name);
    for (const std::string& name : orderings) expect_no_result(ask(name, foreign.value()), 1, looked_at, name);
  }
  ForeignObject nameless(nullptr);
  for (const std::string& name : orderings) expect_no_result(ask(name, nameless.value()), 1, looked_at, name);
}

TEST_F(OrderFrame, ObjectsThatTheHostMadeAlone_AreHandledWithoutResult) {
  for (const char* type_name : {"$xdoublearray", "$xintarray", "$xint64array", "$xboolarray"}) {
    const Value bare = Value::object(ctx(), type_name);
    ASSERT_EQ(type_of(bare), type_name);
    for (const std::string& name : orderings) expect_no_result(ask(name, bare), 1, looked_at, name);
  }
}

TEST_F(OrderFrame, Required_OfWhatHasNoOrder_TheRankIsNotRead) {
  ForeignObject foreign;
  for (const char* name : {"xpartition", "xargpartition"})
    for (const Value& rank : {Value("text"), Value(), Value(1), twos()}) {
      expect_no_result(call(name, {array_of<XTBool>(ctx(), {1}, {true}), rank}), 1, looked_at, name);
      expect_no_result(call(name, {foreign.value(), rank}), 1, looked_at, name);
    }
}

using OrderFrameDeathTest = OrderFrame;

TEST_F(OrderFrameDeathTest, ArraysWithoutAContainer_EndTheProcess) {
  ::testing::FLAGS_gtest_death_test_style = "fast";
  const Value empty = call("xarange", {Value(1), Value(2), Value(3), Value(4)}).result;
  ASSERT_EQ(type_of(empty), "$xdoublearray");
  for (const std::string& name : orderings) EXPECT_DEATH(ask(name, empty), "") << name;
}

TEST_F(OrderFrame, FurtherArguments_AreNotReadAndNotChecked) {
  const Value operand = array_of<XTInt>(ctx(), {2, 3}, {3, 1, 2, 9, 8, 8});
  for (const std::string& name : orderings) {
    const Answer alone = ask(name, operand);
    for (const Value& further :
         {Value(0), Value(1), Value("text"), Value(), raw(static_cast<ValueTag>(77)), twos(), Value::table()}) {
      auto args = arguments(name, operand);
      args.push_back(further);
      args.push_back(Value(0));
      const Answer answer = call(name, args);
      EXPECT_EQ(answer.operations, alone.operations) << name;
      EXPECT_TRUE(given(answer, Kind::int32) == given(alone, Kind::int32)) << name;
    }
  }
}

TEST_F(OrderFrame, IntoTheOperandsOwnRecord_TheNewArrayReplacesIt) {
  for (const std::string& name : orderings) {
    auto args = arguments(name, array_of<XTInt>(ctx(), {4}, {3, 1, 2, 2}));
    const auto expected = given(call(name, args), Kind::int32);
    const EntryFunction function = Module::loaded().entry(name);
    EXPECT_EQ(function(ctx(), hvm::records_of(args), static_cast<int>(args.size()), args[0].address()), 1);
    EXPECT_TRUE(from_host(args[0]) == expected) << name;
  }
}

// ---- Shapes whose product is not the number of stored elements, as `reshape` can leave them

TEST_F(OrderFrame, ExtentsBeyondTheStorage_ThrowWhereRowsAreRead) {
  const auto expect_throws = [&](Value wrong, const std::vector<Value>& extents) {
    ASSERT_EQ(method(wrong, "reshape", extents).returned, 1);
    for (const std::string name : {"xsort", "xargsort", "xpartition", "xargpartition", "xdiff"})
      EXPECT_THROW(ask(name, wrong), std::bad_alloc) << name;
  };
  expect_throws(array_of<XTDouble>(ctx(), {6}, {1, 2, 3, 4, 5, 9}), {Value(-2), Value(-3)});
  expect_throws(array_of<XTInt>(ctx(), {6}, {1, 2, 3, 4, 5, 9}), {Value(-2), Value(-3)});
  expect_throws(array_of<XTInt64>(ctx(), {6}, {1, 2, 3, 4, 5, 9}), {Value(-2), Value(-3)});
  // 65536 to the fourth wraps to 0.
  expect_throws(array_of<XTDouble>(ctx(), {0}, {}), std::vector<Value>(4, Value(65536)));
}

TEST_F(OrderFrame, ExtentsBeyondTheStorage_DoNotMatterWhereTheStorageIsRead) {
  Value wrong = array_of<XTDouble>(ctx(), {6}, {4, 2, 9, 1, 2, 9});
  ASSERT_EQ(method(wrong, "reshape", {Value(-2), Value(-3)}).returned, 1);
  EXPECT_EQ(given(ask("xunique", wrong), Kind::float64), TestArray(Kind::float64, {4}, {1, 2, 4, 9}));
  EXPECT_EQ(given(ask("xargmin", wrong), Kind::int32), TestArray(Kind::int32, {}, {3}));
  EXPECT_EQ(given(ask("xargmax", wrong), Kind::int32), TestArray(Kind::int32, {}, {2}));
  Value empty = array_of<XTDouble>(ctx(), {0}, {});
  ASSERT_EQ(method(empty, "reshape", std::vector<Value>(4, Value(65536))).returned, 1);
  EXPECT_EQ(given(ask("xunique", empty), Kind::float64), TestArray(Kind::float64, {0}, {}));
  EXPECT_EQ(given(ask("xargmax", empty), Kind::int32), TestArray(Kind::int32, {}, {0}));
}

// ---- The set difference, which is none

TEST_F(OrderFrame, Required_XsetdiffOfTwoArrays_LooksTwiceAtTheFirstAndFails) {
  const Words operations = {"AnyCheck 0", "AnyCheck 1", "GetAny 0", "GetAny 0"};
  ForeignObject foreign;
  FloatObject floats({2}, {1, 2});
  const Value hollow = Value::object(ctx(), "$xintarray");
  const Value null_array = call("xarange", {Value(1), Value(2), Value(3), Value(4)}).result;
  const std::vector<Value> objects = {
      twos(), twos(Kind::int32), twos(Kind::int64), twos(Kind::boolean), floats.value(), foreign.value(),
      hollow, null_array};
  for (const Value& left : objects)
    for (const Value& right : objects) {
      expect_no_result(call("xsetdiff1d", {left, right}), 0, operations, "two");
      expect_no_result(call("xsetdiff1d", {left, right, Value("text"), twos()}), 0, operations, "four");
    }
}

TEST_F(OrderFrame, XsetdiffOfWhatIsNoObject_FailsAtTheFirst) {
  for (const Value& other : no_objects()) {
    expect_no_result(call("xsetdiff1d", {other, twos()}), 0, {"AnyCheck 0"}, "first");
    expect_no_result(call("xsetdiff1d", {other, other}), 0, {"AnyCheck 0"}, "both");
    expect_no_result(call("xsetdiff1d", {twos(), other}), 0, {"AnyCheck 0", "AnyCheck 1"}, "second");
  }
}

// ---- Memory

TEST_F(OrderFrame, Allocations_DoNotGrowWithTheElements) {
  const auto cost = [&](const std::string& name, const Value& operand) {
    std::vector<Value> args = arguments(name, operand);
    Value result;
    const auto before = allocations().made;
    EXPECT_EQ(
        Module::loaded().entry(name)(ctx(), hvm::records_of(args), static_cast<int>(args.size()), result.address()), 1);
    return allocations().made - before;
  };
  for (const std::string& name : orderings) {
    // One more is for the detour over another type.
    EXPECT_LE(cost(name, twos(Kind::int32, {100000})), cost(name, twos(Kind::int32, {10})) + 1) << name;
    EXPECT_LE(cost(name, twos(Kind::float64, {100000})), cost(name, twos(Kind::float64, {10})) + 1) << name;
    EXPECT_LE(cost(name, twos(Kind::float64, {3000, 7})), cost(name, twos(Kind::float64, {2, 7}))) << name;
  }
}

}  // namespace
}  // namespace arrayfold::test
