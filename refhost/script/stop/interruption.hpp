// script/stop/interruption.hpp: a user's request to end what runs
//
// A script looks for the request at its steps. A built-in function that may take long looks for it on its way. A call
// of the module cannot be ended.

#pragma once

#include <atomic>

#include "script/stop/script_end.hpp"

namespace hvm {

/// Whether a user waits for the end of what runs. A signal handler may set it.
inline std::atomic<bool> is_interruption_requested{false};

/// Throws `ScriptInterrupted` when the user has asked for it. The request is done then.
inline void obey_interruption() {
  if (!is_interruption_requested.load(std::memory_order_relaxed)) return;
  is_interruption_requested.store(false, std::memory_order_relaxed);
  throw ScriptInterrupted();
}

}  // namespace hvm
