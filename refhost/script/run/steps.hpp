// script/run/steps.hpp: how long a script may run

#pragma once

#include <atomic>
#include <cstdint>
#include <limits>

#include "script/stop/interruption.hpp"

namespace hvm {

/// Counts the steps of an interpreter: each statement, each turn of a loop, each call.
class Steps {
 public:
  /// A limit of 0 is none.
  explicit Steps(std::uint64_t limit) : left_(limit > 0 ? limit : std::numeric_limits<std::uint64_t>::max()) {}

  /// Throws `StepLimitReached` when no step is left, and `ScriptInterrupted` after `interrupt`.
  void take() {
    if (left_.load(std::memory_order_relaxed) == 0) look_why();
    left_.store(left_.load(std::memory_order_relaxed) - 1, std::memory_order_relaxed);
  }

  /// Makes no step left, so that the next one looks for an interruption: the loops of scripts pay nothing for it. A
  /// signal handler may call this. A step that is being counted at this moment may undo it; the handler asks again.
  void interrupt() noexcept {
    const std::uint64_t left = left_.load(std::memory_order_relaxed);
    if (left == 0) return;
    kept_.store(left, std::memory_order_relaxed);
    left_.store(0, std::memory_order_relaxed);
  }

 private:
  /// Gives back what an interruption has taken.
  [[gnu::noinline, gnu::cold]] void look_why() {
    const std::uint64_t kept = kept_.exchange(0, std::memory_order_relaxed);
    if (kept == 0) throw StepLimitReached();
    left_.store(kept, std::memory_order_relaxed);
    obey_interruption();
  }

  std::atomic<std::uint64_t> left_;
  std::atomic<std::uint64_t> kept_{0};
};

static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "signal handlers use it");

}  // namespace hvm
