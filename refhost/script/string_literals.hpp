// script/string_literals.hpp: text between quotation marks, its escapes, and UTF-16

#pragma once

#include <string>
#include <string_view>

#include "script/source_text.hpp"

namespace hvm {

/// Reads the literal whose opening quotation mark is at `at` and leaves `at` behind the closing one. The escapes are
/// \n \t \r \0 \\ \" \xHH (a byte) and \u{HHHH} (a character). Throws `ScriptError`.
std::string read_string(const SourceText& text, const SourcePtr& source, std::size_t& at);

/// UTF-8 as UTF-16. A byte that is no valid UTF-8 (from \xHH) stands for the character of its number.
std::u16string wide_text(std::string_view text);

/// UTF-16 as UTF-8. A lone surrogate becomes the replacement character.
std::string narrow_text(std::u16string_view text);

/// `text` as a literal of the language, with its quotation marks.
std::string string_literal(std::string_view text);

}  // namespace hvm
