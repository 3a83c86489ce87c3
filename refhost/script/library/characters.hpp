// script/library/characters.hpp: parts of strings, by character
//
// Positions count characters from 0. The part of a wide string is a wide string.

#pragma once

#include "kernel/kernel.hpp"

namespace hvm {

/// Gives the text of a string to `read`, as a view of its own kind of characters. Requires: `text` is a string.
template <class Read>
auto with_characters(const Value& text, Read read) {
  if (text.tag() == ValueTag::wide_string) return read(wide_text_of(text.record()));
  return read(text_of(text.record()));
}

/// The character at the one index, as a string. Throws `Failure` for any other number of indices, for an index that is
/// no integer, and for a position outside of the string.
Value character_at(const Value& text, ValueSpan indices);

/// The characters from `low` to before `high`. An end that is nil is the end of the string, and so is one beyond it.
/// Throws `Failure` for an end that is negative or no integer.
Value characters_between(const Value& text, const Value& low, const Value& high);

}  // namespace hvm
