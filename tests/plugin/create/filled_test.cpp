// create/filled_test.cpp: xzeros, xones, xempty, xeye

#include <cmath>

#include "reference.hpp"
#include "support/containers.hpp"

namespace arrayfold::test {
namespace {

using Extents64 = std::vector<std::int64_t>;
using Doubles = std::vector<double>;

class Filled : public ModuleTest {
 protected:
  /// A call that gives a double array; its elements, its extents.
  Doubles elements(const std::string& name, std::vector<Value> args, const Extents64& extents) const {
    Answer answer = call(name, std::move(args));
    EXPECT_EQ(answer.returned, 1) << name;
    EXPECT_EQ(type_of(answer.result), "$xdoublearray") << name;
    EXPECT_EQ(shape(answer.result), extents) << name;
    return elements_of<XTDouble>(answer.result);
  }
};

constexpr const char* by_extents[] = {"xzeros", "xones", "xempty"};

TEST_F(Filled, Xzeros_AreAllZero) {
  EXPECT_EQ(elements("xzeros", {Value(2), Value(3)}, {2, 3}), Doubles(6, 0.0));
  EXPECT_EQ(elements("xzeros", {Value(0)}, {0}), Doubles{});
  EXPECT_EQ(elements("xzeros", {Value(4)}, {4}), Doubles(4, 0.0));
}

TEST_F(Filled, Xzeros_ArePositiveZeros) {
  for (const double zero : elements("xzeros", {Value(37)}, {37})) EXPECT_FALSE(std::signbit(zero));
}

TEST_F(Filled, Xones_AreAllOne) { EXPECT_EQ(elements("xones", {Value(2), Value(2)}, {2, 2}), Doubles(4, 1.0)); }

TEST_F(Filled, Xempty_HasTheShape) {
  EXPECT_EQ(elements("xempty", {Value(2), Value(3)}, {2, 3}).size(), 6u);
  EXPECT_EQ(elements("xempty", {Value(3), Value(0)}, {3, 0}).size(), 0u);
}

TEST_F(Filled, ByExtents_OneArgumentADimension) {
  for (const char* name : by_extents) {
    std::vector<Value> args(9, Value(1));
    args[7] = Value(3);
    EXPECT_EQ(elements(name, args, {1, 1, 1, 1, 1, 1, 1, 3, 1}).size(), 3u);
  }
}

TEST_F(Filled, ByExtents_CheckAndReadEachArgumentInTurn) {
  for (const char* name : by_extents)
    EXPECT_EQ(call(name, {Value(2), Value(1)}).operations,
              (Words{"NumberCheck 0", "AsInt 0", "NumberCheck 1", "AsInt 1", "NewAny", "SetTypeAny result"}));
}

TEST_F(Filled, ByExtents_FailAtTheFirstThatIsNoNumber) {
  for (const char* name : by_extents) {
    expect_failure(name, {});
    expect_failure(name, {Value("3")});
    expect_failure(name, {Value()});
    expect_failure(name, {Value::table()});
    expect_failure(name, {array_of<XTInt>(ctx(), {1}, {1})});
    const Answer answer = call(name, {Value(2), Value("3"), Value(4)});
    EXPECT_EQ(answer.returned, 0);
    EXPECT_TRUE(answer.untouched);
    EXPECT_EQ(answer.operations, (Words{"NumberCheck 0", "AsInt 0", "NumberCheck 1"}));
  }
}

TEST_F(Filled, ByExtents_TakeTheIntegerOfAnyNumber) {
  EXPECT_EQ(elements("xones", {Value(2.9), Value(std::int64_t{3})}, {2, 3}).size(), 6u);
  // A 64-bit integer is read as 32 bits.
  EXPECT_EQ(elements("xones", {Value((std::int64_t{1} << 32) + 2)}, {2}).size(), 2u);
}

TEST_F(Filled, ImpossibleExtents_EndInBadAlloc) {
  const std::vector<std::vector<Value>> impossible = {
      {Value(-1)},
      {Value(-1), Value(-1)},  // whose product wraps to 1
      {Value(-2), Value(-3)},
      {Value(0), Value(-1)},
      {Value(-1), Value(0)},
      {Value(2), Value(-1)},
      {Value(INT_MIN)},
      {Value(65536), Value(65536), Value(65536), Value(65536)},  // wraps to 0
      {Value(1 << 30), Value(1 << 30), Value(2)},                // 2^61 elements: the bytes wrap to 0
      {Value(INT_MAX), Value(INT_MAX)},                          // addressable in elements, not in bytes
      {Value(INT_MAX), Value(65536)}};                           // addressable, and more than there is
  for (const auto& args : impossible) {
    for (const char* name : by_extents) EXPECT_THROW(call(name, args), std::bad_alloc) << name;
    if (args.size() <= 2) {
      EXPECT_THROW(call("xeye", args), std::bad_alloc);
    }
  }
}

TEST_F(Filled, WithoutAnObjectOfTheHost_ResultIsNilAndHandled) {
  for (const char* name : {"xzeros", "xones", "xempty", "xeye"}) {
    hvm::withhold_objects(true);
    const Answer answer = call(name, {Value(3)});
    hvm::withhold_objects(false);
    EXPECT_EQ(answer.returned, 1);
    EXPECT_EQ(answer.operations, (Words{"NumberCheck 0", "AsInt 0", "NewAny", "SetTypeAny result"}));
    EXPECT_TRUE(answer.result.is_nil());
  }
}

TEST_F(Filled, NewArrays_ShareNothingAndGatherNothing) {
  const Answer answer = call("xones", {Value(2)});
  const auto* array = unbox_array<XTDouble>(hvm::object_of(answer.result.record()));
  EXPECT_EQ(array->array.use_count(), 1);
  EXPECT_TRUE(array->data.empty());
}

// ---- xeye

TEST_F(Filled, Xeye_HasOnesOnTheMainDiagonal) {
  EXPECT_EQ(elements("xeye", {Value(2), Value(3)}, {2, 3}), (Doubles{1, 0, 0, 0, 1, 0}));
  EXPECT_EQ(elements("xeye", {Value(3), Value(2)}, {3, 2}), (Doubles{1, 0, 0, 1, 0, 0}));
  EXPECT_EQ(elements("xeye", {Value(2)}, {2, 2}), (Doubles{1, 0, 0, 1}));
  EXPECT_EQ(elements("xeye", {Value(1), Value(4)}, {1, 4}), (Doubles{1, 0, 0, 0}));
  EXPECT_EQ(elements("xeye", {Value(0)}, {0, 0}), Doubles{});
  EXPECT_EQ(elements("xeye", {Value(0), Value(3)}, {0, 3}), Doubles{});
}

TEST_F(Filled, Xeye_IgnoresFurtherArguments) {
  const Answer answer = call("xeye", {Value(2), Value(3), Value(9), Value("text")});
  EXPECT_EQ(elements_of<XTDouble>(answer.result), (Doubles{1, 0, 0, 0, 1, 0}));
  EXPECT_EQ(answer.operations,
            (Words{"NumberCheck 0", "AsInt 0", "NumberCheck 1", "AsInt 1", "NewAny", "SetTypeAny result"}));
}

TEST_F(Filled, Xeye_OfWhatIsNoNumber_Fails) {
  expect_failure("xeye", {});
  expect_failure("xeye", {Value("2")});
  expect_failure("xeye", {Value("2"), Value(2)});
  expect_failure("xeye", {Value(2), Value("3")});
  expect_failure("xeye", {Value(2), Value()});
}

TEST_F(Filled, Xeye_OfAllSmallShapes_IsTheLibrarys) {
  for (std::size_t n = 0; n < 9; ++n)
    for (std::size_t m = 0; m < 9; ++m) {
      EXPECT_EQ(elements("xeye", {Value(static_cast<int>(n)), Value(static_cast<int>(m))},
                         {static_cast<std::int64_t>(n), static_cast<std::int64_t>(m)}),
                library_eye(n, m).as<double>());
    }
}

}  // namespace
}  // namespace arrayfold::test
