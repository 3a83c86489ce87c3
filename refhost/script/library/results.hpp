// script/library/results.hpp: the texts and tables that built-in functions give
//
// Where memory is missing, the kernel gives nil in place of a text or table, and no slot. These functions throw
// `std::bad_alloc` instead, so that no value is lost.

#pragma once

#include <string_view>

#include "kernel/kernel.hpp"

namespace hvm {

/// A string. Throws also when the text has more bytes than a record counts, 2147483647.
Value text_value(std::string_view text);
/// A new, empty table.
Value empty_table();
/// Stores a value under a key. Requires: `key` is a key.
void put(HostHash* table, const HostValue& key, const HostValue& value);
/// Stores a value behind the last of the keys 0, 1, 2, ...
void append_value(HostHash* table, const HostValue& value);

}  // namespace hvm
