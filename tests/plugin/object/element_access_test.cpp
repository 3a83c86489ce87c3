// object/element_access_test.cpp: single elements by one to eight indices

#include <cstdint>

#include "plugin/object/operator_fixture.hpp"

namespace arrayfold::test {
namespace {

using Entries = IndexList::Entries;
constexpr Entries both_forms[] = {Entries::in_place, Entries::elsewhere};

class ElementAccess : public OperatorTest {
 protected:
  Answer read_one(Value& array, Value index) const { return operate(Opcode::read_one_index, array, std::move(index)); }

  Answer read(Value& array, const std::vector<Value>& indices, Entries where = Entries::in_place) const {
    IndexList list(indices, where);
    return apply(type_of(array).c_str(), static_cast<int>(Opcode::read_element), array.address(), list.address());
  }
  Answer write(Value& array, const std::vector<Value>& indices, Value value, Entries where = Entries::in_place) const {
    IndexList list(indices, where);
    return apply_into(value.address(), type_of(array).c_str(), static_cast<int>(Opcode::write_element), array.address(),
                      list.address());
  }
  std::int64_t number_at(Value& array, const std::vector<int>& indices) const {
    const Answer answer = read(array, values(indices));
    EXPECT_EQ(answer.returned, 1);
    Value number = answer.result;
    return HVM_AsInt64(number.address());
  }

  static std::vector<Value> values(const std::vector<int>& numbers) {
    std::vector<Value> values;
    for (const int number : numbers) values.emplace_back(number);
    return values;
  }
  /// 0, 1, 2, ... under these extents.
  Value counted(const std::vector<std::size_t>& extents) const {
    std::size_t size = 1;
    for (const std::size_t extent : extents) size *= extent;
    std::vector<std::int64_t> elements(size);
    for (std::size_t i = 0; i < size; ++i) elements[i] = static_cast<std::int64_t>(i);
    return array_of<XTInt64>(ctx(), extents, elements);
  }

