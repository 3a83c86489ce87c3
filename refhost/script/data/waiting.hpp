// script/data/waiting.hpp: files whose other end may keep a script waiting
//
// Pipes and devices may have nothing to read, or take nothing, for as long as they like. Nothing here waits in the
// system where the user's Ctrl-C could not end it: all that waits throws `ScriptInterrupted` when the user asks for it.

#pragma once

#include <string>

namespace hvm {

/// Opens a file for reading, without waiting for somebody who writes a pipe. Returns -1 with an error in `errno`.
int open_to_read(const std::string& path);
/// Opens a pipe or a device for writing, and waits until somebody reads the pipe. A call of `write` then fails with
/// `EAGAIN` where it would wait. Returns -1 with an error in `errno`.
int open_to_write(const std::string& path);

/// Waits until there is something to read, or the end.
void await_input(int file);
/// Waits until the file takes something, or fails.
void await_output(int file);

}  // namespace hvm
