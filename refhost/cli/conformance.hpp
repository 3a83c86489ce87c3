// cli/conformance.hpp: whether a module does what the table of calls and the script tests say

#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

#include "cli/expectation_run.hpp"
#include "cli/module_loader.hpp"

namespace hvm {

struct ConformanceOptions {
  RunConditions conditions;  // of each script
  double time_limit = 0;     // seconds for each call and each script; 0: any time
  std::string filter;        // a shell pattern that a part of the path of a call or a script must fit
  std::size_t jobs = 1;      // the most of them that run at the same time
  bool is_verbose = false;   // show all differences of a function
  std::string json_path;     // the report as JSON; empty for none
};

/// Loads the module in a process of its own first. Throws `ModuleError` when that process ends early or hangs; what
/// else is wrong with the module, `load_module` says.
void check_that_it_loads(const std::string& path, double time_limit);

/// Makes the calls of the table and runs the script tests, each in a process of its own, and prints what differs: calls
/// have paths such as `calls/xsum/3`, scripts such as `scripts/reduce/xsum.hvm`. At the end it names the functions that
/// differ. Returns whether nothing does; a filter that nothing fits does not pass. Throws `FileError` when the table or
/// the scripts are missing or broken, or the report cannot be made, before anything runs, and `OutputError`.
bool run_conformance(const Module& module, const ConformanceOptions& options);

}  // namespace hvm
