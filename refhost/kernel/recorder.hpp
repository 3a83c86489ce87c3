// kernel/recorder.hpp: how operations tell of their calls
//
// While nobody is told, that costs a load and a branch.

#pragma once

#include <type_traits>

#include "kernel/kernel.hpp"

namespace hvm::kernel {

extern CallSink* sink;

using OperandForm = RecordedOperand::Form;

/// A key, and a text of a known length, among the operands.
struct KeyOperand {
  const HostValue* record;
};
template <class Char>
struct TextOperand {
  const Char* text;
  int length;
};
struct BoundsResult {
  std::int64_t low;
  std::int64_t high;
};

inline RecordedOperand operand_of(OperandForm form, const void* pointer, std::int64_t number = 0) noexcept {
  RecordedOperand operand;
  operand.form = form;
  operand.pointer = pointer;
  operand.number = number;
  return operand;
}
inline RecordedOperand operand_of(const HostValue* x) noexcept { return operand_of(OperandForm::record, x); }
inline RecordedOperand operand_of(KeyOperand x) noexcept { return operand_of(OperandForm::key, x.record); }
inline RecordedOperand operand_of(const HostHash* x) noexcept { return operand_of(OperandForm::table, x); }
inline RecordedOperand operand_of(const HostAny* x) noexcept { return operand_of(OperandForm::object, x); }
inline RecordedOperand operand_of(const AnyMan* x) noexcept { return operand_of(OperandForm::manager, x); }
inline RecordedOperand operand_of(const void* x) noexcept { return operand_of(OperandForm::block, x); }
inline RecordedOperand operand_of(const char* x) noexcept { return operand_of(OperandForm::text, x, -1); }
inline RecordedOperand operand_of(const char16_t* x) noexcept { return operand_of(OperandForm::wide_text, x, -1); }
inline RecordedOperand operand_of(TextOperand<char> x) noexcept {
  return operand_of(OperandForm::text, x.text, x.length > 0 ? x.length : 0);
}
inline RecordedOperand operand_of(TextOperand<char16_t> x) noexcept {
  return operand_of(OperandForm::wide_text, x.text, x.length > 0 ? x.length : 0);
}
inline RecordedOperand operand_of(int x) noexcept { return operand_of(OperandForm::integer, nullptr, x); }
inline RecordedOperand operand_of(std::int64_t x) noexcept { return operand_of(OperandForm::integer, nullptr, x); }
inline RecordedOperand operand_of(arrayfold::HostBool x) noexcept {
  return operand_of(OperandForm::truth, nullptr, x != 0);
}
inline RecordedOperand operand_of(double x) noexcept {
  RecordedOperand operand = operand_of(OperandForm::real, nullptr);
  operand.real = x;
  return operand;
}
inline RecordedOperand operand_of(BoundsResult x) noexcept {
  RecordedOperand operand = operand_of(OperandForm::bounds, nullptr, x.low);
  operand.high = x.high;
  return operand;
}

/// The call of an operation, with the subject and the number of its operands.
RecordedCall call_of(const char* operation, const RecordedOperand* operands, std::size_t count) noexcept;

/// Runs `work` and tells the sink before and after. Apart from `noted`, whose fast path stays small.
template <class Work, class... Operands>
[[gnu::noinline, gnu::cold]] auto told(const char* operation, Work work, Operands... operands) {
  CallSink* const listener = sink;
  const RecordedOperand list[] = {operand_of(operands)..., {}};
  const std::size_t number = listener->begin(call_of(operation, list, sizeof...(operands)));
  if constexpr (std::is_void_v<decltype(work())>) {
    work();
    listener->end(number, {});
  } else {
    const auto result = work();
    listener->end(number, operand_of(result));
    return result;
  }
}

/// Runs `work`, which is what an operation does, and gives its result. The sink, if there is one, is told of it.
/// Captures of `work` are copies: references would keep the arguments out of registers.
template <class Work, class... Operands>
[[gnu::always_inline]] inline auto noted(const char* operation, Work work, Operands... operands) {
  if (__builtin_expect(!sink, true)) return work();
  return told(operation, work, operands...);
}

}  // namespace hvm::kernel
