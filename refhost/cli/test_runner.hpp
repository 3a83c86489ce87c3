// cli/test_runner.hpp: scripts as tests

#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "cli/expectation_run.hpp"
#include "script/module/module_functions.hpp"

namespace hvm {

struct TestOptions {
  RunConditions conditions;         // of each script
  double time_limit = 0;            // seconds for each script; 0: any time
  std::function<bool()> ends_well;  // asked at the end of each script; false fails it
  std::string filter;               // a shell pattern that a part of a script's path must fit
  std::size_t jobs = 1;             // the most scripts that run at the same time
  bool is_verbose = false;          // say how each script ended, and which were the slowest
  std::string junit_path;           // the JUnit file; empty for none
};

/// Runs scripts, files and every `*.hvm` below folders, each in a process of its own: what a script leaves in the
/// module, and a fault that ends it, do not reach the others. A script's process ends with this one. Prints what failed
/// in the order of the scripts' names, as soon as this order allows, and at the end `N passed, N failed in T s`.
/// Returns whether all passed; paths without scripts do not pass, nor do those with a folder that cannot be read.
/// Throws `FileError` for a path that leads nowhere and for a JUnit file that cannot be made, before anything runs, and
/// `OutputError`.
bool run_tests(const std::vector<std::string>& paths, const ModuleFunctions& functions, const TestOptions& options);

/// Throws `FileError` if the file of a report, an empty path for none, cannot be made: at once, and not after an hour
/// of tests. `option` is the one that names it.
void check_report_path(const char* option, const std::string& path);

/// `1.3 s`, with more digits where it is short.
std::string seconds_text(double seconds);

}  // namespace hvm
