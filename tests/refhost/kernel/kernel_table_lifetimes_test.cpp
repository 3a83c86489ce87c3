// refhost/kernel/kernel_table_lifetimes_test.cpp: tables are shared, copied and ended, also very deep ones

#include "kernel_fixture.hpp"

namespace hvm::testing {
namespace {

constexpr int depth = 100000;

using KernelTableLifetimes = KernelTest;

// [[[... "x": leaf ...]]]: every level under the key 0, or under a string key.
Value nested(Value leaf, int levels, bool under_string_keys = false) {
  Value inner = std::move(leaf);
  for (int n = 0; n < levels; ++n) {
    Value outer = Value::table();
    HostHash* table = table_of(outer.record());
    HostValue* place = under_string_keys ? slot(table, "deeper") : slot(table, 0);
    *place = inner.give_up();
    inner = std::move(outer);
  }
  return inner;
}

int levels_of(const Value& value) {
  int levels = 0;
  const HostValue* record = &value.record();
  while (HostHash* table = table_of(*record)) {
    record = TableWalk(table).next().value;
    ++levels;
  }
  return levels;
}

TEST_F(KernelTableLifetimes, Copies_OfARecord_ShareTheTable) {
  Value a = Value::table_of({Value(1)});
  Value b = a;
  HVM_SetInt(ctx(), slot(table_of(b.record()), 0), 9);
  EXPECT_EQ(HVM_AsInt(find(table_of(a.record()), 0)), 9);
  EXPECT_EQ(references(table_of(a.record())), 2u);
  a = Value();
  EXPECT_EQ(HVM_AsInt(find(table_of(b.record()), 0)), 9);
}

TEST_F(KernelTableLifetimes, GCFreeTable_TakesBackOneReference) {
  HVM_GCFreeTable(HVM_NewHash(ctx(), 4));
  EXPECT_EQ(counts(), before_);
  Value table = Value::table_of({Value("text"), new_toy()});
  HVM_GCFreeTable(hold(table_of(table.record())));
  EXPECT_EQ(entry_count(table_of(table.record())), 2);
  HVM_GCFreeTable(nullptr);
}

TEST_F(KernelTableLifetimes, EndOfATable_ReleasesKeysAndValues) {
  Value table = Value::table_of({Value("text"), new_toy(), Value::table_of({Value(u"wide")})});
  *slot(table_of(table.record()), "key") = new_toy().give_up();
  *slot(table_of(table.record()), Value(2.5).record()) = Value("hashed").give_up();
  table = Value();
  EXPECT_EQ(Toy::live, 0);
  EXPECT_EQ(counts(), before_);
}

TEST_F(KernelTableLifetimes, DeepTables_EndWithoutRecursion) {
  for (const bool under_string_keys : {false, true}) {
    Value table = nested(new_toy(), depth, under_string_keys);
    EXPECT_EQ(levels_of(table), depth);
    table = Value();
    EXPECT_EQ(Toy::live, 0);
    EXPECT_EQ(counts(), before_);
  }
}

TEST_F(KernelTableLifetimes, DeepTables_AreCopiedWithoutRecursion) {
  Value table = nested(Value("leaf"), depth);
  Value copy;
  HVM_DupObject(ctx(), copy.address(), table.address(), 1);
  EXPECT_EQ(counts().tables, before_.tables + 2 * depth);
  EXPECT_EQ(counts().strings, before_.strings + 2);
  table = Value();
  EXPECT_EQ(levels_of(copy), depth);
}

TEST_F(KernelTableLifetimes, DeepTables_ArePrintedWithoutRecursion) {
  const Value table = nested(Value(5), depth);
  const std::string text = printed(table.record());
  EXPECT_EQ(text, std::string(depth, '[') + '5' + std::string(depth, ']'));
}

TEST_F(KernelTableLifetimes, DupObject_CopiesTablesAndTextsAndSharesObjects) {
  Value toy = new_toy();
  Value inner = Value::table_of({Value("text")});
  Value source = Value::table_of({inner, toy, Value(7)});
  *slot(table_of(source.record()), "key") = Value(2.5).give_up();
  *slot(table_of(source.record()), -4) = Value(u"wide").give_up();
  Value copy;
  HVM_DupObject(ctx(), copy.address(), source.address(), 1);
  EXPECT_EQ(printed(copy.record()), printed(source.record()));
  HostHash* table = table_of(copy.record());
  EXPECT_NE(table, table_of(source.record()));
  EXPECT_NE(table_of(*find(table, 0)), table_of(inner.record()));
  EXPECT_EQ(object_of(*find(table, 1)), object_of(toy.record()));
  HVM_SetInt(ctx(), slot(table_of(*find(table, 0)), 0), 1);
  EXPECT_EQ(text_of(*find(table_of(inner.record()), 0)), "text");
  EXPECT_EQ(references(table), 1u);
}

TEST_F(KernelTableLifetimes, DupObject_KeepsTheBounds) {
  Value source = Value::table_of({Value(1)});
  slot(table_of(source.record()), 40);
  slot(table_of(source.record()), -3);
  Value copy;
  HVM_DupObject(ctx(), copy.address(), source.address(), 1);
  int low = 0, high = 0;
  HVM_HashGetBounds(table_of(copy.record()), &low, &high);
  EXPECT_EQ(low, -3);
  EXPECT_EQ(high, 40);
}

TEST_F(KernelTableLifetimes, DupObject_OfATableHeldTwice_HoldsTheCopyTwice) {
  Value inner = Value::table_of({Value(1)});
  Value source = Value::table_of({inner, inner});
  Value copy;
  HVM_DupObject(ctx(), copy.address(), source.address(), 1);
  HostHash* first = table_of(*find(table_of(copy.record()), 0));
  EXPECT_EQ(first, table_of(*find(table_of(copy.record()), 1)));
  EXPECT_NE(first, table_of(inner.record()));
  EXPECT_EQ(references(first), 2u);
}

TEST_F(KernelTableLifetimes, DupObject_OfATableInsideItself_Ends) {
  Value source = Value::table();
  HostHash* table = table_of(source.record());
  assign(*slot(table, 0), source.record());
  Value copy;
  HVM_DupObject(ctx(), copy.address(), source.address(), 1);
  HostHash* twin = table_of(copy.record());
  EXPECT_NE(twin, table);
  EXPECT_EQ(table_of(*find(twin, 0)), twin);
  release(*find(table, 0));
  release(*find(twin, 0));
}

TEST_F(KernelTableLifetimes, DupObject_AfterACopy_CopiesAnew) {
  Value source = Value::table_of({Value::table()});
  Value first, second;
  HVM_DupObject(ctx(), first.address(), source.address(), 1);
  HVM_DupObject(ctx(), second.address(), source.address(), 1);
  EXPECT_NE(table_of(first.record()), table_of(second.record()));
  EXPECT_EQ(counts().tables, before_.tables + 6);
}

TEST_F(KernelTableLifetimes, DupObject_OfATableRecordWithoutTable_IsNil) {
  HostValue source = tagged(5);
  Value copy(1);
  HVM_DupObject(ctx(), copy.address(), &source, 1);
  EXPECT_TRUE(copy.is_nil());
}

TEST_F(KernelTableLifetimes, SlotOfALiteralTable_OwnsWhatIsMovedIn) {
  Value root;
  HVM_ForceTable(ctx(), root.address(), 4);
  Value temporary("text");
  HostValue* slot = HVM_HashSetInt(ctx(), table_of(root.record()), 0);
  *slot = temporary.record();
  temporary.record().lifetime = Lifetime::none;
  temporary = Value();
  EXPECT_EQ(text_of(*find(table_of(root.record()), 0)), "text");
}

TEST_F(KernelTableLifetimes, SlotOfALiteralTable_OwnsEveryTableThatIsWrittenIntoIt) {
  const Counts before = counts();
  {
    Value root;
    HVM_ForceTable(ctx(), root.address(), 4);
    HVM_SetInt(ctx(), HVM_HashSet(ctx(), table_of(root.record()), Value("key").address()), 5);
    for (HostValue* slot : {HVM_HashSetInt(ctx(), table_of(root.record()), 0),
                            HVM_HashSet(ctx(), table_of(root.record()), Value("key").address())})
      for (int i = 0; i < 3; ++i) {
        HVM_FreeObjectContent(ctx(), slot);
        EXPECT_EQ(slot->lifetime, Lifetime::temporary);
        slot->tag = ValueTag::table;
        arrayfold::store<HostHash*>(slot->payload, HVM_NewHash(ctx(), 4));
      }
    EXPECT_EQ(counts().tables, before.tables + 3);
  }
  EXPECT_TRUE(counts() == before);
}

}  // namespace
}  // namespace hvm::testing
