// create/random_test.cpp: xrand, xrandn, xrandint, xchoice, xshuffle, xpermutation
//
// An engine of the test's goes in step with the module's: each call must draw what the standard library's
// distributions and the array library's shuffle draw from it, no more and no less.

#include <algorithm>
#include <climits>
#include <cmath>

#include "engine_in_step.hpp"
#include "reference.hpp"
#include "support/allocations.hpp"
#include "support/hand_made.hpp"

namespace arrayfold::test {
namespace {

class Random : public RandomTest {
 protected:
  /// The elements of a new double array of these extents.
  std::vector<double> drawn(const char* name, const std::vector<int>& extents) const {
    std::vector<Value> args;
    for (const int extent : extents) args.emplace_back(extent);
    Answer answer = call(name, std::move(args));
    EXPECT_EQ(answer.returned, 1) << name;
    EXPECT_EQ(type_of(answer.result), "$xdoublearray") << name;
    EXPECT_EQ(shape(answer.result), (std::vector<std::int64_t>(extents.begin(), extents.end())));
    return elements_of<XTDouble>(answer.result);
  }

  std::vector<double> expected_uniform(std::size_t count) const {
    std::vector<double> expected(count);
    for (double& x : expected) x = uniform(engine());
    return expected;
  }
  /// One distribution for the call: it makes its deviates in pairs, and a second one that is left over is lost.
  std::vector<double> expected_normal(std::size_t count) const {
    std::normal_distribution<double> normal(0.0, 1.0);
    std::vector<double> expected(count);
    for (double& x : expected) x = normal(engine());
    return expected;
  }

  static void expect_same(const std::vector<double>& found, const std::vector<double>& expected) {
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i)
      EXPECT_TRUE(same(found[i], expected[i])) << i << " of " << found.size();
  }

