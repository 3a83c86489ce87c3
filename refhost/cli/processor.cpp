// cli/processor.cpp: asking Highway

#include "cli/processor.hpp"

#include <hwy/targets.h>

#include <cstdint>

namespace hvm {

const char* processor_target() {
  const std::int64_t usable = HWY_SUPPORTED_TARGETS & HWY_TARGETS;
  return hwy::TargetName(usable & -usable);  // the lower the bit, the better the target
}

}  // namespace hvm
