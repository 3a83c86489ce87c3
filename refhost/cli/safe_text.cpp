// cli/safe_text.cpp: text of unknown origin, made safe to show

#include "cli/safe_text.hpp"

#include <algorithm>

#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";  // U+FFFD

/// XML leaves out two of the numbers that are no characters.
bool is_shown(char32_t c) { return c == '\t' || c == '\n' || (!is_control(c) && c != 0xFFFE && c != 0xFFFF); }

}  // namespace

std::string_view take_safe_character(std::string_view& text) {
  const std::string_view whole = text;
  const char32_t c = take_character(text);
  const std::string_view bytes = whole.substr(0, whole.size() - text.size());
  const bool is_valid = c < 0x80 || bytes.size() > 1;
  return is_valid && is_shown(c) ? bytes : replacement;
}

std::string safe_text(std::string_view text) {
  std::string safe;
  while (!text.empty()) safe += take_safe_character(text);
  return safe;
}

std::string valid_text(std::string_view text) {
  std::string valid;
  while (!text.empty()) {
    const std::size_t end = std::min(first_invalid_utf8(text), text.size());
    valid += text.substr(0, end);
    text.remove_prefix(end);
    if (text.empty()) break;
    valid += replacement;
    text.remove_prefix(1);
  }
  return valid;
}

std::string briefly(std::string_view text) {
  constexpr std::size_t most_characters = 60;
  std::string safe = safe_text(text);
  for (char& c : safe)
    if (c == '\t' || c == '\n') c = ' ';
  const std::size_t end = character_offset(safe, most_characters);
  return end < safe.size() ? safe.substr(0, end) + "..." : safe;
}

}  // namespace hvm
