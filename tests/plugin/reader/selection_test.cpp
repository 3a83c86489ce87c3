// reader/selection_test.cpp: what selections take out of table variables

#include "array/xt_object.hpp"
#include "support/reader_test.hpp"
#include "support/withholding_host.hpp"

namespace arrayfold::test {
namespace {

class Selections : public ReaderTest {
 protected:
  static constexpr std::uint32_t t = 3;

  void SetUp() override {
    // [10, 20, [1, 2, "k": 3], "k": 30, "m": [5, 6], 2.5: [7], 9: [8, 9]]
    Value inner = Value::table_of({Value(1), Value(2)});
    put(inner, "k", Value(3));
    host[t] = Value::table_of({Value(10), Value(20), inner});
    put(host[t], "k", Value(30));
    put(host[t], "m", Value::table_of({Value(5), Value(6)}));
    *hvm::slot(hvm::table_of(host[t].record()), Value(2.5).record()) = Value::table_of({Value(7)}).give_up();
    *hvm::slot(hvm::table_of(host[t].record()), 9) = Value::table_of({Value(8), Value(9)}).give_up();
  }
  static void put(Value& table, const char* key, Value value) {
    *hvm::slot(hvm::table_of(table.record()), key) = value.give_up();
  }
  /// What the selection gives, as an argument.
  std::string selected(const std::vector<HostCodeSlot>& chosen) { return evaluated(code.selection_slot(t, chosen)); }
  std::string selected_from(Value table, const std::vector<HostCodeSlot>& chosen) {
    host[t] = std::move(table);
    return selected(chosen);
  }
  HostCodeSlot everything() { return code.range(nowhere(), nowhere()); }
};

// ---- One selector

TEST_F(Selections, ByOneKey_AreItsValue) {
  EXPECT_EQ(selected({integer(1)}), "int 20");
  EXPECT_EQ(selected({code.text("k")}), "int 30");
  EXPECT_EQ(selected({code.wide_text(u"k")}), "int 30");
  EXPECT_EQ(selected({integer(9)}), "value [8, 9]");
  EXPECT_EQ(selected({real(2.5)}), "value [7]");
  EXPECT_EQ(selected({integer64(1)}), "int 20");
}

TEST_F(Selections, ByAnAbsentKey_AreNil) {
  EXPECT_EQ(selected({integer(77)}), "value nil");
  EXPECT_EQ(selected({code.text("absent")}), "value nil");
}

TEST_F(Selections, OfAnotherVariable_GoByTheFrames) {
  host.use_slot_base(100);
  frame_base = 2;
  EXPECT_EQ(evaluated(code.selection_slot(101, {integer(0)})), "int 10");
  EXPECT_EQ(host.slots_read(), std::vector<int>{3});
}

TEST_F(Selections, AreCopies) {
  ExpressionEvaluator evaluator(ctx(), 0);
  Value result;
  build_selection(evaluator, code.selection(t, {integer(2)}), result.address());
  EXPECT_NE(hvm::table_of(result.record()), hvm::table_of(*hvm::find(hvm::table_of(host[t].record()), 2)));
  EXPECT_EQ(hvm::printed(result.record()), "[1, 2, \"k\": 3]");
}

TEST_F(Selections, ByOneKey_AskTheHostInOrder) {
  EXPECT_EQ(operations_of([&] { selected({integer(1)}); }),
            (Words{"NewObject", "NewObject", "NumberCheck", "NumberCheck", "StringCheckAll", "NumberCheck", "HashGet",
                   "GetGlobalNilObj", "DupObject", "FreeObj", "FreeObj"}));
}

TEST_F(Selections, Required_ByOneRange_AreTheFirstMatchAlone) {
  EXPECT_EQ(selected({code.range(integer(1), integer(2))}), "int 20");
  EXPECT_EQ(selected({code.range(nowhere(), integer(2))}), "int 10");
  EXPECT_EQ(selected({code.range(integer(2), nowhere())}), "value [1, 2, \"k\": 3]");
  EXPECT_EQ(selected({code.range(integer(3), integer(9))}), "value [8, 9]");
  EXPECT_EQ(selected({everything()}), "int 10");
  EXPECT_EQ(selected({code.range(integer(5), integer(8))}), "value nil");
}

TEST_F(Selections, ByARangeThatFitsNoMode_AreNil) {
  EXPECT_EQ(selected({code.range(nowhere(), code.text("k"))}), "value nil");
}

TEST_F(Selections, ByARangeOfAText_AreItsKey) {
  EXPECT_EQ(selected({code.range(code.text("k"), integer(1))}), "int 30");
}

TEST_F(Selections, ByATable_AreTheFirstEntryOfTheSelector) {
  host[5] = Value::table_of({Value(77), Value(78)});
  EXPECT_EQ(selected({variable(5)}), "int 77");
}

TEST_F(Selections, ByAVariable_AreThoseOfItsValue) {
  host[5] = Value("k");
  host[6] = Value(1);
  host[7] = Value(2);
  EXPECT_EQ(selected({variable(5)}), "int 30");
  EXPECT_EQ(selected({code.range(variable(6), variable(7))}), "int 20");
}

TEST_F(Selections, ByNil_ChooseNothing) {
  host[5] = Value();
  EXPECT_EQ(selected({variable(5)}), "value nil");
  EXPECT_EQ(selected({variable(6)}), "value nil");  // there is no such variable
}

TEST_F(Selections, ByAnObjectOrAnUnknownTag_ChooseNothing) {
  host[5] = raw(static_cast<ValueTag>(13));
  EXPECT_EQ(selected({variable(5)}), "value nil");
}

TEST_F(Selections, ByANodeThatIsComputed_AreThoseOfItsValue) {
  host.define("f", [&](HostValue*, int, HostValue* result) {
    HVM_SetInt(ctx(), result, 1);
    return 1;
  });
  EXPECT_EQ(selected({code.call_slot("f")}), "int 20");
  EXPECT_EQ(selected({code.range(code.call_slot("f"), integer(2))}), "int 20");
  EXPECT_EQ(selected({code.selection_slot(t, {code.text("absent")})}), "value nil");
  EXPECT_EQ(selected({leads_to(code.node(NodeKind::name, code.text("k")))}), "int 30");
}

TEST_F(Selections, WithASecondEndInTheNextNode_AreRanges) {
  HostCodeNode* selection = code.selection(t, {integer(1)});
  auto* cell = load<HostCodeNode*>(selection->value.payload);
  cell->value = leads_to(code.node(NodeKind::range, nowhere(), integer(2)));
  EXPECT_EQ(evaluated(leads_to(code.node(NodeKind::selection, nowhere(), leads_to(selection)))), "int 20");
  // From 3 on: the range finds what the key alone would not.
  cell->link = integer(3);
  load<HostCodeNode*>(cell->value.payload)->value = integer(9);
  EXPECT_EQ(evaluated(leads_to(code.node(NodeKind::selection, nowhere(), leads_to(selection)))), "value [8, 9]");
}

TEST_F(Selections, WithoutSelectors_AreNil) { EXPECT_EQ(selected({}), "value nil"); }

TEST_F(Selections, WithoutANode_AreNil) { EXPECT_EQ(evaluated(leads_to(code.node(NodeKind::selection))), "value nil"); }

TEST_F(Selections, FromWhatIsNoTable_Throw) {
  for (Value value : {Value(), Value(1), Value("text"), raw(ValueTag::object)})
    EXPECT_THROW(selected_from(value, {integer(0)}), invalid_array_object);
  HostCodeNode* unnamed = code.selection(t, {integer(0)});
  unnamed->link = integer(3);
  EXPECT_THROW(evaluated(leads_to(code.node(NodeKind::selection, nowhere(), leads_to(unnamed)))), invalid_array_object);
  EXPECT_THROW(evaluated(code.selection_slot(99, {integer(0)})), invalid_array_object);
}

TEST_F(Selections, WhoseSelectorTakesTheTableAway_Throw) {
  // The call runs script code, and the variable holds a number afterwards.
  host[t] = Value::table_of({Value(1)});
  host.define("f", [&](HostValue*, int, HostValue* result) {
    host[t] = Value(5);
    HVM_SetInt(ctx(), result, 0);
    return 1;
  });
  EXPECT_THROW(evaluated(code.selection_slot(t, {code.call_slot("f")})), invalid_array_object);
}

TEST_F(Selections, FromATableWithoutRecord_AreNil) {
  EXPECT_EQ(selected_from(raw(ValueTag::table), {integer(0)}), "value nil");
  EXPECT_EQ(selected_from(raw(ValueTag::table), {everything(), integer(0)}), "value []");
}

// ---- Several selectors

TEST_F(Selections, ByKeys_AddNoLevel) {
  EXPECT_EQ(selected({integer(2), integer(1)}), "int 2");
  EXPECT_EQ(selected({integer(2), code.text("k")}), "int 3");
  EXPECT_EQ(selected({code.text("m"), integer(0)}), "int 5");
  EXPECT_EQ(selected({real(2.5), integer(0)}), "int 7");
}

TEST_F(Selections, ByAnAbsentKeyAtAnyLevel_AreNil) {
  EXPECT_EQ(selected({integer(77), integer(1)}), "value nil");
  EXPECT_EQ(selected({integer(2), integer(77)}), "value nil");
}

TEST_F(Selections, ByAKeyAndARange_AreATable) {
  EXPECT_EQ(selected({integer(2), code.range(integer(0), integer(1))}), "value [1, 2]");
  EXPECT_EQ(selected({integer(2), everything()}), "value [1, 2]");
}

TEST_F(Selections, ThroughWhatIsNoTable_Throw) {
  for (const HostCodeSlot& first : {integer(0), code.text("k"), code.range(integer(0), integer(2)), everything()})
    EXPECT_THROW(selected({first, integer(0)}), invalid_array_object);
  try {
    selected({integer(0), integer(0)});
    FAIL();
  } catch (const std::exception& error) {
    EXPECT_STREQ(error.what(), "\"object is not array\"");
  }
}

Value matrix() {
  return Value::table_of({Value::table_of({Value(1), Value(2), Value(3)}), Value::table_of({Value(4), Value(5)}),
                          Value::table_of({Value(6), Value(7), Value(8)})});
}

TEST_F(Selections, ByARangeAndAKey_AreAColumn) {
  EXPECT_EQ(selected_from(matrix(), {everything(), integer(1)}), "value [2, 5, 7]");
  EXPECT_EQ(selected_from(matrix(), {code.range(integer(1), nowhere()), integer(0)}), "value [4, 6]");
  // Where the key is absent the slot stays nil.
  EXPECT_EQ(selected_from(matrix(), {everything(), integer(2)}), "value [3, nil, 8]");
}

TEST_F(Selections, ByRanges_AreTablesOfTables) {
  EXPECT_EQ(selected_from(matrix(), {code.range(integer(1), integer(2)), code.range(integer(1), integer(2))}),
            "value [[5], [7, 8]]");
}

TEST_F(Selections, ByRanges_AskTheHostInOrder) {
  host[t] = Value::table_of({Value::table_of({Value(1)}), Value::table_of({Value(2)})});
  const auto all = operations_of([&] { selected({everything(), everything()}); });
  Words words;
  for (const std::string& word : all)
    if (word != "NumberCheck" && word != "StringCheckAll") words.push_back(word);
  EXPECT_EQ(words, (Words{"NewObject", "NewObject", "NewObject", "NewObject", "NewObject", "ForceTable 0",
                          "HashSetInt 0", "ForceTable 0", "HashSetInt 0", "DupObject", "HashSetInt 1", "ForceTable 0",
                          "HashSetInt 0", "DupObject", "FreeObj", "FreeObj", "FreeObj", "FreeObj", "FreeObj"}));
}

TEST_F(Selections, ByARange_MakeATableOfItsWidth) {
  host[t] = matrix();
  const auto words = operations_of([&] { selected({code.range(integer(0), integer(2)), integer(0)}); });
  EXPECT_EQ(std::count(words.begin(), words.end(), "ForceTable 2"), 1);
}

TEST_F(Selections, AtTheLastLevel_MakeATableForTheirMatches) {
  // Three items in the table and two in the selector, so that the capacities differ.
  Value inner = Value::table_of({Value(1), Value(2)}), selector = Value::table();
  for (const char* key : {"k", "l", "m"}) put(inner, key, Value(3));
  for (const char* key : {"p", "q"}) put(selector, key, Value(4));
  ASSERT_EQ(hvm::table_of(inner.record())->item_count, 3);
  ASSERT_EQ(hvm::table_of(selector.record())->item_count, 2);
  host[t] = Value::table_of({inner});
  host[5] = selector;
  const std::pair<HostCodeSlot, std::string> rows[] = {{code.range(integer(1), integer(6)), "ForceTable 5"},
                                                       {code.range(integer(6), integer(2)), "ForceTable -4"},
                                                       {everything(), "ForceTable 3"},
                                                       {variable(5), "ForceTable 2"}};
  for (const auto& [last, expected] : rows)
    for (const HostCodeSlot& first : {integer(0), everything()}) {
      const auto words = operations_of([&, chosen = last] { selected({first, chosen}); });
      std::string made;
      for (const std::string& word : words)
        if (word.rfind("ForceTable", 0) == 0) made = word;
      EXPECT_EQ(made, expected);
    }
}

TEST_F(Selections, ByARangeThatRunsBackwards_AreEmpty) {
  EXPECT_EQ(selected_from(matrix(), {code.range(integer(2), integer(0)), integer(0)}), "value []");
}

/// A table whose ordered part has these keys, which no host would put there, each with the table [n].
struct OddTable {
  explicit OddTable(const std::vector<Value>& odd_keys) : keys(odd_keys), value(Value::table()) {
    HostHash* hash = hvm::table_of(value.record());
    for (int n = 0; n < static_cast<int>(keys.size()); ++n) *hvm::slot(hash, n) = Value::table_of({Value(n)}).give_up();
    for (int n = 0; n < static_cast<int>(keys.size()); ++n) {
      HostValue& key = item(n).key;
      key = keys[static_cast<std::size_t>(n)].record();
      key.lifetime = Lifetime::none;  // it is this record's, not the table's
    }
  }
  HostHashItem& item(int n) { return *hvm::table_of(value.record())->index.get()[n]; }