  void expect_failure_in_step(const char* name, std::vector<Value> args, const Words& operations) const {
    expect_no_result(call(name, std::move(args)), 0, operations, name);
    expect_in_step(name);
  }
};

constexpr const char* by_extents[] = {"xrand", "xrandn"};

// ---- xrand

TEST_F(Random, Xrand_OfEveryLength_IsTheUniformDistributions) {
  for (int count = 0; count <= 600; ++count) {
    const auto found = drawn("xrand", {count});
    expect_same(found, expected_uniform(static_cast<std::size_t>(count)));
    for (const double x : found) EXPECT_TRUE(x >= 0 && x < 1) << x;
  }
}

TEST_F(Random, Xrand_OfMoreDimensions_DrawsInStorageOrder) {
  expect_same(drawn("xrand", {2, 3}), expected_uniform(6));
  expect_same(drawn("xrand", {3, 1}), expected_uniform(3));
  expect_same(drawn("xrand", {2, 3, 4}), expected_uniform(24));
  expect_same(drawn("xrand", {1, 2, 1, 2, 1, 2, 1, 2, 1}), expected_uniform(16));
}

TEST_F(Random, Xrand_OfManyElements) { expect_same(drawn("xrand", {300, 400}), expected_uniform(120000)); }

// ---- xrandn

TEST_F(Random, Xrandn_OfEveryLength_IsAFreshNormalDistributions) {
  for (int count = 0; count <= 600; ++count)
    expect_same(drawn("xrandn", {count}), expected_normal(static_cast<std::size_t>(count)));
}

TEST_F(Random, Xrandn_OfMoreDimensions_DrawsInStorageOrder) {
  expect_same(drawn("xrandn", {2, 3}), expected_normal(6));
  expect_same(drawn("xrandn", {5, 1}), expected_normal(5));
  expect_same(drawn("xrandn", {3, 3, 3}), expected_normal(27));
  expect_same(drawn("xrandn", {1, 3, 1, 3, 1, 3, 1, 3, 1}), expected_normal(81));
}

TEST_F(Random, Xrandn_OfManyElements) { expect_same(drawn("xrandn", {301, 401}), expected_normal(120701)); }

TEST_F(Random, Required_XrandnOfAnOddCount_LosesADeviate) {
  std::mt19937 ahead = engine();
  std::normal_distribution<double> one(0.0, 1.0);
  std::vector<double> carried(6);
  for (double& x : carried) x = one(ahead);
  const auto first = drawn("xrandn", {3}), second = drawn("xrandn", {3});
  EXPECT_TRUE(std::equal(first.begin(), first.end(), carried.begin()));
  EXPECT_NE(second[0], carried[3]);  // the second of the second pair
  EXPECT_EQ(second[0], carried[4]);  // the first of the third
  EXPECT_EQ(second[1], carried[5]);
  expected_normal(3);
  expected_normal(3);
}

// ---- Both

TEST_F(Random, OfNoElements_DrawNothing) {
  for (const char* name : by_extents)
    for (const auto& extents : std::vector<std::vector<int>>{{0}, {0, 3}, {3, 0}, {2, 0, 2}}) {
      EXPECT_TRUE(drawn(name, extents).empty());
      expect_in_step(name);
    }
}

TEST_F(Random, EachExtent_IsCheckedAndReadInTurn) {
  EXPECT_EQ(call("xrand", {Value(2), Value(1)}).operations,
            (Words{"NumberCheck 0", "AsInt 0", "NumberCheck 1", "AsInt 1", "NewAny", "SetTypeAny result"}));
  expected_uniform(2);
  EXPECT_EQ(call("xrandn", {Value(1), Value(2)}).operations,
            (Words{"NumberCheck 0", "AsInt 0", "NumberCheck 1", "AsInt 1", "NewAny", "SetTypeAny result"}));
  expected_normal(2);
}

TEST_F(Random, AnExtent_IsTheIntegerOfAnyNumber) {
  const Answer answer = call("xrand", {Value(2.9), Value((std::int64_t{1} << 32) + 3)});
  expect_same(elements_of<XTDouble>(answer.result), expected_uniform(6));
}

TEST_F(Random, WhatIsNoNumber_FailsAtTheFirst_AndNothingIsDrawn) {
  for (const char* name : by_extents) {
    expect_failure_in_step(name, {}, {});
    for (const Value& no_number :
         {Value("a"), Value("3"), Value(), Value::table(), Value(u"3"), array_of<XTInt>(ctx(), {1}, {1})}) {
      expect_failure_in_step(name, {no_number}, {"NumberCheck 0"});
      expect_failure_in_step(name, {no_number, Value(2)}, {"NumberCheck 0"});
      expect_failure_in_step(name, {Value(2), no_number, Value(4)}, {"NumberCheck 0", "AsInt 0", "NumberCheck 1"});
    }
    const Answer answer = call_with_count(name, {Value(3)}, -1);
    EXPECT_EQ(answer.returned, 0);
    EXPECT_TRUE(answer.untouched);
  }
}

TEST_F(Random, ImpossibleExtents_EndInBadAlloc_AndNothingIsDrawn) {
  const std::vector<std::vector<Value>> impossible = {
      {Value(-1)},
      {Value(-1), Value(-1)},  // whose product wraps to 1
      {Value(0), Value(-1)},
      {Value(-1), Value(0)},
      {Value(2), Value(-1)},
      {Value(INT_MIN)},
      {Value(65536), Value(65536), Value(65536), Value(65536)},  // wraps to 0
      {Value(1 << 30), Value(1 << 30), Value(2)},                // 2^61 elements: the bytes wrap to 0
      {Value(INT_MAX), Value(INT_MAX)},
      {Value(INT_MAX), Value(65536)}};
  for (const char* name : by_extents)
    for (const auto& args : impossible) {
      EXPECT_THROW(call(name, args), std::bad_alloc) << name;
      expect_in_step(name);
    }
}

TEST_F(Random, WithoutMemory_NothingIsDrawn) {
  for (const char* name : by_extents) {
    const EntryFunction function = Module::loaded().entry(name);
    int failures = 0;
    for (bool done = false; !done;) {
      std::vector<Value> args = {Value(7), Value(1), Value(1), Value(1), Value(1)};
      Value result;
      fail_allocation(failures + 1);
      try {
        function(ctx(), hvm::records_of(args), 5, result.address());
        done = !allocation_has_failed();
        fail_allocation(0);
        // Where the host alone could not make its object the numbers are drawn and lost.
        name == std::string("xrand") ? expected_uniform(7) : expected_normal(7);
      } catch (const std::bad_alloc&) {
        fail_allocation(0);
        expect_in_step(name);
      }
      ++failures;
    }
    EXPECT_GE(failures, 5) << name;
  }
}

TEST_F(Random, WithoutAnObjectOfTheHost_ResultIsNilAndTheNumbersAreDrawn) {
  for (const char* name : by_extents) {
    hvm::withhold_objects(true);
    const Answer answer = call(name, {Value(3)});
    hvm::withhold_objects(false);
    EXPECT_EQ(answer.returned, 1);
    EXPECT_EQ(answer.operations, (Words{"NumberCheck 0", "AsInt 0", "NewAny", "SetTypeAny result"}));
    EXPECT_TRUE(answer.result.is_nil());
    name == std::string("xrand") ? expected_uniform(3) : expected_normal(3);
    expect_in_step(name);
  }
}

// ---- Stubs

TEST_F(Random, Required_Xrandint_IsHandledWithoutResult) {
  for (const auto& args : std::vector<std::vector<Value>>{{Value(0), Value(10)},
                                                          {Value("text")},
                                                          {Value()},
                                                          {raw(static_cast<ValueTag>(77))},
                                                          {array_of<XTInt>(ctx(), {1}, {1})}}) {
    const Answer answer = call("xrandint", args);
    EXPECT_EQ(answer.returned, 1);
    EXPECT_TRUE(answer.untouched);
    EXPECT_EQ(answer.operations, Words{});
    expect_in_step("xrandint");
  }
  expect_failure_in_step("xrandint", {}, {});
  EXPECT_EQ(call_with_count("xrandint", {Value(1)}, -1).returned, 0);
}

TEST_F(Random, Required_Xchoice_IsHandledWithoutResult_EvenWithoutArguments) {
  for (const int nargs : {-1, 0, 1, 2}) {
    const Answer answer = call_with_count("xchoice", {array_of<XTInt>(ctx(), {2}, {1, 2}), Value(5)}, nargs);
    EXPECT_EQ(answer.returned, 1);
    EXPECT_TRUE(answer.untouched);
    EXPECT_EQ(answer.operations, Words{});
    expect_in_step("xchoice");
  }
}

// ---- xshuffle and xpermutation

constexpr const char* shuffles[] = {"xshuffle", "xpermutation"};

class Shuffles : public OverKinds<Random> {
 protected:
  /// Counted from 0 on.
  static TestArray counted(const Extents& extents) {
    Numbers x;
    for (std::size_t i = 0; i < size_of(extents); ++i) x.push_back(i);
    return TestArray(kind(), extents, x);
  }

