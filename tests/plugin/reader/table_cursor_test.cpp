// reader/table_cursor_test.cpp: which entries a pair of selectors chooses, and in which order they come

#include "reader/table_cursor.hpp"

#include <array>
#include <climits>

#include "support/scripted_test.hpp"

namespace arrayfold::test {
namespace {

using Mode = TableCursor::Mode;

class TableCursors : public ScriptedTest {
 protected:
  /// [10, 20, 30, 7: 70, "k": 80, 2.5: 90]
  static Value some_table() {
    Value table = Value::table_of({Value(10), Value(20), Value(30)});
    HostHash* hash = hvm::table_of(table.record());
    *hvm::slot(hash, 7) = Value(70).give_up();
    *hvm::slot(hash, "k") = Value(80).give_up();
    *hvm::slot(hash, Value(2.5).record()) = Value(90).give_up();
    return table;
  }
  /// The values that a walk gives; "none" for a null match.
  static Words walk(TableCursor& cursor) {
    Words values;
    while (cursor.next()) values.push_back(cursor.item() == nullptr ? "none" : hvm::printed(cursor.item()->value));
    return values;
  }
  static Words walk(const Value& table, Value first, Value second) {
    TableCursor cursor(hvm::table_of(table.record()), first.address(), second.address());
    return walk(cursor);
  }
};

/// A table made by hand, with whatever keys.
struct HandmadeTable {
  HandmadeTable(std::initializer_list<Value> ordered, std::initializer_list<std::pair<Value, Value>> others) {
    int key = 0;
    for (const Value& value : ordered) ordered_items.push_back(item(Value(key++), value));
    for (const auto& [other, value] : others) items.push_back(item(other, value));
    for (HostHashItem& each : ordered_items) pointers.push_back(&each);
    hash.index = pointers.data();
    hash.index_count = static_cast<int>(pointers.size());
    hash.items = items.data();
    hash.item_count = static_cast<int>(items.size());
  }
  /// The records are looked at, not owned.
  static HostHashItem item(const Value& key, const Value& value) {
    HostHashItem made{};
    made.key = key.record();
    made.value = value.record();
    return made;
  }
  std::vector<HostHashItem> ordered_items, items;
  std::vector<HostHashItem*> pointers;
  HostHash hash{};
};

TEST_F(TableCursors, AWalkOverEverything_GivesTheOrderedPartThenTheOthers) {
  HandmadeTable table({Value(1), Value(2)}, {{Value(9), Value(3)}, {Value(2.5), Value(4)}, {Value(-1), Value(5)}});
  TableCursor cursor(&table.hash);
  EXPECT_EQ(operations_of([&] { EXPECT_EQ(walk(cursor), (Words{"1", "2", "3", "4", "5"})); }), Words{});
}

TEST_F(TableCursors, ItemsWithKeysOfTag6And10_ArePassedOver) {
  const Value text = Value::string_record("key");
  HandmadeTable table(
      {Value(1)}, {{text, Value(2)}, {Value(), Value(3)}, {Value(5), Value(4)}, {text, Value(5)}, {Value(), Value(6)}});
  TableCursor cursor(&table.hash);
  EXPECT_EQ(walk(cursor), (Words{"1", "4"}));
}

TEST_F(TableCursors, TheOrderedPart_IsGivenWhateverItsKeys) {
  HandmadeTable table({Value(1), Value(2)}, {});
  table.ordered_items[0].key = Value().record();
  TableCursor cursor(&table.hash);
  EXPECT_EQ(walk(cursor), (Words{"1", "2"}));
}

TEST_F(TableCursors, KeysAndValues_AreThoseOfTheItem) {
  HandmadeTable table({Value(1)}, {{Value(9), Value(3)}});
  TableCursor cursor(&table.hash);
  ASSERT_TRUE(cursor.next());
  EXPECT_EQ(cursor.item(), &table.ordered_items[0]);
  ASSERT_TRUE(cursor.next());
  EXPECT_EQ(cursor.item(), &table.items[0]);
  EXPECT_FALSE(cursor.next());
  EXPECT_FALSE(cursor.next());
}

TEST_F(TableCursors, AnEmptyTable_AndNone_GiveNoValue) {
  HandmadeTable table({}, {});
  TableCursor empty(&table.hash), none(nullptr);
  EXPECT_EQ(walk(empty), Words{});
  EXPECT_EQ(walk(none), Words{});
  EXPECT_EQ(none.capacity(), 0);
}

TEST_F(TableCursors, ANullTable_GivesNoValueUnderAnySelector) {
  Value key(1), text("k"), nil, table = Value::table();
  Value no_table = raw(ValueTag::table);
  for (Value* first : {&key, &text, &nil}) {
    TableCursor cursor(nullptr, first->address(), nil.address());
    for (const std::string& value : walk(cursor)) EXPECT_EQ(value, "none");
  }
  TableCursor under_no_table(hvm::table_of(table.record()), no_table.address(), nullptr);
  EXPECT_EQ(under_no_table.mode(), Mode::selector_table);
  EXPECT_EQ(walk(under_no_table), Words{});
}

TEST_F(TableCursors, ANullTable_IsNeverPassedToTheHost) {
  Value low(1), high(3);
  TableCursor range(nullptr, low.address(), high.address());
  EXPECT_EQ(operations_of([&] { EXPECT_EQ(walk(range), Words{}); }), Words{});
}

// ---- The modes, in the order of the checks

TEST_F(TableCursors, TheSelectors_DecideTheMode) {
  Value table = some_table();
  Value nil, one(1), two(std::int64_t{2}), real_one(1.0), text("k"), wide(u"k"), record = Value::string_record("k");
  Value selector = Value::table_of({Value(1)}), odd = raw(static_cast<ValueTag>(13));
  HostValue* const none = nullptr;
  const struct {
    HostValue *first, *second;
    Mode mode;
  } rows[] = {
      {none, none, Mode::everything},
      {nil.address(), nil.address(), Mode::everything},
      {nil.address(), one.address(), Mode::range},
      {one.address(), nil.address(), Mode::range},
      {one.address(), two.address(), Mode::range},
      {real_one.address(), two.address(), Mode::range},
      {text.address(), none, Mode::text_key},
      {wide.address(), none, Mode::text_key},
      {record.address(), none, Mode::text_key},
      {text.address(), nil.address(), Mode::text_key},
      {text.address(), one.address(), Mode::text_key},
      {text.address(), text.address(), Mode::text_key},
      {one.address(), none, Mode::number_key},
      {two.address(), none, Mode::number_key},
      {real_one.address(), none, Mode::number_key},
      {one.address(), text.address(), Mode::number_key},
      {one.address(), selector.address(), Mode::number_key},
      {selector.address(), none, Mode::selector_table},
      {selector.address(), nil.address(), Mode::selector_table},
      {selector.address(), one.address(), Mode::selector_table},
      {nil.address(), none, Mode::nothing},
      {nil.address(), text.address(), Mode::nothing},
      {nil.address(), selector.address(), Mode::nothing},
      {none, one.address(), Mode::nothing},
      {none, nil.address(), Mode::nothing},
      {none, text.address(), Mode::nothing},
      {odd.address(), none, Mode::nothing},
      {odd.address(), one.address(), Mode::nothing},
  };
  int n = 0;
  for (const auto& row : rows)
    EXPECT_EQ(TableCursor(hvm::table_of(table.record()), row.first, row.second).mode(), row.mode) << "row " << n++;
}

TEST_F(TableCursors, SelectorsThatFitNoMode_GiveNoValue) {
  Value table = some_table(), odd = raw(static_cast<ValueTag>(13));
  TableCursor cursor(hvm::table_of(table.record()), odd.address(), nullptr);
  EXPECT_EQ(walk(cursor), Words{});
  EXPECT_EQ(cursor.capacity(), hvm::table_of(table.record())->item_count);
}

TEST_F(TableCursors, TheChecksOfARange_ComeBeforeThatOfAString) {
  Value table = some_table();
  Value one(1), two(2), text("k");
  EXPECT_EQ(operations_of([&] { TableCursor(hvm::table_of(table.record()), one.address(), two.address()); }),
            (Words{"NumberCheck", "NumberCheck", "NumberCheck", "AsInt", "AsInt"}));
  const auto words = operations_of([&] { TableCursor(hvm::table_of(table.record()), text.address(), nullptr); });
  EXPECT_EQ(words.back(), "StringCheckAll");
}

// ---- What each mode gives

TEST_F(TableCursors, TwoOpenEnds_GiveEverything) {
  EXPECT_EQ(walk(some_table(), Value(), Value()), (Words{"10", "20", "30", "70", "90"}));
}

TEST_F(TableCursors, ARange_GivesItsKeysInclusive) {
  const Value table = some_table();
  EXPECT_EQ(walk(table, Value(1), Value(2)), (Words{"20", "30"}));
  EXPECT_EQ(walk(table, Value(0), Value(0)), (Words{"10"}));
  EXPECT_EQ(walk(table, Value(2), Value(1)), Words{});
  EXPECT_EQ(walk(table, Value(-5), Value(0)), (Words{"10"}));
}

TEST_F(TableCursors, ARange_PassesOverAbsentKeys) {
  const Value table = some_table();
  EXPECT_EQ(operations_of([&] {
              EXPECT_EQ(walk(table, Value(2), Value(8)), (Words{"30", "70"}));
            }).size(),
            5u + 7u * 2u);  // the checks and both ends, then a read and the shared nil for each key
}

TEST_F(TableCursors, ARangeWithoutBeginning_StartsAtZero) {
  Value table = Value::table_of({Value(10), Value(20)});
  *hvm::slot(hvm::table_of(table.record()), -1) = Value(5).give_up();
  EXPECT_EQ(walk(table, Value(), Value(1)), (Words{"10", "20"}));
}

TEST_F(TableCursors, ARangeWithoutEnd_RunsToTheLargestIntegerKey) {
  const Value table = some_table();
  const auto words = operations_of([&] { EXPECT_EQ(walk(table, Value(1), Value()), (Words{"20", "30", "70"})); });
  EXPECT_EQ(std::count(words.begin(), words.end(), "HashGetBounds"), 1);
  EXPECT_EQ(walk(Value::table(), Value(0), Value()), Words{});
}

TEST_F(TableCursors, ARange_EndsAtTheLargestInteger) {
  Value table = Value::table();
  *hvm::slot(hvm::table_of(table.record()), INT_MAX) = Value(1).give_up();
  EXPECT_EQ(walk(table, Value(INT_MAX - 2), Value(INT_MAX)), (Words{"1"}));
}

TEST_F(TableCursors, TheEndsOfARange_AreReadAs32Bits) {
  EXPECT_EQ(walk(some_table(), Value(0.9), Value(std::int64_t{1})), (Words{"10", "20"}));
}

TEST_F(TableCursors, ASingleKey_GivesOneMatch_BeItNone) {
  Value table = some_table();
  HostHash* hash = hvm::table_of(table.record());
  const struct {
    Value key;
    std::string value;
  } rows[] = {{Value("k"), "80"}, {Value(u"k"), "80"}, {Value("absent"), "none"}, {Value(7), "70"},
              {Value(2.5), "90"}, {Value(99), "none"}, {Value(7.0), "none"}};
  for (const auto& row : rows) {
    Value key = row.key;
    TableCursor cursor(hash, key.address(), nullptr);
    EXPECT_TRUE(cursor.selects_one_key());
    const auto words = operations_of([&] { EXPECT_EQ(walk(cursor), (Words{row.value})); });
    EXPECT_EQ(words, (Words{"HashGet", "GetGlobalNilObj"}));
  }
}

TEST_F(TableCursors, Required_ATableAsSelector_GivesItsOwnEntries) {
  HandmadeTable other({Value(1)}, {{Value::string_record("k"), Value(2)}, {Value(5), Value(3)}});
  HostValue selector{};
  selector.tag = ValueTag::table;
  store<HostHash*>(selector.payload, &other.hash);
  Value table = some_table();
  TableCursor cursor(hvm::table_of(table.record()), &selector, nullptr);
  EXPECT_FALSE(cursor.selects_one_key());
  EXPECT_EQ(walk(cursor), (Words{"1", "3"}));
}

TEST_F(TableCursors, TheCapacity_GoesByTheMode) {
  HandmadeTable table({Value(1)}, {{Value(5), Value(2)}, {Value(6), Value(3)}, {Value(9), Value(3)}});
  HandmadeTable other({Value(1), Value(2)}, {{Value(5), Value(3)}});
  Value two(2), nine(9);
  HostValue selector{};
  selector.tag = ValueTag::table;
  store<HostHash*>(selector.payload, &other.hash);
  EXPECT_EQ(TableCursor(&table.hash).capacity(), 3);
  EXPECT_EQ(TableCursor(&table.hash, two.address(), nine.address()).capacity(), 7);
  EXPECT_EQ(TableCursor(&table.hash, nine.address(), two.address()).capacity(), -7);
  EXPECT_EQ(TableCursor(&table.hash, &selector, nullptr).capacity(), 1);
}

// ---- Reads of a table

TEST_F(TableCursors, ARead_CountsAsAbsentForNullAndForTheSharedNil) {
  EXPECT_EQ(item_of(nullptr), nullptr);
  EXPECT_EQ(item_of(HVM_GetGlobalNilObj()), nullptr);
}

TEST_F(TableCursors, ASlotThatHoldsNil_CountsAsPresent) {
  Value table = Value::table_of({Value(1), Value(), Value(3)});
  EXPECT_EQ(walk(table, Value(0), Value(2)), (Words{"1", "nil", "3"}));
  EXPECT_EQ(walk(table, Value(), Value()), (Words{"1", "nil", "3"}));
}

}  // namespace
}  // namespace arrayfold::test
