// kernel/recorder.cpp: who is told of operations, and the list of them, for tests
//
// The list lives outside the counted memory and outside C++'s `new`, so that recording changes neither the counts nor
// the allocation that a test makes fail.

#include "kernel/recorder.hpp"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace hvm {
namespace kernel {

CallSink* sink = nullptr;

RecordedCall call_of(const char* operation, const RecordedOperand* operands, std::size_t count) noexcept {
  RecordedCall call{operation, nullptr, 0, std::min(count, RecordedCall::most_operands), {}, {}};
  std::copy_n(operands, call.operand_count, call.operands);
  for (std::size_t i = call.operand_count; i-- > 0;) {
    const RecordedOperand& operand = call.operands[i];
    if (operand.form == OperandForm::integer && operand.number != 0) call.number = operand.number;
  }
  const bool is_about_first = call.operand_count > 0 && operands[0].form != OperandForm::integer;
  if (is_about_first) call.subject = operands[0].pointer;
  return call;
}

namespace {

class CallList : public CallSink {
 public:
  std::size_t begin(const RecordedCall& call) noexcept override {
    require_room();
    calls_[count_] = call;
    return count_++;
  }

  // A start in between has emptied the list.
  void end(std::size_t number, const RecordedOperand& result) noexcept override {
    if (number < count_) calls_[number].result = result;
  }

  void clear() noexcept { count_ = 0; }
  std::vector<RecordedCall> calls() const { return {calls_, calls_ + count_}; }

 private:
  // A list that cannot grow ends the process: a test that compares half a record would prove nothing.
  void require_room() noexcept {
    if (count_ < capacity_) return;
    capacity_ = capacity_ ? 2 * capacity_ : 256;
    calls_ = static_cast<RecordedCall*>(std::realloc(calls_, capacity_ * sizeof(RecordedCall)));
    if (!calls_) std::abort();
  }

  RecordedCall* calls_ = nullptr;
  std::size_t count_ = 0;
  std::size_t capacity_ = 0;
};

CallList call_list;

}  // namespace
}  // namespace kernel

CallSink* send_calls_to(CallSink* next) noexcept { return std::exchange(kernel::sink, next); }

void record_calls(bool on) noexcept {
  if (on) kernel::call_list.clear();
  send_calls_to(on ? &kernel::call_list : nullptr);
}

std::vector<RecordedCall> recorded_calls() { return kernel::call_list.calls(); }

}  // namespace hvm
