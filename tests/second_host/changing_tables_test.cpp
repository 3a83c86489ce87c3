// second_host/changing_tables_test.cpp: tables and arrays that change while the module asks for a value
//
// A host may compute a value when it is asked for it, and a script that runs meanwhile may change what the module
// reads. The answer is defined: the module looks anew after every question, and reads nothing that has ended.

#include "reader/table_conversion.hpp"
#include "second_host/hand_made_table.hpp"
#include "support/reader_test.hpp"
#include "support/withholding_host.hpp"

namespace arrayfold::test {
namespace {

using Old = HandMadeTable::Old;

class ChangingTables : public ReaderTest {
 protected:
  /// What xarray reads in a table, as its shape and its elements.
  std::string read(const char* dtype, Value table) {
    Answer answer = call("xarray", {code.quoted_call(dtype), std::move(table)});
    EXPECT_EQ(answer.returned, 1);
    std::string text;
    for (const auto extent : shape(answer.result)) text += std::to_string(extent) + " ";
    return text + dump(answer.result);
  }
  /// The text of a vector of integers.
  static std::string vector_of(const std::vector<int>& numbers) {
    std::string text = std::to_string(numbers.size()) + " [";
    for (const int number : numbers) text += (text.back() == '[' ? "" : ",") + std::to_string(number);
    return text + "]";
  }
  static std::vector<int> counted(int from, int count) {
    std::vector<int> numbers;
    for (int n = 0; n < count; ++n) numbers.push_back(from + n);
    return numbers;
  }
};

// ---- The data of xarray

TEST_F(ChangingTables, ATableOfNumbers_IsReadOnWhereItIsThen) {
  for (const Part part : {Part::ordered, Part::items})
    for (const char* operation : {"HVM_NumberCheck", "HVM_AsInt"})
      for (const int later : {0, 1, 3, 6, 9, 40})
        for (int nth = 1; nth <= 6; ++nth) {
          HandMadeTable table(part, numbers(counted(1, 6)));
          // The record lasts until its value has been read, and no longer.
          const Old old = std::string(operation) == "HVM_NumberCheck" ? Old::lasts : Old::ends;
          const Meanwhile meanwhile(operation, nth, [&] { table.set(numbers(counted(101, later)), old); });
          std::vector<int> expected = counted(1, nth);
          for (int n = nth; n < later; ++n) expected.push_back(101 + n);
          EXPECT_EQ(read("int", table.value()), vector_of(expected)) << operation << nth << " then " << later;
          EXPECT_TRUE(Meanwhile::has_come());
        }
}

TEST_F(ChangingTables, ATableOfAnyKind_MayEndWhileItIsRead) {
  struct Row {
    const char* dtype;
    const char* operation;
    const char* elements;
  };
  for (const Row& row : {Row{"bool", "HVM_AsBool", "2 [true,true]"}, Row{"int", "HVM_AsInt", "2 [1,2]"},
                         Row{"int64", "HVM_AsInt64", "2 [1,2]"}, Row{"double", "HVM_AsDouble", "2 [1.0,2.0]"}})
    for (const Part part : {Part::ordered, Part::items}) {
      HandMadeTable table(part, numbers(counted(1, 6)));
      const Meanwhile meanwhile(row.operation, 2, [&] { table.set({}); });
      EXPECT_EQ(read(row.dtype, table.value()), row.elements);
    }
}

TEST_F(ChangingTables, ATableAroundAnother_MayLoseItWhileItIsRead) {
  for (const Part part : {Part::ordered, Part::items})
    for (const std::size_t later : {0, 1, 2, 3, 5}) {
      HandMadeTable first(part, numbers({1, 2})), second(part, numbers({3, 4}));
      HandMadeTable outer(part, {first.value(), second.value(), second.value()});
      const Meanwhile meanwhile("HVM_AsInt", 1, [&] { outer.set(std::vector<Value>(later, second.value())); });
      // The first row counts, then those that follow it in the table as it is now.
      const std::size_t rows = std::max<std::size_t>(later, 1);
      std::string expected = std::to_string(rows) + " 2 [[1,2]";
      for (std::size_t row = 1; row < rows; ++row) expected += ",[3,4]";
      EXPECT_EQ(read("int", outer.value()), expected + "]") << later;
    }
}

TEST_F(ChangingTables, WhatIsNoNumber_EndsTheReadingAlsoIfItIsGoneByThen) {
  for (const Part part : {Part::ordered, Part::items}) {
    HandMadeTable table(part, {Value(1), Value("no number"), Value(3)});
    const Meanwhile meanwhile("HVM_NumberCheck", 2, [&] { table.set({}); });
    ArrayData<std::int32_t> data;
    EXPECT_EQ(read_table_data<XTInt>(data, ctx(), table.hash(), "", 0), 0);
    EXPECT_EQ(data.values, std::vector<std::int32_t>{1});
  }
}

TEST_F(ChangingTables, ATableThatGrowsForEver_IsReadUpToWhereItStops) {
  HandMadeTable table(Part::items, numbers({0}));
  int length = 1;
  std::function<void()> grow;
  std::unique_ptr<Meanwhile> meanwhile;
  // Each value brings another entry, in other blocks, until there are a thousand.
  grow = [&] {
    table.set(numbers(counted(0, ++length)));
    meanwhile.reset();
    if (length < 1000) meanwhile = std::make_unique<Meanwhile>("HVM_AsInt", 1, grow);
  };
  meanwhile = std::make_unique<Meanwhile>("HVM_AsInt", 1, grow);
  EXPECT_EQ(read("int", table.value()), vector_of(counted(0, 1000)));
}

// ---- Selections

TEST_F(ChangingTables, ASelectionOfEverything_GoesOnInTheTableAsItIsThen) {
  for (const Part part : {Part::ordered, Part::items})
    for (const char* operation : {"HVM_HashSetInt", "HVM_DupObject"}) {
      HandMadeTable row(part, numbers({1, 2, 3}));
      HandMadeTable outer(part, {row.value()});
      SelectorPairs pairs;
      pairs.push_back({});
      pairs.push_back({});
      // The first slot of the outer level comes before those of the row.
      const bool is_copy = std::string(operation) == "HVM_DupObject";
      const Meanwhile meanwhile(operation, is_copy ? 1 : 2, [&] {
        row.set(numbers({11, 12, 13, 14}), is_copy ? Old::ends : Old::lasts);
      });
      EXPECT_EQ(selected(outer.hash(), pairs), "[[1, 12, 13, 14]]") << operation;
    }
}

TEST_F(ChangingTables, ASelectionOfEverything_MayLoseTheTableAroundIt) {
  for (const Part part : {Part::ordered, Part::items}) {
    HandMadeTable row(part, numbers({1, 2}));
    HandMadeTable outer(part, {row.value(), row.value(), row.value()});
    SelectorPairs pairs;
    pairs.push_back({});
    pairs.push_back({});
    const Meanwhile meanwhile("HVM_DupObject", 3, [&] { outer.set({}); });
    EXPECT_EQ(selected(outer.hash(), pairs), "[[1, 2], [1, 2]]");
  }
}

TEST_F(ChangingTables, ASelectionByATable_GoesOnInTheSelectorAsItIsThen) {
  HandMadeTable selector(Part::ordered, numbers({7, 8, 9}));
  Value chooser = selector.value();
  Value row = Value::table_of({Value(1)});
  const Value outer = Value::table_of({row});
  SelectorPairs pairs;
  pairs.push_back({});
  pairs.push_back({chooser.address(), nullptr});
  const Meanwhile meanwhile("HVM_DupObject", 2, [&] { selector.set(numbers({7})); });
  EXPECT_EQ(selected(hvm::table_of(outer.record()), pairs), "[[7, 8]]");
}

TEST_F(ChangingTables, ASelectionByARange_PassesOverWhatIsGone) {
  for (const char* operation : {"HVM_HashGetInt", "HVM_DupObject"}) {
    Value row = Value::table_of({Value(10), Value(11), Value(12), Value(13)});
    const Value outer = Value::table_of({row});
    HostHash* hash = hvm::table_of(row.record());
    Value low(0), high(3);
    SelectorPairs pairs;
    pairs.push_back({});
    pairs.push_back({low.address(), high.address()});
    const Meanwhile meanwhile(operation, 2, [&] {
      hvm::remove(hash, Value(3).record());
      hvm::remove(hash, Value(2).record());
    });
    EXPECT_EQ(selected(hvm::table_of(outer.record()), pairs), "[[10, 11]]") << operation;
  }
}

TEST_F(ChangingTables, ASelectionByAnOpenRange_PassesOverWhatIsGone) {
  // The table of the row is made after the bounds of the row are known.
  for (const auto& [operation, nth] : {std::pair("HVM_HashGetBounds", 1), std::pair("HVM_ForceTable", 2)}) {
    Value row = Value::table_of({Value(10), Value(11), Value(12), Value(13)});
    const Value outer = Value::table_of({row});
    HostHash* hash = hvm::table_of(row.record());
    Value low(0), open;
    SelectorPairs pairs;
    pairs.push_back({});
    pairs.push_back({low.address(), open.address()});
    const Meanwhile meanwhile(operation, nth, [&] {
      hvm::remove(hash, Value(3).record());
      hvm::remove(hash, Value(2).record());
    });
    EXPECT_EQ(selected(hvm::table_of(outer.record()), pairs), "[[10, 11]]") << operation;
    EXPECT_TRUE(Meanwhile::has_come()) << operation;
  }
}

TEST_F(ChangingTables, ASelectionByAKey_FindsWhatIsThereThen) {
  Value text("key"), number(2);
  for (const auto& [key, operation] :
       {std::pair(&text, "HVM_NumberCheck"), std::pair(&text, "HVM_StringCheckAll"),
        std::pair(&number, "HVM_NumberCheck"), std::pair(&number, "HVM_StringCheckAll")}) {
    const Value table = Value::table();
    HostHash* hash = hvm::table_of(table.record());
    hvm::set_entry(hash, key->record(), Value(1).record());
    SelectorPairs pairs;
    pairs.push_back({key->address(), nullptr});
    // The entry is another one, in another place, when the key is understood.
    const Meanwhile meanwhile(operation, 1, [&, key = key] {
      hvm::remove(hash, key->record());
      for (int other = 10; other < 50; ++other) hvm::set_entry(hash, Value(other).record(), Value(0).record());
      hvm::set_entry(hash, key->record(), Value(7).record());
    });
    EXPECT_EQ(selected(hash, pairs), "7") << operation;
    EXPECT_TRUE(Meanwhile::has_come()) << operation;
  }
}

TEST_F(ChangingTables, ASelectorThatChangesItsTable_SelectsFromTheTableAsItIsThen) {
  host.define("f", [&](HostValue*, int, HostValue* result) {
    host[3] = Value::table_of({Value(5), Value(6)});  // the old table ends
    HVM_SetInt(ctx(), result, 1);
    return 1;
  });
  host[3] = Value::table_of({Value(1), Value(2), Value(3)});
  EXPECT_EQ(evaluated(code.selection_slot(3, {code.call_slot("f")})), "int 6");
  host[3] = Value::table_of({Value(1), Value(2), Value(3)});
  EXPECT_EQ(evaluated(code.selection_slot(3, {code.range(code.call_slot("f"), nowhere())})), "int 6");
}

TEST_F(ChangingTables, ASelectorThatEndsItsTable_SelectsFromNoTable) {
  host.define("f", [&](HostValue*, int, HostValue* result) {
    host[3] = Value(7);
    HVM_SetInt(ctx(), result, 1);
    return 1;
  });
  host[3] = Value::table_of({Value(1), Value(2)});
  EXPECT_THROW(evaluated(code.selection_slot(3, {code.call_slot("f")})), invalid_array_object);
}

// ---- Arrays

using Entries = IndexList::Entries;

class ChangingArrays : public ReaderTest {
 protected:
  Value array_ = array_of<XTInt64>(ctx(), {2, 3}, {0, 1, 2, 3, 4, 5});
  HostBool access(Opcode opcode, IndexList& list, HostValue* result) {
    return hvm::callbacks_of(hvm::object_of(array_.record()))
        .op(ctx(), static_cast<int>(opcode), array_.address(), list.address(), result);
  }
  void reshape(int rows, int columns) { method(array_, "reshape", {Value(rows), Value(columns)}); }
  /// The array becomes an array of four rows.
  void grow() {
    Value rows = array_of<XTInt64>(ctx(), {4, 3}, std::vector<std::int64_t>(12, 100));
    apply_into(array_.address(), "$xint64array", static_cast<int>(Opcode::add), array_.address(), rows.address());
  }
};

TEST_F(ChangingArrays, AnElement_IsReadInTheArrayAsItIsThen) {
  for (const Entries where : {Entries::in_place, Entries::elsewhere}) {
    IndexList list({Value(1), Value(1)}, where);
    Value result;
    for (const int nth : {1, 2}) {
      const Meanwhile meanwhile("HVM_AsInt", nth, [&] { reshape(3, 2); });
      EXPECT_EQ(access(Opcode::read_element, list, result.address()), 1);
      EXPECT_TRUE(Meanwhile::has_come());
      EXPECT_EQ(HVM_AsInt64(result.address()), 3);
      reshape(2, 3);
      EXPECT_EQ(access(Opcode::read_element, list, result.address()), 1);
      EXPECT_EQ(HVM_AsInt64(result.address()), 4);
    }
  }
}

TEST_F(ChangingArrays, AnElementAtOneIndex_IsReadInTheArrayAsItIsThen) {
  for (const char* operation : {"HVM_NumberCheck", "HVM_AsInt"}) {
    array_ = array_of<XTInt64>(ctx(), {1, 3}, {0, 1, 2});
    Value one(1), result;
    const Meanwhile meanwhile(operation, 1, [&] { grow(); });
    hvm::callbacks_of(hvm::object_of(array_.record()))
        .op(ctx(), static_cast<int>(Opcode::read_one_index), array_.address(), one.address(), result.address());
    EXPECT_EQ(HVM_AsInt64(result.address()), 101) << operation;
  }
}

TEST_F(ChangingArrays, AnElement_IsWrittenIntoTheArrayAsItIsThen) {
  for (const char* operation : {"HVM_NumberCheck", "HVM_AsInt64", "HVM_AsInt"}) {
    array_ = array_of<XTInt64>(ctx(), {1, 3}, {0, 1, 2});
    IndexList list({Value(1), Value(2)}, Entries::elsewhere);
    Value number(7);
    const Meanwhile meanwhile(operation, 1, [&] { grow(); });
    EXPECT_EQ(access(Opcode::write_element, list, number.address()), 1);
    EXPECT_EQ(dump(array_), "[[100,101,102],[100,101,7],[100,101,102],[100,101,102]]") << operation;
  }
}

TEST_F(ChangingArrays, AnOperatorWithANumber_TakesTheArrayAsItIsThen) {
  for (const char* operation : {"HVM_NumberCheck", "HVM_AsInt64"}) {
    array_ = array_of<XTInt64>(ctx(), {1, 3}, {0, 1, 2});
    Value one(1), result;
    const Meanwhile meanwhile(operation, 1, [&] { grow(); });
    hvm::callbacks_of(hvm::object_of(array_.record()))
        .op(ctx(), static_cast<int>(Opcode::add), array_.address(), one.address(), result.address());
    EXPECT_EQ(dump(result), "[[101,102,103],[101,102,103],[101,102,103],[101,102,103]]") << operation;
  }
}

TEST_F(ChangingArrays, AnOperatorInPlaceWithANumber_ChangesTheArrayAsItIsThen) {
  for (const char* operation : {"HVM_NumberCheck", "HVM_AsInt64"}) {
    array_ = array_of<XTInt64>(ctx(), {1, 3}, {0, 1, 2});
    Value one(1);
    const Meanwhile meanwhile(operation, 1, [&] { grow(); });
    apply_into(array_.address(), "$xint64array", static_cast<int>(Opcode::add), array_.address(), one.address());
    EXPECT_EQ(dump(array_), "[[101,102,103],[101,102,103],[101,102,103],[101,102,103]]") << operation;
  }
}

TEST_F(ChangingArrays, AComparisonWithANumber_TakesTheArrayAsItIsThen) {
  for (const Opcode opcode : {Opcode::less, Opcode::greater})
    for (const char* operation : {"HVM_NumberCheck", "HVM_AsInt64"}) {
      array_ = array_of<XTInt64>(ctx(), {1, 3}, {0, 1, 2});
      Value number(101), result;
      const Meanwhile meanwhile(operation, 1, [&] { grow(); });
      hvm::callbacks_of(hvm::object_of(array_.record()))
          .op(ctx(), static_cast<int>(opcode), array_.address(), number.address(), result.address());
      const std::string row = opcode == Opcode::less ? "[true,false,false]" : "[false,false,true]";
      EXPECT_EQ(dump(result), "[" + row + "," + row + "," + row + "," + row + "]") << operation;
    }
}

}  // namespace
}  // namespace arrayfold::test
