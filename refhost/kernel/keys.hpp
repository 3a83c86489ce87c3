// kernel/keys.hpp: the keys of tables, as records and as they are looked up
//
// A key is an integer, a real or a text. Integers of 64 bits that fit into 32 are the integer key; all forms of text
// are the key of their UTF-8 characters. A real is another key than the integer of the same value. Nothing else is a
// key.

#pragma once

#include <cstdint>
#include <string_view>

#include "kernel/kernel.hpp"

namespace hvm::kernel {

/// A key as it is looked up. The text is not owned.
struct Key {
  ValueTag tag = ValueTag::nil;  // integer, integer64, real, string_record; nil for what is not a key
  std::uint32_t hash = 0;
  std::uint64_t bits = 0;  // the integer, or the bits of the real
  std::string_view text;

  bool exists() const noexcept { return tag != ValueTag::nil; }
  bool is_integer() const noexcept { return tag == ValueTag::integer; }
  std::int32_t integer() const noexcept { return static_cast<std::int32_t>(bits); }
};

Key key_of(std::int64_t x) noexcept;
Key key_of(double x) noexcept;
Key key_of(std::string_view text) noexcept;
Key key_of(const HostValue& record) noexcept;

/// True when the key record of an item is this key.
bool is_same(const HostValue& record, const Key& key) noexcept;
/// The key as an item stores it, with its own text; nil when memory is missing.
HostValue key_record(const Key& key) noexcept;

}  // namespace hvm::kernel
