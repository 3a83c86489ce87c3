// kernels/dispatch.hpp: the loops of the processor at hand, out of those for every target
//
// Highway compiles a kernel source once per target and knows which target the processor takes. Its own dispatch calls a
// function of its library each time, which takes a third of a small operation; here the address of its answer is kept.

#pragma once

#include <atomic>
#include <cstddef>

#include <hwy/targets.h>

namespace arrayfold {

/// Highway's answer, once something asked for it. Null at load.
extern std::atomic<hwy::ChosenTarget*> kept_target;

/// Asks Highway which targets the processor supports.
hwy::ChosenTarget& choose_target();

/// The position of the target in the tables that ARRAYFOLD_LOOPS fills.
inline std::size_t target_index() {
  hwy::ChosenTarget* target = kept_target.load(std::memory_order_acquire);
  if (target == nullptr) target = &choose_target();
  return target->GetIndex();
}

/// False where Highway's own library finds no vector instructions; its sort needs them.
inline bool has_vectors() { return target_index() != HWY_MAX_DYNAMIC_TARGETS + 1; }

}  // namespace arrayfold

/// The entries of a table: what each target's namespace calls NAME, a function or a constant. The order is Highway's;
/// the first place would be that of a target not yet chosen.
#define ARRAYFOLD_LOOPS(NAME) \
  { nullptr, HWY_CHOOSE_TARGET_LIST(NAME), HWY_CHOOSE_FALLBACK(NAME) }
