// cli/repl.hpp: a dialogue at a terminal

#pragma once

#include "script/run/interpreter.hpp"

namespace hvm {

/// Reads inputs until the end of file, runs each, and shows the value of an expression. An open block or bracket goes
/// on in the next line. Errors are reported and end nothing. The history lasts as long as the dialogue.
void run_repl(Interpreter& interpreter);

}  // namespace hvm
