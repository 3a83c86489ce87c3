// cli/processor.hpp: the vector instructions that the module's loops use on this processor

#pragma once

namespace hvm {

/// The name that Highway gives to the best of its targets that this processor has and the loops of the module with the
/// arrays are compiled for: AVX3 (AVX-512), AVX2, SSE4 or SSSE3 on x86-64, NEON on arm64, and SCALAR without any.
const char* processor_target();

}  // namespace hvm
