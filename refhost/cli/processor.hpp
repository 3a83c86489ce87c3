// cli/processor.hpp: the vector instructions that libraries on Highway use on this processor

#pragma once

namespace hvm {

/// The name that Highway gives to the best of its targets that this processor has: AVX3 (AVX-512), AVX2, SSE4 or SSSE3
/// on x86-64, NEON on arm64, and SCALAR where there is none of them. The loops of the module with the arrays are
/// compiled for these targets and choose among them in the same way.
const char* processor_target();

}  // namespace hvm
