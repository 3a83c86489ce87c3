// second_host/missing_slots_test.cpp: pointers that are null, and what a host does not give
//
// The contract asks a host for none of this. The answer is defined nevertheless: what is missing is no entry, a call
// that needs it fails, and what a host cannot give is out of memory.

#include "reader/table_conversion.hpp"
#include "second_host/hand_made_table.hpp"
#include "support/reader_test.hpp"
#include "support/withholding_host.hpp"

namespace arrayfold::test {
namespace {

/// The pointers of an ordered part with null among them: before, between and behind three entries.
class Gaps {
 public:
  Gaps() {
    int number = 0;
    for (HostHashItem& item : items_) {
      item.key = Value(number).record();
      item.value = Value(10 + number++).record();
    }
    hash_.references = 1;
    hash_.index = index_;
    hash_.index_count = 7;
  }
  HostHash* hash() { return &hash_; }
  Value value() { return value_over(hash_); }

 private:
  HostHashItem items_[3] = {};
  HostHashItem* index_[7] = {nullptr, &items_[0], nullptr, nullptr, &items_[1], &items_[2], nullptr};
  hvm::kernel::Table hash_{};
};

using MissingSlots = ReaderTest;

// ---- Tables

TEST_F(MissingSlots, NullPointersInTheOrderedPart_AreNoEntries) {
  Gaps gaps;
  TableCursor cursor(gaps.hash());
  int count = 0;
  while (cursor.next()) EXPECT_EQ(HVM_AsInt(&cursor.item()->value), 10 + count++);
  EXPECT_EQ(count, 3);
}

TEST_F(MissingSlots, NullPointersAlone_AreAnEmptyTable) {
  HostHashItem* nothing[3] = {};
  HostHash hash{};
  hash.index = nothing;
  hash.index_count = 3;
  EXPECT_FALSE(TableCursor(&hash).next());
}

TEST_F(MissingSlots, APartWithoutAnAddress_IsEmptyWhateverItsCountSays) {
  HostHash hash{};
  hash.index_count = 5;
  hash.item_count = 7;
  TableCursor cursor(&hash);
  EXPECT_EQ(cursor.most_left(), 0u);
  EXPECT_FALSE(cursor.next());
}

TEST_F(MissingSlots, NullPointersInTheDataOfXarray_AddNoElements) {
  Gaps gaps;
  EXPECT_EQ(dump(call("xarray", {code.quoted_call("int"), gaps.value()}).result), "[10,11,12]");
  HandMadeTable outer(Part::items, {gaps.value(), gaps.value()});
  EXPECT_EQ(dump(call("xarray", {code.quoted_call("double"), outer.value()}).result),
            "[[10.0,11.0,12.0],[10.0,11.0,12.0]]");
}

TEST_F(MissingSlots, NullPointersInASelectedTable_SelectNothing) {
  Gaps gaps;
  HandMadeTable outer(Part::ordered, {gaps.value()});
  Value chooser = gaps.value();
  SelectorPairs everything, by_table;
  everything.push_back({});
  EXPECT_EQ(selected(gaps.hash(), everything), "10");
  everything.push_back({});
  EXPECT_EQ(selected(outer.hash(), everything), "[[10, 11, 12]]");
  by_table.push_back({});
  by_table.push_back({chooser.address(), nullptr});
  EXPECT_EQ(selected(outer.hash(), by_table), "[[10, 11, 12]]");
}

// ---- Index lists and arguments

class MissingOperands : public ReaderTest {
 protected:
  Value array_ = array_of<XTInt64>(ctx(), {2, 3}, {0, 1, 2, 3, 4, 5});

