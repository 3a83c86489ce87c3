// probe/calls.h: what the probe received in a call, in words, for the author of a host to read

#pragma once

#include <arrayfold/host.h>

#include "isolated.h"

// Each describes its arguments in the finding of the outcome, which is UNCHECKED, and BROKEN if reading them ended the
// process.
Outcome described_function(HostValue* args, int nargs);
Outcome described_method(const char* name, HostValue** args, int nargs);
Outcome described_operator(int opcode, HostValue* left, HostValue* right, HostValue* result);
