// cli/test_runner.hpp: every script below a directory as a test

#pragma once

#include <functional>
#include <string>

#include "cli/expectation_run.hpp"
#include "script/module/module_functions.hpp"

namespace hvm {

struct TestOptions {
  RunConditions conditions;         // of each script
  double time_limit = 0;            // seconds for each script; 0: any time
  std::function<bool()> ends_well;  // asked at the end of each script; false fails it
};

/// Runs every `*.hvm` below a directory, in the order of their names, each in a process of its own: what a script
/// leaves in the module, and a fault that ends it, do not reach the others. A script's process ends with this one.
/// Prints what failed, and at the end `N passed, N failed`. Returns whether all passed; a directory without scripts
/// does not pass, nor does one with a folder that cannot be read. Throws `OutputError`.
bool run_tests_below(const std::string& directory, const ModuleFunctions& functions, const TestOptions& options);

}  // namespace hvm
