// kernel/recorder.cpp: the list of operations that were called, for tests
//
// The list lives outside the counted memory and outside C++'s `new`, so that recording changes neither the counts nor
// the allocation that a test makes fail.

#include "kernel/recorder.hpp"

#include <cstdlib>

#include "kernel/kernel.hpp"

namespace hvm {
namespace kernel {

bool recording = false;

namespace {

struct CallList {
  RecordedCall* calls = nullptr;
  std::size_t count = 0;
  std::size_t capacity = 0;
};

CallList list;

bool has_room() noexcept {
  if (list.count < list.capacity) return true;
  const std::size_t capacity = list.capacity ? 2 * list.capacity : 256;
  auto* grown = static_cast<RecordedCall*>(std::realloc(list.calls, capacity * sizeof(RecordedCall)));
  if (!grown) return false;
  list.calls = grown;
  list.capacity = capacity;
  return true;
}

}  // namespace

// A list that cannot grow ends the process: a test that compares half a record would prove nothing.
void append_call(const char* operation, const void* subject, std::int64_t number) noexcept {
  if (!has_room()) std::abort();
  list.calls[list.count++] = {operation, subject, number};
}

}  // namespace kernel

void record_calls(bool on) noexcept {
  if (on) kernel::list.count = 0;
  kernel::recording = on;
}

std::vector<RecordedCall> recorded_calls() { return {kernel::list.calls, kernel::list.calls + kernel::list.count}; }

}  // namespace hvm
