// cli/safe_text.hpp: text of unknown origin, made safe to show

#pragma once

#include <string>
#include <string_view>

namespace hvm {

/// `text` with U+FFFD in place of every control character and of every byte that is not valid UTF-8. Tabs and line
/// ends are kept. The result can be written to a terminal and, once its markup is escaped, into an XML file.
std::string safe_text(std::string_view text);

/// `text` with U+FFFD in place of every byte that is not valid UTF-8.
std::string valid_text(std::string_view text);

/// `safe_text` in one line, shortened when it is long: for error messages.
std::string briefly(std::string_view text);

/// Removes the first character of `text`, which is not empty, and returns how `safe_text` shows it.
std::string_view take_safe_character(std::string_view& text);

}  // namespace hvm