  /// An access by a list whose `missing`-th entry is null; nothing is written and nothing given.
  void expect_refused(Opcode opcode, IndexList::Entries where, std::size_t count, std::size_t missing) {
    IndexList list(std::vector<Value>(count, Value(1)), where);
    auto* head = reinterpret_cast<HostIndexList*>(list.address());
    void* const entries = where == IndexList::Entries::in_place ? head->entries : load<void*>(head->entries);
    static_cast<HostIndexEntry*>(entries)[missing].value = nullptr;
    expect_refused(opcode, list.address());
  }
  void expect_refused(Opcode opcode, HostValue* list) {
    Value number(77);
    const Answer answer =
        apply_into(number.address(), "$xint64array", static_cast<int>(opcode), array_.address(), list);
    EXPECT_EQ(answer.returned, 0);
    EXPECT_EQ(HVM_AsInt(number.address()), 77);
    EXPECT_EQ(dump(array_), "[[0,1,2],[3,4,5]]");
  }
};

TEST_F(MissingOperands, AnIndexThatIsMissing_ReturnsFalse) {
  for (const Opcode opcode : {Opcode::read_element, Opcode::write_element})
    for (const auto where : {IndexList::Entries::in_place, IndexList::Entries::elsewhere})
      for (const std::size_t count : {1, 2, 8, 9})
        for (std::size_t missing = 0; missing < count; ++missing) expect_refused(opcode, where, count, missing);
}

TEST_F(MissingOperands, EntriesElsewhereThatAreNowhere_ReturnFalse) {
  for (const Opcode opcode : {Opcode::read_element, Opcode::write_element}) {
    HostIndexList list{};
    list.packed_size = 2 * 2 + 1;
    expect_refused(opcode, reinterpret_cast<HostValue*>(&list));
  }
}

TEST_F(MissingOperands, AValueToWriteThatIsMissing_ReturnsFalse) {
  IndexList list({Value(0)}, IndexList::Entries::in_place);
  const auto op = hvm::callbacks_of(hvm::object_of(array_.record())).op;
  EXPECT_EQ(op(ctx(), static_cast<int>(Opcode::write_element), array_.address(), list.address(), nullptr), 0);
}

TEST_F(MissingOperands, AnArgumentOfAMethodThatIsMissing_ReturnsFalse) {
  const auto callback = hvm::callbacks_of(hvm::object_of(array_.record())).method;
  Value three(3), two(2), result(5);
  HostValue* missing_first[] = {nullptr, two.address()};
  HostValue* missing_last[] = {three.address(), nullptr};
  for (const char* name : {"dump", "reshape"})
    EXPECT_EQ(callback(ctx(), array_.address(), name, missing_first, 2, result.address(), 0), 0) << name;
  EXPECT_EQ(callback(ctx(), array_.address(), "reshape", missing_last, 2, result.address(), 0), 0);
  EXPECT_EQ(HVM_AsInt(result.address()), 5);
  EXPECT_EQ(shape(array_), (std::vector<std::int64_t>{2, 3}));
}

// ---- What the host does not give

TEST_F(MissingSlots, WithoutBlocksForTheStacksOfALiteral_MemoryIsOut) {
  // The stacks begin with room for 64 tables and 64 counts.
  std::vector<HostCodeNode*> items(70, nullptr);
  for (HostCodeNode*& item : items) item = code.open();
  const HostCodeSlot deep = leads_to(code.array_literal(items));
  const HostCodeSlot list = code.list({deep});
  const auto fails_at = [&](Withheld what, int nth) {
    ExpressionEvaluator evaluator(ctx(), frame_base);
    const Withholding withholding(what, nth);
    EXPECT_THROW(evaluate_cell(evaluator, &list), std::bad_alloc) << nth;
    EXPECT_TRUE(Withholding::has_come());
  };
  for (const int nth : {1, 2}) {
    fails_at(Withheld::block, nth);
    fails_at(Withheld::larger_block, nth);
  }
  ExpressionEvaluator evaluator(ctx(), frame_base);
  EXPECT_NO_THROW(evaluate_cell(evaluator, &list));
}

TEST_F(MissingSlots, WithoutRecordsForTheArgumentsOfACall_MemoryIsOut) {
  bool was_called = false;
  host.define("f", [&](HostValue*, int, HostValue*) { return was_called = true, 1; });
  const HostCodeSlot list = code.list({code.call_slot("f", {integer(1), integer(2)})});
  ExpressionEvaluator evaluator(ctx(), frame_base);
  const Withholding withholding(Withheld::records);
  EXPECT_THROW(evaluate_cell(evaluator, &list), std::bad_alloc);
  EXPECT_FALSE(was_called);
}

TEST_F(MissingSlots, WithoutObjectsForSomeOfTheResults_TheTableHoldsTheOthers) {
  const Value matrix = array_of<XTDouble>(ctx(), {2, 2}, {2, 1, 1, 3});
  struct Function {
    const char* name;
    int objects;
  };
  for (const Function& row : {Function{"xqr", 2}, {"xsvd", 3}, {"xeigh", 2}})
    for (int nth = 1; nth <= row.objects; ++nth) {
      const EntryFunction function = Module::loaded().entry(row.name);
      std::vector<Value> args = {matrix};
      Value result;
      const Withholding withholding(Withheld::object, nth);
      EXPECT_EQ(function(ctx(), hvm::records_of(args), 1, result.address()), 1);
      EXPECT_TRUE(Withholding::has_come());
      const HostHash* table = hvm::table_of(result.record());
      EXPECT_EQ(hvm::entry_count(table), row.objects);
      // From the n-th on there are no objects.
      for (int key = 0; key < row.objects; ++key)
        EXPECT_EQ(hvm::find(table, key)->tag, key + 1 < nth ? ValueTag::object : ValueTag::nil) << row.name << key;
    }
}

}  // namespace
}  // namespace arrayfold::test
