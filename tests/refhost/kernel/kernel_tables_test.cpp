// refhost/kernel/kernel_tables_test.cpp: keys, slots, the two parts of a table, and what an outsider reads of
// them

#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <set>

#include "kernel_fixture.hpp"

namespace hvm::testing {
namespace {

class KernelTables : public KernelTest {
 protected:
  HostHash* table() const { return table_of(table_.record()); }
  void put(int key, int value) { HVM_SetInt(ctx(), HVM_HashSetInt(ctx(), table(), key), value); }
  void put(Value key, int value) { HVM_SetInt(ctx(), HVM_HashSet(ctx(), table(), key.address()), value); }
  HostValue* read(Value key) { return HVM_HashGet(nullptr, table(), key.address()); }
  bool has(Value key) { return read(std::move(key)) != HVM_GetGlobalNilObj(); }

  Value table_ = Value::table();
};

// The walk of an outsider: by offsets alone, `items` without the keys of tag 6 and 10.
std::vector<HostValue> raw_keys(const HostHash* table) {
  std::vector<HostValue> keys;
  const auto* bytes = static_cast<const std::byte*>(static_cast<const void*>(table));
  const auto* index = load<const std::byte* const*>(bytes);
  for (int n = 0; n < load<std::int32_t>(bytes + 8); ++n) keys.push_back(load<HostValue>(index[n]));
  const auto* items = load<const std::byte*>(bytes + 16);
  for (int n = 0; n < load<std::int32_t>(bytes + 24); ++n) {
    const auto key = load<HostValue>(items + 44 * n);
    if (key.tag != ValueTag::string_record && key.tag != ValueTag::nil) keys.push_back(key);
  }
  return keys;
}

std::vector<int> raw_integer_keys(const HostHash* table) {
  std::vector<int> keys;
  for (HostValue& key : raw_keys(table))
    if (key.tag == ValueTag::integer) keys.push_back(HVM_AsInt(&key));
  return keys;
}

TEST_F(KernelTables, ForceTable_MakesAnEmptyTableOfWhatever) {
  for (Value value : {Value(), Value(5), Value("text"), new_toy(), Value::table_of({Value(1)})}) {
    HVM_ForceTable(ctx(), value.address(), 4);
    EXPECT_EQ(value.tag(), ValueTag::table);
    EXPECT_EQ(entry_count(table_of(value.record())), 0);
    EXPECT_EQ(references(table_of(value.record())), 1u);
  }
  EXPECT_EQ(Toy::live, 0);
  HVM_ForceTable(ctx(), nullptr, 4);
}

TEST_F(KernelTables, Capacity_IsAHint) {
  for (const int capacity : {-5, 0, 1, 4, 100, std::numeric_limits<int>::max()}) {
    Value value;
    HVM_ForceTable(ctx(), value.address(), capacity);
    for (int key = 0; key < 300; ++key) HVM_SetInt(ctx(), HVM_HashSetInt(ctx(), table_of(value.record()), key), key);
    EXPECT_EQ(entry_count(table_of(value.record())), 300);
  }
}

TEST_F(KernelTables, NewHash_IsTheCallersToWriteIntoARecord) {
  HostHash* hash = HVM_NewHash(ctx(), 4);
  EXPECT_EQ(hash->index_count, 0);
  EXPECT_EQ(hash->item_count, 0);
  EXPECT_EQ(references(hash), 1u);
  HostValue* slot = HVM_HashSetInt(ctx(), table(), 0);
  slot->tag = ValueTag::table;
  store<HostHash*>(slot->payload, hash);
  EXPECT_EQ(counts().tables, before_.tables + 2);  // this one and the fixture's
}

TEST_F(KernelTables, Slots_StartAsNilAndAreFoundAgain) {
  HostValue* slot = HVM_HashSetInt(ctx(), table(), 0);
  EXPECT_EQ(slot->tag, ValueTag::nil);
  HVM_SetInt(ctx(), slot, 5);
  EXPECT_EQ(HVM_HashSetInt(ctx(), table(), 0), slot);
  EXPECT_EQ(HVM_HashGetInt(table(), 0), slot);
  HostValue* hashed = HVM_HashSet(ctx(), table(), Value("k").address());
  EXPECT_EQ(hashed->tag, ValueTag::nil);
  EXPECT_EQ(HVM_HashSet(ctx(), table(), Value("k").address()), hashed);
}

TEST_F(KernelTables, AbsentKeys_GiveTheGlobalNil) {
  put(0, 1);
  for (const int key : {-1, 1, 100, std::numeric_limits<int>::min()})
    EXPECT_EQ(HVM_HashGetInt(table(), key), HVM_GetGlobalNilObj());
  EXPECT_FALSE(has(Value("k")));
  EXPECT_FALSE(has(Value(0.0)));
  EXPECT_EQ(HVM_HashGetInt(nullptr, 0), HVM_GetGlobalNilObj());
  EXPECT_EQ(HVM_HashGet(nullptr, nullptr, Value(0).address()), HVM_GetGlobalNilObj());
  EXPECT_EQ(HVM_HashGet(nullptr, table(), nullptr), HVM_GetGlobalNilObj());
}

TEST_F(KernelTables, NilInASlot_IsAnEntry) {
  HVM_HashSetInt(ctx(), table(), 0);
  EXPECT_NE(HVM_HashGetInt(table(), 0), HVM_GetGlobalNilObj());
  EXPECT_EQ(entry_count(table()), 1);
}

TEST_F(KernelTables, Values_StandEighteenBytesBehindTheirKey) {
  put(0, 1);
  put(Value(7), 2);
  put(Value("k"), 3);
  for (Value key : {Value(0), Value(7), Value("k")}) {
    const auto* value = static_cast<const std::byte*>(static_cast<const void*>(read(key)));
    const auto item = load<HostHashItem>(value - 18);
    EXPECT_EQ(item.key.tag, key.is_string() ? ValueTag::string_record : ValueTag::integer);
  }
}

TEST_F(KernelTables, IntegerKeys_FromZeroUp_AreTheOrderedPart) {
  for (int key = 0; key < 100; ++key) put(key, key * key);
  EXPECT_EQ(table()->index_count, 100);
  EXPECT_EQ(table()->item_count, 0);
  const auto keys = raw_integer_keys(table());
  ASSERT_EQ(keys.size(), 100u);
  for (int key = 0; key < 100; ++key) {
    EXPECT_EQ(keys[static_cast<std::size_t>(key)], key);
    EXPECT_EQ(HVM_AsInt(HVM_HashGetInt(table(), key)), key * key);
  }
}

TEST_F(KernelTables, IntegerKeys_ThatCloseAGap_MoveIntoTheOrderedPart) {
  for (const int key : {3, 1, 2, 5}) put(key, 10 * key);
  EXPECT_EQ(table()->index_count, 0);
  EXPECT_EQ(raw_integer_keys(table()), (std::vector<int>{3, 1, 2, 5}));
  put(0, 0);
  EXPECT_EQ(table()->index_count, 4);
  EXPECT_EQ(raw_integer_keys(table()), (std::vector<int>{0, 1, 2, 3, 5}));
  for (const int key : {0, 1, 2, 3, 5}) EXPECT_EQ(HVM_AsInt(HVM_HashGetInt(table(), key)), 10 * key);
  put(4, 40);
  EXPECT_EQ(table()->index_count, 6);
  EXPECT_EQ(table()->item_count, 0);
  EXPECT_EQ(entry_count(table()), 6);
}

TEST_F(KernelTables, NegativeKeys_StayInTheHashedPart) {
  put(-1, 1);
  put(0, 2);
  EXPECT_EQ(table()->index_count, 1);
  EXPECT_EQ(HVM_AsInt(HVM_HashGetInt(table(), -1)), 1);
}

TEST_F(KernelTables, StringKeys_AreStoredUnderTagSixAndSkippedByARawWalk) {
  put(Value("k"), 1);
  put(Value(9), 2);
  EXPECT_EQ(raw_integer_keys(table()), (std::vector<int>{9}));
  EXPECT_EQ(raw_keys(table()).size(), 1u);
  EXPECT_EQ(table()->item_count, 2);
  EXPECT_EQ(table()->items.get()[0].key.tag, ValueTag::string_record);
  EXPECT_EQ(text_of(table()->items.get()[0].key), "k");
}

TEST_F(KernelTables, StringKeys_OfAllForms_AreOneKey) {
  Value converted("clé");
  converted.record().tag = ValueTag::converted_string;
  put(Value("clé"), 1);
  for (Value key : {Value::literal("clé"), Value::string_record("clé"), Value(u"clé"), converted}) {
    EXPECT_TRUE(has(key));
    put(key, 2);
  }
  EXPECT_EQ(entry_count(table()), 1);
  EXPECT_EQ(HVM_AsInt(read(Value("clé"))), 2);
}

TEST_F(KernelTables, StringKeys_AreCopied) {
  Value key("key");
  put(key, 1);
  load<char*>(key.record().payload)[0] = 'x';
  EXPECT_TRUE(has(Value("key")));
  EXPECT_FALSE(has(Value("xey")));
}

TEST_F(KernelTables, StringKeys_MayBeEmptyOrHoldZeros) {
  put(Value(""), 1);
  put(Value(std::string_view("a\0b", 3)), 2);
  put(Value("a"), 3);
  EXPECT_EQ(entry_count(table()), 3);
  EXPECT_EQ(HVM_AsInt(read(Value(std::string_view("a\0b", 3)))), 2);
}

TEST_F(KernelTables, Required_WholeRealKeys_AreKeysOfTheirOwn) {
  put(2, 1);
  put(Value(2.0), 2);
  EXPECT_EQ(entry_count(table()), 2);
  EXPECT_EQ(HVM_AsInt(read(Value(2))), 1);
  EXPECT_EQ(HVM_AsInt(read(Value(2.0))), 2);
  EXPECT_EQ(raw_keys(table()).size(), 2u);
}

TEST_F(KernelTables, RealKeys_KnowOneZeroAndOneNan) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  put(Value(0.0), 1);
  put(Value(-0.0), 2);
  put(Value(nan), 3);
  put(Value(-nan), 4);
  EXPECT_EQ(entry_count(table()), 2);
  EXPECT_EQ(HVM_AsInt(read(Value(0.0))), 2);
  EXPECT_EQ(HVM_AsInt(read(Value(nan))), 4);
}

TEST_F(KernelTables, Integer64Keys_ThatFitInto32Bits_AreTheIntegerKey) {
  put(Value(std::int64_t{0}), 1);
  put(Value(std::int64_t{1} << 40), 2);
  EXPECT_EQ(table()->index_count, 1);
  EXPECT_EQ(HVM_AsInt(HVM_HashGetInt(table(), 0)), 1);
  EXPECT_EQ(HVM_AsInt(read(Value(std::int64_t{1} << 40))), 2);
  EXPECT_EQ(raw_keys(table()).back().tag, ValueTag::integer64);
}

TEST_F(KernelTables, OtherValues_AreNoKeys) {
  Value toy = new_toy(), inner = Value::table();
  for (Value key : {Value(), toy, inner}) {
    EXPECT_FALSE(is_key(key.record()));
    EXPECT_EQ(slot(table(), key.record()), nullptr);
    put(key, 5);
    EXPECT_FALSE(has(key));
  }
  EXPECT_TRUE(is_key(Value(u"w").record()));
  EXPECT_EQ(entry_count(table()), 0);
}

TEST_F(KernelTables, SlotOfNoTable_TakesAnythingAndKeepsNothing) {
  HVM_SetString(ctx(), HVM_HashSetInt(ctx(), nullptr, 0), "text");
  HVM_ForceTable(ctx(), HVM_HashSet(ctx(), nullptr, Value(1).address()), 4);
  HVM_ForceTable(ctx(), HVM_HashSet(ctx(), table(), nullptr), 4);
  HVM_SetTypeAny(ctx(), HVM_HashSetInt(ctx(), nullptr, 0), HVM_NewAny(ctx(), Toy::name, 0, 0));
  EXPECT_EQ(HVM_HashSetInt(ctx(), nullptr, 1)->tag, ValueTag::nil);
  EXPECT_EQ(Toy::live, 0);
}

TEST_F(KernelTables, Bounds_AreTheMinimumAndTheMaximumOfTheIntegerKeys) {
  int low = 77, high = 77;
  HVM_HashGetBounds(table(), &low, &high);
  EXPECT_EQ(low, 0);
  EXPECT_EQ(high, -1);
  put(Value("k"), 1);
  put(Value(100.0), 1);
  HVM_HashGetBounds(table(), &low, &high);
  EXPECT_EQ(high, -1);
  put(3, 1);
  HVM_HashGetBounds(table(), &low, &high);
  EXPECT_EQ(low, 3);
  EXPECT_EQ(high, 3);
  for (const int key : {0, 1, -9, 50}) put(key, 1);
  HVM_HashGetBounds(table(), &low, &high);
  EXPECT_EQ(low, -9);
  EXPECT_EQ(high, 50);
  HVM_HashGetBounds(table(), nullptr, nullptr);
  HVM_HashGetBounds(nullptr, &low, &high);
  EXPECT_EQ(low, 0);
  EXPECT_EQ(high, -1);
}

TEST_F(KernelTables, OrderedSlots_LastAsLongAsTheTable) {
  std::vector<HostValue*> slots;
  for (int key = 0; key < 10000; ++key) slots.push_back(HVM_HashSetInt(ctx(), table(), key));
  for (int key = 20000; key < 21000; ++key) put(key, 1);
  for (int key = 0; key < 10000; ++key) EXPECT_EQ(HVM_HashGetInt(table(), key), slots[static_cast<std::size_t>(key)]);
}

TEST_F(KernelTables, HashedSlots_LastUntilANewKeyComes) {
  for (int key = 1; key < 100; ++key) {
    HostValue* slot = HVM_HashSet(ctx(), table(), Value(key * 0.5).address());
    HVM_HashSet(ctx(), table(), Value(0.5).address());
    HVM_HashGet(nullptr, table(), Value("absent").address());
    EXPECT_EQ(read(Value(key * 0.5)), slot);
  }
}

TEST_F(KernelTables, HundredThousandKeys_AreAllFound) {
  constexpr int many = 100000;
  for (int key = 0; key < many; ++key) {
    put(key - 2 * many, key);
    put(Value(key + 0.5), key);
    put(Value(std::to_string(key)), key);
    put(Value((std::int64_t{key} << 33) + (std::int64_t{1} << 32)), key);
  }
  EXPECT_EQ(entry_count(table()), 4 * many);
  for (int key = 0; key < many; ++key) {
    ASSERT_EQ(HVM_AsInt(HVM_HashGetInt(table(), key - 2 * many)), key);
    ASSERT_EQ(HVM_AsInt(read(Value(key + 0.5))), key);
    ASSERT_EQ(HVM_AsInt(read(Value(std::to_string(key)))), key);
    ASSERT_EQ(HVM_AsInt(read(Value((std::int64_t{key} << 33) + (std::int64_t{1} << 32)))), key);
  }
  EXPECT_EQ(raw_keys(table()).size(), 3u * many);
}

TEST_F(KernelTables, KeysInFallingOrder_AllEndInTheOrderedPart) {
  constexpr int many = 100000;
  for (int key = many - 1; key >= 0; --key) put(key, key);
  EXPECT_EQ(table()->index_count, many);
  EXPECT_EQ(table()->item_count, 0);
  for (int key = 0; key < many; ++key) ASSERT_EQ(HVM_AsInt(HVM_HashGetInt(table(), key)), key);
}

TEST_F(KernelTables, RandomKeys_AgreeWithAMap) {
  std::mt19937 random(5);
  std::map<int, int> expected;
  for (int n = 0; n < 20000; ++n) {
    const int key = static_cast<int>(random() % 3000) - 100;
    if (random() % 8 == 0) put(Value(std::to_string(n)), n);
    put(key, n);
    expected[key] = n;
  }
  for (const auto& [key, value] : expected) ASSERT_EQ(HVM_AsInt(HVM_HashGetInt(table(), key)), value) << key;
  auto keys = raw_integer_keys(table());
  EXPECT_EQ(keys.size(), expected.size());
  EXPECT_EQ(std::set<int>(keys.begin(), keys.end()).size(), expected.size());
  EXPECT_GT(table()->index_count, 0);
}

TEST_F(KernelTables, Walk_VisitsTheOrderedPartThenTheOthersAsTheyCame) {
  put(Value("b"), 1);
  put(1, 2);
  put(Value(2.5), 3);
  put(0, 4);
  put(Value("a"), 5);
  std::vector<int> values;
  TableWalk walk(table());
  while (const Entry entry = walk.next()) values.push_back(HVM_AsInt(entry.value));
  EXPECT_EQ(values, (std::vector<int>{4, 2, 1, 3, 5}));
  EXPECT_FALSE(walk.next());
  EXPECT_FALSE(TableWalk(nullptr).next());
}

TEST_F(KernelTables, Walk_BearsAChangingTable) {
  for (int key = 0; key < 10; ++key) put(key, key);
  TableWalk walk(table());
  int visited = 0;
  while (walk.next() && visited < 1000) {
    put(10 + visited, 1);
    put(Value(visited + 0.5), 1);
    ++visited;
  }
  EXPECT_EQ(visited, 1000);
}

TEST_F(KernelTables, Remove_GivesTheValueAndTakesTheKeyOut) {
  put(0, 1);
  put(Value("k"), 2);
  put(Value(2.5), 3);
  put(Value(std::int64_t{1} << 40), 4);
  put(-7, 5);
  const std::vector<std::pair<Value, int>> rows{
      {Value("k"), 2}, {Value(-7), 5}, {Value(std::int64_t{1} << 40), 4}, {Value(0), 1}, {Value(2.5), 3}};
  int left = entry_count(table());
  for (const auto& [key, value] : rows) {
    Value removed = remove(table(), key.record());
    EXPECT_EQ(HVM_AsInt(removed.address()), value);
    EXPECT_FALSE(has(key));
    EXPECT_EQ(entry_count(table()), --left);
    EXPECT_TRUE(remove(table(), key.record()).is_nil());
  }
  EXPECT_EQ(left, 0);
  EXPECT_TRUE(raw_keys(table()).empty());
  EXPECT_FALSE(TableWalk(table()).next());
}

TEST_F(KernelTables, Remove_OfWhatIsAbsentOrNoKey_ChangesNothing) {
  put(0, 1);
  put(Value("k"), 2);
  for (const Value& key : {Value(1), Value(-1), Value("x"), Value(0.0), Value(), new_toy(), Value::table()})
    EXPECT_TRUE(remove(table(), key.record()).is_nil());
  EXPECT_TRUE(remove(nullptr, Value(0).record()).is_nil());
  EXPECT_EQ(entry_count(table()), 2);
}

TEST_F(KernelTables, Remove_OfAnOrderedKey_MovesTheLaterValuesDown) {
  for (int key = 0; key < 6; ++key) put(key, 10 * key);
  put(8, 80);
  HostValue* fourth = HVM_HashGetInt(table(), 4);
  EXPECT_EQ(HVM_AsInt(remove(table(), Value(2).record()).address()), 20);
  EXPECT_EQ(table()->index_count, 5);
  EXPECT_EQ(raw_integer_keys(table()), (std::vector<int>{0, 1, 2, 3, 4, 8}));
  const std::vector<int> values{0, 10, 30, 40, 50};
  for (int key = 0; key < 5; ++key)
    EXPECT_EQ(HVM_AsInt(HVM_HashGetInt(table(), key)), values[static_cast<std::size_t>(key)]);
  EXPECT_EQ(HVM_HashGetInt(table(), 4), fourth);  // the slot of a key that remains
  EXPECT_FALSE(has(Value(5)));
  EXPECT_EQ(HVM_AsInt(HVM_HashGetInt(table(), 8)), 80);
}

TEST_F(KernelTables, Remove_OfTheLastOrderedKey_LeavesTheFirstOnes) {
  put(0, 1);
  put(1, 2);
  remove(table(), Value(1).record());
  put(2, 3);  // does not follow 0
  EXPECT_EQ(table()->index_count, 1);
  put(1, 9);
  EXPECT_EQ(table()->index_count, 3);
  EXPECT_EQ(HVM_AsInt(HVM_HashGetInt(table(), 2)), 3);
}

TEST_F(KernelTables, Remove_HandsTheContentOver) {
  *slot(table(), 0) = Value("text").give_up();
  *slot(table(), 1) = new_toy().give_up();
  *slot(table(), "inner") = Value::table_of({new_toy()}).give_up();
  Value text = remove(table(), Value(0).record());
  Value toy = remove(table(), Value(0).record());
  Value inner = remove(table(), Value("inner").record());
  EXPECT_EQ(counts().strings, before_.strings + 1);  // the key is released
  EXPECT_EQ(text_of(text.record()), "text");
  EXPECT_EQ(references(object_of(toy.record())), 1u);
  EXPECT_EQ(references(table_of(inner.record())), 1u);
  EXPECT_EQ(Toy::live, 2);
  toy = inner = Value();
  EXPECT_EQ(Toy::live, 0);
}

TEST_F(KernelTables, Remove_ByAKeyOfTheTableItself_IsSafe) {
  put(Value("a long enough key"), 1);
  put(Value(5), 2);
  while (const Entry entry = TableWalk(table()).next()) remove(table(), *entry.key);
  EXPECT_EQ(entry_count(table()), 0);
}

TEST_F(KernelTables, Remove_NarrowsTheBounds) {
  const auto bounds = [&] {
    std::pair<int, int> found;
    HVM_HashGetBounds(table(), &found.first, &found.second);
    return found;
  };
  for (const int key : {-9, 0, 1, 2, 50, 70}) put(key, 1);
  put(Value("k"), 1);
  const std::vector<std::pair<int, std::pair<int, int>>> rows{{70, {-9, 50}}, {1, {-9, 50}}, {-9, {0, 50}},
                                                              {50, {0, 1}},   {1, {0, 0}},   {0, {0, -1}}};
  for (const auto& [key, expected] : rows) {
    remove(table(), Value(key).record());
    EXPECT_EQ(bounds(), expected) << "after " << key;
  }
  put(33, 1);
  EXPECT_EQ(bounds(), std::make_pair(33, 33));
  remove(table(), Value(33).record());
  put(-2, 1);
  put(4, 1);
  EXPECT_EQ(bounds(), std::make_pair(-2, 4));
}

TEST_F(KernelTables, Remove_AndAppend_UseTheSameMemoryAgain) {
  for (int key = 0; key < 1000; ++key) put(key, key);
  const std::int64_t pieces = counts().pieces;
  for (int round = 0; round < 5; ++round) {
    for (int n = 0; n < 1000; ++n) remove(table(), Value(999 - n).record());
    EXPECT_EQ(entry_count(table()), 0);
    for (int key = 0; key < 1000; ++key) put(key, key + round);
  }
  EXPECT_EQ(counts().pieces, pieces);
  for (int key = 0; key < 1000; ++key) ASSERT_EQ(HVM_AsInt(HVM_HashGetInt(table(), key)), key + 4);
}

TEST_F(KernelTables, Remove_OfEveryHashedKey_GivesItsMemoryBack) {
  for (int key = 0; key < 1000; ++key) put(Value(std::to_string(key)), key);
  for (int key = 0; key < 1000; ++key) remove(table(), Value(std::to_string(key)).record());
  EXPECT_EQ(counts().pieces, before_.pieces);
  EXPECT_EQ(counts().strings, before_.strings);
  put(Value("again"), 1);
  EXPECT_EQ(HVM_AsInt(read(Value("again"))), 1);
}

TEST_F(KernelTables, Remove_OfRandomKeys_AgreesWithAMap) {
  std::mt19937 random(7);
  std::map<int, int> hashed;  // negative keys
  std::vector<int> ordered;
  for (int n = 0; n < 30000; ++n) {
    const int key = -1 - static_cast<int>(random() % 300);
    switch (random() % 4) {
      case 0:
        put(next_position(table()), n);
        ordered.push_back(n);
        break;
      case 1:
        put(key, n);
        hashed[key] = n;
        break;
      case 2: {
        if (ordered.empty()) break;
        const auto at = static_cast<int>(random() % ordered.size());
        ASSERT_EQ(HVM_AsInt(remove(table(), Value(at).record()).address()), ordered[static_cast<std::size_t>(at)]);
        ordered.erase(ordered.begin() + at);
        break;
      }
      default:
        ASSERT_EQ(remove(table(), Value(key).record()).is_nil(), hashed.erase(key) == 0);
    }
    int low = 0, high = 0;
    HVM_HashGetBounds(table(), &low, &high);
    ASSERT_EQ(low, hashed.empty() ? 0 : hashed.begin()->first);
    ASSERT_EQ(high, !ordered.empty() ? static_cast<int>(ordered.size()) - 1
                    : hashed.empty() ? -1
                                     : hashed.rbegin()->first);
  }
  ASSERT_EQ(entry_count(table()), static_cast<int>(hashed.size() + ordered.size()));
  for (const auto& [key, value] : hashed) ASSERT_EQ(HVM_AsInt(HVM_HashGetInt(table(), key)), value);
  for (std::size_t n = 0; n < ordered.size(); ++n)
    ASSERT_EQ(HVM_AsInt(HVM_HashGetInt(table(), static_cast<int>(n))), ordered[n]);
}

TEST_F(KernelTables, Remove_DuringAWalk_IsSafe) {
  for (int key = 0; key < 50; ++key) put(key, key), put(Value(key + 0.5), key);
  TableWalk walk(table());
  int visited = 0;
  while (const Entry entry = walk.next()) {
    remove(table(), *entry.key);
    ++visited;
  }
  EXPECT_EQ(entry_count(table()), 100 - visited);
  EXPECT_GT(visited, 50);
}

TEST_F(KernelTables, ACopy_AfterRemovals_HoldsTheRest) {
  for (int key = 0; key < 20; ++key) put(key, key), put(Value(std::to_string(key)), key);
  for (int n = 0; n < 10; ++n) remove(table(), Value(n).record()), remove(table(), Value(std::to_string(n)).record());
  Value copy;
  HVM_DupObject(ctx(), copy.address(), table_.address(), 1);
  EXPECT_EQ(printed(copy.record()), printed(table_.record()));
  EXPECT_EQ(entry_count(table_of(copy.record())), 20);
}

TEST_F(KernelTables, NextPosition_IsTheFirstThatIsNoKey) {
  EXPECT_EQ(next_position(table()), 0);
  EXPECT_EQ(next_position(nullptr), 0);
  put(1, 1);
  EXPECT_EQ(next_position(table()), 0);
  put(0, 1);
  put(Value(2.0), 1);
  EXPECT_EQ(next_position(table()), 2);
}

// Memory is missing when 1 should move behind 0.
TEST_F(KernelTables, NextPosition_SkipsAKeyThatCouldNotMove) {
  int failures = 0;
  for (int nth = 1;; ++nth) {
    Value value = Value::table();
    HostHash* tried = table_of(value.record());
    for (int key = 4; key > 0; --key) HVM_SetInt(ctx(), HVM_HashSetInt(ctx(), tried, key), key);
    fail_allocation(nth);
    HVM_HashSetInt(ctx(), tried, 0);
    const bool has_failed = allocation_has_failed();
    fail_allocation(0);
    EXPECT_EQ(next_position(tried), find(tried, 0) ? 5 : 0);
    for (int key = 1; key < 5; ++key) EXPECT_EQ(HVM_AsInt(find(tried, key)), key);
    if (!has_failed) break;
    ++failures;
  }
  EXPECT_GT(failures, 1);
}

TEST_F(KernelTables, AppendEntry_WritesBehindTheLastPosition) {
  put(1, 1);
  put(Value("k"), 2);
  append_entry(table(), Value("first").record());
  append_entry(table(), Value(7).record());
  EXPECT_EQ(printed(table_.record()), "[\"first\", 1, 7, \"k\": 2]");
}

TEST_F(KernelTables, KeyValue_IsAnOrdinaryString) {
  put(Value(u"wide"), 1);
  put(5, 2);
  TableWalk walk(table());
  const Entry first = walk.next();
  EXPECT_EQ(first.key->tag, ValueTag::string_record);
  const Value key = key_value(*first.key);
  EXPECT_EQ(key.tag(), ValueTag::string);
  EXPECT_EQ(text_of(key.record()), "wide");
  EXPECT_EQ(printed(key_value(*walk.next().key).record()), "5");
}

TEST_F(KernelTables, FindAndSlot_TakeThreeFormsOfKeys) {
  HVM_SetInt(ctx(), slot(table(), 0), 1);
  HVM_SetInt(ctx(), slot(table(), "k"), 2);
  HVM_SetInt(ctx(), slot(table(), Value(1.5).record()), 3);
  EXPECT_EQ(HVM_AsInt(find(table(), 0)), 1);
  EXPECT_EQ(HVM_AsInt(find(table(), "k")), 2);
  EXPECT_EQ(HVM_AsInt(find(table(), Value(1.5).record())), 3);
  EXPECT_EQ(find(table(), 1), nullptr);
  EXPECT_EQ(find(nullptr, 0), nullptr);
  EXPECT_EQ(slot(nullptr, 0), nullptr);
  EXPECT_EQ(entry_count(nullptr), 0);
}

}  // namespace
}  // namespace hvm::testing
