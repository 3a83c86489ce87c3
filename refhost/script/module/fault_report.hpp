// script/module/fault_report.hpp: the report when a module ends the process
//
// A module may end the process by a processor fault, by abort or by terminate. The place of the script that called it
// is then written to the standard error, and the process ends by the same signal.

#pragma once

#include "script/syntax/source_text.hpp"

namespace hvm {

/// The place of a script on whose behalf something runs.
struct RunningPlace {
  const SourceText* source = nullptr;  // null: no script is running
  std::size_t offset = 0;
  bool is_in_module = false;
};

/// Marks the time in which a place of a script runs. Marks nest. The source must outlive the mark.
class RunningMark {
 public:
  explicit RunningMark(RunningPlace place) noexcept;
  ~RunningMark();
  RunningMark(const RunningMark&) = delete;
  RunningMark& operator=(const RunningMark&) = delete;

 private:
  RunningPlace outer_;
};

/// Takes over the faults of the processor, SIGABRT and `std::terminate`, for the rest of the process.
void install_fault_report();

}  // namespace hvm
