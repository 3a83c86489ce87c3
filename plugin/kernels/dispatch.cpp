// kernels/dispatch.cpp: the first question about the processor

#include "kernels/dispatch.hpp"

namespace arrayfold {

std::atomic<hwy::ChosenTarget*> kept_target{nullptr};

hwy::ChosenTarget& choose_target() {
  hwy::ChosenTarget& target = hwy::GetChosenTarget();
  if (!target.IsInitialized()) target.Update(hwy::SupportedTargets());
  kept_target.store(&target, std::memory_order_relaxed);
  return target;
}

}  // namespace arrayfold
