// reader/evaluation_test.cpp: the values of arguments
//
// Array literals and selections have files of their own.

#include "reader/evaluation.hpp"

#include <stdexcept>

#include "support/reader_test.hpp"

namespace arrayfold::test {
namespace {

class Evaluations : public ReaderTest {};
using EvaluationsDeathTest = Evaluations;

// ---- Argument lists

TEST_F(Evaluations, OfAList_AppendTheValuesInOrder) {
  ExpressionEvaluator evaluator(ctx(), 0);
  const HostCodeSlot list = code.list({integer(1), real(2.5), code.text("x")});
  evaluate_cell_list(evaluator, &list);
  Words values;
  for (const ScalarRef& scalar : evaluator.results()) values.push_back(shown(scalar));
  EXPECT_EQ(values, (Words{"int 1", "real 2.5", "text x"}));
}

TEST_F(Evaluations, OfMoreThanEightArguments_KeepThemAll) {
  for (const int count : {7, 8, 9, 100}) {
    std::vector<HostCodeSlot> arguments;
    for (int n = 0; n < count; ++n) arguments.push_back(integer(n));
    ExpressionEvaluator evaluator(ctx(), 0);
    const HostCodeSlot list = code.list(arguments);
    evaluate_cell_list(evaluator, &list);
    ASSERT_EQ(evaluator.results().size(), static_cast<std::size_t>(count));
    for (int n = 0; n < count; ++n)
      EXPECT_EQ(std::get<int_scalar>(evaluator.results()[static_cast<std::size_t>(n)]), n);
  }
}

TEST_F(Evaluations, OfNoList_AppendNothing) {
  ExpressionEvaluator evaluator(ctx(), 0);
  evaluate_cell_list(evaluator, nullptr);
  const HostCodeSlot empty = nowhere();
  evaluate_cell_list(evaluator, &empty);
  EXPECT_TRUE(evaluator.results().empty());
}

TEST_F(Evaluations, OfAList_EndWhereALinkIsNoNode) {
  for (const HostCodeSlot& link : {absent(), integer(3), variable(3)}) {
    ExpressionEvaluator evaluator(ctx(), 0);
    const HostCodeSlot list = leads_to(code.node(NodeKind::list_cell, link, integer(1)));
    evaluate_cell_list(evaluator, &list);
    EXPECT_EQ(evaluator.results().size(), 1u);
  }
}

TEST_F(EvaluationsDeathTest, OfASlotThatBeginsNoList_EndTheProcess) {
  for (const HostCodeSlot& slot : {integer(0), absent(), variable(0), code.text("x")}) {
    ExpressionEvaluator evaluator(ctx(), 0);
    EXPECT_EXIT(evaluate_cell_list(evaluator, &slot), ::testing::KilledBySignal(SIGABRT), "");
  }
}

TEST_F(EvaluationsDeathTest, OfACallWhoseValueBeginsNoList_EndTheProcess) {
  const HostCodeSlot call = leads_to(code.node(NodeKind::call, code.symbol("f"), integer(1)));
  EXPECT_EXIT(evaluated(call), ::testing::KilledBySignal(SIGABRT), "");
}

// ---- Cells

TEST_F(Evaluations, OfLiterals_AreTheirValues) {
  EXPECT_EQ(evaluated(integer(-3)), "int -3");
  EXPECT_EQ(evaluated(real(2.5)), "real 2.5");
  EXPECT_EQ(evaluated(code.text("text")), "text text");
  EXPECT_EQ(evaluated(code.wide_text(u"wide")), "wide wide");
}

TEST_F(Evaluations, OfAnInteger_TakeTheLowHalf) {
  EXPECT_EQ(evaluated(slot_of<std::uint64_t>(SlotTag::integer, 0x1234567800000005)), "int 5");
}

TEST_F(Evaluations, Required_OfNarrowText_ScanForTheTerminator_OfWideTextTrustTheLength) {
  EXPECT_EQ(evaluated(code.text(std::string_view("a\0b", 3))), "text a");
  EXPECT_EQ(evaluated(code.text("abc", Length::unrecorded)), "text abc");
  HostCodeSlot wide = code.wide_text(u"abcdef");
  wide.length = 4;
  EXPECT_EQ(evaluated(wide), "wide abc");
  EXPECT_EQ(evaluated(code.wide_text(u"abcdef", Length::unrecorded)), "wide abcdef");
}

TEST_F(Evaluations, OfNullText_AreEmpty) {
  EXPECT_EQ(evaluated(slot_of<const char*>(SlotTag::string, nullptr)), "text ");
  EXPECT_EQ(evaluated(slot_of<const char*>(SlotTag::wide_string, nullptr)), "wide ");
  EXPECT_EQ(evaluated(slot_of<const char*>(SlotTag::wide_string, nullptr, 5)), "wide ");
}

TEST_F(Evaluations, Required_Of64BitIntegers_AreFalse) { EXPECT_EQ(evaluated(integer64(5)), "false"); }

TEST_F(Evaluations, OfOtherSlots_AreFalse) {
  for (const HostCodeSlot& slot : {nowhere(), absent(), slot_of(static_cast<SlotTag>(6), 1)})
    EXPECT_EQ(evaluated(slot), "false");
  EXPECT_EQ(evaluated_cell(nowhere()), "false");
}

TEST_F(Evaluations, OfABareName_AreItsText) {
  const char* text = "double";
  HostCodeNode* name = code.node(NodeKind::name, code.text("unused"), slot_of(SlotTag::node, text));
  EXPECT_EQ(evaluated_cell(leads_to(name)), "text double");
  name->value = nowhere();
  EXPECT_EQ(evaluated_cell(leads_to(name)), "text ");
}

TEST_F(Evaluations, OfANameWithoutText_AreFalse) {
  for (const HostCodeSlot& link : {nowhere(), integer(1)})
    EXPECT_EQ(evaluated_cell(leads_to(code.node(NodeKind::name, link, code.call_slot("f")))), "false");
}

TEST_F(Evaluations, OfAnyKindOfCell_AreLiteralsReadAlike) {
  EXPECT_EQ(evaluated_cell(leads_to(code.node(static_cast<NodeKind>(1), nowhere(), integer(4)))), "int 4");
}

TEST_F(Evaluations, OfANodeInACellOfAnotherKind_AreFalse) {
  host.define("f", [](HostValue*, int, HostValue*) { return 1; });
  EXPECT_EQ(evaluated_cell(leads_to(code.node(NodeKind::data_row, nowhere(), code.call_slot("f")))), "false");
  EXPECT_TRUE(host.calls().empty());
}

TEST_F(Evaluations, OfANodeOfAnyOtherKind_AreFalse) {
  for (const NodeKind kind : {NodeKind::name, NodeKind::list_cell, NodeKind::data_row, NodeKind::labelled,
                              NodeKind::range, NodeKind::slot_list, static_cast<NodeKind>(0)})
    EXPECT_EQ(operations_of([&] { EXPECT_EQ(evaluated(leads_to(code.node(kind, code.text("x")))), "false"); }),
              Words{});
}

// ---- Variables

TEST_F(Evaluations, OfAVariable_AdjustTheSlotByTheFrames) {
  host.use_slot_base(100);
  frame_base = 40;
  host[50] = Value(7);
  EXPECT_EQ(evaluated(variable(110)), "int 7");
  EXPECT_EQ(evaluated_slot(variable(110)), "int 7");
  EXPECT_EQ(host.slots_read(), (std::vector<int>{50, 50}));
}

TEST_F(Evaluations, OfAVariable_ReadTheBaseAtThatMoment) {
  host[1] = Value(1);
  host[5] = Value(5);
  host.define("f", [&](HostValue*, int, HostValue* result) {
    host.use_slot_base(6);
    HVM_SetInt(ctx(), result, 0);
    return 1;
  });
  ExpressionEvaluator evaluator(ctx(), 10);
  host.use_slot_base(20);
  host[-5] = Value(-5);
  host[9] = Value(9);
  const HostCodeSlot list = code.list({variable(5), code.call_slot("f"), variable(5)});
  evaluate_cell_list(evaluator, &list);
  EXPECT_EQ(shown(evaluator.results()[0]), "int -5");
  EXPECT_EQ(shown(evaluator.results()[2]), "int 9");
}

TEST_F(Evaluations, OfVariables_FollowTheirTags) {
  host[0] = Value(std::int64_t{1} << 40);
  host[1] = Value(2.5);
  host[2] = Value("text");
  host[3] = Value(u"wide");
  host[4] = Value::string_record("record");
  host[5] = Value::table_of({Value(1)});
  host[6] = Value();
  const char* expected[] = {"int64 1099511627776", "real 2.5",  "text text", "wide wide",
                            "text record",         "value [1]", "value nil"};
  for (std::uint32_t slot = 0; slot < 7; ++slot) {
    EXPECT_EQ(evaluated(variable(slot)), expected[slot]);
    EXPECT_EQ(evaluated_slot(variable(slot)), expected[slot]);
  }
}

TEST_F(Evaluations, OfAMissingVariable_AreFalse) {
  EXPECT_EQ(evaluated(variable(1)), "false");
  EXPECT_EQ(evaluated_slot(variable(1)), "false");
}

TEST_F(Evaluations, WithoutAFrame_CountSlotsFromZero) {
  host.use_slot_base(100);
  host.without_frame();
  host[3] = Value(7);
  EXPECT_EQ(evaluated(variable(3)), "int 7");
}

// ---- Calls

TEST_F(Evaluations, OfACallWithoutArguments_PassNoArray) {
  host.define("f", [&](HostValue* args, int nargs, HostValue* result) {
    EXPECT_EQ(args, nullptr);
    EXPECT_EQ(nargs, 0);
    HVM_SetInt(ctx(), result, 7);
    return 1;
  });
  EXPECT_EQ(operations_of([&] { EXPECT_EQ(evaluated(code.call_slot("f")), "int 7"); }),
            (Words{"NewObject", "SetInt 7", "FreeObj"}));
}

TEST_F(Evaluations, OfACall_PassTheArgumentsAsRecords) {
  host[1] = Value::table_of({Value(1), Value(2)});
  host.define("f", [&](HostValue* args, int nargs, HostValue* result) {
    HVM_SetInt(ctx(), result, static_cast<int>(nargs + (args[1].tag == ValueTag::real)));
    return 1;
  });
  const auto words = operations_of([&] {
    EXPECT_EQ(evaluated(code.call_slot("f", {integer(1), real(2.5), code.text("text"), code.wide_text(u"wide"),
                                             variable(1), integer64(5), absent()})),
              "int 8");
  });
  EXPECT_EQ(words, (Words{"NewObject", "NewObjects 7", "SetInt 1", "SetReal", "SetString", "SetWStringEx 4",
                          "DupObject", "SetInt 8", "FreeObjs 7", "FreeObj"}));
  ASSERT_EQ(host.calls().size(), 1u);
  EXPECT_TRUE(host.calls()[0].has_array);
  // Whatever cannot be read stays nil.
  EXPECT_EQ(host.calls()[0].arguments, (Words{"1", "2.5", "text", "wide", "[1, 2]", "nil", "nil"}));
}

TEST_F(Evaluations, OfACall_AnyNonzeroAnswerIsSuccess) {
  for (const int answer : {1, -1, 256}) {
    host.define("f", [&](HostValue*, int, HostValue* result) {
      HVM_SetReal(ctx(), result, 2.5);
      return answer;
    });
    EXPECT_EQ(evaluated(code.call_slot("f")), "real 2.5");
  }
}

TEST_F(Evaluations, OfACallThatLeavesItsResult_AreNil) {
  host.define("f", [](HostValue*, int, HostValue*) { return 1; });
  EXPECT_EQ(evaluated(code.call_slot("f")), "value nil");
}

TEST_F(Evaluations, OfACallThatFails_AreFalse_AndGiveTheRecordsBack) {
  host.define("f", [&](HostValue*, int, HostValue* result) {
    HVM_SetInt(ctx(), result, 7);
    return 0;
  });
  EXPECT_EQ(operations_of([&] { EXPECT_EQ(evaluated(code.call_slot("f", {integer(1)})), "false"); }),
            (Words{"NewObject", "NewObjects 1", "SetInt 1", "SetInt 7", "FreeObjs 1", "FreeObj"}));
  EXPECT_EQ(evaluated(code.call_slot("unknown")), "false");
}

TEST_F(Evaluations, OfACallThatThrows_GiveTheRecordsBack) {
  host.define("f", [](HostValue*, int, HostValue*) -> int { throw std::runtime_error("from the host"); });
  EXPECT_EQ(operations_of([&] { EXPECT_THROW(evaluated(code.call_slot("f", {integer(1)})), std::runtime_error); }),
            (Words{"NewObject", "NewObjects 1", "SetInt 1", "FreeObjs 1", "FreeObj"}));
  EXPECT_THROW(evaluated(code.call_slot("f")), std::runtime_error);
}

TEST_F(Evaluations, OfCallsInCalls_GoFromInsideOut) {
  host.define("sum", [&](HostValue* args, int nargs, HostValue* result) {
    int sum = 0;
    for (int n = 0; n < nargs; ++n) sum += HVM_AsInt(args + n);
    HVM_SetInt(ctx(), result, sum);
    return 1;
  });
  const HostCodeSlot inner = code.call_slot("sum", {integer(1), integer(2)});
  EXPECT_EQ(operations_of([&] {
              EXPECT_EQ(evaluated(code.call_slot("sum", {inner, integer(4)})), "int 7");
            }),
            (Words{"NewObject", "NewObject", "NewObjects 2", "SetInt 1", "SetInt 2", "AsInt", "AsInt", "SetInt 3",
                   "FreeObjs 2", "NewObjects 2", "SetInt 3", "SetInt 4", "AsInt", "AsInt", "SetInt 7", "FreeObjs 2",
                   "FreeObj", "FreeObj"}));
}

TEST_F(Evaluations, OfACallWithoutHostMemory_ThrowBadAlloc) {
  host.define("f", [](HostValue*, int, HostValue*) { return 1; });
  for (const int nth : {1, 2}) {
    hvm::fail_allocation(nth);
    EXPECT_THROW(evaluated(code.call_slot("f", {integer(1)})), std::bad_alloc);
  }
  hvm::fail_allocation(0);
}

TEST_F(Evaluations, GiveTheirRecordsBackInOrderOfCreation) {
  hvm::record_calls(true);
  std::vector<const void*> made, freed;
  {
    ExpressionEvaluator evaluator(ctx(), 0);
    for (int n = 0; n < 20; ++n) made.push_back(evaluator.new_object());
  }
  hvm::record_calls(false);
  for (const auto& call : hvm::recorded_calls())
    if (std::string(call.operation) == "HVM_FreeObj") freed.push_back(call.subject);
  EXPECT_EQ(freed, made);
}

// ---- Quotations among the arguments

TEST_F(Evaluations, OfAQuotation_BecomeATable) {
  const HostCodeSlot quotation = leads_to(code.quotation(code.call_slot("double", {variable(3), code.text("x")})));
  host[3] = Value(2.5);
  EXPECT_EQ(operations_of([&] { EXPECT_EQ(evaluated(quotation), "value [\"double\", 3, \"\", 2.5, \"x\"]"); }),
            (Words{"NewObject", "ForceTable 4", "HashSetInt 0", "SetString", "HashSetInt 1", "SetInt 3", "HashSetInt 2",
                   "SetString", "HashSetInt 3", "SetReal", "HashSetInt 4", "SetString", "FreeObj"}));
}

TEST_F(Evaluations, OfAQuotation_EvaluateTheArgumentsAndThenMakeTheTable) {
  host.define("f", [&](HostValue*, int, HostValue* result) {
    HVM_SetInt(ctx(), result, 7);
    return 1;
  });
  const HostCodeSlot quotation = leads_to(code.quotation(code.call_slot("int", {code.call_slot("f")})));
  EXPECT_EQ(operations_of([&] { EXPECT_EQ(evaluated(quotation), "value [\"int\", -1, \"\", 7]"); }),
            (Words{"NewObject", "SetInt 7", "NewObject", "ForceTable 4", "HashSetInt 0", "SetString", "HashSetInt 1",
                   "SetInt -1", "HashSetInt 2", "SetString", "HashSetInt 3", "SetInt 7", "FreeObj", "FreeObj"}));
}

TEST_F(Evaluations, OfAQuotationWhoseArgumentThrows_MakeNoTable) {
  host.define("f", [](HostValue*, int, HostValue*) -> int { throw std::runtime_error("from the script"); });
  const HostCodeSlot quotation = leads_to(code.quotation(code.call_slot("int", {code.call_slot("f")})));
  EXPECT_EQ(operations_of([&] { EXPECT_THROW(evaluated(quotation), std::runtime_error); }),
            (Words{"NewObject", "FreeObj"}));
}

TEST_F(Evaluations, OfAQuotationWithoutArguments_HaveThreeEntries) {
  EXPECT_EQ(evaluated(leads_to(code.quotation(code.call_slot("int")))), "value [\"int\", -1, \"\"]");
}

TEST_F(Evaluations, OfAQuotation_UnreadableArgumentsStayNil) {
  EXPECT_EQ(evaluated(leads_to(code.quotation(code.call_slot("int", {integer64(3)})))),
            "value [\"int\", -1, \"\", nil]");
}

TEST_F(Evaluations, OfAQuotationThatIsNoNamedCall_AreFalse) {
  for (const HostCodeSlot& link : {variable(3), nowhere(), leads_to(code.quotation(code.call_slot("int"))),
                                   leads_to(code.node(NodeKind::labelled, code.call_slot("int")))})
    EXPECT_EQ(operations_of([&] { EXPECT_EQ(evaluated(leads_to(code.quotation(link))), "false"); }), Words{});
}

// ---- The short form

TEST_F(Evaluations, OfASlot_AreLiteralsNamesAndVariables) {
  EXPECT_EQ(evaluated_slot(code.text("text")), "text text");
  EXPECT_EQ(evaluated_slot(slot_of<std::uint64_t>(SlotTag::integer, 0x1234567800000005)), "int 5");
  EXPECT_EQ(evaluated_slot(real(2.5)), "real 2.5");
  EXPECT_EQ(evaluated_slot(leads_to(code.node(NodeKind::name, code.text("name")))), "text name");
  EXPECT_EQ(evaluated_slot(slot_of<const char*>(SlotTag::string, nullptr)), "text ");
  EXPECT_EQ(evaluated_slot(leads_to(code.node(NodeKind::name, slot_of<const char*>(SlotTag::string, nullptr)))),
            "text ");
}

TEST_F(Evaluations, Required_OfASlot_64BitIntegersAndWideStringsAreFalse) {
  EXPECT_EQ(evaluated_slot(integer64(5)), "false");
  EXPECT_EQ(evaluated_slot(code.wide_text(u"wide")), "false");
}

TEST_F(Evaluations, OfASlotOfAnythingElse_AreFalse) {
  host.define("f", [](HostValue*, int, HostValue*) { return 1; });
  for (const HostCodeSlot& slot : {nowhere(), absent(), code.call_slot("f"), leads_to(code.array_literal({})),
                                   leads_to(code.node(NodeKind::name, integer(1)))})
    EXPECT_EQ(evaluated_slot(slot), "false");
  EXPECT_TRUE(host.calls().empty());
}

TEST_F(Evaluations, OfVariablesInsideCallsAndQuotations_CountFromTheSameFrame) {
  host.use_slot_base(100);
  frame_base = 40;
  host[50] = Value(7);
  host.define("f", [&](HostValue* args, int, HostValue* result) {
    HVM_SetInt(ctx(), result, HVM_AsInt(args) + 1);
    return 1;
  });
  EXPECT_EQ(evaluated(leads_to(code.quotation(code.call_slot("int", {variable(110)})))),
            "value [\"int\", 110, \"\", 7]");
  EXPECT_EQ(evaluated(code.call_slot("f", {variable(110)})), "int 8");
}

}  // namespace
}  // namespace arrayfold::test
