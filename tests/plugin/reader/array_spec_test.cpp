// reader/array_spec_test.cpp: the forms of a quotation

#include "reader/array_spec.hpp"

#include "support/reader_test.hpp"

namespace arrayfold::test {
namespace {

class ArraySpecs : public ReaderTest {
 protected:
  std::optional<ArraySpec> read(HostCodeSlot quoted) {
    Value value = code.quoted(quoted, 17);
    return read_array_spec(ctx(), value.address());
  }
};
using ArraySpecsDeathTest = ArraySpecs;

void expect_spec(const std::optional<ArraySpec>& spec, const std::string& name, int slot, const HostCodeSlot* args,
                 const std::string& label = "") {
  ASSERT_TRUE(spec);
  EXPECT_EQ(spec->name, name);
  EXPECT_EQ(spec->slot, slot);
  EXPECT_EQ(spec->args, args);
  EXPECT_EQ(spec->label, label);
  EXPECT_EQ(spec->frame_base, 17u);
}

// ---- What is no quotation

TEST_F(ArraySpecs, OfAnythingButCode_AreEmpty) {
  for (Value value : {Value(), Value(1), Value(2.5), Value("double"), Value::table(), raw(ValueTag::object)})
    EXPECT_FALSE(read_array_spec(ctx(), value.address()));
}

TEST_F(ArraySpecs, OfCodeThatIsNoQuotation_AreEmpty) {
  for (const NodeKind kind : {NodeKind::call, NodeKind::selection, NodeKind::array_literal, NodeKind::name,
                              NodeKind::list_cell, NodeKind::data_row, static_cast<NodeKind>(0)}) {
    Value value = code.code(code.node(kind, code.call_slot("double")));
    EXPECT_FALSE(read_array_spec(ctx(), value.address()));
  }
}

TEST_F(ArraySpecs, OfCodeWithoutARootOrRecord_AreEmpty) {
  Value no_root = code.code(nullptr), no_record = raw(ValueTag::code);
  EXPECT_FALSE(read_array_spec(ctx(), no_root.address()));
  EXPECT_FALSE(read_array_spec(ctx(), no_record.address()));
}

TEST_F(ArraySpecs, OfAQuotationOfNoKnownForm_AreEmpty) {
  for (const HostCodeSlot& link :
       {nowhere(), absent(), integer(3), real(1.5), integer64(4), code.text("double"), code.wide_text(u"double"),
        leads_to(code.row({real(1.0)})), leads_to(code.node(NodeKind::name, code.text("double"))),
        leads_to(code.node(NodeKind::selection, variable(3))), leads_to(code.array_literal({}))})
    EXPECT_FALSE(read(link));
}

// ---- Form 1

TEST_F(ArraySpecs, OfANamedCall_HaveItsNameAndArguments) {
  HostCodeNode* call = code.call("double", {integer(2), variable(5)});
  expect_spec(read(leads_to(call)), "double", -1, &call->value);
}

TEST_F(ArraySpecs, OfACallNamedByText_HaveTheText) {
  HostCodeNode* call = code.node(NodeKind::call, code.text("int"), code.list({integer(2)}));
  expect_spec(read(leads_to(call)), "int", -1, &call->value);
}

TEST_F(ArraySpecs, OfACallNamedByNeither_HaveAnEmptyName) {
  for (const HostCodeSlot& link : {integer(3), variable(3), absent(), code.wide_text(u"int")}) {
    HostCodeNode* call = code.node(NodeKind::call, link);
    expect_spec(read(leads_to(call)), "", -1, nullptr);
  }
}

TEST_F(ArraySpecs, OfACallWithoutText_HaveAnEmptyName) {
  for (const HostCodeSlot& link :
       {nowhere(), code.symbol_without_text(), slot_of<const char*>(SlotTag::string, nullptr)}) {
    HostCodeNode* call = code.node(NodeKind::call, link);
    expect_spec(read(leads_to(call)), "", -1, nullptr);
  }
}

TEST_F(ArraySpecs, OfACall_WhoseFirstArgumentIsAVariable_HaveItsSlot) {
  HostCodeNode* call = code.call("double", {variable(7), integer(2)});
  expect_spec(read(leads_to(call)), "double", 7, &call->value);
  call = code.call("double", {integer(2), variable(7)});
  expect_spec(read(leads_to(call)), "double", -1, &call->value);
}

TEST_F(ArraySpecs, OfACall_WhoseFirstNodeIsNoCell_HaveNoSlot) {
  HostCodeNode* call =
      code.node(NodeKind::call, code.symbol("double"), leads_to(code.node(NodeKind::name, nowhere(), variable(7))));
  expect_spec(read(leads_to(call)), "double", -1, &call->value);
}

TEST_F(ArraySpecs, OfACall_WhoseValueSlotLeadsNowhere_HaveNoArguments) {
  for (const HostCodeSlot& value : {nowhere(), absent(), integer(3), variable(7), code.text("x")}) {
    HostCodeNode* call = code.node(NodeKind::call, code.symbol("double"), value);
    expect_spec(read(leads_to(call)), "double", -1, nullptr);
  }
}

TEST_F(ArraySpecs, OfAWrappedName_HaveNameAndArgumentsOfTheName) {
  for (const HostCodeSlot& text : {code.text("int64"), code.symbol("int64")}) {
    HostCodeNode* name = code.node(NodeKind::name, text, code.list({variable(4)}));
    HostCodeNode* wrapper = code.node(NodeKind::name_wrapper, nowhere(), leads_to(name));
    HostCodeNode* call = code.node(NodeKind::call, leads_to(wrapper), code.list({integer(2)}));
    expect_spec(read(leads_to(call)), "int64", 4, &name->value);
  }
}

TEST_F(ArraySpecs, OfAWrappedNameInAnySlot_AreReadByThePayload) {
  HostCodeNode* name = code.node(NodeKind::name, code.text("bool"));
  HostCodeNode* wrapper =
      code.node(NodeKind::name_wrapper, nowhere(), slot_of<const HostCodeNode*>(SlotTag::absent, name));
  expect_spec(read(leads_to(code.node(NodeKind::call, leads_to(wrapper)))), "bool", -1, nullptr);
}

TEST_F(ArraySpecsDeathTest, AWrapperOfAnythingButAName_EndsTheProcess) {
  for (const HostCodeNode* inner : {code.call("double"), static_cast<HostCodeNode*>(nullptr)}) {
    HostCodeNode* wrapper = code.node(NodeKind::name_wrapper, nowhere(), leads_to(inner));
    const HostCodeSlot call = leads_to(code.node(NodeKind::call, leads_to(wrapper)));
    EXPECT_EXIT(read(call), ::testing::KilledBySignal(SIGABRT), "");
  }
}

// ---- Form 2

TEST_F(ArraySpecs, OfAQuotedQuotationOfAVariable_AreMarkedTwice) {
  expect_spec(read(leads_to(code.quotation(variable(9)))), "@@", 9, nullptr);
}

TEST_F(ArraySpecs, OfAQuotedQuotationOfANode_AreMarkedAndNamed) {
  HostCodeNode* call = code.call("double", {variable(3), integer(2)});
  expect_spec(read(leads_to(code.quotation(leads_to(call)))), "@double", 3, &call->value);
  HostCodeNode* name = code.node(NodeKind::name, code.text("int"));
  expect_spec(read(leads_to(code.quotation(leads_to(name)))), "@int", -1, nullptr);
  HostCodeNode* nameless = code.node(NodeKind::list_cell, integer(3));
  expect_spec(read(leads_to(code.quotation(leads_to(nameless)))), "@", -1, nullptr);
}

TEST_F(ArraySpecs, OfAQuotedQuotationOfAWrappedName_HaveTheName) {
  HostCodeNode* name = code.node(NodeKind::name, code.text("int64"), code.list({integer(2)}));
  HostCodeNode* wrapper = code.node(NodeKind::name_wrapper, nowhere(), leads_to(name));
  HostCodeNode* call = code.node(NodeKind::call, leads_to(wrapper));
  expect_spec(read(leads_to(code.quotation(leads_to(call)))), "@int64", -1, &name->value);
}

TEST_F(ArraySpecs, OfAQuotedQuotationOfNothing_AreEmpty) {
  for (const HostCodeSlot& link : {nowhere(), integer(3), absent(), code.text("double")})
    EXPECT_FALSE(read(leads_to(code.quotation(link))));
}

// ---- Form 3

TEST_F(ArraySpecs, OfAVariableWithArguments_HaveItsSlotAndTheList) {
  HostCodeNode* inner = code.node(NodeKind::slot_list_inner, nowhere(), code.list({integer(1), integer(2)}));
  expect_spec(read(leads_to(code.node(NodeKind::slot_list, variable(6), leads_to(inner)))), "", 6, &inner->value);
}

TEST_F(ArraySpecs, OfAVariableWithEmptyArguments_HaveTheSlotThatBeginsTheList) {
  HostCodeNode* inner = code.node(NodeKind::slot_list_inner);
  expect_spec(read(leads_to(code.node(NodeKind::slot_list, variable(6), leads_to(inner)))), "", 6, &inner->value);
}

TEST_F(ArraySpecs, OfASlotListOfAnotherShape_AreEmpty) {
  HostCodeNode* inner = code.node(NodeKind::slot_list_inner);
  EXPECT_FALSE(read(leads_to(code.node(NodeKind::slot_list, integer(6), leads_to(inner)))));
  EXPECT_FALSE(read(leads_to(code.node(NodeKind::slot_list, variable(6), nowhere()))));
  EXPECT_FALSE(read(leads_to(code.node(NodeKind::slot_list, variable(6), absent()))));
  EXPECT_FALSE(read(leads_to(code.node(NodeKind::slot_list, variable(6), leads_to(code.call("f"))))));
}

// ---- Form 4

TEST_F(ArraySpecs, Required_OfAVariableThatNamesADtype_AreEmpty_ThoughItIsRead) {
  host.use_slot_base(100);
  host[3] = Value("double");
  const auto words =
      operations_of([&] { EXPECT_FALSE(read(leads_to(code.node(NodeKind::variable_name, nowhere(), variable(3))))); });
  EXPECT_EQ(words, Words{"AsString"});
  // The raw slot: neither the frame's base nor that of the scope counts.
  EXPECT_EQ(host.slots_read(), std::vector<int>{3});
}

TEST_F(ArraySpecs, OfAMissingVariableThatNamesADtype_AreEmpty) {
  EXPECT_EQ(
      operations_of([&] { EXPECT_FALSE(read(leads_to(code.node(NodeKind::variable_name, nowhere(), variable(3))))); }),
      Words{});
}

TEST_F(ArraySpecs, OfAVariableNameWithoutAVariable_ReadNothing) {
  EXPECT_FALSE(read(leads_to(code.node(NodeKind::variable_name, variable(3), integer(3)))));
  EXPECT_EQ(host.slots_read(), std::vector<int>{});
}

// ---- Form 5

TEST_F(ArraySpecs, OfALabelledCall_HaveTheLabel) {
  HostCodeNode* call = code.call("double", {integer(2)});
  for (const HostCodeSlot& label : {code.symbol("label"), code.text("label")})
    expect_spec(read(leads_to(code.node(NodeKind::labelled, leads_to(call), label))), "double", -1, &call->value,
                "label");
  for (const HostCodeSlot& label : {integer(1), variable(2), absent(), nowhere(), code.symbol_without_text()})
    expect_spec(read(leads_to(code.node(NodeKind::labelled, leads_to(call), label))), "double", -1, &call->value, "");
}

TEST_F(ArraySpecs, OfALabelledVariable_AreMarked) {
  expect_spec(read(leads_to(code.node(NodeKind::labelled, variable(8), code.text("label")))), "@", 8, nullptr, "label");
}

TEST_F(ArraySpecs, OfAnythingElseLabelled_AreEmpty) {
  HostCodeNode* inner = code.node(NodeKind::slot_list_inner);
  HostCodeNode* labelled = code.node(NodeKind::labelled, code.call_slot("double"), code.text("inner"));
  for (const HostCodeSlot& link :
       {nowhere(), integer(2), leads_to(code.quotation(variable(9))),
        leads_to(code.node(NodeKind::slot_list, variable(6), leads_to(inner))), leads_to(labelled),
        leads_to(code.node(NodeKind::variable_name, nowhere(), variable(3)))})
    EXPECT_FALSE(read(leads_to(code.node(NodeKind::labelled, link, code.text("label")))));
  EXPECT_EQ(host.slots_read(), std::vector<int>{});
}

// ---- Form 6

TEST_F(ArraySpecs, OfAVariable_AreMarked) { expect_spec(read(variable(11)), "@", 11, nullptr); }

TEST_F(ArraySpecs, AreReadWithoutOperationsOfTheHost) {
  const Words none;
  EXPECT_EQ(operations_of([&] {
              read(code.call_slot("double", {integer(1)}));
              read(leads_to(code.quotation(variable(1))));
              read(variable(1));
            }),
            none);
}

}  // namespace
}  // namespace arrayfold::test
