// self_contained/processor_targets.cpp: which targets the processor has
//
// Highway's headers declare these functions, and its library defines them. The answers here are the
// same, except that targets for which the loops are not compiled are left out.

#include <hwy/targets.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#if HWY_ARCH_X86
#include <cpuid.h>
#elif HWY_ARCH_ARM
#include <sys/auxv.h>
#endif

namespace arrayfold {
namespace {

#if HWY_ARCH_X86

/// The answer of the processor to one question of CPUID; all zeros for a question that it does not know.
struct Answer {
  unsigned a = 0, b = 0, c = 0, d = 0;

  explicit Answer(unsigned question) { __get_cpuid_count(question, 0, &a, &b, &c, &d); }
};

/// The registers that the system keeps when it switches threads.
std::uint32_t kept_registers() {
  std::uint32_t low, high;
  asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
}

std::int64_t detected_targets() {
  const Answer first(1), seventh(7), extended(0x80000001u);
  const auto has = [](unsigned word, unsigned bits) { return (word & bits) == bits; };
  std::int64_t targets = 0;

  if (!has(first.c, bit_SSSE3)) return targets;
  targets |= HWY_SSSE3;
  if (!has(first.c, bit_SSE4_1 | bit_SSE4_2 | bit_PCLMUL | bit_AES)) return targets;
  targets |= HWY_SSE4;

  constexpr std::uint32_t lower_halves = 2 | 4, masks_and_upper_halves = 0x20 | 0x40 | 0x80;
  if (!has(first.c, bit_OSXSAVE) || !has(kept_registers(), lower_halves)) return targets;
  if (!has(first.c, bit_AVX | bit_FMA | bit_F16C) || !has(seventh.b, bit_AVX2 | bit_BMI | bit_BMI2) ||
      !has(extended.c, bit_LZCNT))
    return targets;
  targets |= HWY_AVX2;

  if (has(kept_registers(), masks_and_upper_halves) &&
      has(seventh.b, bit_AVX512F | bit_AVX512VL | bit_AVX512DQ | bit_AVX512BW | bit_AVX512CD))
    targets |= HWY_AVX3;
  return targets;
}

#elif HWY_ARCH_ARM

// The headers compile the target with the cryptographic extension.
std::int64_t detected_targets() {
  constexpr unsigned long with_aes = 1 << 3;
  return (getauxval(AT_HWCAP) & with_aes) != 0 ? HWY_NEON : 0;
}

#else

std::int64_t detected_targets() { return 0; }

#endif

}  // namespace
}  // namespace arrayfold

namespace hwy {

std::int64_t SupportedTargets() { return arrayfold::detected_targets() | HWY_SCALAR; }

ChosenTarget& GetChosenTarget() {
  static ChosenTarget chosen;  // a constant until it is updated: no guard, no initialiser
  return chosen;
}

// The headers call it when an assertion fails.
void Abort(const char* file, int line, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  std::fprintf(stderr, "%s:%d: ", file, line);
  std::vfprintf(stderr, format, arguments);
  std::fputc('\n', stderr);
  va_end(arguments);
  std::abort();
}

}  // namespace hwy
