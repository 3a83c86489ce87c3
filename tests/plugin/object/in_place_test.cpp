// object/in_place_test.cpp: operators whose result record is that of an operand

#include <csignal>
#include <cstdint>

#include <xtensor/xexception.hpp>

#include "copies.hpp"
#include "plugin/object/operator_fixture.hpp"

namespace arrayfold::test {
namespace {

using Extents64 = std::vector<std::int64_t>;
using InPlace = Operands;

TEST_F(InPlace, Required_Add_OfTwoArraysTakesTheRightOneToo) {
  RightHanded apply_right{ints({9, 8}), ints({2, 4})};
  apply_right.result = &apply_right.right;
  EXPECT_TRUE(apply_right(ctx(), Opcode::add));
  EXPECT_EQ(dump(apply_right.right), "[11,12]");
  EXPECT_EQ(dump(apply_right.left), "[9,8]");
}

const auto terminated = ::testing::KilledBySignal(SIGABRT);

class InPlaceDeathTest : public InPlace {
 protected:
  /// Every operator of the kind but the sum ends the process when it would change `right`.
  void expect_end(const Value& left, const Value& right) const {
    for (const Opcode opcode : {Opcode::subtract, Opcode::multiply, Opcode::divide, Opcode::remainder}) {
      // There is no remainder of doubles.
      if (opcode == Opcode::remainder && type_of(right) == XTDouble::type_name) continue;
      RightHanded apply_right{left, right};
      apply_right.result = &apply_right.right;
      EXPECT_EXIT(apply_right(ctx(), opcode), terminated, "") << type_of(right) << ' ' << static_cast<int>(opcode);
    }
  }
};

TEST_F(InPlaceDeathTest, Required_OfTwoArraysFromTheRight_EndsTheProcess) {
  expect_end(ints({9, 8}), ints({2, 4}));
  expect_end(int64s({9, 8}), int64s({2, 4}));
  expect_end(doubles({9, 8}), doubles({2, 4}));
}

TEST_F(InPlaceDeathTest, Required_FromTheRight_EndsTheProcessBeforeShapesAreLookedAt) {
  expect_end(ints({9, 8}), ints({2, 4, 6}));
  expect_end(int64s({9, 8}), int64s({2, 4, 6}));
  expect_end(doubles({9, 8}), doubles({2, 4, 6}));
  expect_end(overdrawn(), ints({2, 4}));
}

TEST_F(InPlace, Add_FromTheRight_OfShapesThatDoNotFit_Throws) {
  RightHanded apply_right{ints({9, 8}), ints({2, 4, 6})};
  apply_right.result = &apply_right.right;
  EXPECT_THROW(apply_right(ctx(), Opcode::add), xt::broadcast_error);
  EXPECT_EQ(dump(apply_right.right), "[2,4,6]");
}

TEST_F(InPlaceDeathTest, Required_OfANumberFromTheRight_EndsTheProcess) {
  for (Value array : one_of_each_number_kind())
    for (const Opcode opcode : {Opcode::subtract, Opcode::divide, Opcode::remainder}) {
      if (opcode == Opcode::remainder && type_of(array) == "$xdoublearray") continue;  // there is no such operator
      EXPECT_EXIT(change_right(opcode, Value(5), array), terminated, "");
    }
}

TEST_F(InPlace, Required_SumAndProductTakeANumberOnTheRightToo) {
  const char* const sums[] = {"[6,7,8]", "[6,7,8]", "[6.0,7.0,8.0]"};
  const char* const products[] = {"[12,14,16]", "[12,14,16]", "[12.0,14.0,16.0]"};
  std::vector<Value> arrays = one_of_each_number_kind();
  for (std::size_t kind = 0; kind < 3; ++kind) {
    EXPECT_EQ(change_right(Opcode::add, Value(5), arrays[kind]).returned, 1);
    EXPECT_EQ(dump(arrays[kind]), sums[kind]);
    EXPECT_TRUE(change_right(Opcode::multiply, Value(2), arrays[kind]).untouched);
    EXPECT_EQ(dump(arrays[kind]), products[kind]);
  }
}

TEST_F(InPlace, FromTheRight_OfWhatIsNoNumber_ReturnsFalseForEveryOperator) {
  for (Value array : one_of_each_number_kind())
    for (const Opcode opcode : calculations)
      for (const Value& other : {Value("5"), Value(), Value::table()}) expect_false(change_right(opcode, other, array));
}

TEST_F(InPlace, ChangesTheArrayForEveryHolder) {
  Value array = ints({7, -7, 9});
  const Value holder = array;
  const void* container = container_address(array);
  const std::pair<Opcode, const char*> steps[] = {{Opcode::add, "[9,-5,11]"},
                                                  {Opcode::subtract, "[7,-7,9]"},
                                                  {Opcode::multiply, "[14,-14,18]"},
                                                  {Opcode::divide, "[7,-7,9]"},
                                                  {Opcode::remainder, "[1,-1,1]"}};
  for (const auto& [opcode, text] : steps) {
    const Answer answer = change(opcode, array, Value(2));
    EXPECT_EQ(answer.returned, 1);
    EXPECT_TRUE(answer.untouched);
    EXPECT_EQ(dump(Value(holder)), text);
    EXPECT_EQ(container_address(array), container);
  }
}

TEST_F(InPlace, OfEqualShapesChangesTheElementsWhereTheyAre) {
  Value array = matrix({2, 2}, {7, -7, 9, 8});
  const void* elements = storage_of(array).address;
  const Value other = matrix({2, 2}, {1, 2, 3, 4});
  const std::pair<Opcode, const char*> steps[] = {{Opcode::add, "[[8,-5],[12,12]]"},
                                                  {Opcode::subtract, "[[7,-7],[9,8]]"},
                                                  {Opcode::multiply, "[[7,-14],[27,32]]"},
                                                  {Opcode::divide, "[[7,-7],[9,8]]"},
                                                  {Opcode::remainder, "[[0,-1],[0,0]]"}};
  for (const auto& [opcode, text] : steps) {
    const Answer answer = change(opcode, array, other);
    EXPECT_EQ(answer.returned, 1);
    EXPECT_TRUE(answer.untouched);
    EXPECT_EQ(dump(array), text);
    EXPECT_EQ(storage_of(array).address, elements);
  }
  EXPECT_EQ(dump(Value(other)), "[[1,2],[3,4]]");
}

TEST_F(InPlace, EqualAndUnequal_IntoEitherOperandsRecord_GiveTheTruthThere) {
  for (const Value& left : one_of_each_number_kind())
    for (const bool alike : {true, false}) {
      Value other = from_host(left).size() == 0 ? left : operate(Opcode::multiply, left, Value(alike ? 1 : 2)).result;
      for (const Opcode opcode : {Opcode::equal, Opcode::not_equal}) {
        const int truth = (opcode == Opcode::equal) == alike ? 1 : 0;
        const auto expect_truth = [&](const Value& record) {
          ASSERT_EQ(record.tag(), ValueTag::integer) << type_of(left) << alike;
          EXPECT_EQ(load<std::int32_t>(record.record().payload), truth) << type_of(left) << alike;
        };
        Value into_right = Value::sharing(other.record()), into_left = Value::sharing(left.record());
        EXPECT_EQ(change_right(opcode, left, into_right).returned, 1);
        expect_truth(into_right);
        EXPECT_EQ(change(opcode, into_left, other).returned, 1);
        expect_truth(into_left);
        // The last reference to an operand's array.
        Value last = to_host(ctx(), from_host(other));
        EXPECT_EQ(change_right(opcode, left, last).returned, 1);
        expect_truth(last);
      }
    }
}

TEST_F(InPlace, WithItself_ReadsEachElementBeforeItIsWritten) {
  Value i = ints({3, -4}), l = int64s({3, -4}), d = doubles({3, -4});
  for (Value* array : {&i, &l, &d}) {
    EXPECT_EQ(change(Opcode::add, *array, *array).returned, 1);
    EXPECT_EQ(change(Opcode::multiply, *array, *array).returned, 1);
    EXPECT_EQ(operate(Opcode::equal, *array, *array).result.record().tag, ValueTag::integer);
  }
  EXPECT_EQ(dump(i), "[36,64]");
  EXPECT_EQ(dump(l), "[36,64]");
  EXPECT_EQ(dump(d), "[36.0,64.0]");
  EXPECT_EQ(change(Opcode::divide, i, i).returned, 1);
  EXPECT_EQ(dump(i), "[1,1]");
  EXPECT_EQ(change(Opcode::remainder, l, l).returned, 1);
  EXPECT_EQ(dump(l), "[0,0]");
  EXPECT_EQ(change(Opcode::subtract, d, d).returned, 1);
  EXPECT_EQ(dump(d), "[0.0,0.0]");
}

TEST_F(InPlace, WithOneRecordAsBothOperands_ChangesItOnce) {
  Value array = ints({3, -4});
  EXPECT_EQ(apply_into(array.address(), "$xintarray", 96, array.address(), array.address()).returned, 1);
  EXPECT_EQ(dump(array), "[0,0]");
}

TEST_F(InPlace, BroadcastKeepsOrGrowsTheShape) {
  Value array = matrix({2, 3}, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(change(Opcode::multiply, array, ints({1, 10, 100})).returned, 1);
  EXPECT_EQ(dump(array), "[[1,20,300],[4,50,600]]");
  Value row = ints({1, 2});
  const Value holder = row;
  const Answer answer = change(Opcode::subtract, row, matrix({3, 1}, {1, 2, 3}));
  EXPECT_EQ(answer.returned, 1);
  EXPECT_TRUE(answer.untouched);
  EXPECT_EQ(dump(Value(holder)), "[[0,1],[-1,0],[-2,-1]]");
  Value scalar = array_of<XTDouble>(ctx(), {}, {1.0});
  change(Opcode::add, scalar, doubles({0.5, 1.5}));
  EXPECT_EQ(dump(scalar), "[1.5,2.5]");
  Value single = ints({4});
  change(Opcode::add, single, matrix({0}, {}));
  EXPECT_EQ(shape(single), (Extents64{0}));
}

TEST_F(InPlace, Required_AComparisonWithItsOperandAsResult_MakesANewArray) {
  Value array = ints({1, 2, 3});
  const Value holder = array;
  EXPECT_EQ(change(Opcode::less, array, Value(2)).returned, 1);
  EXPECT_EQ(dump(array), "[true,false,false]");
  EXPECT_EQ(dump(Value(holder)), "[1,2,3]");
  Value right = ints({2, 2, 2});
  EXPECT_EQ(change_right(Opcode::greater_equal, Value(2), right).returned, 1);
  EXPECT_EQ(dump(right), "[true,true,true]");
  // The record was the array's only holder: it dies when the new one takes its place.
  Value alone = doubles({1, 2, 3});
  EXPECT_EQ(change(Opcode::greater, alone, Value(2)).returned, 1);
  EXPECT_EQ(dump(alone), "[false,false,true]");
  Value beside = doubles({1, 2, 3});
  EXPECT_EQ(change(Opcode::less, beside, doubles({2, 2, 2})).returned, 1);
  EXPECT_EQ(dump(beside), "[true,false,false]");
}

TEST_F(InPlace, TheRightArraysRecordAsResult_TakesANewArray) {
  Value right = ints({1, 2});
  const Value holder = right;
  EXPECT_EQ(change_right(Opcode::subtract, ints({10, 10}), right).returned, 1);
  EXPECT_EQ(dump(right), "[9,8]");
  EXPECT_EQ(dump(Value(holder)), "[1,2]");
}

TEST_F(InPlace, GrowthGivesTheStridesOfTheNewShape) {
  Value row = ints({1, 2, 3});
  EXPECT_EQ(change(Opcode::add, row, matrix({2, 3}, {0, 0, 0, 10, 10, 10})).returned, 1);
  const auto strides = strides_of(row);
  ASSERT_EQ(strides.size(), 2u);
  EXPECT_EQ(strides[0], 3);
  EXPECT_EQ(dump(row), "[[1,2,3],[11,12,13]]");
}

}  // namespace
}  // namespace arrayfold::test
