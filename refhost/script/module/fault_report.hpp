// script/module/fault_report.hpp: the report when a module ends the process
//
// A module may end the process by a processor fault, by abort or by terminate. The place of the script that called it
// is then written to the standard error, and the process ends by the same signal.

#pragma once

#include <atomic>

#include "script/syntax/source_text.hpp"

namespace hvm {

/// The place of a script on whose behalf something runs.
struct RunningPlace {
  const SourceText* source = nullptr;  // null: no script is running
  std::size_t offset = 0;
  bool is_in_module = false;
};

/// The innermost place that runs; null outside of scripts.
extern const RunningPlace* running_place;

/// Marks the time in which a place of a script runs. Marks nest. The source must outlive the mark.
class RunningMark {
 public:
  RunningMark(const SourceText* source, std::size_t offset, bool is_in_module) noexcept
      : place_{source, offset, is_in_module}, outer_(running_place) {
    show(&place_);
  }
  ~RunningMark() { show(outer_); }
  RunningMark(const RunningMark&) = delete;
  RunningMark& operator=(const RunningMark&) = delete;

 private:
  /// A signal handler may interrupt here, and must see a whole place.
  static void show(const RunningPlace* place) noexcept {
    std::atomic_signal_fence(std::memory_order_release);
    running_place = place;
    std::atomic_signal_fence(std::memory_order_release);
  }

  RunningPlace place_;
  const RunningPlace* outer_;
};

/// Takes over the faults of the processor, SIGABRT and `std::terminate`, for the rest of the process.
void install_fault_report();

}  // namespace hvm
