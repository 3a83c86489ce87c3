// script/run/steps.hpp: how long a script may run

#pragma once

#include <cstdint>
#include <limits>

#include "script/library/script_end.hpp"

namespace hvm {

/// Counts the steps of an interpreter: each statement, each turn of a loop, each call.
class Steps {
 public:
  /// A limit of 0 is none.
  explicit Steps(std::uint64_t limit) : left_(limit > 0 ? limit : std::numeric_limits<std::uint64_t>::max()) {}

  /// Throws `StepLimitReached` when no step is left.
  void take() {
    if (left_ == 0) throw StepLimitReached();
    --left_;
  }

 private:
  std::uint64_t left_;
};

}  // namespace hvm
