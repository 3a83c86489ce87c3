// script/data/table_building.hpp: values and tables that are made of data
//
// The kernel says that memory is missing by nil and by null. Here that is a `std::bad_alloc`.

#pragma once

#include <string_view>

#include "kernel/kernel.hpp"

namespace hvm {

/// A new, empty table.
Value new_table(std::size_t expected_entries = 4);
/// A string with its own copy of `text`. Throws `DataError` when the text is too long for a string.
Value new_text(std::string_view text);
/// An `int` when it fits in 32 bits, otherwise an `int64`.
Value integer_of(std::int64_t x) noexcept;

/// The slot of a key, made when absent.
HostValue& entry(HostHash* table, std::size_t position);
HostValue& entry(HostHash* table, std::string_view key);
/// Puts a value under the key `position`.
void put(HostHash* table, std::size_t position, Value value);
void put(HostHash* table, std::string_view key, Value value);
/// Puts a real under the new key `position`. As `put`, but in half the time.
void put_real(HostHash* table, std::size_t position, double x);

}  // namespace hvm
