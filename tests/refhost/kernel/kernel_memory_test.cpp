// refhost/kernel/kernel_memory_test.cpp: the host's memory, its counters, and what happens when it is missing

#include <cstring>
#include <limits>
#include <new>

#include "kernel/failing_memory.hpp"
#include "kernel_fixture.hpp"

namespace hvm::testing {
namespace {

using KernelMemory = KernelTest;

constexpr std::int64_t too_much = std::numeric_limits<std::int64_t>::max();

TEST_F(KernelMemory, Malloc_GivesAlignedBlocksThatAreCounted) {
  void* block = HVM_Malloc(100);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u);
  std::memset(block, 1, 100);
  EXPECT_EQ(counts().blocks, before_.blocks + 1);
  HVM_Free(block);
  HVM_Free(nullptr);
}

TEST_F(KernelMemory, Malloc_OfImpossibleSizes_IsNull) {
  EXPECT_EQ(HVM_Malloc(-1), nullptr);
  EXPECT_EQ(HVM_Malloc(too_much), nullptr);
  void* empty = HVM_Malloc(0);
  EXPECT_NE(empty, nullptr);
  HVM_Free(empty);
}

TEST_F(KernelMemory, Reallocs_KeepTheContent) {
  auto* block = static_cast<char*>(HVM_Malloc(6));
  std::memcpy(block, "hello", 6);
  block = static_cast<char*>(HVM_Realloc2(block, 1000, 6));
  EXPECT_STREQ(block, "hello");
  block = static_cast<char*>(HVM_ReallocNoLeak(block, 3));
  EXPECT_EQ(std::string(block, 3), "hel");
  EXPECT_EQ(counts().blocks, before_.blocks + 1);
  HVM_Free(block);
}

TEST_F(KernelMemory, Reallocs_OfNull_AreNewBlocks) {
  HVM_Free(HVM_Realloc2(nullptr, 10, 0));
  HVM_Free(HVM_ReallocNoLeak(nullptr, 10));
  EXPECT_EQ(HVM_Realloc2(nullptr, -1, 0), nullptr);
  EXPECT_EQ(HVM_ReallocNoLeak(nullptr, too_much), nullptr);
}

TEST_F(KernelMemory, Realloc2_ThatFails_LeavesTheBlock) {
  auto* block = static_cast<char*>(HVM_Malloc(6));
  std::memcpy(block, "hello", 6);
  fail_allocation(1);
  EXPECT_EQ(HVM_Realloc2(block, 100, 6), nullptr);
  EXPECT_EQ(HVM_Realloc2(block, -1, 6), nullptr);
  EXPECT_STREQ(block, "hello");
  HVM_Free(block);
}

TEST_F(KernelMemory, ReallocNoLeak_ThatFails_GivesTheBlockBack) {
  void* block = HVM_Malloc(6);
  fail_allocation(1);
  EXPECT_EQ(HVM_ReallocNoLeak(block, 100), nullptr);
  EXPECT_EQ(counts(), before_);
  EXPECT_EQ(HVM_ReallocNoLeak(HVM_Malloc(6), -1), nullptr);
}

TEST_F(KernelMemory, FailAllocation_FailsTheNthOnce) {
  fail_allocation(3);
  std::vector<void*> blocks;
  for (int n = 0; n < 5; ++n) {
    EXPECT_EQ(allocation_has_failed(), n > 2);
    blocks.push_back(HVM_Malloc(8));
  }
  for (std::size_t n = 0; n < blocks.size(); ++n) EXPECT_EQ(blocks[n] == nullptr, n == 2);
  for (void* block : blocks) HVM_Free(block);
  fail_allocation(1);
  EXPECT_FALSE(allocation_has_failed());
  fail_allocation(0);
  HVM_Free(HVM_Malloc(8));
  EXPECT_FALSE(allocation_has_failed());
}

TEST_F(KernelMemory, FailAllocation_ThatLasts_FailsAllFromTheNthOn) {
  fail_allocation(2, FailureExtent::lasting);
  void* first = HVM_Malloc(8);
  EXPECT_NE(first, nullptr);
  for (int n = 0; n < 3; ++n) EXPECT_EQ(HVM_Malloc(8), nullptr);
  EXPECT_TRUE(allocation_has_failed());
  HVM_Free(first);
  fail_allocation(1);
  EXPECT_EQ(HVM_Malloc(8), nullptr);
  HVM_Free(HVM_Malloc(8));
}

TEST_F(KernelMemory, SuspendFailures_LetsAllocationsPassAndCountsNone) {
  fail_allocation(2);
  void* first = HVM_Malloc(8);
  suspend_failures(true);
  for (int n = 0; n < 3; ++n) {
    void* between = HVM_Malloc(8);
    EXPECT_NE(between, nullptr);
    HVM_Free(between);
  }
  EXPECT_FALSE(allocation_has_failed());
  suspend_failures(false);
  EXPECT_EQ(HVM_Malloc(8), nullptr);
  EXPECT_TRUE(allocation_has_failed());
  HVM_Free(first);
}

TEST_F(KernelMemory, LimitMemory_BoundsAllBlocksTogether) {
  const Value held(std::string(1000, 'x'));
  limit_memory(100);  // less than is held already
  EXPECT_EQ(HVM_Malloc(0), nullptr);
  limit_memory(0);
  void* first = HVM_Malloc(1'000'000);
  limit_memory(1'100'000);
  EXPECT_EQ(HVM_Malloc(100'000), nullptr);
  void* second = HVM_Malloc(1000);
  EXPECT_NE(second, nullptr);
  HVM_Free(first);
  first = HVM_Malloc(1'000'000);
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(HVM_Realloc2(second, 200'000, 1000), nullptr);
  limit_memory(0);
  HVM_Free(first);
  HVM_Free(second);
}

TEST_F(KernelMemory, Counts_CompareByEveryFigure) {
  Counts a, b;
  EXPECT_TRUE(a == b);
  for (std::int64_t Counts::*figure :
       {&Counts::objects, &Counts::tables, &Counts::strings, &Counts::blocks, &Counts::records, &Counts::pieces}) {
    b = a;
    b.*figure += 1;
    EXPECT_TRUE(a != b);
  }
}

TEST_F(KernelMemory, MakersWithoutMemory_ReturnNull) {
  fail_allocation(1);
  EXPECT_EQ(HVM_Malloc(8), nullptr);
  fail_allocation(1);
  EXPECT_EQ(HVM_NewObject(), nullptr);
  fail_allocation(1);
  EXPECT_EQ(HVM_NewObjects(3), nullptr);
  fail_allocation(1);
  EXPECT_EQ(HVM_NewHash(ctx(), 4), nullptr);
  fail_allocation(1);
  EXPECT_EQ(HVM_NewAny(ctx(), Toy::name, 0, 0), nullptr);
  EXPECT_EQ(counts(), before_);
}

TEST_F(KernelMemory, RecordsWithoutMemory_BecomeNilOfZeros) {
  Value text("text"), wide(u"text"), table = Value::table();
  Value value;
  const auto expect_nil = [&](auto write) {
    value = Value("held before");
    fail_allocation(1);
    write(value.address());
    EXPECT_TRUE(allocation_has_failed());
    EXPECT_TRUE(value.is_nil());
    EXPECT_EQ(load<std::uint64_t>(value.record().payload), 0u);
  };
  expect_nil([&](HostValue* v) { HVM_SetString(ctx(), v, "text"); });
  expect_nil([&](HostValue* v) { HVM_SetStringEx(ctx(), v, "text", 2); });
  expect_nil([&](HostValue* v) { HVM_SetWString(ctx(), v, u"text"); });
  expect_nil([&](HostValue* v) { HVM_SetWStringEx(ctx(), v, u"text", 2); });
  expect_nil([&](HostValue* v) { HVM_ForceTable(ctx(), v, 4); });
  expect_nil([&](HostValue* v) { HVM_DupObject(ctx(), v, text.address(), 1); });
  expect_nil([&](HostValue* v) { HVM_DupObject(ctx(), v, wide.address(), 1); });
  expect_nil([&](HostValue* v) { HVM_DupObject(ctx(), v, table.address(), 1); });
}

TEST_F(KernelMemory, ValuesWithoutMemory_ThrowBadAlloc) {
  Value table = Value::table();
  Value own("text");
  HostValue looked_at = own.record();
  looked_at.lifetime = Lifetime::none;
  const auto expect_throw = [&](auto make) {
    const Counts before = counts();
    fail_allocation(1);
    EXPECT_THROW(make(), std::bad_alloc);
    EXPECT_TRUE(allocation_has_failed());
    EXPECT_EQ(counts(), before);
  };
  expect_throw([] { Value value("text"); });
  expect_throw([] { Value value(u"text"); });
  expect_throw([] { Value::string_record("text"); });
  expect_throw([] { Value::table(); });
  expect_throw([&] { Value::sharing(looked_at); });
  expect_throw([&] { set_entry(table_of(table.record()), 0, own.record()); });
  expect_throw([&] { set_entry(table_of(table.record()), "key", own.record()); });
  expect_throw([&] { append_entry(table_of(table.record()), own.record()); });
  expect_throw([&] { set_entry(table_of(table.record()), own.record(), looked_at); });
  EXPECT_EQ(entry_count(table_of(table.record())), 0);
}

TEST_F(KernelMemory, TablesOfValues_AreWholeOrThrow) {
  const std::vector<Value> values(40, Value("text"));
  for (int nth = 1;; ++nth) {
    fail_allocation(nth);
    try {
      const Value table = Value::table_of(values);
      EXPECT_FALSE(allocation_has_failed());
      EXPECT_EQ(entry_count(table_of(table.record())), 40);
      break;
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(allocation_has_failed());
    }
  }
}

// Every allocation of building one table fails once. What could not be stored is missing, the rest is whole.
TEST_F(KernelMemory, TablesWithoutMemory_LackAnEntryAndLeakNothing) {
  int failures = 0;
  for (int nth = 1;; ++nth, ++failures) {
    Value value = Value::table();
    HostHash* table = table_of(value.record());
    fail_allocation(nth);
    for (int key = 40; key >= 0; --key) HVM_SetString(ctx(), HVM_HashSetInt(ctx(), table, key), "text");
    for (int key = 0; key < 20; ++key) {
      const std::string text = std::to_string(key);
      Value name = Value::literal(text);
      HVM_ForceTable(ctx(), HVM_HashSet(ctx(), table, name.address()), 4);
    }
    const bool has_failed = allocation_has_failed();
    fail_allocation(0);
    const int whole = 61;
    EXPECT_GE(entry_count(table), whole - 1);
    int visited = 0;
    TableWalk walk(table);
    while (const Entry entry = walk.next()) {
      EXPECT_EQ(find(table, *entry.key), entry.value);
      ++visited;
    }
    EXPECT_EQ(visited, entry_count(table));
    // Once there is memory again, the table takes what it lacked.
    for (int key = 0; key <= 40; ++key) HVM_SetInt(ctx(), HVM_HashSetInt(ctx(), table, key), key);
    for (int key = 0; key <= 40; ++key) EXPECT_EQ(HVM_AsInt(HVM_HashGetInt(table, key)), key);
    if (!has_failed) break;
  }
  EXPECT_GT(failures, 80);
}

TEST_F(KernelMemory, CopiesWithoutMemory_LackEntriesAndLeakNothing) {
  Value source = Value::table_of({Value("a"), Value::table_of({Value("b"), Value::table()}), new_toy()});
  *slot(table_of(source.record()), "key") = Value("c").give_up();
  const Counts before = counts();
  int failures = 0;
  for (bool has_failed = true; has_failed; failures += has_failed) {
    Value copy;
    fail_allocation(failures + 1);
    HVM_DupObject(ctx(), copy.address(), source.address(), 1);
    has_failed = allocation_has_failed();
    fail_allocation(0);
    EXPECT_EQ(printed(copy.record()) == printed(source.record()), !has_failed);
    copy = Value();
    EXPECT_EQ(counts(), before);
  }
  EXPECT_GT(failures, 8);
}

}  // namespace
}  // namespace hvm::testing
