// cli/safe_text.cpp: text of unknown origin, made safe to show

#include "cli/safe_text.hpp"

#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

constexpr char32_t replacement = 0xFFFD;

/// XML leaves out two of the numbers that are no characters.
bool is_shown(char32_t c) { return c == '\t' || c == '\n' || (!is_control(c) && c != 0xFFFE && c != 0xFFFF); }

void append_safe(std::string& safe, std::string_view valid) {
  while (!valid.empty()) {
    const char32_t c = take_character(valid);
    append_utf8(safe, is_shown(c) ? c : replacement);
  }
}

}  // namespace

std::string safe_text(std::string_view text) {
  std::string safe;
  while (true) {
    const std::size_t valid = first_invalid_utf8(text);
    append_safe(safe, text.substr(0, valid));
    if (valid == std::string_view::npos) return safe;
    append_utf8(safe, replacement);
    text.remove_prefix(valid + 1);
  }
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