  std::vector<Value> keys;
  Value value;
};

TEST_F(Selections, Required_BelowTheLastLevel_IntegerKeysAreCountedAnew_StringKeysAreKept) {
  OddTable odd({Value(7), Value::string_record("k"), Value(-3)});
  EXPECT_EQ(selected_from(odd.value, {everything(), integer(0)}), "value [0, 2, \"k\": 1]");
  EXPECT_EQ(selected_from(odd.value, {everything(), everything()}), "value [[0], [2], \"k\": [1]]");
}

TEST_F(Selections, WithoutASlotForAStringKey_ThrowBadAlloc) {
  OddTable odd({Value(7), Value::string_record("k")});
  host[t] = odd.value;
  const Withholding withholding(Withheld::slot_by_key);
  EXPECT_THROW(selected({everything(), integer(0)}), std::bad_alloc);
  EXPECT_TRUE(Withholding::has_come());
}

TEST_F(Selections, BelowTheLastLevel_AnEntryUnderAnyOtherKeyIsPassedOver) {
  OddTable odd({Value(7), Value(2.5), Value(std::int64_t{1} << 40), Value(), Value("k"), Value(8)});
  EXPECT_EQ(selected_from(odd.value, {everything(), integer(0)}), "value [0, 5]");
}

TEST_F(Selections, BelowTheLastLevel_AnOddKeyStillNeedsATable) {
  OddTable odd({Value(2.5)});
  hvm::assign(odd.item(0).value, Value(1).record());
  EXPECT_THROW(selected_from(odd.value, {everything(), integer(0)}), invalid_array_object);
}

TEST_F(Selections, Required_AtTheLastLevel_EveryKeyIsCountedAnew) {
  OddTable odd({Value(7), Value::string_record("k"), Value(2.5), Value()});
  Value outer = Value::table_of({odd.value});
  EXPECT_EQ(selected_from(outer, {integer(0), everything()}), "value [[0], [1], [2], [3]]");
}

TEST_F(Selections, ByATableBelowTheLastLevel_GoThroughTheSelectorsEntries) {
  host[5] = Value::table_of({Value::table_of({Value(77)}), Value::table_of({Value(78)})});
  EXPECT_EQ(selected({variable(5), integer(0)}), "value [77, 78]");
  EXPECT_EQ(selected_from(matrix(), {integer(0), variable(5)}), "value [[77], [78]]");
}

TEST_F(Selections, BySelectorsThatFitNoMode_AreEmptyTables) {
  EXPECT_EQ(selected_from(matrix(), {code.range(nowhere(), code.text("k")), integer(0)}), "value []");
  EXPECT_EQ(selected_from(matrix(), {integer(0), code.range(nowhere(), code.text("k"))}), "value []");
}

TEST_F(Selections, OfManyLevels_NeedNoStack) {
  Value table = Value::table_of({Value(7)});
  for (int n = 1; n < 100000; ++n) table = Value::table_of({table});
  const std::vector<HostCodeSlot> chosen(100000, everything());
  ExpressionEvaluator evaluator(ctx(), 0);
  host[t] = table;
  Value result;
  build_selection(evaluator, code.selection(t, chosen), result.address());
  int depth = 0;
  for (const HostValue* value = result.address(); value != nullptr; ++depth)
    value = value->tag == ValueTag::table ? hvm::find(hvm::table_of(*value), 0) : nullptr;
  EXPECT_EQ(depth, 100001);  // the tables, and the number
}

TEST_F(Selections, ThatThrow_GiveEverythingBack) {
  const auto words = operations_of([&] { EXPECT_THROW(selected({everything(), integer(0)}), invalid_array_object); });
  EXPECT_EQ(std::count(words.begin(), words.end(), "NewObject"), std::count(words.begin(), words.end(), "FreeObj"));
}

}  // namespace
}  // namespace arrayfold::test
