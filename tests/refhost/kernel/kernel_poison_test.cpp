// refhost/kernel/kernel_poison_test.cpp: a kernel library that overwrites what it frees, as debug builds do

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "kernel_fixture.hpp"

namespace hvm::testing {
namespace {

using KernelPoison = KernelTest;

/// How many of the `size` bytes are those of freed memory.
std::size_t poisoned(const void* block, std::size_t size) {
  const auto* bytes = static_cast<const std::byte*>(block);
  return static_cast<std::size_t>(std::count(bytes, bytes + size, poison_byte));
}

TEST_F(KernelPoison, AFreedRecord_IsOverwritten) {
  HostValue* record = HVM_NewObject();
  HVM_SetInt(ctx(), record, 5);
  HVM_FreeObj(ctx(), record);
  EXPECT_EQ(poisoned(record, sizeof(HostValue)), sizeof(HostValue));
}

TEST_F(KernelPoison, AFreedBlock_IsOverwrittenToItsEnd) {
  void* block = HVM_Malloc(100);
  std::memset(block, 1, 100);
  HVM_Free(block);
  EXPECT_EQ(poisoned(block, 100), 100u);
}

TEST_F(KernelPoison, ABlockInUse_IsNot) {
  void* block = HVM_Malloc(100);
  std::memset(block, 1, 100);
  HVM_Free(HVM_Malloc(100));
  EXPECT_EQ(poisoned(block, 100), 0u);
  HVM_Free(block);
}

}  // namespace
}  // namespace hvm::testing
