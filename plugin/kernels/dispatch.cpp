// kernels/dispatch.cpp: the first question about the processor

#include "kernels/dispatch.hpp"

namespace arrayfold {

std::atomic<hwy::ChosenTarget*> kept_target{nullptr};

hwy::ChosenTarget& choose_target() {
  hwy::ChosenTarget& target = hwy::GetChosenTarget();
  if (!target.IsInitialized()) target.Update(hwy::SupportedTargets());
  // A thread that sees the address sees the answer, too.
  kept_target.store(&target, std::memory_order_release);
  return target;
}

}  // namespace arrayfold
