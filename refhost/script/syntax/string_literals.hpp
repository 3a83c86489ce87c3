// script/syntax/string_literals.hpp: text between quotation marks, and its escapes

#pragma once

#include <string>
#include <string_view>

#include "script/syntax/source_text.hpp"

namespace hvm {

/// Reads the literal whose opening quotation mark is at `at` and leaves `at` behind the closing one. The escapes are
/// \n \t \r \0 \\ \" \xHH (a byte) and \u{HHHH} (a character). Throws `ScriptError`.
std::string read_string(const SourceText& text, const SourcePtr& source, std::size_t& at);

/// `text` as a literal of the language, with its quotation marks.
std::string string_literal(std::string_view text);
/// The same of the first characters of `text`, for messages.
std::string short_literal(std::string_view text);

}  // namespace hvm
