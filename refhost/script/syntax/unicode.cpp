// script/syntax/unicode.cpp: characters in UTF-8 and UTF-16

#include "script/syntax/unicode.hpp"

#include <locale.h>
#include <wchar.h>
#include <wctype.h>

namespace hvm {
namespace {

bool is_continuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }
bool is_high_surrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool is_low_surrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

/// The length of the UTF-8 sequence at the front of `text`, which is not empty; 0 when there is no valid one.
std::size_t sequence_length(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i)
    if (!is_continuation(byte(i))) return 0;
  const bool is_overlong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xF0 && byte(1) < 0x90);
  const bool encodes_surrogate = lead == 0xED && byte(1) > 0x9F;
  const bool is_beyond = lead == 0xF4 && byte(1) > 0x8F;
  return is_overlong || encodes_surrogate || is_beyond ? 0 : length;
}

/// Unicode's property White_Space.
bool is_blank(char32_t c) {
  if (c < 0x80) return c == ' ' || (c >= '\t' && c <= '\r');
  return c == 0x85 || c == 0xA0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 ||
         c == 0x202F || c == 0x205F || c == 0x3000;
}

/// A locale with the widths and forms of all characters, independent of the user's; null when the system has none.
locale_t unicode_locale() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return locale;
}

template <class Text>
std::size_t counted_characters(Text text) {
  std::size_t count = 0;
  for (; !text.empty(); ++count) take_character(text);
  return count;
}

}  // namespace

std::size_t first_invalid_utf8(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = sequence_length(text.substr(at));
    if (length == 0) return at;
    at += length;
  }
  return std::string_view::npos;
}

char32_t take_character(std::string_view& text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t length = sequence_length(text);
  if (length <= 1) return text.remove_prefix(1), lead;
  char32_t c = lead & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) c = (c << 6) | (static_cast<unsigned char>(text[i]) & 0x3F);
  text.remove_prefix(length);
  return c;
}

char32_t take_character(std::u16string_view& text) {
  const char32_t first = text.front();
  text.remove_prefix(1);
  if (!is_high_surrogate(first) || text.empty() || !is_low_surrogate(text.front())) return first;
  const char32_t second = text.front();
  text.remove_prefix(1);
  return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

void append_utf8(std::string& text, char32_t c) {
  const auto byte = [&](char32_t value) { text += static_cast<char>(static_cast<unsigned char>(value)); };
  if (c < 0x80) return byte(c);
  if (c < 0x800) return byte(0xC0 | (c >> 6)), byte(0x80 | (c & 0x3F));
  if (c < 0x10000) return byte(0xE0 | (c >> 12)), byte(0x80 | ((c >> 6) & 0x3F)), byte(0x80 | (c & 0x3F));
  byte(0xF0 | (c >> 18)), byte(0x80 | ((c >> 12) & 0x3F)), byte(0x80 | ((c >> 6) & 0x3F)), byte(0x80 | (c & 0x3F));
}

std::size_t character_count(std::string_view text) { return counted_characters(text); }
std::size_t character_count(std::u16string_view text) { return counted_characters(text); }

namespace {

template <class Text>
std::size_t offset_in(Text text, std::size_t index) {
  Text rest = text;
  for (; index > 0 && !rest.empty(); --index) take_character(rest);
  return text.size() - rest.size();
}

}  // namespace

std::size_t character_offset(std::string_view text, std::size_t index) { return offset_in(text, index); }
std::size_t character_offset(std::u16string_view text, std::size_t index) { return offset_in(text, index); }

bool is_character_boundary(std::string_view text, std::size_t offset) {
  if (offset >= text.size() || !is_continuation(static_cast<unsigned char>(text[offset]))) return offset <= text.size();
  // A character has at most three continuation bytes.
  for (std::size_t back = 1; back <= 3 && back <= offset; ++back) {
    const std::size_t lead = offset - back;
    if (is_continuation(static_cast<unsigned char>(text[lead]))) continue;
    return sequence_length(text.substr(lead)) <= back;
  }
  return true;
}

std::size_t blank_length(std::string_view text) {
  const std::size_t length = text.empty() ? 0 : sequence_length(text);
  if (length == 0) return 0;  // a byte of no character is no blank
  return is_blank(take_character(text)) ? length : 0;
}

std::string_view trimmed(std::string_view text) {
  while (const std::size_t length = blank_length(text)) text.remove_prefix(length);
  std::size_t end = 0;  // behind the last character that is no blank
  for (std::string_view rest = text; !rest.empty();) {
    const std::size_t blank = blank_length(rest);
    blank > 0 ? rest.remove_prefix(blank) : void(take_character(rest));
    if (blank == 0) end = text.size() - rest.size();
  }
  return text.substr(0, end);
}

bool begins_with(std::string_view text, std::string_view beginning) {
  return text.substr(0, beginning.size()) == beginning;
}

namespace {

std::string with_forms(std::string_view text, wint_t (*form)(wint_t, locale_t)) {
  const locale_t locale = unicode_locale();
  std::string formed;
  formed.reserve(text.size());
  while (!text.empty()) {
    const std::string_view begin = text;
    const char32_t c = take_character(text);
    const std::string_view bytes = begin.substr(0, begin.size() - text.size());
    const bool is_letter = c < 0x80 || (bytes.size() > 1 && locale);  // a byte of no character stays
    is_letter ? append_utf8(formed, form(c, locale)) : void(formed += bytes);
  }
  return formed;
}

wint_t upper_form(wint_t c, locale_t locale) {
  if (c < 0x80) return c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c;
  return towupper_l(c, locale);
}

wint_t lower_form(wint_t c, locale_t locale) {
  if (c < 0x80) return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c;
  return towlower_l(c, locale);
}

}  // namespace

std::string upper_case(std::string_view text) { return with_forms(text, upper_form); }
std::string lower_case(std::string_view text) { return with_forms(text, lower_form); }

std::size_t display_width(char32_t c) {
  if (c < 0x80) return 1;
  // The C library's widths are those of the locale that the thread uses.
  const locale_t outer = uselocale(unicode_locale());
  const int width = wcwidth(static_cast<wchar_t>(c));
  uselocale(outer);
  return width < 0 ? 1 : static_cast<std::size_t>(width);
}

std::u16string wide_text(std::string_view text) {
  std::u16string wide;
  while (!text.empty()) {
    const char32_t c = take_character(text);
    if (c < 0x10000) {
      wide += static_cast<char16_t>(c);
    } else {
      wide += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
      wide += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
  }
  return wide;
}

}  // namespace hvm
