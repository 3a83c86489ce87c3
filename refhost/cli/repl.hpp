// cli/repl.hpp: the prompt at a terminal

#pragma once

#include <string>
#include <vector>

#include "script/run/interpreter.hpp"

namespace hvm {

struct PromptSettings {
  SourcePtr script = nullptr;                      // runs before the first input; null: none
  std::vector<std::string> arguments = {};         // of the script, which has them in `args`
  bool explains = false;                           // tell the whole story with every error
  const ModuleDescription* description = nullptr;  // of the module's functions; null: there is none
};

/// Runs the script, if there is one, and then reads inputs until the end of file, runs each, and shows the value of an
/// expression. An open block or bracket continues in the next line. Errors are reported and end only their own input,
/// and so does Ctrl-C. A `ScriptExit` ends the prompt.
void run_repl(Interpreter& interpreter, const PromptSettings& settings);

}  // namespace hvm
