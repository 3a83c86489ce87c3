// cli/kept_memory.hpp: memory of freed arrays that stays with the process

#pragma once

#include <cstddef>

namespace hvm {

/// What is kept unless a command line says something else, in MiB.
inline constexpr std::size_t kept_memory_by_default = 256;

/// Lets the C library serve the next array from blocks that were freed, up to so many MiB, where it would give each
/// large block back to the system. Pages that the process has already need not be made again, which halves the time of
/// operations on large arrays. 0 leaves the C library's own bounds.
void keep_freed_memory(std::size_t mebibytes) noexcept;

}  // namespace hvm
