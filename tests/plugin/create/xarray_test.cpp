// create/xarray_test.cpp: xarray, from dimensions, tables and data literals

#include <stdexcept>

#include "support/allocations.hpp"
#include "support/containers.hpp"
#include "support/scripted_test.hpp"

namespace arrayfold::test {
namespace {

using Shapes = std::vector<std::int64_t>;

class Xarray : public ScriptedTest {
 protected:
  Answer by_dimensions(const char* dtype, const std::vector<HostCodeSlot>& dimensions) {
    return call("xarray", {code.quoted_call(dtype, dimensions)});
  }
  Answer from(const char* dtype, Value data) { return call("xarray", {code.quoted_call(dtype), std::move(data)}); }
  Answer from_row(const char* dtype, const HostCodeNode* row) { return from(dtype, code.quoted(leads_to(row))); }

  using ModuleTest::shape;
  Shapes shape(Value&& value) const { return ModuleTest::shape(value); }
  /// Its dump, after its shape.
  std::string text_of(Answer answer) {
    EXPECT_EQ(answer.returned, 1);
    std::string text;
    for (const auto extent : shape(answer.result)) text += std::to_string(extent) + " ";
    return text + dump(answer.result);
  }
};
using XarrayDeathTest = Xarray;

Value numbers(std::vector<int> values) {
  std::vector<Value> records;
  for (const int value : values) records.emplace_back(value);
  return Value::table_of(records);
}
Value table(std::vector<Value> values) { return Value::table_of(values); }

constexpr const char* dtypes[] = {"bool", "int", "int64", "double"};

// ---- The first argument

TEST_F(Xarray, WithoutArguments_Fails) {
  for (const int nargs : {0, -1, -100}) {
    const Answer answer = call_with_count("xarray", {}, nargs);
    expect_no_result(answer, 0);
    EXPECT_EQ(answer.operations, Words{});
  }
}

TEST_F(Xarray, OfAFirstArgumentThatIsNoQuotation_Fails) {
  const Value object = by_dimensions("int", {integer(2)}).result;
  for (const Value& first :
       {Value(), Value(1), Value(2.5), Value("double"), Value(u"double"), numbers({1}), object, raw(ValueTag::code),
        code.code(nullptr), code.code(code.call("double", {integer(2)})), code.code(code.row({real(1.0)}))}) {
    expect_no_result(call("xarray", {first}), 0);
    expect_no_result(call("xarray", {first, numbers({1})}), 0);
  }
}

TEST_F(Xarray, OfAQuotationOfNoKnownForm_Fails) {
  for (const HostCodeSlot& quoted : {nowhere(), integer(2), leads_to(code.row({real(1.0)}))}) {
    expect_no_result(call("xarray", {code.quoted(quoted)}), 0);
    expect_no_result(call("xarray", {code.quoted(quoted), numbers({1})}), 0);
  }
}

// ---- Dimensions

TEST_F(Xarray, OfDimensions_IsAnArrayOfZeros) {
  EXPECT_EQ(text_of(by_dimensions("double", {integer(2), integer(3)})), "2 3 [[0.0,0.0,0.0],[0.0,0.0,0.0]]");
  EXPECT_EQ(text_of(by_dimensions("int", {integer(3)})), "3 [0,0,0]");
  EXPECT_EQ(text_of(by_dimensions("int64", {integer(1), integer(2)})), "1 2 [[0,0]]");
  EXPECT_EQ(text_of(by_dimensions("bool", {integer(2)})), "2 [false,false]");
}

TEST_F(Xarray, OfEachKind_IsAnObjectOfItsType) {
  const char* types[] = {"$xboolarray", "$xintarray", "$xint64array", "$xdoublearray"};
  for (int n = 0; n < 4; ++n) {
    EXPECT_EQ(type_of(by_dimensions(dtypes[n], {integer(2)}).result), types[n]);
    EXPECT_EQ(type_of(from(dtypes[n], numbers({1, 2})).result), types[n]);
    EXPECT_EQ(type_of(from_row(dtypes[n], code.row({real(1.0)})).result), types[n]);
  }
}

TEST_F(Xarray, OfDimensions_AsksTheHostForTheObjectAlone) {
  for (const char* dtype : dtypes)
    EXPECT_EQ(by_dimensions(dtype, {integer(2)}).operations, (Words{"NewAny", "SetTypeAny result"}));
}

TEST_F(Xarray, ADimensionOfZero_GivesAnArrayWithoutElements) {
  for (const char* dtype : dtypes) {
    Answer answer = by_dimensions(dtype, {integer(0)});
    EXPECT_EQ(answer.returned, 1);
    EXPECT_EQ(shape(answer.result), Shapes{0});
    EXPECT_EQ(shape(by_dimensions(dtype, {integer(3), integer(0), integer(2)}).result), (Shapes{3, 0, 2}));
  }
}

TEST_F(Xarray, OfManyDimensions_HasThemAll) {
  const std::vector<HostCodeSlot> ones(20, integer(1));
  EXPECT_EQ(shape(by_dimensions("int", ones).result), Shapes(20, 1));
}

TEST_F(Xarray, AnExtentOfOne_HasAStrideOfZero) {
  const Answer answer = by_dimensions("int", {integer(2), integer(1), integer(3)});
  EXPECT_EQ(strides_of(answer.result), (std::vector<std::ptrdiff_t>{3, 0, 1}));
}

TEST_F(Xarray, WithoutDimensions_Fails) {
  for (const char* dtype : {"bool", "int", "int64", "float", "double"}) expect_no_result(by_dimensions(dtype, {}), 0);
}

TEST_F(Xarray, ADimensionThatIsNo32BitInteger_Fails) {
  host[1] = Value(std::int64_t{2});
  host[2] = Value(2.0);
  host[3] = Value("2");
  host[4] = numbers({2});
  host[5] = Value();
  for (const HostCodeSlot& dimension :
       {real(2.0), integer64(2), code.text("2"), code.wide_text(u"2"), variable(1), variable(2), variable(3),
        variable(4), variable(5), variable(99), code.call_slot("unknown"), absent(), nowhere()}) {
    expect_no_result(by_dimensions("int", {dimension}), 0);
    expect_no_result(by_dimensions("int", {integer(2), dimension}), 0);
    expect_no_result(by_dimensions("int", {dimension, integer(2)}), 0);
    expect_no_result(by_dimensions("float", {dimension}), 0);
  }
}

TEST_F(Xarray, ANegativeDimensionBehindABadOne_FailsFirst) {
  expect_no_result(by_dimensions("int", {real(2.0), integer(-1)}), 0);
  expect_no_result(by_dimensions("int", {integer(-1), real(2.0)}), 0);
}

TEST_F(Xarray, OfDimensionsByVariables_ReadsTheFrameOfTheQuotation) {
  host.use_slot_base(100);
  host[45] = Value(2);
  host[46] = Value(3);
  Answer answer = call("xarray", {code.quoted_call("int", {variable(105), variable(106)}, 40)});
  EXPECT_EQ(shape(answer.result), (Shapes{2, 3}));
  EXPECT_EQ(host.slots_read(), (std::vector<int>{45, 46}));
}

TEST_F(Xarray, OfDimensionsByCalls_RunsThem) {
  host[1] = Value(4);
  host.define("area", [&](HostValue* args, int, HostValue* result) {
    HVM_SetInt(ctx(), result, HVM_AsInt(args) * HVM_AsInt(args + 1));
    return 1;
  });
  const HostCodeSlot area = code.call_slot("area", {integer(2), variable(1)});
  const Answer answer = by_dimensions("int", {area, integer(1)});
  Value array = answer.result;
  EXPECT_EQ(shape(array), (Shapes{8, 1}));
  // The evaluator ends after the array is handed over.
  EXPECT_EQ(answer.operations, (Words{"NewObject", "NewObjects", "SetInt", "SetInt", "AsInt", "AsInt", "SetInt",
                                      "FreeObjs", "NewAny", "SetTypeAny result", "FreeObj"}));
}

TEST_F(Xarray, OfDimensionsBySelections_ReadsTheTable) {
  host[1] = numbers({7, 3});
  EXPECT_EQ(shape(by_dimensions("int", {code.selection_slot(1, {integer(1)})}).result), Shapes{3});
}

TEST_F(Xarray, OfDimensionsByAnArrayLiteral_Fails) {
  expect_no_result(by_dimensions("int", {leads_to(code.array_literal({code.element(integer(2))}))}), 0);
}

TEST_F(Xarray, ACallThatThrows_PassesAndLeaksNothing) {
  host.define("f", [](HostValue*, int, HostValue*) -> int { throw std::runtime_error("from the host"); });
  EXPECT_THROW(by_dimensions("int", {integer(1), code.call_slot("f", {integer(2)})}), std::runtime_error);
}

TEST_F(Xarray, ASelectionThroughWhatIsNoTable_PassesTheException) {
  host[1] = numbers({7, 3});
  try {
    by_dimensions("int", {code.selection_slot(1, {integer(1), integer(1)})});
    FAIL();
  } catch (const std::exception& error) {
    EXPECT_STREQ(error.what(), "\"object is not array\"");
  }
}

TEST_F(XarrayDeathTest, ATreeThatCannotBe_EndsTheProcess) {
  HostCodeNode* wrapper = code.node(NodeKind::name_wrapper, nowhere(), code.call_slot("double"));
  Value wrong_name = code.quoted(leads_to(code.node(NodeKind::call, leads_to(wrapper))));
  EXPECT_EXIT(call("xarray", {wrong_name}), ::testing::KilledBySignal(SIGABRT), "");
  HostCodeNode* inner = code.node(NodeKind::slot_list_inner, nowhere(), integer(2));
  Value wrong_list = code.quoted(leads_to(code.node(NodeKind::slot_list, variable(1), leads_to(inner))));
  EXPECT_EXIT(call("xarray", {wrong_list}), ::testing::KilledBySignal(SIGABRT), "");
}

// ---- Sizes that cannot be

TEST_F(Xarray, ImpossibleDimensions_EndInAnExceptionBeforeAnythingIsAllocated) {
  const int large = INT32_MAX;
  const std::vector<std::vector<int>> impossible = {{-1},
                                                    {INT32_MIN},
                                                    {2, -1},
                                                    {-1, -1},
                                                    {-2, -3},
                                                    {0, -1},
                                                    {-1, 0},
                                                    {large, large, large},
                                                    {65536, 65536, 65536, 65536},
                                                    {large, large, 2},
                                                    {1 << 30, 1 << 30, 16},
                                                    {153092023, 92737, 649657}};  // 2^63 - 1
  for (const char* dtype : {"bool", "int", "int64", "float", "double"}) {
    for (const auto& dimensions : impossible) {
      std::vector<HostCodeSlot> slots;
      for (const int dimension : dimensions) slots.push_back(integer(dimension));
      const Value quotation = code.quoted_call(dtype, slots);
      hvm::record_calls(true);
      EXPECT_THROW(call("xarray", {quotation}), std::bad_alloc);
      EXPECT_TRUE(hvm::recorded_calls().empty());
    }
  }
}

TEST_F(Xarray, OfAnUnknownKind_ImpossibleDimensionsDoNotMatter) {
  expect_no_result(by_dimensions("complex", {integer(-1)}), 0);
}

// ---- Names

TEST_F(Xarray, OfAnUnknownDtype_FailsWithDimensions_AndReturnsNoValueWithData) {
  for (const char* dtype :
       {"complex", "", "Double", "DOUBLE", "int32", "float64", " double", "double ", "boolean", "@"}) {
    expect_no_result(by_dimensions(dtype, {integer(2)}), 0);
    expect_no_result(by_dimensions(dtype, {}), 0);
    expect_no_result(from(dtype, numbers({1, 2})), 1);
    expect_no_result(from_row(dtype, code.row({real(1.0)})), 1);
    expect_no_result(from(dtype, code.quoted_call("double")), 1);
    expect_no_result(from(dtype, Value(5)), 1);
  }
}

TEST_F(Xarray, Required_FormsThatNameNoDtype_NeverGiveAnArray) {
  host[1] = Value("double");
  HostCodeNode* inner = code.node(NodeKind::slot_list_inner, nowhere(), code.list({integer(2)}));
  const HostCodeSlot dimensions = code.call_slot("double", {integer(2)});
  for (const HostCodeSlot& quoted :
       {leads_to(code.quotation(variable(1))), leads_to(code.quotation(dimensions)),
        leads_to(code.node(NodeKind::slot_list, variable(1), leads_to(inner))), variable(1)}) {
    expect_no_result(call("xarray", {code.quoted(quoted)}), 0);
    expect_no_result(call("xarray", {code.quoted(quoted), numbers({1, 2})}), 1);
  }
  const HostCodeSlot named = leads_to(code.node(NodeKind::variable_name, nowhere(), variable(1)));
  expect_no_result(call("xarray", {code.quoted(named)}), 0);
  expect_no_result(call("xarray", {code.quoted(named), numbers({1, 2})}), 0);
}

TEST_F(Xarray, OfALabelledQuotation_IsTheArray) {
  const HostCodeSlot labelled =
      leads_to(code.node(NodeKind::labelled, code.call_slot("int", {integer(2)}), code.text("label")));
  EXPECT_EQ(text_of(call("xarray", {code.quoted(labelled)})), "2 [0,0]");
  EXPECT_EQ(text_of(call("xarray", {code.quoted(labelled), numbers({7})})), "1 [7]");
}

TEST_F(Xarray, OfAWrappedName_IsTheArray) {
  HostCodeNode* name = code.node(NodeKind::name, code.text("int"), code.list({integer(2)}));
  HostCodeNode* wrapper = code.node(NodeKind::name_wrapper, nowhere(), leads_to(name));
  EXPECT_EQ(text_of(call("xarray", {code.quoted(leads_to(code.node(NodeKind::call, leads_to(wrapper))))})), "2 [0,0]");
}

// ---- Tables

TEST_F(Xarray, OfATable_HasItsElementsAndShape) {
  const Value matrix = table({numbers({1, 2, 3}), numbers({4, 0, 6})});
  EXPECT_EQ(text_of(from("int", matrix)), "2 3 [[1,2,3],[4,0,6]]");
  EXPECT_EQ(text_of(from("int64", matrix)), "2 3 [[1,2,3],[4,0,6]]");
  EXPECT_EQ(text_of(from("double", matrix)), "2 3 [[1.0,2.0,3.0],[4.0,0.0,6.0]]");
  EXPECT_EQ(text_of(from("bool", matrix)), "2 3 [[true,true,true],[true,false,true]]");
}

TEST_F(Xarray, OfATable_DoesNotReadTheDimensions) {
  host.define("f", [](HostValue*, int, HostValue*) { return 1; });
  const Value quotation = code.quoted_call("int", {integer(2), code.call_slot("f")});
  EXPECT_EQ(text_of(call("xarray", {quotation, numbers({1, 2, 3})})), "3 [1,2,3]");
  EXPECT_TRUE(host.calls().empty());
}

TEST_F(Xarray, ArgumentsBeyondTheSecond_AreNotRead) {
  EXPECT_EQ(text_of(call("xarray", {code.quoted_call("int"), numbers({1, 2}), numbers({7}), Value("x")})), "2 [1,2]");
}

TEST_F(Xarray, OfATable_AsksTheHostForEachLeafThenForTheObject) {
  EXPECT_EQ(from("int", numbers({1, 2})).operations,
            (Words{"NumberCheck", "AsInt", "NumberCheck", "AsInt", "NewAny", "SetTypeAny result"}));
  EXPECT_EQ(from("bool", numbers({1})).operations, (Words{"NumberCheck", "AsBool", "NewAny", "SetTypeAny result"}));
}

TEST_F(Xarray, OfEmptyTables_HasNoElements) {
  Answer answer = from("int", Value::table());
  EXPECT_EQ(shape(answer.result), Shapes{0});
  answer = from("int", table({Value::table()}));
  EXPECT_EQ(shape(answer.result), (Shapes{1, 0}));
  answer = from("int", raw(ValueTag::table));
  EXPECT_EQ(shape(answer.result), Shapes{0});
}

TEST_F(Xarray, Required_OfARaggedTable_IsCutOrFilledToItsLastCounts) {
  EXPECT_EQ(text_of(from("int", table({numbers({1, 2, 3}), numbers({4, 5})}))), "2 2 [[1,2],[3,4]]");
  EXPECT_EQ(text_of(from("int", table({numbers({1, 2}), numbers({3, 4, 5})}))), "2 3 [[1,2,3],[4,5,0]]");
  EXPECT_EQ(text_of(from("bool", table({numbers({1, 1}), numbers({1, 1, 1})}))),
            "2 3 [[true,true,true],[true,true,false]]");
}

TEST_F(Xarray, Required_OfALeafThatIsNoNumber_IsWhatWasGathered) {
  for (const Value& leaf : {Value("text"), Value(), raw(ValueTag::object), Value(u"wide")}) {
    Answer answer = from("int", table({Value(1), leaf, Value(2)}));
    EXPECT_EQ(answer.returned, 1);
    EXPECT_EQ(shape(answer.result), Shapes{0});
    // The outer count is not reached: the shape is (0, 2), without elements.
    answer = from("int", table({numbers({1, 2}), table({Value(3), leaf})}));
    EXPECT_EQ(answer.returned, 1);
    EXPECT_EQ(shape(answer.result), (Shapes{0, 2}));
  }
}

TEST_F(Xarray, KeysThatAreText_DoNotCount) {
  Value source = numbers({1, 2});
  *hvm::slot(hvm::table_of(source.record()), "k") = Value("no number").give_up();
  EXPECT_EQ(text_of(from("int", source)), "2 [1,2]");
}

TEST_F(Xarray, KeysOutOfOrder_FollowTheOrderedOnes) {
  Value source = numbers({1, 2});
  HostHash* hash = hvm::table_of(source.record());
  *hvm::slot(hash, 9) = Value(3).give_up();
  *hvm::slot(hash, Value(0.5).record()) = Value(4).give_up();
  EXPECT_EQ(text_of(from("int", source)), "4 [1,2,3,4]");
}

TEST_F(Xarray, OfATableWhoseShapeOverflows_EndsInBadAlloc) {
  // Each level has 65536 entries, of which the last is the next level: the extents' product wraps to none.
  Value nested = Value(1);
  std::vector<Value> entries(65535, Value(1));
  for (int level = 0; level < 4; ++level) {
    entries.push_back(nested);
    nested = table(entries);
    entries.pop_back();
  }
  for (const char* dtype : {"bool", "int", "int64", "float", "double"})
    EXPECT_THROW(from(dtype, nested), std::bad_alloc);
}

TEST_F(Xarray, OfATableNestedDeeply_IsReadAndDumped) {
  Value nested = numbers({7});
  for (int n = 1; n < 100000; ++n) nested = table({nested});
  Answer answer = from("int", nested);
  EXPECT_EQ(answer.returned, 1);
  EXPECT_EQ(dump(answer.result), std::string(100000, '[') + "7" + std::string(100000, ']'));
}

// ---- Data literals

TEST_F(Xarray, OfALiteral_HasItsElementsAndShape) {
  const HostCodeNode* rows = code.rows({code.row({real(1.0), real(2.0)}), code.row({real(3.0), real(-4.0)})});
  EXPECT_EQ(text_of(from_row("double", rows)), "2 2 [[1.0,2.0],[3.0,-4.0]]");
  EXPECT_EQ(text_of(from_row("int", code.row({integer(1), integer(-2)}))), "2 [1,-2]");
  EXPECT_EQ(from_row("double", rows).operations, (Words{"NewAny", "SetTypeAny result"}));
}

TEST_F(Xarray, Required_OfALiteralOfTheWrongForm_IsFilledWithZerosAtTheEnd) {
  EXPECT_EQ(text_of(from_row("double", code.row({integer(1), real(2.5), real(3.5)}))), "3 [2.5,3.5,0.0]");
  EXPECT_EQ(text_of(from_row("int", code.row({integer(1), real(2.5)}))), "2 [1,0]");
  EXPECT_EQ(text_of(from_row("int64", code.row({integer64(1), integer(2)}))), "2 [0,0]");
  EXPECT_EQ(text_of(from_row("bool", code.row({integer(1), real(1.0)}))), "2 [false,false]");
}

TEST_F(Xarray, OfALiteral_ReadsVariablesInItsOwnFrame) {
  host[6] = Value(2.5);
  host[7] = Value("text");
  const Value quotation = code.quoted_call("double", {}, 50);
  const Answer answer = call("xarray", {quotation, code.quoted(leads_to(code.row({variable(1), real(1.0)})), 5)});
  EXPECT_EQ(dump(Value(answer.result)), "[2.5,1.0]");
  EXPECT_EQ(host.slots_read(), std::vector<int>{6});
}

TEST_F(Xarray, OfCodeThatIsNoLiteral_Fails) {
  for (const char* dtype : {"bool", "int", "int64", "float", "double"})
    for (const Value& data : {code.quoted_call("double"), code.quoted(nowhere()), code.quoted(variable(1)),
                              code.code(nullptr), raw(ValueTag::code), code.code(code.row({real(1.0)}))})
      expect_no_result(from(dtype, data), 0);
}

TEST_F(Xarray, Required_OfDataThatIsNeither_IsHandledAndLeavesTheResult) {
  const Value object = by_dimensions("int", {integer(2)}).result;
  for (const Value& data : {Value(5), Value(), Value(2.5), Value("text"), object}) {
    const Answer answer = from("int", data);
    expect_no_result(answer, 1);
    EXPECT_EQ(answer.operations, Words{});
  }
}

// ---- The float name

TEST_F(Xarray, Required_OfFloat_ComputesAndThenMeetsTheMissingType) {
  const HostCodeNode* row = code.row({real(1.0)});
  Answer answers[] = {by_dimensions("float", {integer(2)}), from("float", numbers({1, 2})), from_row("float", row)};
  for (Answer& answer : answers) {
    EXPECT_EQ(answer.returned, 1);
    EXPECT_TRUE(answer.result.is_nil());
    ASSERT_GE(answer.operations.size(), 2u);
    EXPECT_EQ(answer.operations[answer.operations.size() - 2], "NewAny");
    EXPECT_EQ(answer.operations.back(), "SetTypeAny result");
  }
  EXPECT_EQ(answers[1].operations,
            (Words{"NumberCheck", "AsDouble", "NumberCheck", "AsDouble", "NewAny", "SetTypeAny result"}));
}

TEST_F(Xarray, OfFloat_NamesTheFloatTypeToTheHost) {
  const Value quotation = code.quoted_call("float", {integer(2)});
  call("xarray", {quotation});
  for (const auto& recorded : hvm::recorded_calls())
    if (std::string(recorded.operation) == "HVM_NewAny") {
      EXPECT_STREQ(static_cast<const char*>(recorded.subject), "$xfloatarray");
    }
  EXPECT_EQ(hvm::recorded_calls().size(), 2u);
}

TEST_F(Xarray, WithoutAnObjectOfTheHost_IsHandledAndNil) {
  hvm::withhold_objects(true);
  for (const char* dtype : dtypes) {
    for (const Answer& answer :
         {by_dimensions(dtype, {integer(2)}), from(dtype, numbers({1})), from_row(dtype, code.row({real(1.0)}))}) {
      EXPECT_EQ(answer.returned, 1);
      EXPECT_TRUE(answer.result.is_nil());
    }
  }
  hvm::withhold_objects(false);
}

// ---- The elements beside the array

template <class Kind>
std::vector<typename Kind::element> gathered_in(const Value& value) {
  return unbox_array<Kind>(hvm::object_of(value.record()))->data;
}

TEST_F(Xarray, TheGatheredElements_StayBesideTheArray) {
  const Value matrix = table({numbers({1, 2, 3}), numbers({4, 5})});
  EXPECT_EQ(gathered_in<XTInt>(from("int", matrix).result), (std::vector<std::int32_t>{1, 2, 3, 4}));
  EXPECT_EQ(gathered_in<XTBool>(from("bool", matrix).result), (std::vector<bool>{true, true, true, true}));
  EXPECT_EQ(gathered_in<XTInt64>(from("int64", numbers({7})).result), std::vector<std::int64_t>{7});
  EXPECT_EQ(gathered_in<XTDouble>(by_dimensions("double", {integer(3)}).result), (std::vector<double>{0, 0, 0}));
  EXPECT_EQ(gathered_in<XTDouble>(from_row("double", code.row({integer(1), real(2.5)})).result),
            (std::vector<double>{2.5, 0}));
}

TEST_F(Xarray, TheGatheredElements_AreAnotherCopy) {
  Answer answer = from("int", numbers({1, 2}));
  container_of<XTInt>(answer.result)->storage()[0] = 77;
  EXPECT_EQ(gathered_in<XTInt>(answer.result), (std::vector<std::int32_t>{1, 2}));
}

// ---- Memory

TEST_F(Xarray, TheElements_AreHeldTwiceAndNoMore) {
  const EntryFunction function = Module::loaded().entry("xarray");
  const auto allocations_of = [&](std::vector<Value> args) {
    Value result;
    const auto before = allocations().made;
    EXPECT_EQ(function(ctx(), hvm::records_of(args), static_cast<int>(args.size()), result.address()), 1);
    return allocations().made - before;
  };
  // Object, array, gathered elements, container with its control block, elements.
  EXPECT_EQ(allocations_of({code.quoted_call("double", {integer(2), integer(3)})}), 5);
  // The same, the shape as it is read (1 and 2 entries), and the table around the innermost.
  EXPECT_EQ(allocations_of({code.quoted_call("double"), table({numbers({1, 2}), numbers({3, 4})})}), 5 + 2 + 1);
  // The row's two elements grow from 1 to 2, and the shape has one entry.
  EXPECT_EQ(allocations_of({code.quoted_call("double"), code.quoted(leads_to(code.row({real(1.0), real(2.0)})))}),
            5 + 1 + 1);
}

}  // namespace
}  // namespace arrayfold::test