  static void expect_integer_zero(const Answer& answer, const char* name) {
    EXPECT_EQ(answer.returned, 1) << name;
    EXPECT_EQ(answer.operations, (Words{"AnyCheck 0", "GetAny 0", "SetInt result"})) << name;
    EXPECT_EQ(answer.result.tag(), ValueTag::integer) << name;
    EXPECT_EQ(load<std::int32_t>(answer.result.record().payload), 0) << name;
  }

  /// The array library's shuffle, by the engine in step.
  static TestArray expected_shuffle(const TestArray& array) { return library_shuffle(array, engine()); }

  void expect_shuffled(const Extents& extents) const {
    const TestArray array = counted(extents);
    Operand operand(ctx(), array);
    const Value value = operand.value();
    const void* container = container_address(value);
    expect_integer_zero(call("xshuffle", {value}), "xshuffle");
    EXPECT_EQ(from_host(value), expected_shuffle(array));
    EXPECT_EQ(container_address(value), container);
    expect_in_step(::testing::PrintToString(extents));
  }

  /// Draws as a shuffle of the same extents, and moves nothing.
  void expect_permuted_away(const Extents& extents) const {
    const TestArray array = counted(extents);
    Operand operand(ctx(), array);
    const Value value = operand.value();
    expect_integer_zero(call("xpermutation", {value}), "xpermutation");
    EXPECT_EQ(from_host(value), array);
    expected_shuffle(array);
    expect_in_step(::testing::PrintToString(extents));
  }

