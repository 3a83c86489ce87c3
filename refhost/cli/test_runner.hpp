// cli/test_runner.hpp: scripts as tests

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "script/module/module_functions.hpp"

namespace hvm {

struct TestOptions {
  bool has_checks = true;           // check what the module does not
  double time_limit = 0;            // seconds for each script; 0: any time
  std::function<bool()> ends_well;  // asked at the end of each script; false fails it
};

/// Runs scripts, files and every `*.hvm` below folders, in the order of their names, each in a process of its own: what
/// a script leaves in the module, and a fault that ends it, do not reach the others. A script's process ends with this
/// one. Prints what failed, and at the end `N passed, N failed`. Returns whether all passed; paths without scripts do
/// not pass, nor do those with a folder that cannot be read. Throws `OutputError`, and `FileError` for a path that
/// leads nowhere.
bool run_tests(const std::vector<std::string>& paths, const ModuleFunctions& functions, const TestOptions& options);

}  // namespace hvm
