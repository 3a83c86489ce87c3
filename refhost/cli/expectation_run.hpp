// cli/expectation_run.hpp: a script against the comments that say what it must print

#pragma once

#include <string>
#include <vector>

#include "script/explain/module_description.hpp"
#include "script/explain/warnings.hpp"
#include "script/module/module_functions.hpp"
#include "script/syntax/source_text.hpp"

namespace hvm {

/// How a script is run.
struct RunConditions {
  bool has_checks = true;                          // check what the module does not
  const ModuleDescription* description = nullptr;  // of the module's functions; null: there is none
  WarningMode warnings = WarningMode::on;
};

/// Runs a script statement by statement against its expectations. A statement that fails as a comment on one of its
/// lines expects is left unfinished, and the script continues behind it; any other error ends the script. A script
/// whose last line expects the error of a block that stays open runs nothing. Returns a sentence for each expectation
/// that was not met, none for a script that passed.
///
/// In the mode `error`, a warning that no comment on its line expects is such a sentence, too; it ends no statement.
std::vector<std::string> unmet_expectations(const SourcePtr& source, const ModuleFunctions& functions,
                                            const RunConditions& conditions);

}  // namespace hvm
