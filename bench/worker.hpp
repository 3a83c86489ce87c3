// bench/worker.hpp: a process that measures one module, case by case, on demand
//
// Each line of `in` is a request, and each request gets one line of `out`:
//   CASE CALLS SAMPLES   runs CASE that many times: SAMPLES samples of CALLS calls
//                        `ok` and the processor time per call of each sample, in nanoseconds; or `error` and a message
// The operands of a case stay until another case is requested.

#pragma once

#include <iosfwd>

namespace arrayfold::bench {

/// Answers requests until `in` ends. Returns the exit status of the program.
int serve(std::istream& in, std::ostream& out);

}  // namespace arrayfold::bench
