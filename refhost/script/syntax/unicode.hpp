// script/syntax/unicode.hpp: characters in UTF-8 and UTF-16

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace hvm {

/// The offset of the first byte that is not valid UTF-8; `std::string_view::npos` when all of it is.
std::size_t first_invalid_utf8(std::string_view text);

/// Removes the first character of `text` and returns it. A byte that begins no valid sequence (from `\xHH`) counts as
/// the character of its number. Requires: `text` is not empty.
char32_t take_character(std::string_view& text);
/// The same for UTF-16. A surrogate without its partner counts as a character.
char32_t take_character(std::u16string_view& text);

/// Appends the UTF-8 form of `c`.
void append_utf8(std::string& text, char32_t c);

/// Whether `c` is a control character: one of ASCII, or of the numbers behind it.
constexpr bool is_control(char32_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

/// The number of characters, as `take_character` counts them.
std::size_t character_count(std::string_view text);
std::size_t character_count(std::u16string_view text);

/// The offset of the character at `index`, counted from 0, in bytes or UTF-16 units; the size of the text when it has
/// fewer characters.
std::size_t character_offset(std::string_view text, std::size_t index);
std::size_t character_offset(std::u16string_view text, std::size_t index);

/// Whether a character begins at `offset` of `text`, or `text` ends there.
bool is_character_boundary(std::string_view text, std::size_t offset);

/// The bytes of the blank at the front of `text`: a space, tab, line end or another character of Unicode's white space;
/// 0 when there is none.
std::size_t blank_length(std::string_view text);
/// `text` without the blanks at both ends.
std::string_view trimmed(std::string_view text);

/// Whether `text` begins with the bytes of `beginning`.
bool begins_with(std::string_view text, std::string_view beginning);

/// Every letter that has an upper-case or a lower-case form of one character in that form. All else stays as it is.
std::string upper_case(std::string_view text);
std::string lower_case(std::string_view text);

/// The columns of a terminal that `c` takes up: 2 for wide East Asian characters, 0 for combining ones, otherwise 1.
std::size_t display_width(char32_t c);

/// UTF-8 as UTF-16.
std::u16string wide_text(std::string_view text);

}  // namespace hvm
