// kernel/strings.hpp: the four forms of text that a record can hold
//
// Tags 2 and 11 point at narrow characters, tag 24 at 16-bit ones, tag 6 at a record of length and characters. The
// length of the first three stands in the last word of the record, plus one, so that 0 means that it is not recorded
// and the terminator decides: so the host reads records that others made by hand, too. Owned text lies in a block of
// its own, ends in a terminator, and is shared by references; a module frees it with HVM_Free, as the host does.

#pragma once

#include <string_view>

#include "kernel/records.hpp"

namespace hvm::kernel {

inline bool is_text(const HostValue& value) noexcept {
  return value.tag == ValueTag::string || value.tag == ValueTag::string_record ||
         value.tag == ValueTag::converted_string || value.tag == ValueTag::wide_string;
}

/// A string of tag 2 or 11 with its own copy of `text`; nil when memory is missing.
HostValue owned_string(std::string_view text, ValueTag tag = ValueTag::string) noexcept;
/// A wide string with its own copy of `text`; nil when memory is missing.
HostValue owned_string(std::u16string_view text) noexcept;
/// A string that refers to `text`.
HostValue literal_string(std::string_view text) noexcept;
HostValue literal_string(std::u16string_view text) noexcept;
/// Text of tag 6, as keys are stored; nil when memory is missing.
HostValue string_record(std::string_view text) noexcept;

/// As `hvm::text_of`; without an address where memory for the conversion of a wide string is missing.
std::string_view text_or_null(const HostValue& value) noexcept;
/// Releases the text of a temporary.
void drop_text(const HostValue& value) noexcept;
/// A record of the same text: shared when it is owned there, referred to when it is a literal.
HostValue shared_text(const HostValue& value) noexcept;
/// A record of the same tag with its own copy of the text.
HostValue copy_of_text(const HostValue& value) noexcept;

}  // namespace hvm::kernel
