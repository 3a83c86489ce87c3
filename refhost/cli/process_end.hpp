// cli/process_end.hpp: the end of the process

#pragma once

namespace hvm {

/// Ends the process with a status. Under a limit of memory the libraries are not shut down: a thread of BLAS that found
/// no memory for its buffer asks for it again and again, and the shutdown would wait for this thread.
[[noreturn]] void end_process(int status);

}  // namespace hvm
