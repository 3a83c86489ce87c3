// kernel/memory.hpp: the one place from which the host's memory comes
//
// Every block carries a head with its size, its kind and its references; the kinds are what the counters count. A block
// is allocated, made to fail and poisoned here alone, so the failure switch reaches all of them. No operation uses
// C++'s own `new`: a test that makes it fail tests the module, not the host.

#pragma once

#include <cstddef>
#include <cstdint>

namespace hvm::kernel {

enum class BlockKind : std::uint32_t { memory, text, records, piece, table, object };
inline constexpr std::size_t block_kinds = 6;

/// A block of `size` bytes at an address fit for any type, with one reference; null when memory is missing.
void* allocate(std::size_t size, BlockKind kind) noexcept;
/// A block of the new size with the content of the old one as far as it fits; the old one is freed. Null when memory is
/// missing; the old one then stays.
void* reallocate(void* block, std::size_t size) noexcept;
/// Drops a reference, and frees the block with the last one. Null is allowed.
void give_back(void* block) noexcept;
/// Adds a reference; null stays null.
void* hold_block(void* block) noexcept;
/// The size with which a block was allocated.
std::size_t size_of(const void* block) noexcept;

}  // namespace hvm::kernel
