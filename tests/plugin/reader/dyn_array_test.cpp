// reader/dyn_array_test.cpp: growth, order of fields and removal

#include "reader/dyn_array.hpp"

#include "array/table_slots.hpp"

#include "support/scripted_test.hpp"

namespace arrayfold::test {
namespace {

class DynArrays : public ModuleTest {};

template <class T>
std::vector<T> elements_in(DynArray<T>& array) {
  std::vector<T> elements;
  for (std::int64_t n = 0; n < array.count(); ++n) elements.push_back(array[n]);
  return elements;
}

TEST_F(DynArrays, AKeySequence_StoresEachKindOfNumberUnderTheNextKey) {
  Value table = Value::table();
  EXPECT_EQ(operations_of([&] {
              KeySequence keys{5, hvm::table_of(table.record()), ctx()};
              keys.add(1);
              keys.add(std::int64_t{2});
              keys.add(2.5);
              EXPECT_EQ(keys.next_key, 8u);
            }),
            (Words{"HashSetInt 5", "SetInt 1", "HashSetInt 6", "SetInt64", "HashSetInt 7", "SetReal"}));
}

TEST_F(DynArrays, OfTables_BeginsAt512Bytes_AndDoubles) {
  EXPECT_EQ(operations_of([] {
              DynArray<HostHash*> tables(512);
              for (int n = 0; n < 64; ++n) tables.add(nullptr);
              EXPECT_EQ(tables.byte_capacity(), 512);
              tables.add(nullptr);
              EXPECT_EQ(tables.byte_capacity(), 1024);
              for (int n = 65; n < 129; ++n) tables.add(nullptr);
              EXPECT_EQ(tables.byte_capacity(), 2048);
            }),
            (Words{"Malloc 512", "Realloc2 1024", "Realloc2 2048", "Free"}));
}

TEST_F(DynArrays, OfCounts_BeginsAt256Bytes_AndKeepsItsElements) {
  EXPECT_EQ(operations_of([] {
              DynArray<int> counts(256);
              for (int n = 0; n < 200; ++n) counts.add(n);
              for (int n = 0; n < 200; ++n) EXPECT_EQ(counts[n], n);
              EXPECT_EQ(counts.back(), 199);
            }),
            (Words{"Malloc 256", "Realloc2 512", "Realloc2 1024", "Free"}));
}

TEST_F(DynArrays, ItsFields_StandInOrderBehindTheVirtualTable) {
  DynArray<int> array(256, true);
  array.add(1);
  array.add(2);
  const auto* bytes = static_cast<const std::byte*>(static_cast<const void*>(&array));
  EXPECT_EQ(load<std::int64_t>(bytes + 8), 256);
  EXPECT_EQ(load<std::int64_t>(bytes + 16), 2);
  EXPECT_EQ(load<const void*>(bytes + 24), &array[0]);
  EXPECT_EQ(load<bool>(bytes + 32), true);
  DynArray<int> plain(256);
  EXPECT_EQ(load<bool>(static_cast<const std::byte*>(static_cast<const void*>(&plain)) + 32), false);
}

/// Takes note of its growth.
struct Watched : DynArray<int> {
  using DynArray::DynArray;
  void grown(std::int64_t old_bytes, std::int64_t new_bytes) override {
    growths.push_back({old_bytes, new_bytes});
    seen = (*this)[count()];
  }
  std::vector<std::pair<std::int64_t, std::int64_t>> growths;
  int seen = -1;
};

TEST_F(DynArrays, TheSecondVirtualOperation_GetsTheOldAndTheNewSize) {
  for (const bool clear : {false, true}) {
    Watched array(8, clear);
    for (int n = 0; n < 5; ++n) array.add(n);
    using Growths = std::vector<std::pair<std::int64_t, std::int64_t>>;
    EXPECT_EQ(array.growths, (Growths{{8, 16}, {16, 32}}));
  }
}

TEST_F(DynArrays, WithTheFlag_NewMemoryIsZeroBeforeTheOperationIsCalled) {
  for (int round = 0; round < 8; ++round) {
    void* used = HVM_Malloc(512);
    std::memset(used, 0x5A, 512);
    HVM_Free(used);
    Watched array(256, true);
    for (int n = 1; n <= 65; ++n) array.add(n);
    EXPECT_EQ(array.seen, 0);
    for (int n = 65; n < 128; ++n) EXPECT_EQ((&array[0])[n], 0);
  }
}

TEST_F(DynArrays, Remove_MovesTheTailDown) {
  DynArray<int> array(256);
  for (int n = 0; n < 5; ++n) array.add(n);
  array.remove(1);
  EXPECT_EQ(elements_in(array), (std::vector<int>{0, 2, 3, 4}));
  array.remove(3);
  EXPECT_EQ(elements_in(array), (std::vector<int>{0, 2, 3}));
  array.remove(0);
  EXPECT_EQ(elements_in(array), (std::vector<int>{2, 3}));
}

TEST_F(DynArrays, WithoutMemory_ThrowsAndLeaksNothing) {
  hvm::fail_allocation(1);
  EXPECT_THROW(DynArray<int>(256), std::bad_alloc);
  DynArray<int> array(8);
  array.add(1);
  array.add(2);
  hvm::fail_allocation(1);
  EXPECT_THROW(array.add(3), std::bad_alloc);
  EXPECT_EQ(elements_in(array), (std::vector<int>{1, 2}));
  EXPECT_EQ(array.byte_capacity(), 8);
  hvm::fail_allocation(0);
}

}  // namespace
}  // namespace arrayfold::test
