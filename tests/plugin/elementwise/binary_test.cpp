// elementwise/binary_test.cpp: xminimum and xmaximum

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include <xtensor/xexception.hpp>

#include "functions.hpp"
#include "support/allocations.hpp"

namespace arrayfold::test {
namespace {

using Extents64 = std::vector<std::int64_t>;
using Doubles = std::vector<double>;

constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr const char* both[] = {"xminimum", "xmaximum"};

/// What is chosen of a pair: the second wherever the comparison fails.
template <class T>
T chosen(const std::string& name, T a, T b) {
  return name == "xminimum" ? (a < b ? a : b) : (b < a ? a : b);
}

class Binary : public ModuleTest {
 protected:
  Value reals(const Doubles& elements) const { return array_of<XTDouble>(ctx(), {elements.size()}, elements); }

  Doubles doubles(const Answer& answer) const {
    EXPECT_EQ(answer.returned, 1);
    EXPECT_EQ(type_of(answer.result), "$xdoublearray");
    return elements_of<XTDouble>(answer.result);
  }

  /// Two arrays of one kind of every length: each element of the result is what is chosen, to the bit.
  template <class Kind, class Draw>
  void expect_choices(Draw draw) const {
    for (const char* name : both)
      for (std::size_t count = 0; count < 100; ++count) {
        std::vector<typename Kind::element> a, b;
        for (std::size_t i = 0; i < count; ++i) a.push_back(draw()), b.push_back(draw());
        const Doubles got = doubles(call(name, {array_of<Kind>(ctx(), {count}, a), array_of<Kind>(ctx(), {count}, b)}));
        ASSERT_EQ(got.size(), count);
        for (std::size_t i = 0; i < count; ++i) {
          const auto expected = static_cast<double>(chosen(name, a[i], b[i]));
          EXPECT_EQ(std::memcmp(&got[i], &expected, sizeof expected), 0) << name << ' ' << i << " of " << count;
        }
      }
  }
};

TEST_F(Binary, ChooseTheSmallerAndTheLarger) {
  const Value a = reals({1, 5, -3}), b = reals({2, 4, -3.5});
  EXPECT_EQ(doubles(call("xminimum", {a, b})), (Doubles{1, 4, -3.5}));
  EXPECT_EQ(doubles(call("xmaximum", {a, b})), (Doubles{2, 5, -3}));
}

TEST_F(Binary, Required_NaN_ComesThroughFromTheSecondOperandAlone) {
  for (const char* name : both) {
    EXPECT_EQ(doubles(call(name, {reals({not_a_number}), reals({1.0})})), Doubles{1.0});
    EXPECT_TRUE(std::isnan(doubles(call(name, {reals({1.0}), reals({not_a_number})}))[0]));
  }
}

TEST_F(Binary, Required_EqualElements_GiveTheSecond) {
  for (const char* name : both) {
    EXPECT_TRUE(std::signbit(doubles(call(name, {reals({0.0}), reals({-0.0})}))[0]));
    EXPECT_FALSE(std::signbit(doubles(call(name, {reals({-0.0}), reals({0.0})}))[0]));
  }
}

TEST_F(Binary, OfDoubles_EveryPairOfSpecialValues_AtEveryPlace) {
  const Doubles specials = {0.0, -0.0, 1.0, -1.0, infinity, -infinity, not_a_number, 5e-324, -5e-324};
  std::mt19937_64 engine(3);
  expect_choices<XTDouble>([&] { return specials[engine() % specials.size()]; });
}

TEST_F(Binary, OfIntegers_CompareInTheirKindAndGiveDoubles) {
  std::mt19937_64 engine(5);
  expect_choices<XTInt>([&] { return static_cast<std::int32_t>(engine()); });
  // Neighbours that are one as doubles are compared before they are converted.
  expect_choices<XTInt64>([&] { return INT64_MAX - static_cast<std::int64_t>(engine() % 4); });
}

TEST_F(Binary, OfFloats_CompareIn32BitsAndWiden) {
  const std::vector<float> a = {0.1f, std::numeric_limits<float>::quiet_NaN(), -0.0f};
  const std::vector<float> b = {0.2f, 1.0f, 0.0f};
  FloatObject left({3}, a), right({3}, b);
  std::vector<Value> args = {left.value(), right.value()};
  const Doubles got = doubles(call("xminimum", args));
  EXPECT_EQ(got[0], static_cast<double>(0.1f));
  EXPECT_EQ(got[1], 1.0);
  EXPECT_FALSE(std::signbit(got[2]));
  const Doubles larger = doubles(call("xmaximum", args));
  EXPECT_EQ(larger[0], static_cast<double>(0.2f));
  EXPECT_EQ(larger[1], 1.0);
}

TEST_F(Binary, ShapesAreBroadcast) {
  const Value column = array_of<XTInt>(ctx(), {3, 1}, {0, 2, 9}), row = array_of<XTInt>(ctx(), {4}, {1, 2, 3, 4});
  Answer answer = call("xmaximum", {column, row});
  EXPECT_EQ(shape(answer.result), (Extents64{3, 4}));
  EXPECT_EQ(doubles(answer), (Doubles{1, 2, 3, 4, 2, 2, 3, 4, 9, 9, 9, 9}));
  Answer scalar = call("xminimum", {array_of<XTDouble>(ctx(), {}, {2.0}), array_of<XTDouble>(ctx(), {}, {1.0})});
  EXPECT_EQ(shape(scalar.result), Extents64{});
  EXPECT_EQ(doubles(scalar), Doubles{1.0});
  Answer empty = call("xminimum", {array_of<XTInt>(ctx(), {0, 3}, {}), array_of<XTInt>(ctx(), {1, 3}, {1, 2, 3})});
  EXPECT_EQ(shape(empty.result), (Extents64{0, 3}));
}

TEST_F(Binary, ShapesThatDoNotFit_ThrowTheExactMessage) {
  for (const char* name : both) try {
      call(name, {reals({1, 2, 3}), reals({1, 2})});
      FAIL() << "shapes that do not fit were combined";
    } catch (const xt::broadcast_error& error) {
      EXPECT_STREQ(error.what(), "Incompatible dimension of arrays, compile in DEBUG for more info");
    }
}

TEST_F(Binary, PairsOfOtherKinds_ReturnNoValue) {
  const Value values[] = {array_of<XTBool>(ctx(), {1}, {true}), array_of<XTInt>(ctx(), {1}, {1}),
                          array_of<XTInt64>(ctx(), {1}, {1}), array_of<XTDouble>(ctx(), {1}, {1})};
  for (const char* name : both)
    for (std::size_t i = 0; i < 4; ++i)
      for (std::size_t j = 0; j < 4; ++j)
        if (i != j || i == 0) expect_no_result(call(name, {values[i], values[j]}), 1);
}

TEST_F(Binary, WhatIsNoObject_Fails) {
  const Value array = reals({1});
  for (const char* name : both) {
    const Answer too_few = call(name, {array});
    expect_no_result(too_few, 0);
    EXPECT_TRUE(too_few.operations.empty());
    for (const Value& other : {Value(1), Value(2.5), Value("text"), Value::table(), Value()}) {
      expect_no_result(call(name, {array, other}), 0);
      expect_no_result(call(name, {other, array}), 0);
    }
  }
}

TEST_F(Binary, HostOperations_ComeInTheirOrder) {
  const Value array = reals({1});
  for (const char* name : both) {
    EXPECT_EQ(call(name, {array, array}).operations,
              (Words{"AnyCheck 0", "AnyCheck 1", "GetAny 0", "GetAny 1", "NewAny", "SetTypeAny result"}));
    EXPECT_EQ(call(name, {Value(1), array}).operations, (Words{"AnyCheck 0"}));
    EXPECT_EQ(call(name, {array, Value(1)}).operations, (Words{"AnyCheck 0", "AnyCheck 1"}));
  }
}

TEST_F(Binary, ExtentsBeyondTheStorage_EndInBadAlloc) {
  Value six = array_of<XTInt>(ctx(), {6}, {1, 2, 3, 4, 5, 6});
  ASSERT_EQ(method(six, "reshape", {Value(-2), Value(-3)}).returned, 1);
  for (const char* name : both) EXPECT_THROW(call(name, {six, six}), std::bad_alloc);
}

TEST_F(Binary, WithoutAnObjectOfTheHost_ResultIsNilAndHandled) {
  const Value array = reals({1});
  for (const char* name : both) {
    hvm::withhold_objects(true);
    const Answer answer = call(name, {array, array});
    hvm::withhold_objects(false);
    EXPECT_EQ(answer.returned, 1);
    EXPECT_TRUE(answer.result.is_nil());
  }
}

TEST_F(Binary, WhenMemoryFails_NothingIsLost) {
  const std::vector<std::size_t> deep = {1, 2, 1, 1, 3, 1};
  std::vector<Value> args = {array_of<XTDouble>(ctx(), deep, Doubles(6, 1.0)), reals({1, 2})};
  for (const char* name : both) {
    const EntryFunction function = Module::loaded().entry(name);
    const auto action = [&] {
      Value result;
      function(ctx(), hvm::records_of(args), 2, result.address());
    };
    EXPECT_GE(fail_each_allocation(action), 5);
    EXPECT_GE(fail_each_host_allocation(action), 1);
  }
}

using BinaryDeathTest = Binary;

TEST_F(BinaryDeathTest, Required_AnObjectWithoutContainer_IsReadThroughNull) {
  const Value hollow = call("xarange", {Value(1), Value(2), Value(3), Value(4)}).result;
  for (const char* name : both) EXPECT_DEATH(call(name, {hollow, hollow}), "");
}

}  // namespace
}  // namespace arrayfold::test
