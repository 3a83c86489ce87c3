// cli/repl.hpp: the prompt at a terminal

#pragma once

#include "script/run/interpreter.hpp"

namespace hvm {

/// Reads inputs until the end of file, runs each, and shows the value of an expression. An open block or bracket
/// continues in the next line. Errors are reported and end only their own input. The history lasts until the end.
void run_repl(Interpreter& interpreter, bool explains);

}  // namespace hvm
