// script/fault_report.hpp: what is said when a module ends the process
//
// A module may end the process by a processor fault, by abort or by terminate. The place of the script that called it
// is then written to the standard error, and the process ends by the same signal.

#pragma once

#include "script/source_text.hpp"

namespace hvm {

/// Marks the time in which a module runs on behalf of a place of a script. Marks nest. `source` must outlive the mark.
class InsideModule {
 public:
  InsideModule(const SourceText& source, std::size_t offset) noexcept;
  ~InsideModule();
  InsideModule(const InsideModule&) = delete;
  InsideModule& operator=(const InsideModule&) = delete;

 private:
  const char* outer_file_;
  std::size_t outer_line_;
};

/// Takes over the faults of the processor, SIGABRT and `std::terminate`, for the rest of the process.
void install_fault_report();

}  // namespace hvm
