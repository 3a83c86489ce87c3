// object/methods_test.cpp: dump, shape, reshape, and every name for which the callback returns false

#include "support/allocations.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {
namespace {

using Extents64 = std::vector<std::int64_t>;

class Methods : public ModuleTest {
 protected:
  Value matrix_ = array_of<XTInt>(ctx(), {2, 3}, {1, 2, 3, 4, 5, 6});

  std::string text(const Answer& answer) const { return std::string(hvm::text_of(answer.result.record())); }

  void expect_false(Value& self, const char* name, std::vector<Value> args = {}, int flag = 0) const {
    expect_no_result(method(self, name, std::move(args), flag), 0, name);
  }
};

TEST_F(Methods, UnknownNames_ReturnFalse) {
  for (const char* name : {"", "Dump", "DUMP", "dum", "dumpx", "dump ", "shapes", "Shape", "reshap", "reshape2", "size",
                           "__get_item", "__set_item", "__get_item__"})
    for (int flag : {0, 1, -1}) expect_false(matrix_, name, {Value(1)}, flag);
}

TEST_F(Methods, AMissingName_ReturnsFalse) {
  Value result;
  const auto callback = hvm::callbacks_of(hvm::object_of(matrix_.record())).method;
  EXPECT_EQ(callback(ctx(), matrix_.address(), nullptr, nullptr, 0, result.address(), 0), 0);
}

TEST_F(Methods, EveryKind_ServesTheThree) {
  Value arrays[] = {array_of<XTBool>(ctx(), {2}, {true, false}), array_of<XTInt>(ctx(), {2}, {-1, 2}),
                    array_of<XTInt64>(ctx(), {2}, {INT64_MIN, 2}), array_of<XTDouble>(ctx(), {2}, {0.5, 2})};
  const char* const texts[] = {"[true,false]", "[-1,2]", "[-9223372036854775808,2]", "[0.5,2.0]"};
  for (int kind = 0; kind < 4; ++kind) {
    EXPECT_EQ(dump(arrays[kind]), texts[kind]);
    EXPECT_EQ(method(arrays[kind], "reshape", {Value(1), Value(2)}).returned, 1);
    EXPECT_EQ(shape(arrays[kind]), (Extents64{1, 2}));
  }
}

TEST_F(Methods, AFlag_ChangesNothingForTheThree) {
  EXPECT_EQ(method(matrix_, "dump", {}, 1).returned, 1);
  EXPECT_EQ(method(matrix_, "shape", {}, 1).returned, 1);
  EXPECT_EQ(method(matrix_, "reshape", {Value(6)}, 1).returned, 1);
}

// ---- dump

TEST_F(Methods, Dump_StoresTheTextOnceWithItsLength) {
  const Answer answer = method(matrix_, "dump");
  EXPECT_EQ(answer.returned, 1);
  EXPECT_EQ(answer.operations, (Words{"SetStringEx result"}));
  EXPECT_EQ(text(answer), "[[1,2,3],[4,5,6]]");
}

TEST_F(Methods, Dump_TakesTheFirstArgumentAsIndentUnchecked) {
  const Answer answer = method(matrix_, "dump", {Value(0), Value(7)});
  EXPECT_EQ(answer.operations, (Words{"AsInt 0", "SetStringEx result"}));
  EXPECT_EQ(text(answer), "[\n[\n1,\n2,\n3\n],\n[\n4,\n5,\n6\n]\n]");
  EXPECT_EQ(text(method(matrix_, "dump", {Value(-1)})), "[[1,2,3],[4,5,6]]");
  EXPECT_EQ(text(method(matrix_, "dump", {Value(-77)})), "[[1,2,3],[4,5,6]]");
  EXPECT_EQ(text(method(matrix_, "dump", {Value(1.9)})), "[\n [\n  1,\n  2,\n  3\n ],\n [\n  4,\n  5,\n  6\n ]\n]");
}

TEST_F(Methods, Dump_WithANegativeCount_StillReadsTheIndent) {
  Value indent(0), result;
  HostValue* args[] = {indent.address()};
  const auto callback = hvm::callbacks_of(hvm::object_of(matrix_.record())).method;
  EXPECT_EQ(callback(ctx(), matrix_.address(), "dump", args, -1, result.address(), 0), 1);
  EXPECT_EQ(hvm::text_of(result.record()), "[\n[\n1,\n2,\n3\n],\n[\n4,\n5,\n6\n]\n]");
}

TEST_F(Methods, Required_Dump_WithAnArgumentThatIsNoNumber_TakesWhatTheHostReads) {
  // This host reads 0 in a text and in nil.
  const std::string indented_by_zero = text(method(matrix_, "dump", {Value(0)}));
  EXPECT_EQ(text(method(matrix_, "dump", {Value("text")})), indented_by_zero);
  EXPECT_EQ(text(method(matrix_, "dump", {Value()})), indented_by_zero);
}

// ---- shape

TEST_F(Methods, Shape_IsATableOf64BitExtentsInOrder) {
  const Answer answer = method(matrix_, "shape");
  EXPECT_EQ(answer.returned, 1);
  EXPECT_EQ(answer.operations, (Words{"ForceTable result", "HashSetInt", "SetInt64", "HashSetInt", "SetInt64"}));
  const HostHash* table = hvm::table_of(answer.result.record());
  ASSERT_EQ(hvm::entry_count(table), 2);
  EXPECT_EQ(hvm::find(table, 0)->tag, ValueTag::integer64);
  EXPECT_EQ(HVM_AsInt64(hvm::find(table, 0)), 2);
  EXPECT_EQ(hvm::find(table, 1)->tag, ValueTag::integer64);
  EXPECT_EQ(HVM_AsInt64(hvm::find(table, 1)), 3);
}

TEST_F(Methods, Shape_GivesTheDimensionCountAsCapacityAndKeysFromZero) {
  Value result;
  const auto callback = hvm::callbacks_of(hvm::object_of(matrix_.record())).method;
  hvm::record_calls(true);
  callback(ctx(), matrix_.address(), "shape", nullptr, 0, result.address(), 0);
  hvm::record_calls(false);
  std::vector<std::int64_t> numbers;
  for (const auto& call : hvm::recorded_calls())
    if (std::string(call.operation) != "HVM_SetInt64") numbers.push_back(call.number);
  EXPECT_EQ(numbers, (std::vector<std::int64_t>{2, 0, 1}));
}

TEST_F(Methods, Shape_OfAZeroDimensionalArray_IsAnEmptyTable) {
  Value scalar = array_of<XTDouble>(ctx(), {}, {7.0});
  const Answer answer = method(scalar, "shape");
  EXPECT_EQ(answer.returned, 1);
  EXPECT_TRUE(answer.result.is_table());
  EXPECT_EQ(hvm::entry_count(hvm::table_of(answer.result.record())), 0);
}

TEST_F(Methods, Shape_IgnoresArgumentsAndShowsEveryDimension) {
  Value deep = array_of<XTInt>(ctx(), {1, 2, 1, 1, 3, 1, 1}, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(shape(deep), (Extents64{1, 2, 1, 1, 3, 1, 1}));
  EXPECT_EQ(method(deep, "shape", {Value(1), Value("text")}).returned, 1);
}

TEST_F(Methods, Shape_IntoTheReceiversOwnRecord_ReplacesTheArrayByItsExtents) {
  Value deep = array_of<XTInt>(ctx(), {1, 2, 1, 1, 3, 1, 1}, {1, 2, 3, 4, 5, 6});
  for (Value* array : {&matrix_, &deep}) {
    const Extents64 expected = shape(*array);
    const auto callback = hvm::callbacks_of(hvm::object_of(array->record())).method;
    EXPECT_EQ(callback(ctx(), array->address(), "shape", nullptr, 0, array->address(), 0), 1);
    ASSERT_TRUE(array->is_table());
    const HostHash* table = hvm::table_of(array->record());
    ASSERT_EQ(hvm::entry_count(table), static_cast<int>(expected.size()));
    for (std::size_t axis = 0; axis < expected.size(); ++axis)
      EXPECT_EQ(HVM_AsInt64(hvm::find(table, static_cast<int>(axis))), expected[axis]) << axis;
  }
}

// ---- reshape

TEST_F(Methods, Reshape_ToExtentsWhoseProductWraps_TakesThemFromThreeOn) {
  const std::pair<Extents64, int> rows[] = {{{-1, -2, 3}, 1},
                                            {{-1, -6, 1}, 1},
                                            {{-1, -1, 6}, 1},
                                            {{-1, -1, 2, 3}, 1},
                                            {{-1, -1, -1, -6}, 1},
                                            {{-1, -1, -1, -2, 3}, 1},
                                            {{-1, 2, 3}, 0},
                                            {{-1, -1, -6}, 0},
                                            {{-1, -1, 5}, 0},
                                            {{65536, 65536, 65536, 65536}, 0},
                                            {{1 << 30, 1 << 30, 16, 6}, 0}};
  for (const auto& [extents, returned] : rows) {
    Value six = array_of<XTInt>(ctx(), {6}, {1, 2, 3, 4, 5, 6});
    std::vector<Value> args;
    for (const std::int64_t extent : extents) args.emplace_back(static_cast<int>(extent));
    EXPECT_EQ(method(six, "reshape", args).returned, returned) << ::testing::PrintToString(extents);
    EXPECT_EQ(shape(six), returned == 1 ? extents : Extents64{6});
    EXPECT_EQ(storage_of(six).count, 6u);
  }
}

TEST_F(Methods, Reshape_ReplacesShapeAndStridesAndWritesNoResult) {
  const Answer answer = method(matrix_, "reshape", {Value(3), Value(2)});
  EXPECT_EQ(answer.returned, 1);
  EXPECT_TRUE(answer.untouched);
  EXPECT_EQ(answer.operations, (Words{"NumberCheck 0", "AsInt 0", "NumberCheck 1", "AsInt 1"}));
  EXPECT_EQ(shape(matrix_), (Extents64{3, 2}));
  const auto strides = strides_of(matrix_);
  EXPECT_EQ(strides[0], 2);
  EXPECT_EQ(strides[1], 1);
  EXPECT_EQ(backstrides_of(matrix_)[0], 4);
  EXPECT_EQ(elements_of<XTInt>(matrix_), (std::vector<int>{1, 2, 3, 4, 5, 6}));
}

TEST_F(Methods, Reshape_IsSeenByEveryHolder) {
  Value other = matrix_;
  EXPECT_EQ(method(matrix_, "reshape", {Value(6)}).returned, 1);
  EXPECT_EQ(shape(other), (Extents64{6}));
}

TEST_F(Methods, Reshape_ToAnotherRank_Succeeds) {
  std::vector<Value> ones(9, Value(1));
  ones[4] = Value(6);
  EXPECT_EQ(method(matrix_, "reshape", ones).returned, 1);
  EXPECT_EQ(shape(matrix_), (Extents64{1, 1, 1, 1, 6, 1, 1, 1, 1}));
  EXPECT_EQ(method(matrix_, "reshape", {Value(2), Value(3)}).returned, 1);
  EXPECT_EQ(dump(matrix_), "[[1,2,3],[4,5,6]]");
}

TEST_F(Methods, Reshape_WithoutArguments_ReturnsFalse) {
  expect_false(matrix_, "reshape");
  EXPECT_EQ(shape(matrix_), (Extents64{2, 3}));
  // A negative count is no count.
  Value result;
  const auto callback = hvm::callbacks_of(hvm::object_of(matrix_.record())).method;
  EXPECT_EQ(callback(ctx(), matrix_.address(), "reshape", nullptr, -1, result.address(), 0), 0);
}

TEST_F(Methods, Reshape_StopsAtTheFirstArgumentThatIsNoNumber) {
  const Answer answer = method(matrix_, "reshape", {Value(3), Value("2"), Value(1)});
  EXPECT_EQ(answer.returned, 0);
  EXPECT_TRUE(answer.untouched);
  EXPECT_EQ(answer.operations, (Words{"NumberCheck 0", "AsInt 0", "NumberCheck 1"}));
  expect_false(matrix_, "reshape", {Value()});
  expect_false(matrix_, "reshape", {Value::table(), Value(6)});
  EXPECT_EQ(shape(matrix_), (Extents64{2, 3}));
}

TEST_F(Methods, Required_Reshape_OfWrongCount_ReturnsFalse) {
  Value five = array_of<XTInt>(ctx(), {5}, {1, 2, 3, 4, 5});
  expect_false(five, "reshape", {Value(2), Value(3)});
  expect_false(five, "reshape", {Value(0)});
  expect_false(five, "reshape", {Value(-5)});
  EXPECT_EQ(shape(five), (Extents64{5}));
  EXPECT_EQ(dump(five), "[1,2,3,4,5]");
}

TEST_F(Methods, Required_Reshape_InfersNoExtent) {
  expect_false(matrix_, "reshape", {Value(-1), Value(3)});
  expect_false(matrix_, "reshape", {Value(-1)});
  EXPECT_EQ(shape(matrix_), (Extents64{2, 3}));
}

TEST_F(Methods, Required_Reshape_CountsInWrappingArithmetic) {
  EXPECT_EQ(method(matrix_, "reshape", {Value(-2), Value(-3)}).returned, 1);
  EXPECT_EQ(shape(matrix_), (Extents64{-2, -3}));  // two huge extents, shown by the host as 64-bit numbers
  EXPECT_EQ(storage_of(matrix_).count, 6u);
  EXPECT_EQ(method(matrix_, "reshape", {Value(2), Value(3)}).returned, 1);
  EXPECT_EQ(dump(matrix_), "[[1,2,3],[4,5,6]]");
}

TEST_F(Methods, Dump_OfExtentsBeyondTheStorage_ThrowsBadAlloc) {
  EXPECT_EQ(method(matrix_, "reshape", {Value(-2), Value(-3)}).returned, 1);
  EXPECT_THROW(method(matrix_, "dump", {Value(2)}), std::bad_alloc);
  EXPECT_TRUE(hvm::recorded_calls().empty());  // not even the indent was read
  Value one = array_of<XTDouble>(ctx(), {1}, {1.0});
  EXPECT_EQ(method(one, "reshape", {Value(-1), Value(-1)}).returned, 1);
  EXPECT_THROW(method(one, "dump", {Value(2)}), std::bad_alloc);
}

TEST_F(Methods, Reshape_TakesTheIntegerOfAnyNumber) {
  EXPECT_EQ(method(matrix_, "reshape", {Value(3.9), Value(std::int64_t{2})}).returned, 1);
  EXPECT_EQ(shape(matrix_), (Extents64{3, 2}));
}

TEST_F(Methods, Reshape_OfAnEmptyArray_TakesAnyExtentsWithAZero) {
  Value empty = array_of<XTInt>(ctx(), {0}, {});
  EXPECT_EQ(method(empty, "reshape", {Value(3), Value(0)}).returned, 1);
  EXPECT_EQ(dump(empty), "[[],[],[]]");
  EXPECT_EQ(method(empty, "reshape", {Value(0), Value(-1)}).returned, 1);
  EXPECT_EQ(dump(empty), "[]");
  // More rows than a text can hold.
  EXPECT_EQ(method(empty, "reshape", {Value(-1), Value(0)}).returned, 1);
  EXPECT_THROW(method(empty, "dump"), std::bad_alloc);
}

TEST_F(Methods, Reshape_OfAZeroDimensionalArray_GivesItDimensions) {
  Value scalar = array_of<XTDouble>(ctx(), {}, {7.5});
  EXPECT_EQ(method(scalar, "reshape", {Value(1), Value(1)}).returned, 1);
  EXPECT_EQ(dump(scalar), "[[7.5]]");
}

TEST_F(Methods, Reshape_WhenMemoryFails_KeepsTheShape) {
  // Beyond four dimensions the extents live on the heap: each of their allocations fails once. To a higher rank from
  // one in place, and from one on the heap.
  const std::pair<std::vector<std::size_t>, std::vector<int>> rows[] = {
      {{2, 3}, {1, 1, 2, 1, 3, 1, 1}}, {{1, 2, 1, 3, 1, 1}, {1, 1, 1, 1, 1, 1, 2, 1, 1, 1, 1, 1, 3, 1, 1}}};
  for (const auto& [before, after] : rows) {
    std::vector<Value> args;
    for (const int extent : after) args.emplace_back(extent);
    std::vector<HostValue*> pointers;
    for (Value& arg : args) pointers.push_back(arg.address());
    const auto callback = hvm::callbacks_of(hvm::object_of(matrix_.record())).method;
    Value untouched = array_of<XTInt>(ctx(), before, {1, 2, 3, 4, 5, 6});
    int failures = 0;
    for (bool threw = true; threw;) {
      Value fresh = array_of<XTInt>(ctx(), before, {1, 2, 3, 4, 5, 6});
      Value result;
      threw = false;
      fail_allocation(failures + 1);
      try {
        callback(ctx(), fresh.address(), "reshape", pointers.data(), static_cast<int>(pointers.size()),
                 result.address(), 0);
      } catch (const std::bad_alloc&) {
        threw = true;
        ++failures;
      }
      fail_allocation(0);
      EXPECT_EQ(shape(fresh), threw ? shape(untouched) : Extents64(after.begin(), after.end()));
      if (!threw) break;
      EXPECT_EQ(strides_of(fresh), strides_of(untouched));
      EXPECT_EQ(backstrides_of(fresh), backstrides_of(untouched));
      EXPECT_EQ(dump(fresh), dump(untouched));
    }
    EXPECT_GE(failures, 4);
  }
}

TEST_F(Methods, OfAnObjectWithoutContainer_UnknownNamesAndBadArguments_ReturnFalse) {
  Value hollow = call("xarange", {Value(1), Value(2), Value(3), Value(4)}).result;
  expect_false(hollow, "nosuch");
  expect_false(hollow, "__get_item");
  expect_false(hollow, "__set_item", {}, 1);
  expect_false(hollow, "reshape");
  expect_false(hollow, "reshape", {Value("text")});
}

using MethodsDeathTest = Methods;

TEST_F(MethodsDeathTest, Required_AnObjectWithoutContainer_IsReadThroughNull) {
  Value hollow = call("xarange", {Value(1), Value(2), Value(3), Value(4)}).result;
  ASSERT_EQ(type_of(hollow), "$xdoublearray");
  EXPECT_DEATH(method(hollow, "shape"), "");
  EXPECT_DEATH(method(hollow, "dump"), "");
  EXPECT_DEATH(method(hollow, "reshape", {Value(1)}), "");
}

}  // namespace
}  // namespace arrayfold::test
