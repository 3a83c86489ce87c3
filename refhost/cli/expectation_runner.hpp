// cli/expectation_runner.hpp: scripts that say in their comments what they must print

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "script/module/module_functions.hpp"
#include "script/syntax/source_text.hpp"

namespace hvm {

/// Runs a script statement by statement against its expectations. A statement that fails as a comment on one of its
/// lines expects is given up, and the script goes on after it; any other error ends the script. The result says in a
/// sentence each what was not met; it is empty for a script that passed.
std::vector<std::string> run_expectations(const SourcePtr& source, const ModuleFunctions& functions, bool has_guards);

/// Runs every `*.hvm` below a directory, in the order of their names, each in a process of its own: what a script
/// leaves in the module, and a fault that ends it, are none of the others'. `ends_well` is asked in that process at its
/// end, and false fails the script. Prints what failed, and at the end `N passed, N failed`. True when all passed; a
/// directory without scripts does not pass.
bool run_expectations_below(const std::string& directory, const ModuleFunctions& functions, bool has_guards,
                            const std::function<bool()>& ends_well);

}  // namespace hvm
