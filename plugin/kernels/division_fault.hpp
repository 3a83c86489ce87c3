// kernels/division_fault.hpp: integer divisions that end the process where there is no quotient
//
// required: a division by 0, and one of the smallest integer by -1, end the process by SIGFPE. The processors of x86-64
// fault by themselves. Others give a number, and the signal is raised for them.

#pragma once

#include <limits>

namespace arrayfold {

/// Ends the process by SIGFPE, or leaves by the jump of a handler that the host has set.
[[noreturn]] void end_by_division_fault();

// The sanitizer's check is switched off, because it would report before the fault.
#define ARRAYFOLD_FAULTING __attribute__((no_sanitize("integer-divide-by-zero")))

#if defined(__x86_64__)

/// The divisor, hidden from the compiler: it would otherwise fold a division whose divisor it knows something about,
/// and remove the fault (x / x becomes 1, a division by -1 a negation).
template <class T>
inline T faulting_divisor(T, T divisor) {
  asm volatile("" : "+r"(divisor));
  return divisor;
}

#else

/// The divisor, where there is a quotient.
template <class T>
inline T faulting_divisor(T dividend, T divisor) {
  if (divisor == 0 || (divisor == -1 && dividend == std::numeric_limits<T>::min())) end_by_division_fault();
  return divisor;
}

#endif

template <class T>
ARRAYFOLD_FAULTING inline T quotient_or_fault(T dividend, T divisor) {
  return dividend / faulting_divisor(dividend, divisor);
}
template <class T>
ARRAYFOLD_FAULTING inline T remainder_or_fault(T dividend, T divisor) {
  return dividend % faulting_divisor(dividend, divisor);
}

#undef ARRAYFOLD_FAULTING

}  // namespace arrayfold
