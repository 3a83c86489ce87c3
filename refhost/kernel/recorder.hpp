// kernel/recorder.hpp: how operations record their calls
//
// While the recorder is off, that costs a load and a branch.

#pragma once

#include <cstdint>

namespace hvm::kernel {

extern bool recording;

void append_call(const char* operation, const void* subject, std::int64_t number) noexcept;

inline void note(const char* operation, const void* subject = nullptr, std::int64_t number = 0) noexcept {
  if (__builtin_expect(recording, false)) append_call(operation, subject, number);
}

}  // namespace hvm::kernel
