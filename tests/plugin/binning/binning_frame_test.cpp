// binning/binning_frame_test.cpp: what the functions ask of the host, what they accept, and what they leave alone

#include "binnings.hpp"
#include "support/allocations.hpp"

namespace arrayfold::test {
namespace {

class BinningFrame : public ArrayResultTest {
 protected:
  /// The arguments of a call: some need a second array.
  std::vector<Value> arguments(const std::string& name, const Value& operand) const {
    if (reads_second_array(name)) return {operand, edges_};
    return {operand};
  }
  Answer ask(const std::string& name, const Value& operand) const { return call(name, arguments(name, operand)); }

  /// The operations up to the kind of the arrays.
  static Words looked_at(const std::string& name) {
    if (reads_second_array(name)) return {"AnyCheck 0", "GetAny 0", "AnyCheck 1", "GetAny 1"};
    return {"AnyCheck 0", "GetAny 0"};
  }
  static Words asked(const std::string& name) {
    Words operations = looked_at(name);
    operations.insert(operations.end(), {"NewAny", "SetTypeAny result"});
    return operations;
  }

  /// One array of each kind that has numbers.
  std::vector<Value> numeric() { return {twos(Kind::int32), twos(Kind::int64), floats_.value(), twos(Kind::float64)}; }

  const Value edges_ = array_of<XTDouble>(ctx(), {2}, {1, 3});
  FloatObject floats_{{3}, {2, 2, 2}};
};

const Words fetched_first = {"AnyCheck 0", "GetAny 0"};

TEST_F(BinningFrame, EachKindServed_GivesItsArrayByTheSameOperations) {
  const auto expect = [&](const std::string& name, const Value& operand, const char* type) {
    const Answer answer = ask(name, operand);
    EXPECT_EQ(answer.returned, 1) << name;
    EXPECT_EQ(type_of(answer.result), type) << name;
    EXPECT_EQ(answer.operations, asked(name)) << name;
  };
  for (const char* name : {"xhistogram", "xhistogram_bin_edges", "xdigitize"})
    for (const Extents& extents : {Extents{3}, Extents{}, Extents{0}, Extents{2, 3}}) {
      FloatObject floats(extents, std::vector<float>(size_of(extents), 2));
      expect(name, twos(extents), "$xdoublearray");
      expect(name, floats.value(), "$xdoublearray");
    }
  for (const Extents& extents : {Extents{3}, Extents{}, Extents{2, 3}}) {
    expect("xbincount", twos(Kind::int32, extents), "$xintarray");
    expect("xbincount", twos(Kind::int64, extents), "$xint64array");
  }
}

TEST_F(BinningFrame, Required_KindsNotServed_FailWithoutResult) {
  for (const char* name : {"xhistogram", "xhistogram_bin_edges", "xdigitize"}) {
    expect_no_result(ask(name, twos(Kind::int32)), 0, looked_at(name), name);
    expect_no_result(ask(name, twos(Kind::int64)), 0, looked_at(name), name);
  }
  expect_no_result(ask("xbincount", twos(Kind::float64)), 0, fetched_first, "xbincount");
  expect_no_result(ask("xbincount", floats_.value()), 0, fetched_first, "xbincount");
}

TEST_F(BinningFrame, WithTooFewArguments_Fail) {
  for (const std::string& name : binnings) {
    for (const int nargs : {0, -1}) expect_no_result(call_with_count(name, {twos(), edges_}, nargs), 0, {}, name);
    if (reads_second_array(name)) expect_no_result(call(name, {twos()}), 0, {}, name);
  }
  for (const int nargs : {0, -1}) expect_no_result(call_with_count("xsearchsorted", {twos()}, nargs), 0, {}, "search");
}

TEST_F(BinningFrame, OfWhatIsNoObject_Fail) {
  for (const std::string& name : binnings)
    for (const Value& other : no_objects()) {
      expect_no_result(ask(name, other), 0, {"AnyCheck 0"}, name);
      if (reads_second_array(name))
        expect_no_result(call(name, {twos(), other}), 0, {"AnyCheck 0", "GetAny 0", "AnyCheck 1"}, name);
    }
}

// Other families give 1 here.
TEST_F(BinningFrame, Required_BoolsForeignObjectsAndThoseOfTheHostAlone_Fail) {
  ForeignObject foreign, misnamed("$xdoublearrays"), nameless(nullptr);
  const std::vector<Value> without_numbers = {array_of<XTBool>(ctx(), {2}, {true, false}),
                                              array_of<XTBool>(ctx(), {0}, {}),
                                              array_of<XTBool>(ctx(), {}, {true}),
                                              foreign.value(),
                                              misnamed.value(),
                                              nameless.value(),
                                              Value::object(ctx(), "$xdoublearray"),
                                              Value::object(ctx(), "$xintarray"),
                                              Value::object(ctx(), "$xint64array"),
                                              Value::object(ctx(), "$xboolarray")};
  for (const std::string& name : binnings)
    for (const Value& operand : without_numbers) {
      ASSERT_TRUE(operand.is_object());
      expect_no_result(ask(name, operand), 0, fetched_first, name);
      if (reads_second_array(name)) expect_no_result(call(name, {twos(), operand}), 0, looked_at(name), name);
      // The bins stay unread.
      expect_no_result(call("xhistogram", {operand, Value(5)}), 0, fetched_first, "bins");
    }
}

TEST_F(BinningFrame, SecondArrays_MayBeOfEachKindWithNumbers) {
  for (const char* name : {"xhistogram_bin_edges", "xdigitize"})
    for (const Value& second : numeric()) {
      const Answer answer = call(name, {twos(), second});
      EXPECT_EQ(answer.returned, 1) << name;
      EXPECT_EQ(answer.operations, asked(name)) << name;
    }
}

// ---- Bins

TEST_F(BinningFrame, Bins_AreReadAs64BitsBeforeAnotherKindFails) {
  const Words read = {"AnyCheck 0", "GetAny 0", "NumberCheck 1", "AsInt64 1"};
  Words served = read;
  served.insert(served.end(), {"NewAny", "SetTypeAny result"});
  for (const Value& bins : {Value(5), Value(std::int64_t{5}), Value(5.9)}) {
    const Answer answer = call("xhistogram", {twos(), bins});
    EXPECT_EQ(answer.operations, served);
    EXPECT_EQ(given(answer, Kind::float64), TestArray(Kind::float64, {5}, {0, 0, 0, 0, 3}));
    expect_no_result(call("xhistogram", {twos(Kind::int32), bins}), 0, read, "int");
    expect_no_result(call("xhistogram", {twos(Kind::int64), bins}), 0, read, "int64");
  }
}

TEST_F(BinningFrame, BinsThatAreNoNumber_Fail) {
  const Words read = {"AnyCheck 0", "GetAny 0", "NumberCheck 1"};
  std::vector<Value> no_numbers = {twos()};
  for (const Value& other : no_objects())
    if (!other.is_number()) no_numbers.push_back(other);
  ASSERT_GT(no_numbers.size(), 200u);
  for (const Value& bins : no_numbers)
    for (const Value& operand : numeric()) expect_no_result(call("xhistogram", {operand, bins}), 0, read, "no number");
}

// ---- What is not read

TEST_F(BinningFrame, FurtherArguments_AreNotReadAndNotChecked) {
  const Value doubles = array_of<XTDouble>(ctx(), {3}, {0.5, 1.0, 2.5}), ints = array_of<XTInt>(ctx(), {3}, {0, 2, 2});
  const std::vector<std::pair<std::string, std::vector<Value>>> calls = {{"xhistogram", {doubles, Value(3)}},
                                                                         {"xhistogram_bin_edges", {doubles, edges_}},
                                                                         {"xdigitize", {doubles, edges_}},
                                                                         {"xbincount", {ints}}};
  for (const auto& [name, args] : calls) {
    const Answer alone = call(name, args);
    ASSERT_EQ(alone.returned, 1) << name;
    for (const Value& further :
         {Value(0), Value(true ? 1 : 0), Value("text"), Value(), raw(static_cast<ValueTag>(77)), twos()}) {
      auto more = args;
      more.push_back(further);
      more.push_back(Value(0));
      const Answer answer = call(name, more);
      EXPECT_EQ(answer.operations, alone.operations) << name;
      EXPECT_EQ(dump(Value(answer.result)), dump(Value(alone.result))) << name;
    }
  }
}

TEST_F(BinningFrame, Operands_StayAsTheyWere) {
  const TestArray array(Kind::float64, {2, 3}, {3, 1, 2, 9, 8, 7});
  const Value doubles = to_host(ctx(), array), ints = array_of<XTInt>(ctx(), {3}, {3, 1, 2});
  for (const std::string& name : binnings) {
    ask(name, name == "xbincount" ? ints : doubles);
    EXPECT_EQ(from_host(doubles), array) << name;
    EXPECT_EQ(elements_of<XTInt>(ints), (std::vector<std::int32_t>{3, 1, 2})) << name;
    EXPECT_EQ(elements_of<XTDouble>(edges_), (std::vector<double>{1, 3})) << name;
  }
}

TEST_F(BinningFrame, IntoTheOperandsOwnRecord_TheNewArrayReplacesIt) {
  for (const std::string& name : binnings) {
    auto args = arguments(name, name == "xbincount" ? twos(Kind::int32) : twos(Kind::float64));
    const std::string expected = dump(call(name, args).result);
    const EntryFunction function = Module::loaded().entry(name);
    EXPECT_EQ(function(ctx(), hvm::records_of(args), static_cast<int>(args.size()), args[0].address()), 1);
    EXPECT_EQ(dump(args[0]), expected) << name;
  }
}

// ---- Arrays without a container, and shapes whose product is not the number of stored elements

using BinningFrameDeathTest = BinningFrame;

TEST_F(BinningFrameDeathTest, ArraysWithoutAContainer_EndTheProcess) {
  ::testing::FLAGS_gtest_death_test_style = "fast";
  const Value empty = call("xarange", {Value(1), Value(2), Value(3), Value(4)}).result;
  ASSERT_EQ(type_of(empty), "$xdoublearray");
  for (const std::string name : {"xhistogram", "xhistogram_bin_edges", "xdigitize"})
    EXPECT_DEATH(ask(name, empty), "") << name;
  EXPECT_DEATH(call("xdigitize", {twos(), empty}), "");
  // Where only its kind counts, it does not.
  expect_no_result(ask("xbincount", empty), 0, fetched_first, "xbincount");
  EXPECT_EQ(call("xhistogram_bin_edges", {twos(), empty}).returned, 1);
}

TEST_F(BinningFrame, ExtentsBeyondTheStorage_Throw) {
  const auto with_wrong_shape = [&](Value wrong, const std::vector<Value>& extents) {
    EXPECT_EQ(method(wrong, "reshape", extents).returned, 1);
    return wrong;
  };
  const std::vector<Value> negative = {Value(-2), Value(-3)}, wrapping(4, Value(65536));
  for (const std::string name : {"xhistogram", "xhistogram_bin_edges", "xdigitize"}) {
    EXPECT_THROW(ask(name, with_wrong_shape(twos({6}), negative)), std::bad_alloc) << name;
    EXPECT_THROW(ask(name, with_wrong_shape(twos({0}), wrapping)), std::bad_alloc) << name;
  }
  EXPECT_THROW(ask("xbincount", with_wrong_shape(twos(Kind::int32, {6}), negative)), std::bad_alloc);
  EXPECT_THROW(ask("xbincount", with_wrong_shape(twos(Kind::int64, {6}), negative)), std::bad_alloc);
  EXPECT_THROW(ask("xbincount", with_wrong_shape(twos(Kind::int32, {0}), wrapping)), std::bad_alloc);
  // Edges are searched as they lie.
  EXPECT_EQ(given(call("xdigitize", {twos({1}), with_wrong_shape(twos({6}), negative)}), Kind::float64),
            TestArray(Kind::float64, {1}, {6}));
  EXPECT_EQ(call("xhistogram_bin_edges", {twos(), with_wrong_shape(twos({6}), negative)}).returned, 1);
}

// ---- The sorted search, which is none

TEST_F(BinningFrame, Required_XsearchsortedOfAnyObject_LooksAtItAndReturnsNoValue) {
  ForeignObject foreign;
  auto objects = numeric();
  objects.push_back(foreign.value());
  objects.push_back(twos(Kind::boolean));
  objects.push_back(Value::object(ctx(), "$xintarray"));
  objects.push_back(call("xarange", {Value(1), Value(2), Value(3), Value(4)}).result);
  for (const Value& object : objects) {
    expect_no_result(call("xsearchsorted", {object}), 1, fetched_first, "one");
    expect_no_result(call("xsearchsorted", {object, Value(2)}), 1, fetched_first, "two");
    expect_no_result(call("xsearchsorted", {object, object, Value("text")}), 1, fetched_first, "three");
    for (const Value& other : no_objects())
      expect_no_result(call("xsearchsorted", {object, other}), 1, fetched_first, "other");
  }
}

TEST_F(BinningFrame, XsearchsortedOfWhatIsNoObject_Fails) {
  for (const Value& other : no_objects()) {
    expect_no_result(call("xsearchsorted", {other}), 0, {"AnyCheck 0"}, "one");
    expect_no_result(call("xsearchsorted", {other, twos()}), 0, {"AnyCheck 0"}, "two");
  }
}

// ---- Memory

TEST_F(BinningFrame, Allocations_DoNotGrowWithTheElements) {
  const auto cost = [&](const std::string& name, const Value& operand) {
    std::vector<Value> args = arguments(name, operand);
    Value result;
    const auto before = allocations().made;
    EXPECT_EQ(
        Module::loaded().entry(name)(ctx(), hvm::records_of(args), static_cast<int>(args.size()), result.address()), 1);
    return allocations().made - before;
  };
  for (const char* name : {"xhistogram", "xhistogram_bin_edges", "xdigitize"})
    EXPECT_EQ(cost(name, twos({100000})), cost(name, twos({10}))) << name;
  EXPECT_EQ(cost("xbincount", twos(Kind::int32, {100000})), cost("xbincount", twos(Kind::int32, {10})));
}

}  // namespace
}  // namespace arrayfold::test
