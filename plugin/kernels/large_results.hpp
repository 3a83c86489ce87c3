// kernels/large_results.hpp: which results are written past the caches
//
// A store to a line that no cache holds first reads it from memory. Where a result is larger than the caches, that
// takes a third of the time. Stores past the caches spare it: on a Zen 4 of one read and one write by a third. They
// cost time where the caches hold the lines: in results that fit, in operands that are written over, and in pages that
// are new to the process, which the system has just filled with zeros.

#pragma once

#include <cstddef>

namespace arrayfold {

/// In bytes. Last-level caches of today's processors are about as large.
inline constexpr std::size_t least_large_result = std::size_t{32} << 20;

/// True when a result of `count` elements of R is that large.
template <class R>
constexpr bool is_large(std::size_t count) {
  return count >= least_large_result / sizeof(R);
}

/// True when the result begins with a line of the cache and lies in pages that the process has used before: then stores
/// past the caches take less time.
bool has_used_pages(const void* result, std::size_t bytes) noexcept;

}  // namespace arrayfold
