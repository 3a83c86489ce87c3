// object/operators_test.cpp: which operands combine, in which order, and what the host sees of it

#include <cstdint>
#include <cstring>
#include <limits>

#include <xtensor/xexception.hpp>

#include "copies.hpp"
#include "plugin/object/operator_fixture.hpp"
#include "support/hand_made.hpp"

namespace arrayfold::test {
namespace {

using Extents64 = std::vector<std::int64_t>;

constexpr const char* type_names[] = {"$xboolarray", "$xintarray", "$xint64array", "$xdoublearray"};
constexpr const char* broadcast_message = "Incompatible dimension of arrays, compile in DEBUG for more info";
constexpr double quiet_nan = std::numeric_limits<double>::quiet_NaN();

using Operators = Operands;

// ---- The table

bool is_served_opcode(int opcode) {
  return (opcode >= 81 && opcode <= 86) || (opcode >= 95 && opcode <= 99) || opcode == 101 || opcode == 36865 ||
         opcode == 36866;
}

TEST_F(Operators, EveryOpcodeWithoutAnEntry_ReturnsFalse) {
  std::vector<Value> arrays = one_of_each_kind();
  std::vector<Value> others = one_of_each_kind();
  for (Value other :
       {Value(1), Value(std::int64_t{1}), Value(1.5), Value::table(), Value("text"), Value(), foreign_.value()})
    others.push_back(other);
  const Value before(sentinel);
  Value result(sentinel);
  const auto returns_false = [&](int opcode, std::size_t kind, HostValue* left, HostValue* right) {
    const auto callback = hvm::callbacks_of(hvm::type_named(type_names[kind])).op;
    return callback(ctx(), opcode, left, right, result.address()) == 0 &&
           std::memcmp(&before, &result, sizeof before) == 0;
  };
  const auto expect_false_everywhere = [&](int opcode) {
    bool all = true;
    for (std::size_t kind = 0; kind < arrays.size(); ++kind) {
      HostValue* self = arrays[kind].address();
      all = all && returns_false(opcode, kind, self, nullptr) && returns_false(opcode, kind, nullptr, self);
      for (Value& other : others)
        all = all && returns_false(opcode, kind, self, other.address()) &&
              (other.is_object() || returns_false(opcode, kind, other.address(), self));
    }
    EXPECT_TRUE(all) << opcode;
  };
  hvm::record_calls(true);
  for (int opcode = 0; opcode <= 40000; ++opcode)
    if (!is_served_opcode(opcode)) expect_false_everywhere(opcode);
  for (const int opcode : {-1, -81, -95, INT32_MIN, INT32_MAX, 65536 + 95, 0x5F00}) expect_false_everywhere(opcode);
  hvm::record_calls(false);
  EXPECT_TRUE(hvm::recorded_calls().empty());
}

enum class Other { number, text, nil, table, foreign, absent, boolean, int32, int64, real };

bool is_number_array(Other other) { return other == Other::int32 || other == Other::int64 || other == Other::real; }

/// What the kinds serve, row by row.
bool serves(Other self, int opcode, Other other) {
  const bool whole_array = opcode == 83 || opcode == 86;
  if (self == Other::boolean) return opcode == 97 && other == Other::number;
  if (self == Other::real && opcode == 99) return is_number_array(other);
  return other == self || (other == Other::number && !whole_array);
}

TEST_F(Operators, EachKind_ServesTheOperandsOfItsRow) {
  const Other kinds[] = {Other::boolean, Other::int32, Other::int64, Other::real};
  for (int opcode : {81, 82, 83, 84, 85, 86, 95, 96, 97, 98, 99})
    for (std::size_t kind = 0; kind < 4; ++kind) {
      std::vector<Value> arrays = one_of_each_kind();
      Value self = arrays[kind];
      std::pair<Other, Value> others[] = {{Other::number, Value(1)},      {Other::number, Value(std::int64_t{1})},
                                          {Other::number, Value(1.5)},    {Other::text, Value("1")},
                                          {Other::text, Value(u"1")},     {Other::nil, Value()},
                                          {Other::table, Value::table()}, {Other::foreign, foreign_.value()},
                                          {Other::boolean, arrays[0]},    {Other::int32, arrays[1]},
                                          {Other::int64, arrays[2]},      {Other::real, arrays[3]}};
      for (auto& row : others) {
        const Other what = row.first;
        Value& other = row.second;
        const bool served = serves(kinds[kind], opcode, what);
        const auto check = [&](const Answer& answer) {
          EXPECT_EQ(answer.returned, served ? 1 : 0) << type_names[kind] << ' ' << opcode << ' ' << int(what);
          EXPECT_TRUE(served || answer.untouched) << type_names[kind] << ' ' << opcode << ' ' << int(what);
        };
        check(apply(type_names[kind], opcode, self.address(), other.address()));
        if (!other.is_object()) check(apply(type_names[kind], opcode, other.address(), self.address()));
      }
      expect_false(apply(type_names[kind], opcode, self.address(), nullptr));
      expect_false(apply(type_names[kind], opcode, nullptr, self.address()));
      EXPECT_EQ(dump(self), dump(one_of_each_kind()[kind]));
    }
}

TEST_F(Operators, ResultsAreOfTheirType) {
  for (Value array : one_of_each_number_kind())
    for (const Value& other : {array, Value(2)}) {
      for (const Opcode opcode : comparisons) EXPECT_EQ(type_of(operate(opcode, array, other).result), "$xboolarray");
      for (const Opcode opcode : {Opcode::add, Opcode::subtract, Opcode::multiply, Opcode::divide})
        EXPECT_EQ(type_of(operate(opcode, array, other).result), type_of(array));
    }
  EXPECT_EQ(type_of(operate(Opcode::remainder, ints({5}), Value(3)).result), "$xintarray");
  EXPECT_EQ(type_of(operate(Opcode::remainder, int64s({5}), int64s({3})).result), "$xint64array");
  EXPECT_EQ(operate(Opcode::equal, ints({5}), ints({5})).result.tag(), ValueTag::integer);
}

// ---- What the host sees

TEST_F(Operators, HostOperations_AreTheSameForEveryKind) {
  const char* const readers[] = {"AsInt", "AsInt64", "AsDouble"};
  const std::vector<Value> arrays = one_of_each_number_kind();
  for (std::size_t kind = 0; kind < 3; ++kind) {
    const Value& array = arrays[kind];
    const std::string reads = readers[kind];
    for (const Opcode opcode : {Opcode::less, Opcode::greater_equal, Opcode::add, Opcode::subtract, Opcode::divide}) {
      EXPECT_EQ(operate(opcode, array, Value(2)).operations,
                (Words{"NumberCheck right", reads + " right", "NewAny", "SetTypeAny result"}));
      EXPECT_EQ(operate(opcode, Value(2), array).operations,
                (Words{"NumberCheck left", reads + " left", "NewAny", "SetTypeAny result"}));
      EXPECT_EQ(operate(opcode, array, array).operations, (Words{"GetAny right", "NewAny", "SetTypeAny result"}));
      EXPECT_EQ(operate(opcode, array, Value("2")).operations, (Words{"NumberCheck right"}));
      EXPECT_EQ(operate(opcode, array, Value()).operations, (Words{"NumberCheck right"}));
      EXPECT_EQ(operate(opcode, array, foreign_.value()).operations, (Words{"GetAny right"}));
      EXPECT_EQ(operate(opcode, array, bools({true})).operations, (Words{"GetAny right"}));
      EXPECT_EQ(operate(opcode, array, Value::table()).operations, Words{});
    }
    Value changed = array;
    EXPECT_EQ(change(Opcode::add, changed, Value(2)).operations, (Words{"NumberCheck right", reads + " right"}));
    EXPECT_EQ(change(Opcode::add, changed, array).operations, (Words{"GetAny right"}));
    for (const Opcode opcode : {Opcode::equal, Opcode::not_equal}) {
      EXPECT_EQ(operate(opcode, array, array).operations, (Words{"GetAny right", "SetInt result"}));
      EXPECT_EQ(operate(opcode, array, bools({true})).operations, (Words{"GetAny right"}));
      for (const Value& other : {Value(3), Value("3"), Value(), Value::table()})
        EXPECT_EQ(operate(opcode, array, other).operations, Words{});
    }
  }
}

TEST_F(Operators, WithoutAnObjectOfTheHost_ResultIsNilAndHandled) {
  for (Value array : one_of_each_number_kind())
    for (const Value& other : {array, Value(2)})
      for (const Opcode opcode : {Opcode::add, Opcode::less}) {
        const auto callback = hvm::callbacks_of(hvm::object_of(array.record())).op;
        Value result(sentinel), right(other);
        hvm::withhold_objects(true);
        const auto alive = allocations().alive;
        EXPECT_EQ(callback(ctx(), static_cast<int>(opcode), array.address(), right.address(), result.address()), 1);
        EXPECT_EQ(allocations().alive, alive);
        hvm::withhold_objects(false);
        EXPECT_TRUE(result.is_nil());
      }
}

TEST_F(Operators, ANewArray_CostsFiveAllocationsAndAChangeNone) {
  for (Value array : one_of_each_number_kind())
    for (Value other : {array, Value(2)}) {
      const auto callback = hvm::callbacks_of(hvm::object_of(array.record())).op;
      for (const int opcode : {81, 85, 95, 97}) {
        Value result;
        const auto made = allocations().made;
        const auto host_made = hvm::allocation_count();
        callback(ctx(), opcode, array.address(), other.address(), result.address());
        EXPECT_EQ(allocations().made - made, 4);
        EXPECT_EQ(hvm::allocation_count() - host_made, 1);
      }
      for (const int opcode : {95, 96, 97}) {
        const auto made = allocations().made;
        const auto host_made = hvm::allocation_count();
        callback(ctx(), opcode, array.address(), other.address(), array.address());
        EXPECT_EQ(allocations().made, made);
        EXPECT_EQ(hvm::allocation_count(), host_made);
      }
    }
}

TEST_F(Operators, ANewArray_SharesNothingWithItsOperands) {
  Value array = ints({1, 2, 3});
  for (const Value& other : {array, Value(0), matrix({}, {0})}) {
    Value sum = operate(Opcode::add, array, other).result;
    EXPECT_NE(container_address(sum), container_address(array));
    EXPECT_NE(storage_of(sum).address, storage_of(array).address);
    change(Opcode::multiply, sum, Value(0));
    EXPECT_EQ(dump(array), "[1,2,3]");
  }
}

// ---- Numbers on the left and on the right

TEST_F(Operators, ANumber_IsReadByTheKindOfTheArray) {
  EXPECT_EQ(given(operate(Opcode::add, ints({1, 2}), Value(1.9))), "[2,3]");
  EXPECT_EQ(given(operate(Opcode::add, ints({1, 2}), Value(-1.9))), "[0,1]");
  EXPECT_EQ(given(operate(Opcode::add, ints({1, 2}), Value((std::int64_t{1} << 32) + 5))), "[6,7]");
  EXPECT_EQ(given(operate(Opcode::add, int64s({1, 2}), Value(1.9))), "[2,3]");
  EXPECT_EQ(given(operate(Opcode::add, int64s({1}), Value(std::int64_t{1} << 40))), "[1099511627777]");
  EXPECT_EQ(given(operate(Opcode::add, doubles({1, 2}), Value(1.5))), "[2.5,3.5]");
  EXPECT_EQ(given(operate(Opcode::add, doubles({1}), Value(std::int64_t{3}))), "[4.0]");
  EXPECT_EQ(given(operate(Opcode::less_equal, ints({1, 2}), Value(1.9))), "[true,false]");
}

TEST_F(Operators, Required_ANumber_IsAlwaysTheRightOperand) {
  EXPECT_EQ(given(operate(Opcode::subtract, Value(5), ints({1, 7}))), "[-4,2]");
  EXPECT_EQ(given(operate(Opcode::subtract, Value(5), int64s({1, 7}))), "[-4,2]");
  EXPECT_EQ(given(operate(Opcode::subtract, Value(5), doubles({1, 7}))), "[-4.0,2.0]");
  EXPECT_EQ(given(operate(Opcode::divide, Value(2), ints({9, -9}))), "[4,-4]");
  EXPECT_EQ(given(operate(Opcode::divide, Value(2), doubles({9}))), "[4.5]");
  EXPECT_EQ(given(operate(Opcode::remainder, Value(5), ints({7, -7}))), "[2,-2]");
  EXPECT_EQ(given(operate(Opcode::greater, Value(5), ints({4, 5, 6}))), "[false,false,true]");
}

TEST_F(Operators, Required_AComparison_IsTheSameInEitherOrder) {
  for (Value array : one_of_each_number_kind())
    for (const Opcode opcode : comparisons)
      EXPECT_EQ(given(operate(opcode, Value(2), array)), given(operate(opcode, array, Value(2))));
}

TEST_F(Operators, TwoArrays_KeepTheirOrder) {
  EXPECT_EQ(given(operate(Opcode::subtract, ints({5, 5}), ints({1, 7}))), "[4,-2]");
  EXPECT_EQ(given(operate(Opcode::less, doubles({1, 2}), doubles({2, 1}))), "[true,false]");
  EXPECT_EQ(given(operate(Opcode::divide, matrix({}, {9}), ints({2, 4}))), "[4,2]");
}

TEST_F(Operators, TwoArrays_WithSelfOnTheRight_KeepTheirOrder) {
  Value result;
  RightHanded apply_right{ints({9, 8}), ints({2, 4}), &result};
  const std::pair<Opcode, const char*> rows[] = {
      {Opcode::add, "[11,12]"},         {Opcode::subtract, "[7,4]"},           {Opcode::multiply, "[18,32]"},
      {Opcode::divide, "[4,2]"},        {Opcode::remainder, "[1,0]"},          {Opcode::less, "[false,false]"},
      {Opcode::greater, "[true,true]"}, {Opcode::less_equal, "[false,false]"}, {Opcode::greater_equal, "[true,true]"}};
  for (const auto& [opcode, text] : rows) {
    EXPECT_TRUE(apply_right(ctx(), opcode));
    EXPECT_EQ(dump(result), text);
  }
}

using OperatorsDeathTest = Operators;

TEST_F(OperatorsDeathTest, Required_AnArrayWithoutContainer_IsReadThroughNull) {
  Value hollow = call("xarange", {Value(1), Value(2), Value(3), Value(4)}).result;
  EXPECT_DEATH(operate(Opcode::add, hollow, Value(1)), "");
  EXPECT_DEATH(operate(Opcode::less, doubles({1}), hollow), "");
  EXPECT_DEATH(operate(Opcode::equal, hollow, doubles({1})), "");
  EXPECT_DEATH(change(Opcode::multiply, hollow, Value(2)), "");
  EXPECT_DEATH(operate(Opcode::read_one_index, hollow, Value(0)), "");
}

// ---- Whole-array tests

TEST_F(Operators, EqualAndNotEqual_GiveOneInteger) {
  const auto tested = [&](const Value& left, const Value& right) {
    const Answer equal = operate(Opcode::equal, left, right), unequal = operate(Opcode::not_equal, left, right);
    EXPECT_EQ(equal.returned, 1);
    EXPECT_EQ(unequal.returned, 1);
    EXPECT_EQ(equal.result.tag(), ValueTag::integer);
    const int answer = load<std::int32_t>(equal.result.record().payload);
    EXPECT_EQ(load<std::int32_t>(unequal.result.record().payload), 1 - answer);
    return answer;
  };
  EXPECT_EQ(tested(ints({1, 2}), ints({1, 2})), 1);
  EXPECT_EQ(tested(ints({1, 2}), ints({1, 3})), 0);
  EXPECT_EQ(tested(int64s({1, INT64_MIN}), int64s({1, INT64_MIN})), 1);
  EXPECT_EQ(tested(int64s({1}), int64s({1 + (std::int64_t{1} << 32)})), 0);
  EXPECT_EQ(tested(doubles({0.0}), doubles({-0.0})), 1);
  // Shapes that differ, also where they would broadcast or not.
  EXPECT_EQ(tested(ints({1, 1}), ints({1})), 0);
  EXPECT_EQ(tested(ints({1, 2}), ints({1, 2, 3})), 0);
  EXPECT_EQ(tested(matrix({1, 2}, {1, 2}), ints({1, 2})), 0);
  EXPECT_EQ(tested(matrix({2, 3}, {1, 2, 3, 4, 5, 6}), matrix({3, 2}, {1, 2, 3, 4, 5, 6})), 0);
  EXPECT_EQ(tested(matrix({}, {7}), matrix({}, {7})), 1);
  EXPECT_EQ(tested(matrix({}, {7}), ints({7})), 0);
  EXPECT_EQ(tested(ints({}), ints({})), 1);
  EXPECT_EQ(tested(matrix({0, 2}, {}), matrix({2, 0}, {})), 0);
  EXPECT_EQ(tested(deep(), deep()), 1);
  Value with_nan = doubles({1, quiet_nan});
  EXPECT_EQ(tested(with_nan, with_nan), 0);
  EXPECT_EQ(tested(overdrawn(), overdrawn()), 1);
}

TEST_F(Operators, Equal_FindsADifferenceAnywhere) {
  for (std::size_t size : {1u, 15u, 16u, 17u, 31u, 32u, 33u, 100u})
    for (std::size_t at = 0; at < size; ++at) {
      std::vector<double> x(size, 0.25);
      std::vector<std::int64_t> longs(size, -1);
      const Value same_doubles = doubles(x), same_longs = int64s(longs);
      x[at] = quiet_nan;
      longs[at] = 0;
      EXPECT_EQ(load<std::int32_t>(operate(Opcode::equal, same_doubles, doubles(x)).result.record().payload), 0);
      EXPECT_EQ(load<std::int32_t>(operate(Opcode::equal, same_longs, int64s(longs)).result.record().payload), 0);
      EXPECT_EQ(load<std::int32_t>(operate(Opcode::equal, doubles(x), doubles(x)).result.record().payload), 0);
      EXPECT_EQ(load<std::int32_t>(operate(Opcode::equal, int64s(longs), int64s(longs)).result.record().payload), 1);
    }
}

// ---- What the kinds do not share

TEST_F(Operators, Required_TheRemainderOfDoubles_IsServedAndDoesNothing) {
  Value array = doubles({7, 8});
  for (const Value& other : {array, doubles({3}), doubles({1, 2, 3}), ints({3, 3}), int64s({0})}) {
    const Answer answer = operate(Opcode::remainder, array, other);
    EXPECT_EQ(answer.returned, 1);
    EXPECT_TRUE(answer.untouched);
    EXPECT_EQ(answer.operations, (Words{"GetAny right"}));
    EXPECT_EQ(change(Opcode::remainder, array, other).returned, 1);
    EXPECT_EQ(dump(array), "[7.0,8.0]");
  }
  for (const Value& other : {Value(3), Value(0.5), Value("3"), Value(), Value::table(), bools({true})}) {
    expect_false(operate(Opcode::remainder, array, other));
    expect_false(change(Opcode::remainder, array, other));
  }
  for (Value array_of_integers : {ints({7}), int64s({7})})
    expect_false(operate(Opcode::remainder, array_of_integers, array));
  expect_false(operate(Opcode::remainder, Value(3), array));
  expect_false(change_right(Opcode::remainder, Value(3), array));
}

TEST_F(Operators, Required_TheProductOfTruths_ActsInPlaceOnly) {
  Value truths = bools({true, false, true});
  for (const Value& number : {Value(0), Value(1), Value(0.5), Value(std::int64_t{0})})
    for (const bool on_right : {false, true}) {
      const Answer answer =
          on_right ? operate(Opcode::multiply, number, truths) : operate(Opcode::multiply, truths, number);
      EXPECT_EQ(answer.returned, 1);
      EXPECT_TRUE(answer.untouched);
      const std::string operand = on_right ? " left" : " right";
      EXPECT_EQ(answer.operations, (Words{"NumberCheck" + operand, "AsBool" + operand}));
    }
  EXPECT_EQ(dump(truths), "[true,false,true]");
  EXPECT_EQ(change(Opcode::multiply, truths, Value(-0.25)).returned, 1);
  EXPECT_EQ(dump(truths), "[true,false,true]");
  EXPECT_EQ(change_right(Opcode::multiply, Value(2), truths).returned, 1);
  EXPECT_EQ(dump(truths), "[true,false,true]");
  EXPECT_EQ(change_right(Opcode::multiply, Value(0), truths).returned, 1);
  EXPECT_EQ(dump(truths), "[false,false,false]");
}

TEST_F(Operators, TheProductOfTruths_OfAnyLengthAndByte) {
  for (std::size_t size = 0; size < 70; ++size) {
    Value truths = bools(std::vector<bool>(size, true));
    auto* bytes = static_cast<std::uint8_t*>(storage_of(truths).address);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 37);
    change(Opcode::multiply, truths, Value(1));
    for (std::size_t i = 0; i < size; ++i) EXPECT_EQ(bytes[i], i * 37 % 256 == 0 ? 0 : 1);
    change(Opcode::multiply, truths, Value(0));
    for (std::size_t i = 0; i < size; ++i) EXPECT_EQ(bytes[i], 0);
  }
}

TEST_F(Operators, TheProductOfTruths_WithWhatIsNoNumber_ReturnsFalse) {
  Value truths = bools({true, false});
  const std::pair<Value, Words> others[] = {
      {Value::table(), {}},       {Value("1"), {"NumberCheck right"}}, {Value(), {"NumberCheck right"}},
      {truths, {"GetAny right"}}, {ints({0, 0}), {"GetAny right"}},    {foreign_.value(), {"GetAny right"}}};
  for (const auto& [other, operations] : others) {
    for (const Answer& answer : {operate(Opcode::multiply, truths, other), change(Opcode::multiply, truths, other)}) {
      expect_false(answer);
      EXPECT_EQ(answer.operations, operations);
    }
  }
  EXPECT_EQ(dump(truths), "[true,false]");
}

TEST_F(Operators, OtherOperatorsOfTruths_ReturnFalseWithoutALook) {
  for (const Value& other : {Value(1), Value(0.5), bools({true}), ints({1}), Value("text")})
    for (const int opcode : {81, 82, 83, 84, 85, 86, 95, 96, 98, 99}) {
      const Answer answer = operate(static_cast<Opcode>(opcode), bools({true}), other);
      expect_false(answer);
      EXPECT_TRUE(answer.operations.empty());
    }
}

TEST_F(Operators, AFloatArray_CountsForTheRemainderOfDoublesAndForNothingElse) {
  FloatObject made({1}, {0});
  Value floats = made.value(), array = doubles({1});
  const auto served = [&](int opcode) { return apply("$xdoublearray", opcode, array.address(), floats.address()); };
  const Answer remainder = served(99);
  EXPECT_EQ(remainder.returned, 1);
  EXPECT_TRUE(remainder.untouched);
  for (const int opcode : {81, 82, 83, 84, 85, 86, 95, 96, 97, 98}) expect_false(served(opcode));
}

// ---- What goes wrong

TEST_F(Operators, ShapesThatDoNotFit_ThrowAndChangeNothing) {
  const Value lefts[] = {ints({1, 2}), matrix({2, 3}, {1, 2, 3, 4, 5, 6}), matrix({0}, {}), deep()};
  const Value rights[] = {ints({1, 2, 3}), matrix({3, 2}, {1, 2, 3, 4, 5, 6}), ints({1, 2}),
                          matrix({3, 1, 1, 1, 1}, {1, 2, 3})};
  for (std::size_t i = 0; i < 4; ++i)
    for (int opcode : {81, 82, 84, 85, 95, 96, 97, 98, 99})
      for (const bool in_place : {false, true}) {
        Value left = lefts[i], right = rights[i];
        const std::string before = dump(left) + dump(right);
        try {
          in_place ? change(static_cast<Opcode>(opcode), left, right)
                   : operate(static_cast<Opcode>(opcode), left, right);
          ADD_FAILURE() << "no error";
        } catch (const xt::broadcast_error& error) {
          EXPECT_STREQ(error.what(), broadcast_message);
        }
        EXPECT_EQ(dump(left) + dump(right), before);
      }
}

TEST_F(Operators, ExtentsBeyondTheStorage_EndInBadAlloc) {
  const Value good = ints({1, 2, 3, 4, 5, 6});
  for (int opcode : {81, 82, 84, 85, 95, 96, 97, 98, 99}) {
    const auto op = static_cast<Opcode>(opcode);
    Value bad = overdrawn(), other_bad = overdrawn();
    EXPECT_THROW(operate(op, bad, Value(2)), std::bad_alloc);
    EXPECT_THROW(operate(op, Value(2), bad), std::bad_alloc);
    EXPECT_THROW(operate(op, bad, good), std::bad_alloc);
    EXPECT_THROW(operate(op, good, bad), std::bad_alloc);
    EXPECT_THROW(operate(op, bad, other_bad), std::bad_alloc);
    EXPECT_THROW(operate(op, matrix({}, {1}), bad), std::bad_alloc);
    Value changed = ints({1, 2, 3, 4, 5, 6});
    if (opcode >= 95) {
      EXPECT_THROW(change(op, bad, good), std::bad_alloc);
      EXPECT_THROW(change(op, bad, other_bad), std::bad_alloc);
      EXPECT_THROW(change(op, bad, bad), std::bad_alloc);
      EXPECT_THROW(change(op, changed, bad), std::bad_alloc);
    }
    EXPECT_EQ(dump(changed), "[1,2,3,4,5,6]");
    EXPECT_EQ(elements_of<XTInt>(bad), (std::vector<int>{1, 2, 3, 4, 5, 6}));
  }
}

TEST_F(Operators, ANegativeExtentBesideZero_EndsInBadAlloc) {
  Value empty = array_of<XTInt>(ctx(), {0}, {});
  ASSERT_EQ(method(empty, "reshape", {Value(0), Value(-2)}).returned, 1);
  EXPECT_THROW(operate(Opcode::add, empty, Value(1)), std::bad_alloc);
  EXPECT_THROW(operate(Opcode::less, empty, empty), std::bad_alloc);
  EXPECT_EQ(change(Opcode::add, empty, Value(1)).returned, 1);  // there is nothing to change
}

TEST_F(Operators, ExtentsBeyondTheStorage_DoNotMatterToANumberInPlace) {
  Value bad = overdrawn();
  EXPECT_EQ(change(Opcode::add, bad, Value(10)).returned, 1);
  EXPECT_EQ(elements_of<XTInt>(bad), (std::vector<int>{11, 12, 13, 14, 15, 16}));
}

TEST_F(Operators, AResultThatNoMemoryHolds_EndsInBadAlloc) {
  const std::size_t extent = std::size_t{1} << 23;
  const Value row = array_of<XTInt>(ctx(), {extent}, std::vector<int>(extent, 1));
  const Value column = array_of<XTInt>(ctx(), {extent, 1}, std::vector<int>(extent, 1));
  Value changed = row;
  EXPECT_THROW(operate(Opcode::add, row, column), std::bad_alloc);
  EXPECT_THROW(change(Opcode::add, changed, column), std::bad_alloc);
  EXPECT_EQ(shape(changed), (Extents64{static_cast<std::int64_t>(extent)}));
}

// ---- Every shape of operand

TEST_F(Operators, ArraysOfNineDimensionsAndOfNone_AreCombined) {
  Value sum = operate(Opcode::add, deep(), deep()).result;
  EXPECT_EQ(shape(sum), (Extents64{1, 1, 1, 1, 2, 1, 1, 1, 1}));
  EXPECT_EQ(elements_of<XTInt>(sum), (std::vector<int>{2, 4}));
  Value grown = operate(Opcode::add, deep(), ints({10, 20})).result;
  EXPECT_EQ(shape(grown), (Extents64{1, 1, 1, 1, 2, 1, 1, 1, 2}));
  EXPECT_EQ(elements_of<XTInt>(grown), (std::vector<int>{11, 21, 12, 22}));
  Value none = operate(Opcode::add, matrix({}, {3}), matrix({}, {4})).result;
  EXPECT_EQ(shape(none), (Extents64{}));
  EXPECT_EQ(elements_of<XTInt>(none), (std::vector<int>{7}));
  EXPECT_EQ(given(operate(Opcode::less, matrix({}, {3}), Value(4))), "true");
  Value deep_changed = deep();
  change(Opcode::add, deep_changed, ints({10, 20}));
  EXPECT_EQ(elements_of<XTInt>(deep_changed), (std::vector<int>{11, 21, 12, 22}));
}

}  // namespace
}  // namespace arrayfold::test