  void expect_both(const Extents& extents) const {
    expect_shuffled(extents);
    expect_permuted_away(extents);
  }
};

INSTANTIATE_TEST_SUITE_P(Kinds, Shuffles, ::testing::ValuesIn(numeric_kinds), KindName());

TEST_P(Shuffles, OfOneDimension_AreTheLibrarys) {
  for (std::size_t length = 1; length <= 60; ++length) expect_both({length});
  expect_both({1000});
  expect_both({70000});
}

TEST_P(Shuffles, OfMoreDimensions_MoveWholeRows) {
  for (std::size_t rows = 1; rows <= 9; ++rows)
    for (std::size_t columns = 1; columns <= 9; ++columns) expect_both({rows, columns});
  for (const Extents& extents : std::vector<Extents>{{3, 2, 2},
                                                     {5, 1, 4},
                                                     {4, 3, 1},
                                                     {1, 4, 4},
                                                     {100, 30},
                                                     {7, 2, 2, 2},
                                                     {3, 1, 2, 1, 2, 1, 2, 1, 2},
                                                     {9, 1, 1, 1, 1, 1, 1, 1, 1}})
    expect_both(extents);
}

TEST_P(Shuffles, KeepRowsTogetherAndElementsComplete) {
  const TestArray array = counted({50, 3});
  Operand operand(ctx(), array);
  call("xshuffle", {operand.value()});
  expected_shuffle(counted({50}));
  EXPECT_NE(from_host(operand.value()), array);
  auto found = from_host(operand.value()).as_doubles();
  for (std::size_t row = 0; row < 50; ++row) {
    EXPECT_EQ(static_cast<int>(found[3 * row]) % 3, 0);
    EXPECT_EQ(found[3 * row + 1], found[3 * row] + 1);
    EXPECT_EQ(found[3 * row + 2], found[3 * row] + 2);
  }
  std::sort(found.begin(), found.end());
  EXPECT_EQ(found, array.as_doubles());
}

TEST_P(Shuffles, OfNoOrOneRow_DrawNothing) {
  for (const char* name : shuffles)
    for (const Extents& extents : std::vector<Extents>{{}, {0}, {0, 3}, {0, 0}, {1}, {1, 5}, {1, 0}, {1, 2, 3}}) {
      const TestArray array = counted(extents);
      Operand operand(ctx(), array);
      expect_integer_zero(call(name, {operand.value()}), name);
      EXPECT_EQ(from_host(operand.value()), array);
      expect_in_step(name);
    }
}

TEST_P(Shuffles, OfRowsWithoutElements_DrawAllTheSame) {
  for (const char* name : shuffles)
    for (const Extents& extents : std::vector<Extents>{{3, 0}, {3, 2, 0}}) {
      Operand operand(ctx(), kind(), extents, {});
      expect_integer_zero(call(name, {operand.value()}), name);
      expected_shuffle(counted({3}));
      expect_in_step(name);
    }
}

TEST_F(Random, Required_XpermutationMovesTheEngineAlone) {
  const std::vector<std::int32_t> x = {1, 2, 3, 4};
  const Value array = array_of<XTInt>(ctx(), {4}, x);
  std::mt19937 without = engine();
  const Answer answer = call("xpermutation", {array});
  EXPECT_EQ(answer.result.tag(), ValueTag::integer);
  EXPECT_EQ(elements_of<XTInt>(array), x);
  library_shuffle(TestArray(Extents{4}, x), engine());
  EXPECT_NE(uniform(without), drawn("xrand", {1})[0]);
  expected_uniform(1);
}

TEST_F(Random, Shuffles_OfWhatIsNoObject_Fail) {
  for (const char* name : shuffles) {
    expect_failure_in_step(name, {}, {});
    const Answer answer = call_with_count(name, {array_of<XTInt>(ctx(), {2}, {1, 2})}, -1);
    EXPECT_EQ(answer.returned, 0);
    EXPECT_EQ(answer.operations, Words{});
    for (int tag = 0; tag < 256; ++tag)
      if (tag != static_cast<int>(ValueTag::object))
        expect_failure_in_step(name, {raw(static_cast<ValueTag>(tag)), array_of<XTInt>(ctx(), {2}, {1, 2})},
                               {"AnyCheck 0"});
  }
}

TEST_F(Random, Required_ShufflesOfBoolsAndForeignObjects_AreHandledWithoutResult) {
  ForeignObject foreign, nameless(nullptr);
  const std::vector<bool> x = {true, false, false, true, false, true, true};
  for (const char* name : shuffles) {
    const Value bools = array_of<XTBool>(ctx(), {7}, x);
    for (const Value& operand : {bools, foreign.value(), nameless.value(), Value::object(ctx(), "$xintarray")}) {
      const Answer answer = call(name, {operand});
      EXPECT_EQ(answer.returned, 1) << name;
      EXPECT_TRUE(answer.untouched) << name;
      EXPECT_EQ(answer.operations, (Words{"AnyCheck 0", "GetAny 0"})) << name;
      expect_in_step(name);
    }
    EXPECT_EQ(elements_of<XTBool>(bools), x);
  }
}

TEST_F(Random, Shuffles_IgnoreFurtherArguments) {
  for (const char* name : shuffles) {
    const Answer answer = call(name, {array_of<XTInt>(ctx(), {1}, {1}), raw(static_cast<ValueTag>(77)), Value("text")});
    EXPECT_EQ(answer.returned, 1);
    EXPECT_EQ(answer.operations, (Words{"AnyCheck 0", "GetAny 0", "SetInt result"}));
  }
}

TEST_F(Random, ShufflesOfExtentsBeyondTheStorage_AreOutOfMemory_AndNothingIsDrawn) {
  for (const char* name : shuffles) {
    Value wrong = array_of<XTInt>(ctx(), {6}, {1, 2, 3, 4, 5, 6});
    ASSERT_EQ(method(wrong, "reshape", {Value(-2), Value(-3)}).returned, 1);
    EXPECT_THROW(call(name, {wrong}), std::bad_alloc) << name;
    EXPECT_EQ(elements_of<XTInt>(wrong), (std::vector<std::int32_t>{1, 2, 3, 4, 5, 6}));
    Value none = array_of<XTInt>(ctx(), {0}, {});
    ASSERT_EQ(method(none, "reshape", {Value(65536), Value(65536), Value(65536), Value(65536)}).returned, 1);
    EXPECT_THROW(call(name, {none}), std::bad_alloc) << name;
    expect_in_step(name);
  }
}

TEST_F(Random, ShufflesIntoTheOperandsOwnRecord_LeaveTheInteger) {
  for (const char* name : shuffles) {
    Value operand = array_of<XTInt>(ctx(), {2}, {1, 2});
    EXPECT_EQ(Module::loaded().entry(name)(ctx(), operand.address(), 1, operand.address()), 1);
    EXPECT_EQ(operand.tag(), ValueTag::integer) << name;
    library_shuffle(TestArray(Kind::int32, {2}, {1, 2}), engine());
  }
}

TEST_F(Random, Shuffles_TakeNoMemory) {
  for (const char* name : shuffles) {
    std::vector<Value> args = {array_of<XTDouble>(ctx(), {1, 20}, std::vector<double>(20))};
    Value result;
    const auto before = allocations().made;
    EXPECT_EQ(Module::loaded().entry(name)(ctx(), hvm::records_of(args), 1, result.address()), 1);
    EXPECT_EQ(allocations().made, before) << name;
  }
}

using RandomDeathTest = Random;

TEST_F(RandomDeathTest, ShufflesOfArraysWithoutAContainer_EndTheProcess) {
  ::testing::FLAGS_gtest_death_test_style = "fast";
  const Value empty = call("xarange", {Value(1), Value(2), Value(3), Value(4)}).result;
  for (const char* name : shuffles) EXPECT_DEATH(call(name, {empty}), "") << name;
}

}  // namespace
}  // namespace arrayfold::test
