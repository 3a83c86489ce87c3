// cli/processor.cpp: asking Highway

#include "cli/processor.hpp"

#include <hwy/targets.h>

#include <cstdint>

namespace hvm {
namespace {

/// Highway knows these, too, but the loops are not compiled for them.
constexpr std::int64_t unused_targets = HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128;

}  // namespace

const char* processor_target() {
  const std::int64_t usable = hwy::SupportedTargets() & ~unused_targets;
  const std::int64_t best = usable & -usable;  // the lower the bit, the better the target
  // Highway has two targets without vector instructions, and the compiler decides which one it uses.
  const bool has_vectors = best != 0 && best != HWY_SCALAR && best != HWY_EMU128;
  return hwy::TargetName(has_vectors ? best : HWY_SCALAR);
}

}  // namespace hvm
