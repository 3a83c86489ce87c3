// kernel/memory.cpp: blocks, their counters and failure switch, and the HVM_Malloc family

#include "kernel/memory.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

#include "kernel/failing_memory.hpp"
#include "kernel/kernel.hpp"
#include "kernel/recorder.hpp"
#include "kernel/records.hpp"
#include "kernel/state.hpp"
#include "kernel/tables.hpp"

namespace hvm {
namespace kernel {
namespace {

struct alignas(16) BlockHead {
  std::uint64_t size;
  BlockKind kind;
  std::uint32_t references;
};
static_assert(sizeof(BlockHead) == 16, "what follows the head is aligned for any type");

constexpr std::size_t largest_block = std::numeric_limits<std::ptrdiff_t>::max() - sizeof(BlockHead);

HVM_STATE std::int64_t live_blocks[block_kinds];
HVM_STATE std::size_t live_bytes;
HVM_STATE std::size_t byte_limit;  // of all blocks together; 0: none
HVM_STATE std::int64_t asked_blocks;
HVM_STATE std::int64_t blocks_until_failure;  // 0: none fails
HVM_STATE FailureExtent failure_extent;
HVM_STATE bool failures_are_suspended;
HVM_STATE bool failure_has_come;

BlockHead* head_of(void* block) noexcept { return static_cast<BlockHead*>(block) - 1; }
const BlockHead* head_of(const void* block) noexcept { return static_cast<const BlockHead*>(block) - 1; }

std::int64_t& live(BlockKind kind) noexcept { return live_blocks[static_cast<std::size_t>(kind)]; }

bool is_beyond_limit(std::size_t size) noexcept {
  return byte_limit > 0 && (live_bytes > byte_limit || size > byte_limit - live_bytes);
}

bool fails_now() noexcept {
  ++asked_blocks;
  if (blocks_until_failure == 0 || failures_are_suspended || --blocks_until_failure > 0) return false;
  failure_has_come = true;
  if (failure_extent == FailureExtent::lasting) blocks_until_failure = 1;
  return true;
}

// Every call with an array as its value makes an object, and one of an earlier call has mostly just ended. All objects
// have one size, so the next one takes the block of the last: the C library needs several times as long. Builds that
// watch memory keep none, and threads would lose theirs at their end.
#if defined(HVM_POISON) || defined(HVM_STATE_PER_THREAD) || defined(ARRAYFOLD_ADDRESS_SANITIZER)
constexpr bool keeps_spare_blocks = false;
#else
constexpr bool keeps_spare_blocks = true;
#endif
constexpr std::size_t most_spare_blocks = 64;
HVM_STATE BlockHead* spare_blocks[most_spare_blocks];
HVM_STATE std::size_t spare_count;

BlockHead* new_block(std::size_t size, BlockKind kind) noexcept {
  if (keeps_spare_blocks && kind == BlockKind::object && spare_count > 0) return spare_blocks[--spare_count];
  return static_cast<BlockHead*>(std::malloc(sizeof(BlockHead) + size));
}

// A debug build overwrites what it frees and keeps the last block, so that the use of a stale pointer is noticed.
void free_block(BlockHead* head) noexcept {
  if (keeps_spare_blocks && head->kind == BlockKind::object && spare_count < most_spare_blocks) {
    spare_blocks[spare_count++] = head;
    return;
  }
#ifdef HVM_POISON
  static HVM_STATE BlockHead* kept_back = nullptr;
  std::memset(head + 1, std::to_integer<int>(poison_byte), head->size);
  head = std::exchange(kept_back, head);
#endif
  std::free(head);
}

}  // namespace

void* allocate(std::size_t size, BlockKind kind) noexcept {
  if (fails_now() || size > largest_block || is_beyond_limit(size)) return nullptr;
  BlockHead* head = new_block(size, kind);
  if (!head) return nullptr;
  *head = {size, kind, 1};
  ++live(kind);
  live_bytes += size;
  return head + 1;
}

void* reallocate(void* block, std::size_t size) noexcept {
  void* grown = allocate(size, head_of(block)->kind);
  if (!grown) return nullptr;
  std::memcpy(grown, block, std::min(size, size_of(block)));
  give_back(block);
  return grown;
}

void give_back(void* block) noexcept {
  if (!block) return;
  BlockHead* head = head_of(block);
  if (--head->references > 0) return;
  --live(head->kind);
  live_bytes -= head->size;
  free_block(head);
}

void* hold_block(void* block) noexcept {
  if (block) ++head_of(block)->references;
  return block;
}

std::size_t size_of(const void* block) noexcept { return head_of(block)->size; }

}  // namespace kernel

// ---- Instruments

void fail_allocation(std::int64_t nth, FailureExtent extent) noexcept {
  kernel::blocks_until_failure = std::max<std::int64_t>(nth, 0);
  kernel::failure_extent = extent;
  kernel::failure_has_come = false;
}

void fail_allocation(std::int64_t nth) noexcept { fail_allocation(nth, FailureExtent::once); }

void suspend_failures(bool suspend) noexcept { kernel::failures_are_suspended = suspend; }

bool allocation_has_failed() noexcept { return kernel::failure_has_come; }
void limit_memory(std::size_t bytes) noexcept { kernel::byte_limit = bytes; }
std::int64_t allocation_count() noexcept { return kernel::asked_blocks; }

Counts counts() noexcept {
  using kernel::BlockKind;
  release(kernel::lost_record);
  Counts now;
  now.objects = kernel::live(BlockKind::object);
  now.tables = kernel::live(BlockKind::table);
  now.strings = kernel::live(BlockKind::text);
  now.blocks = kernel::live(BlockKind::memory);
  now.records = kernel::live_records;
  now.pieces = kernel::live(BlockKind::piece);
  return now;
}

bool operator==(const Counts& a, const Counts& b) noexcept {
  return a.objects == b.objects && a.tables == b.tables && a.strings == b.strings && a.blocks == b.blocks &&
         a.records == b.records && a.pieces == b.pieces;
}

bool operator!=(const Counts& a, const Counts& b) noexcept { return !(a == b); }

}  // namespace hvm

// ---- Operations

namespace arrayfold {
namespace {

using namespace hvm::kernel;

void* allocate_memory(std::int64_t size) noexcept {
  return size < 0 ? nullptr : allocate(static_cast<std::size_t>(size), BlockKind::memory);
}

void* resize_memory(void* pointer, std::int64_t size) noexcept {
  if (!pointer) return allocate_memory(size);
  return size < 0 ? nullptr : reallocate(pointer, static_cast<std::size_t>(size));
}

}  // namespace

void* HVM_Malloc(std::int64_t size) {
  return noted(
      "HVM_Malloc", [=] { return allocate_memory(size); }, size);
}

void HVM_Free(void* pointer) {
  noted(
      "HVM_Free", [=] { give_back(pointer); }, pointer);
}

// The block knows its own size, so the old size that the caller names is not needed.
void* HVM_Realloc2(void* pointer, std::int64_t new_size, std::int64_t old_size) {
  return noted(
      "HVM_Realloc2", [=] { return resize_memory(pointer, new_size); }, pointer, new_size, old_size);
}

// The caller overwrites its only pointer with the result, so a block that cannot grow is freed here.
void* HVM_ReallocNoLeak(void* pointer, std::int64_t new_size) {
  const auto resize = [=] {
    void* resized = resize_memory(pointer, new_size);
    if (!resized) give_back(pointer);
    return resized;
  };
  return noted("HVM_ReallocNoLeak", resize, pointer, new_size);
}

}  // namespace arrayfold