  Value matrix_ = counted({3, 4});
};

// ---- The place of an element

TEST_F(ElementAccess, AsManyIndicesAsDimensions_ReachTheirElement) {
  for (int row = 0; row < 3; ++row)
    for (int column = 0; column < 4; ++column) EXPECT_EQ(number_at(matrix_, {row, column}), 4 * row + column);
}

TEST_F(ElementAccess, FewerIndices_AlignWithTheLastDimensions) {
  EXPECT_EQ(number_at(matrix_, {2}), 2);
  Value cube = counted({2, 3, 4});
  EXPECT_EQ(number_at(cube, {2, 1}), 9);
  EXPECT_EQ(number_at(cube, {3}), 3);
}

TEST_F(ElementAccess, SurplusIndices_AreDroppedFromTheFront) {
  EXPECT_EQ(number_at(matrix_, {9, 1, 2}), 6);
  EXPECT_EQ(number_at(matrix_, {-7, 1000000, 9, 9, 9, 9, 2, 3}), 11);
}

TEST_F(ElementAccess, OfAZeroDimensionalArray_EveryIndexReachesTheOneElement) {
  Value scalar = array_of<XTInt64>(ctx(), {}, {42});
  for (std::size_t count = 1; count <= 8; ++count)
    EXPECT_EQ(number_at(scalar, std::vector<int>(count, 12345)), 42) << count;
  EXPECT_EQ(HVM_AsInt64(read_one(scalar, Value(-5)).result.address()), 42);
}

TEST_F(ElementAccess, AnExtentOfOne_GivesItsIndexNoEffect) {
  Value row = counted({1, 4}), column = counted({4, 1});
  EXPECT_EQ(number_at(row, {77, 2}), 2);
  EXPECT_EQ(number_at(row, {-1, 3}), 3);
  EXPECT_EQ(number_at(column, {2, 99}), 2);
  EXPECT_EQ(number_at(column, {3}), 0);  // aligned with the last dimension, whose extent is 1
  Value single = counted({1});
  EXPECT_EQ(number_at(single, {1000000}), 0);
}

/// The place by the rule: the last indices against the last dimensions, and extents of 1 that do not count.
std::int64_t place_of(const std::vector<std::size_t>& extents, const std::vector<int>& indices) {
  std::int64_t place = 0, stride = 1;
  auto index = indices.rbegin();
  for (auto extent = extents.rbegin(); extent != extents.rend() && index != indices.rend(); ++extent, ++index) {
    if (*extent != 1) place += *index * stride;
    stride *= static_cast<std::int64_t>(*extent);
  }
  return place;
}

TEST_F(ElementAccess, OneToEightIndicesOnZeroToNineDimensions_FollowTheRule) {
  const std::vector<std::size_t> all = {2, 3, 1, 2, 2, 1, 3, 2, 2};
  for (std::size_t rank = 0; rank <= 9; ++rank) {
    const std::vector<std::size_t> extents(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(rank));
    Value array = counted(extents);
    for (std::size_t count = 1; count <= 8; ++count)
      for (int start = 0; start < 4; ++start) {
        std::vector<int> indices(count);
        for (std::size_t back = 1; back <= count; ++back) {
          const int extent = back <= rank ? static_cast<int>(extents[rank - back]) : 1;
          // Where the extent is 1, or no dimension is left, the index is out of range on purpose.
          indices[count - back] = extent == 1 ? 50 + start : (start + static_cast<int>(back)) % extent;
        }
        const std::int64_t place = place_of(extents, indices);
        EXPECT_EQ(number_at(array, indices), place) << rank << " dimensions, " << count << " indices";
        EXPECT_EQ(write(array, values(indices), Value(-1), both_forms[start % 2]).returned, 1);
        EXPECT_EQ(elements_of<XTInt64>(array)[static_cast<std::size_t>(place)], -1);
        write(array, values(indices), Value(place));
      }
  }
}

TEST_F(ElementAccess, Required_IndicesAreNotChecked) {
  EXPECT_EQ(number_at(matrix_, {0, 7}), 7);    // runs on into the second row
  EXPECT_EQ(number_at(matrix_, {2, -1}), 7);   // a negative index is multiplied like any other
  EXPECT_EQ(number_at(matrix_, {-1, 11}), 7);  // in sum inside the storage
  EXPECT_EQ(number_at(matrix_, {11}), 11);
  EXPECT_EQ(HVM_AsInt64(read_one(matrix_, Value(9)).result.address()), 9);
  EXPECT_EQ(write(matrix_, values({0, 7}), Value(-1)).returned, 1);
  EXPECT_EQ(number_at(matrix_, {1, 3}), -1);
}

TEST_F(ElementAccess, AfterReshape_FollowsTheNewStrides) {
  method(matrix_, "reshape", values({2, 6}));
  EXPECT_EQ(number_at(matrix_, {1, 2}), 8);
  method(matrix_, "reshape", values({12}));
  EXPECT_EQ(number_at(matrix_, {1, 2}), 2);
}

// ---- What is read

TEST_F(ElementAccess, OneIndex_ChecksReadsAndGives) {
  const Answer answer = read_one(matrix_, Value(2));
  EXPECT_EQ(answer.returned, 1);
  EXPECT_EQ(answer.operations, (Words{"NumberCheck right", "AsInt right", "SetInt64 result"}));
}

TEST_F(ElementAccess, OneIndexThatIsNoNumber_ReturnsFalse) {
  int content = 7;
  ForeignObject foreign("$foreign", &content);
  for (const Value& index : {Value("1"), Value(), Value::table(), foreign.value(), matrix_, raw(ValueTag::code)})
    for (Value array : one_of_each_kind()) {
      const Answer answer = read_one(array, index);
      expect_false(answer);
      EXPECT_EQ(answer.operations, (Words{"NumberCheck right"}));
    }
  for (Value array : one_of_each_kind())
    expect_false(apply(type_of(array).c_str(), static_cast<int>(Opcode::read_one_index), array.address(), nullptr));
}

TEST_F(ElementAccess, OneIndexWithTheArrayOnTheRight_ReturnsFalse) {
  for (Value array : one_of_each_kind()) {
    const Answer answer = operate(Opcode::read_one_index, Value(0), array);
    expect_false(answer);
    EXPECT_EQ(answer.operations, (Words{"NumberCheck right"}));
  }
}

TEST_F(ElementAccess, AListOfIndices_IsReadInOrderWithoutChecks) {
  for (const Entries where : both_forms) {
    IndexList list(values({1, 2, 3}), where);
    hvm::record_calls(true);
    Value result;
    const auto callback = hvm::callbacks_of(hvm::object_of(matrix_.record())).op;
    const bool served = callback(ctx(), 36865, matrix_.address(), list.address(), result.address()) != 0;
    hvm::record_calls(false);
    EXPECT_TRUE(served);
    EXPECT_EQ(HVM_AsInt(result.address()), 11);
    const auto calls = hvm::recorded_calls();
    ASSERT_EQ(calls.size(), 4u);
    for (std::size_t i = 0; i < 3; ++i) {
      EXPECT_STREQ(calls[i].operation, "HVM_AsInt");
      EXPECT_EQ(calls[i].subject, list.indices()[i].address());
    }
    EXPECT_STREQ(calls[3].operation, "HVM_SetInt64");
  }
}

TEST_F(ElementAccess, AnIndex_IsWhatTheHostReadsAs32Bits) {
  EXPECT_EQ(HVM_AsInt(read(matrix_, {Value(1.9), Value(2.9)}).result.address()), 6);
  EXPECT_EQ(HVM_AsInt(read(matrix_, {Value((std::int64_t{1} << 32) + 2)}).result.address()), 2);
  EXPECT_EQ(HVM_AsInt(read_one(matrix_, Value(3.99)).result.address()), 3);
  EXPECT_EQ(HVM_AsInt(read_one(matrix_, Value((std::int64_t{5} << 32) + 1)).result.address()), 1);
  // This host reads 0 in what is no number.
  EXPECT_EQ(HVM_AsInt(read(matrix_, {Value("text"), Value(3)}).result.address()), 3);
  EXPECT_EQ(HVM_AsInt(read(matrix_, {Value(), Value(3)}).result.address()), 3);
}

TEST_F(ElementAccess, EachKind_IsGivenInItsForm) {
  Value arrays[] = {bools({false, true}), ints({1, INT32_MIN}), int64s({1, INT64_MIN}), doubles({1, -0.5})};
  const char* const setters[] = {"SetInt result", "SetInt result", "SetInt64 result", "SetReal result"};
  const Value elements[] = {Value(1), Value(INT32_MIN), Value(INT64_MIN), Value(-0.5)};
  for (std::size_t kind = 0; kind < 4; ++kind)
    for (const Answer& answer : {read_one(arrays[kind], Value(1)), read(arrays[kind], {Value(1)}),
                                 read(arrays[kind], {Value(1)}, Entries::elsewhere)}) {
      EXPECT_EQ(answer.returned, 1);
      EXPECT_EQ(answer.operations.back(), setters[kind]);
      EXPECT_EQ(answer.result.tag(), elements[kind].tag());
      EXPECT_EQ(load<std::int64_t>(answer.result.record().payload),
                load<std::int64_t>(elements[kind].record().payload));
    }
}

TEST_F(ElementAccess, Required_ATruth_IsGivenAsTheIntegerOfItsByte) {
  Value truths = bools({true, false, true});
  EXPECT_EQ(number_at(truths, {0}), 1);
  EXPECT_EQ(number_at(truths, {1}), 0);
  EXPECT_EQ(read_one(truths, Value(0)).result.tag(), ValueTag::integer);
  // A byte that is no truth value comes out as it is stored.
  const std::uint8_t stored = 130;
  std::memcpy(static_cast<std::uint8_t*>(storage_of(truths).address) + 2, &stored, 1);
  EXPECT_EQ(number_at(truths, {2}), 130);
  EXPECT_EQ(HVM_AsInt(read_one(truths, Value(2)).result.address()), 130);
}

// ---- What is written

TEST_F(ElementAccess, EachKind_ReadsTheValueInItsForm) {
  const char* const readers[] = {"AsBool result", "AsInt result", "AsInt64 result", "AsDouble result"};
  std::vector<Value> arrays = one_of_each_kind();
  for (std::size_t kind = 0; kind < 4; ++kind) {
    const Answer answer = write(arrays[kind], values({1}), Value(9));
    EXPECT_EQ(answer.returned, 1);
    EXPECT_TRUE(answer.untouched);
    EXPECT_EQ(answer.operations, (Words{"NumberCheck result", readers[kind], "AsInt"}));
  }
}

TEST_F(ElementAccess, EachKind_StoresWhatTheHostReads) {
  const Value numbers[] = {Value(-2.9), Value(0.4), Value(std::int64_t{1} << 33), Value(INT32_MIN)};
  Value b = bools({false}), i = ints({0}), l = int64s({0}), d = doubles({0});
  const bool truths[] = {true, true, true, true};
  const int integers[] = {-2, 0, 0, INT32_MIN};
  const std::int64_t longs[] = {-2, 0, std::int64_t{1} << 33, INT32_MIN};
  const double reals[] = {-2.9, 0.4, 8589934592.0, -2147483648.0};
  for (std::size_t n = 0; n < 4; ++n) {
    for (Value* array : {&b, &i, &l, &d}) EXPECT_EQ(write(*array, values({0}), numbers[n]).returned, 1);
    EXPECT_EQ(elements_of<XTBool>(b)[0], truths[n]);
    EXPECT_EQ(elements_of<XTInt>(i)[0], integers[n]);
    EXPECT_EQ(elements_of<XTInt64>(l)[0], longs[n]);
    EXPECT_EQ(elements_of<XTDouble>(d)[0], reals[n]);
  }
  write(b, values({0}), Value(0.0));
  EXPECT_EQ(dump(b), "[false]");
}

TEST_F(ElementAccess, AWrite_IsSeenByEveryHolder) {
  Value other = matrix_;
  EXPECT_EQ(write(matrix_, values({2, 3}), Value(-8)).returned, 1);
  EXPECT_EQ(number_at(other, {2, 3}), -8);
}

TEST_F(ElementAccess, TheValue_IsCheckedAndReadBeforeTheIndices) {
  for (const Entries where : both_forms)
    EXPECT_EQ(write(matrix_, values({1, 2}), Value(5), where).operations,
              (Words{"NumberCheck result", "AsInt64 result", "AsInt", "AsInt"}));
}

TEST_F(ElementAccess, AValueThatIsNoNumber_ReturnsFalseBeforeTheIndicesAreRead) {
  int content = 7;
  ForeignObject foreign("$foreign", &content);
  const std::string before = dump(matrix_);
  for (const Value& value : {Value("1"), Value(), Value::table(), foreign.value(), matrix_}) {
    const Answer answer = write(matrix_, values({1, 2}), value);
    expect_false(answer);
    EXPECT_EQ(answer.operations.size(), 1u);
    EXPECT_EQ(answer.operations.front().rfind("NumberCheck", 0), 0u);
  }
  EXPECT_EQ(dump(matrix_), before);
}

// ---- Lists for which the operator returns false

TEST_F(ElementAccess, AnEmptyList_ReturnsFalseWithoutAnyOperation) {
  for (Value array : one_of_each_kind())
    for (const Entries where : both_forms) {
      for (const Answer& answer : {read(array, {}, where), write(array, {}, Value(1), where)}) {
        expect_false(answer);
        EXPECT_TRUE(answer.operations.empty());
      }
    }
}

TEST_F(ElementAccess, AMissingList_ReturnsFalse) {
  for (Value array : one_of_each_kind())
    for (const Opcode opcode : {Opcode::read_element, Opcode::write_element})
      expect_false(apply(type_of(array).c_str(), static_cast<int>(opcode), array.address(), nullptr));
}

TEST_F(ElementAccess, Required_NineIndices_AreAllReadBeforeFalseIsReturned) {
  Value deep = counted({1, 2, 1, 2, 1, 2, 1, 2, 1});
  const std::string before = dump(deep);
  for (std::size_t count : {9u, 10u, 40u})
    for (const Entries where : both_forms) {
      const std::vector<Value> indices(count, Value(0));
      const Answer reading = read(deep, indices, where);
      expect_false(reading);
      EXPECT_EQ(reading.operations, Words(count, "AsInt"));
      const Answer writing = write(deep, indices, Value(99), where);
      expect_false(writing);
      EXPECT_EQ(writing.operations.size(), 2 + count);
    }
  EXPECT_EQ(dump(deep), before);
}

TEST_F(ElementAccess, AListWithoutAnArrayOnTheLeft_ReturnsFalseUnread) {
  IndexList list(values({0}), Entries::in_place);
  Value number(1), nil;
  for (HostValue* left : {static_cast<HostValue*>(nullptr), number.address(), nil.address()})
    for (const int opcode : {36865, 36866}) {
      const Answer answer = apply("$xintarray", opcode, left, list.address());
      expect_false(answer);
      EXPECT_TRUE(answer.operations.empty());
    }
}

// ---- What it costs

TEST_F(ElementAccess, NeedsNoMemory) {
  std::vector<Value> arrays = one_of_each_kind();
  arrays.push_back(counted({1, 2, 1, 2, 1, 2, 1, 2, 1}));
  for (Value& array : arrays)
    for (std::size_t count : {1u, 3u, 8u, 9u}) {
      IndexList list(std::vector<Value>(count, Value(0)), Entries::elsewhere);
      Value result(1), index(0);
      const auto callback = hvm::callbacks_of(hvm::object_of(array.record())).op;
      const auto made = allocations().made;
      const auto host_made = hvm::allocation_count();
      callback(ctx(), 36865, array.address(), list.address(), result.address());
      callback(ctx(), 36866, array.address(), list.address(), result.address());
      callback(ctx(), 101, array.address(), index.address(), result.address());
      EXPECT_EQ(allocations().made, made);
      EXPECT_EQ(hvm::allocation_count(), host_made);
    }
}

}  // namespace
}  // namespace arrayfold::test
