// cli/repl.hpp: the prompt at a terminal

#pragma once

#include "script/run/interpreter.hpp"

namespace hvm {

/// Runs `script`, unless it is null, and then reads inputs until the end of file, runs each, and shows the value of an
/// expression. An open block or bracket continues in the next line. Errors are reported and end only their own input,
/// and so does Ctrl-C. A `ScriptExit` ends the prompt.
void run_repl(Interpreter& interpreter, const SourcePtr& script = nullptr);

}  // namespace hvm
