// reader/table_conversion_test.cpp: elements and shape, from tables and from data literals

#include "reader/table_conversion.hpp"

#include "support/reader_test.hpp"
#include "support/withholding_host.hpp"

namespace arrayfold::test {
namespace {

using Extents = std::vector<int>;

template <class Kind>
using DataOf = ArrayData<StoredElement<Kind>>;

class TableData : public ScriptedTest {
 protected:
  template <class Kind = XTInt>
  DataOf<Kind> gathered(const Value& table, int expected = 1) {
    DataOf<Kind> data;
    EXPECT_EQ(read_table_data<Kind>(data, ctx(), hvm::table_of(table.record()), Kind::message, 0), expected);
    return data;
  }
};

Value table(std::vector<Value> values) { return Value::table_of(values); }
Value numbers(std::vector<int> values) {
  std::vector<Value> records;
  for (const int value : values) records.emplace_back(value);
  return Value::table_of(records);
}

TEST_F(TableData, OfAnEmptyTable_IsAShapeOfZero) {
  const auto data = gathered(numbers({}));
  EXPECT_EQ(data.shape, Extents{0});
  EXPECT_TRUE(data.values.empty());
}

TEST_F(TableData, OfATableOfAnEmptyTable_HasTwoExtents) {
  const auto data = gathered(table({numbers({})}));
  EXPECT_EQ(data.shape, (Extents{1, 0}));
  EXPECT_TRUE(data.values.empty());
}

TEST_F(TableData, OfANullTable_IsAShapeOfZero) { EXPECT_EQ(gathered(raw(ValueTag::table)).shape, Extents{0}); }

TEST_F(TableData, OfANullTableInATable_HasAnExtentOfZero) {
  const Value null_table = raw(ValueTag::table);
  const auto data = gathered(table({null_table, null_table}));
  EXPECT_EQ(data.shape, (Extents{2, 0}));
  EXPECT_TRUE(data.values.empty());
}

TEST_F(TableData, ATable_IsNotAskedWhetherItIsANumber) {
  EXPECT_EQ(operations_of([&] { gathered(table({numbers({1})})); }),
            (std::vector<std::string>{"NumberCheck", "AsInt"}));
}

TEST_F(TableData, OfNegativeCounts_IsAShapeOfZero) {
  HostHash hash{};
  hash.index_count = -1;
  hash.item_count = -7;
  EXPECT_EQ(gathered(raw(ValueTag::table, reinterpret_cast<std::uintptr_t>(&hash))).shape, Extents{0});
}

TEST_F(TableData, OfAMatrix_ComesRowByRow) {
  const auto data = gathered(table({numbers({1, 2, 3}), numbers({4, 5, 6})}));
  EXPECT_EQ(data.shape, (Extents{2, 3}));
  EXPECT_EQ(data.values, (std::vector<std::int32_t>{1, 2, 3, 4, 5, 6}));
}

TEST_F(TableData, Required_OfRaggedRows_HasTheCountOfTheLast) {
  auto data = gathered(table({numbers({1, 2, 3}), numbers({4, 5})}));
  EXPECT_EQ(data.shape, (Extents{2, 2}));
  EXPECT_EQ(data.values.size(), 5u);
  data = gathered(table({numbers({1, 2}), numbers({3, 4, 5})}));
  EXPECT_EQ(data.shape, (Extents{2, 3}));
  EXPECT_EQ(data.values.size(), 5u);
}

TEST_F(TableData, Required_NumbersAndTables_MayMix) {
  const auto data = gathered(table({Value(1), numbers({2, 3}), Value(4), table({numbers({5})})}));
  EXPECT_EQ(data.shape, (Extents{4, 1, 1}));
  EXPECT_EQ(data.values, (std::vector<std::int32_t>{1, 2, 3, 4, 5}));
}

TEST_F(TableData, OfATableThatStopsEarlier_KeepsTheDeeperExtent) {
  const auto data = gathered(table({table({numbers({1, 2})}), numbers({3})}));
  EXPECT_EQ(data.shape, (Extents{2, 1, 2}));
}

TEST_F(TableData, FromADepth_GoesOnBehindTheShape) {
  ArrayData<std::int32_t> data;
  data.shape = {9, 9};
  const Value source = table({numbers({1, 2})});
  EXPECT_EQ(read_table_data<XTInt>(data, ctx(), hvm::table_of(source.record()), "", 1), 1);
  EXPECT_EQ(data.shape, (Extents{9, 1, 2}));
}

TEST_F(TableData, KeysThatAreText_DoNotCountAtAnyDepth) {
  Value inner = numbers({1, 2}), outer;
  *hvm::slot(hvm::table_of(inner.record()), "k") = Value("no number").give_up();
  outer = table({inner});
  *hvm::slot(hvm::table_of(outer.record()), "k") = numbers({7, 8, 9}).give_up();
  const auto data = gathered(outer);
  EXPECT_EQ(data.shape, (Extents{1, 2}));
  EXPECT_EQ(data.values, (std::vector<std::int32_t>{1, 2}));
}

TEST_F(TableData, KeysOfTag6And10_DoNotCount_OthersDo) {
  const Value text = Value::string_record("k");
  HostHashItem items[4] = {};
  const Value keys[] = {text, Value(), Value(2.5), Value(9)};
  for (int n = 0; n < 4; ++n) {
    items[n].key = keys[n].record();
    items[n].value = Value(n).record();
  }
  HostHash hash{};
  hash.items = items;
  hash.item_count = 4;
  ArrayData<std::int32_t> data;
  EXPECT_EQ(read_table_data<XTInt>(data, ctx(), &hash, "", 0), 1);
  EXPECT_EQ(data.shape, Extents{2});
  EXPECT_EQ(data.values, (std::vector<std::int32_t>{2, 3}));
}

TEST_F(TableData, ALeafThatIsNoNumber_StopsTheReading) {
  for (const Value& leaf : {Value("text"), Value(), raw(ValueTag::object), raw(ValueTag::code), Value(u"wide")}) {
    const auto data = gathered(table({Value(1), Value(2), leaf, Value(3)}), 0);
    EXPECT_EQ(data.shape, Extents{0});
    EXPECT_EQ(data.values, (std::vector<std::int32_t>{1, 2}));
  }
}

TEST_F(TableData, AStopInside_KeepsTheExtentsThatWereWritten) {
  const auto data = gathered(table({numbers({1, 2, 3}), table({Value(4), Value("text")}), numbers({5})}), 0);
  EXPECT_EQ(data.shape, (Extents{0, 3}));
  EXPECT_EQ(data.values, (std::vector<std::int32_t>{1, 2, 3, 4}));
}

TEST_F(TableData, AsksTheHostForEachLeaf) {
  EXPECT_EQ(operations_of([&] {
              gathered<XTInt>(numbers({1, 2}));
            }),
            (Words{"NumberCheck", "AsInt", "NumberCheck", "AsInt"}));
  EXPECT_EQ(operations_of([&] { gathered<XTBool>(numbers({1})); }), (Words{"NumberCheck", "AsBool"}));
  EXPECT_EQ(operations_of([&] { gathered<XTInt64>(numbers({1})); }), (Words{"NumberCheck", "AsInt64"}));
  EXPECT_EQ(operations_of([&] { gathered<XTFloat>(numbers({1})); }), (Words{"NumberCheck", "AsDouble"}));
  EXPECT_EQ(operations_of([&] { gathered<XTDouble>(numbers({1})); }), (Words{"NumberCheck", "AsDouble"}));
}

TEST_F(TableData, NumbersOfAnyTag_BecomeTheKind) {
  const Value mixed = table({Value(1), Value(2.75), Value(std::int64_t{1} << 40), Value(0)});
  EXPECT_EQ(gathered<XTBool>(mixed).values, (std::vector<bool>{true, true, true, false}));
  EXPECT_EQ(gathered<XTInt>(mixed).values, (std::vector<std::int32_t>{1, 2, 0, 0}));
  EXPECT_EQ(gathered<XTInt64>(mixed).values, (std::vector<std::int64_t>{1, 2, std::int64_t{1} << 40, 0}));
  EXPECT_EQ(gathered<XTDouble>(mixed).values, (std::vector<double>{1, 2.75, 1099511627776.0, 0}));
  // Under the float name doubles are stored.
  EXPECT_EQ(gathered<XTFloat>(table({Value(0.1)})).values, (std::vector<double>{0.1}));
}

TEST_F(TableData, TheMessagesOfTheKinds_AreTheseBytes) {
  EXPECT_STREQ(XTBool::message,
               "\xE5\x88\x9D\xE5\xA7\x8B\xE5\x8C\x96\xE6\x95\xB0\xE7\xBB\x84\xE7\xB1\xBB\xE5\x9E\x8B\xE4\xB8\x8D\xE5"
               "\xAF\xB9\xEF\xBC\x8C\xE5\xBF\x85\xE9\xA1\xBB\xE6\x98\xAF"
               "bool"
               "\xE7\xB1\xBB\xE5\x9E\x8B");
  const std::string before =
      "\xE5\x88\x9D\xE5\xA7\x8B\xE5\x8C\x96\xE6\x95\xB0\xE6\x8D\xAE\xE6\x95\xB0\xE7\xBB\x84\xE4\xB8\x8D\xE5\xAF\xB9"
      "\xEF\xBC\x8C\xE5\xBF\x85\xE9\xA1\xBB\xE6\x98\xAF";
  const std::string after = "\xE7\xB1\xBB\xE5\x9E\x8B";
  EXPECT_EQ(XTInt::message, before + "int" + after);
  EXPECT_EQ(XTInt64::message, before + "int64" + after);
  EXPECT_EQ(XTFloat::message, before + "float" + after);
  EXPECT_EQ(XTDouble::message, before + "double" + after);
}

TEST_F(TableData, OfTablesNestedDeeply_NeedsNoStack) {
  Value nested = numbers({7});
  for (int n = 1; n < 100000; ++n) nested = table({nested});
  const auto data = gathered(nested);
  EXPECT_EQ(data.shape, Extents(100000, 1));
  EXPECT_EQ(data.values, std::vector<std::int32_t>{7});
}

// ---- Data literals

class LiteralData : public ReaderTest {
 protected:
  template <class Kind = XTDouble>
  DataOf<Kind> gathered(const HostCodeNode* row) {
    DataOf<Kind> data;
    ExpressionEvaluator evaluator(ctx(), 0);
    EXPECT_TRUE(read_code_data<Kind>(ctx(), evaluator, row, data, 0));
    return data;
  }
};

TEST_F(LiteralData, OfARow_AreItsElements) {
  const auto data = gathered(code.row({real(1.5), real(2.5), real(3.5)}));
  EXPECT_EQ(data.shape, Extents{3});
  EXPECT_EQ(data.values, (std::vector<double>{1.5, 2.5, 3.5}));
  EXPECT_EQ(data.cell_count, 3u);
}

TEST_F(LiteralData, OfRows_ComeRowByRow) {
  auto data = gathered(code.rows({code.row({real(1.0), real(2.0)}), code.row({real(3.0), real(4.0)})}));
  EXPECT_EQ(data.shape, (Extents{2, 2}));
  EXPECT_EQ(data.values, (std::vector<double>{1, 2, 3, 4}));
  data = gathered(code.rows({code.row({real(1.0), real(2.0)})}));
  EXPECT_EQ(data.shape, (Extents{1, 2}));
}

TEST_F(LiteralData, OfThreeLevels_HaveThreeExtents) {
  const auto plane = [&](double x) { return code.rows({code.row({real(x)}), code.row({real(x + 1)})}); };
  const auto data = gathered(code.rows({plane(1), plane(3), plane(5)}));
  EXPECT_EQ(data.shape, (Extents{3, 2, 1}));
  EXPECT_EQ(data.values, (std::vector<double>{1, 2, 3, 4, 5, 6}));
}

TEST_F(LiteralData, Required_OfRaggedRows_HaveTheCountOfTheLast) {
  const auto data = gathered(code.rows({code.row({real(1.0), real(2.0), real(3.0)}), code.row({real(4.0)})}));
  EXPECT_EQ(data.shape, (Extents{2, 1}));
  EXPECT_EQ(data.values.size(), 4u);
}

TEST_F(LiteralData, OfRows_EndWhereAValueLeadsToNoCell) {
  for (const HostCodeSlot& value : {absent(), integer(3), nowhere(), leads_to(code.row({real(9.0)}))}) {
    HostCodeNode* rows = code.rows({code.row({real(1.0), real(2.0)})});
    rows->value = value;
    EXPECT_EQ(gathered(rows).shape, (Extents{1, 2}));
  }
}

TEST_F(LiteralData, ANodeOfAnotherKindAmongRows_IsARowOfCells) {
  HostCodeNode* rest = code.node(NodeKind::list_cell, real(6.0));
  for (const NodeKind kind : {NodeKind::call, NodeKind::labelled, NodeKind::quotation}) {
    HostCodeNode* odd = code.node(kind, real(5.0), leads_to(rest));
    const auto data = gathered(code.rows({code.row({real(1.0), real(2.0), real(3.0)}), odd}));
    EXPECT_EQ(data.shape, (Extents{2, 2}));
    EXPECT_EQ(data.values, (std::vector<double>{1, 2, 3, 5, 6}));
  }
}

TEST_F(LiteralData, ANodeOfAnotherKindAmongRows_MayHoldRows) {
  HostCodeNode* odd = code.node(NodeKind::call, leads_to(code.row({real(3.0), real(4.0)})));
  const auto data = gathered(code.rows({code.rows({code.row({real(1.0), real(2.0)})}), odd}));
  EXPECT_EQ(data.shape, (Extents{2, 1, 2}));
  EXPECT_EQ(data.values, (std::vector<double>{1, 2, 3, 4}));
}

TEST_F(LiteralData, ARowThatBeginsWithAnotherKind_IsFollowedThroughNodesAlone) {
  HostCodeNode* argument = code.node(NodeKind::list_cell, real(6.0), integer(9));
  HostCodeNode* odd = code.node(NodeKind::call, real(5.0), leads_to(argument));
  const auto data = gathered(code.rows({code.row({real(1.0)}), odd}));
  EXPECT_EQ(data.shape, (Extents{2, 2}));
  EXPECT_EQ(data.values, (std::vector<double>{1, 5, 6}));
}

TEST_F(LiteralData, ANodeOfAnotherKindWhoseValueIsNoNode_CountsAndAddsNothing) {
  HostCodeNode* odd = code.node(NodeKind::labelled, real(5.0), integer(7));
  const auto data = gathered(code.rows({code.row({real(1.0), real(2.0)}), odd}));
  EXPECT_EQ(data.shape, (Extents{2, 2}));
  EXPECT_EQ(data.values, (std::vector<double>{1, 2}));
}

TEST_F(LiteralData, WhatStandsAmongRows_AndIsNone_CountsAndAddsNothing) {
  HostCodeNode* rows = code.rows({code.row({real(1.0), real(2.0)})});
  HostCodeNode* last = rows;
  for (const HostCodeSlot& link :
       {integer(3), real(2.5), variable(1), nowhere(), code.text("x"), code.call_slot("f")}) {
    HostCodeNode* cell = code.node(NodeKind::list_cell, link);
    last->value = leads_to(cell);
    last = cell;
  }
  last->value = leads_to(code.node(NodeKind::list_cell, leads_to(code.row({real(3.0), real(4.0)}))));
  const auto data = gathered(rows);
  EXPECT_EQ(data.shape, (Extents{8, 2}));
  EXPECT_EQ(data.values, (std::vector<double>{1, 2, 3, 4}));
}

TEST_F(LiteralData, ALaterRowOfPlainCells_IsARow) {
  HostCodeNode* second = code.row({real(3.0), real(4.0)});
  second->kind = NodeKind::list_cell;
  EXPECT_EQ(gathered(code.rows({code.row({real(1.0), real(2.0)}), second})).values, (std::vector<double>{1, 2, 3, 4}));
}

// Which forms of a scalar count, kind by kind.
TEST_F(LiteralData, Required_OfTheWrongForm_AddNoElementAndCountAsCells) {
  const std::vector<HostCodeSlot> cells = {integer(1), real(2.5), integer64(3), code.text("x"), nowhere(), real(0.5)};
  const auto doubles = gathered<XTDouble>(code.row(cells));
  EXPECT_EQ(doubles.shape, Extents{6});
  EXPECT_EQ(doubles.values, (std::vector<double>{2.5, 0.5}));
  EXPECT_EQ(gathered<XTFloat>(code.row(cells)).values, (std::vector<double>{2.5, 0.5}));
  const auto ints = gathered<XTInt>(code.row(cells));
  EXPECT_EQ(ints.shape, Extents{6});
  EXPECT_EQ(ints.values, std::vector<std::int32_t>{1});
  // 64-bit integer literals are not read, so there is no literal that an int64 row takes.
  const auto int64s = gathered<XTInt64>(code.row(cells));
  EXPECT_EQ(int64s.shape, Extents{6});
  EXPECT_TRUE(int64s.values.empty());
  // What a bool row takes is what could not be read.
  const auto bools = gathered<XTBool>(code.row(cells));
  EXPECT_EQ(bools.shape, Extents{6});
  EXPECT_EQ(bools.values, (std::vector<bool>{false, false}));
}

TEST_F(LiteralData, AnInt64Row_TakesA64BitVariable) {
  host[1] = Value(std::int64_t{1} << 40);
  EXPECT_EQ(gathered<XTInt64>(code.row({variable(1)})).values, std::vector<std::int64_t>{std::int64_t{1} << 40});
  EXPECT_TRUE(gathered<XTInt>(code.row({variable(1)})).values.empty());
}

TEST_F(LiteralData, AHostValueThatIsNoNumber_EndsTheRow) {
  host[1] = Value::table();
  const auto data =
      gathered(code.rows({code.row({real(1.0), real(2.0), real(3.0)}), code.row({real(4.0), variable(1), real(5.0)})}));
  // The count of cells stays what it was.
  EXPECT_EQ(data.shape, (Extents{2, 3}));
  EXPECT_EQ(data.values, (std::vector<double>{1, 2, 3, 4}));
  const auto alone = gathered(code.row({real(1.0), variable(1)}));
  EXPECT_EQ(alone.shape, Extents{0});
  EXPECT_EQ(alone.values, std::vector<double>{1.0});
}

TEST_F(LiteralData, EachKind_AsksForTheNumberOfAHostValue) {
  host[1] = raw(ValueTag::object);
  const HostCodeNode* row = code.row({variable(1)});
  EXPECT_EQ(operations_of([&] { gathered<XTBool>(row); }), Words{"NumberCheck"});
  EXPECT_EQ(operations_of([&] { gathered<XTInt>(row); }), Words{"NumberCheck"});
  EXPECT_EQ(operations_of([&] { gathered<XTInt64>(row); }), Words{"NumberCheck"});
  EXPECT_EQ(operations_of([&] { gathered<XTDouble>(row); }), Words{"NumberCheck"});
}

TEST_F(LiteralData, AHostValueThatTheHostTakesForANumber_IsRead) {
  const NumberTag other(ValueTag::scalar_80);
  host[1] = raw(ValueTag::scalar_80);
  const HostCodeNode* row = code.row({variable(1)});
  EXPECT_EQ(gathered<XTBool>(row).values, std::vector<bool>{true});
  EXPECT_EQ(gathered<XTInt>(row).values, std::vector<std::int32_t>{5});
  EXPECT_EQ(gathered<XTInt64>(row).values, std::vector<std::int64_t>{5});
  EXPECT_EQ(gathered<XTDouble>(row).values, std::vector<double>{5});
}

TEST_F(LiteralData, ARowLeadsOn_WhateverTheTagOfItsValueSlot) {
  HostCodeNode* row = code.row({real(1.0), real(2.0)});
  row->value.tag = SlotTag::absent;
  EXPECT_EQ(gathered(row).values, (std::vector<double>{1, 2}));
}

TEST_F(LiteralData, OfRowsNestedDeeply_NeedNoStack) {
  HostCodeNode* nested = code.row({real(7.0)});
  for (int n = 1; n < 100000; ++n) nested = code.rows({nested});
  const auto data = gathered(nested);
  EXPECT_EQ(data.shape, Extents(100000, 1));
  EXPECT_EQ(data.values, std::vector<double>{7.0});
}

TEST_F(LiteralData, OfAValue_NeedAQuotedRow) {
  Value row = code.quoted(leads_to(code.row({real(1.0)})));
  const auto data = read_code_value<XTDouble>(ctx(), row.address());
  ASSERT_TRUE(data);
  EXPECT_EQ(data->values, std::vector<double>{1.0});
  HostCodeNode* node = code.row({real(1.0)});
  for (Value value : {Value(), Value(1), Value::table(), raw(ValueTag::code), code.code(nullptr), code.code(node),
                      code.quoted(nowhere()), code.quoted(variable(3)), code.quoted_call("double"),
                      code.quoted(slot_of<const HostCodeNode*>(SlotTag::absent, node))})
    EXPECT_FALSE(read_code_value<XTDouble>(ctx(), value.address()));
}

TEST_F(LiteralData, OfAValue_ReadVariablesInItsFrame) {
  host.use_slot_base(10);
  host[7] = Value(2.5);
  Value row = code.quoted(leads_to(code.row({variable(12)})), 5);
  EXPECT_EQ(read_code_value<XTDouble>(ctx(), row.address())->values, std::vector<double>{2.5});
}

}  // namespace
}  // namespace arrayfold::test
