// script/string_literals.cpp: text between quotation marks, its escapes, and UTF-16

#include "script/string_literals.hpp"

#include <fmt/format.h>

#include <charconv>

#include "script/diagnostics.hpp"

namespace hvm {
namespace {

constexpr char32_t replacement = 0xFFFD;

void append_utf8(std::string& text, char32_t c) {
  const auto byte = [&](char32_t value) { text += static_cast<char>(static_cast<unsigned char>(value)); };
  if (c < 0x80) return byte(c);
  if (c < 0x800) return byte(0xC0 | (c >> 6)), byte(0x80 | (c & 0x3F));
  if (c < 0x10000) return byte(0xE0 | (c >> 12)), byte(0x80 | ((c >> 6) & 0x3F)), byte(0x80 | (c & 0x3F));
  byte(0xF0 | (c >> 18)), byte(0x80 | ((c >> 12) & 0x3F)), byte(0x80 | ((c >> 6) & 0x3F)), byte(0x80 | (c & 0x3F));
}

bool is_surrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

class StringReader {
 public:
  StringReader(const SourceText& text, const SourcePtr& source, std::size_t& at)
      : text_(text.text()), source_(source), at_(at), begin_(at) {}

  std::string read() {
    ++at_;
    while (current() != '"') current() == '\\' ? escape() : plain();
    ++at_;
    return std::move(result_);
  }

 private:
  char current() const {
    if (at_ >= text_.size() || text_[at_] == '\n') fail("the string is not closed on its line", begin_, begin_ + 1);
    return text_[at_];
  }

  void plain() { result_ += text_[at_++]; }

  void escape() {
    const std::size_t begin = at_++;
    const char c = current();
    ++at_;
    switch (c) {
      case 'n':
        result_ += '\n';
        return;
      case 't':
        result_ += '\t';
        return;
      case 'r':
        result_ += '\r';
        return;
      case '0':
        result_ += '\0';
        return;
      case '\\':
        result_ += '\\';
        return;
      case '"':
        result_ += '"';
        return;
      case 'x':
        result_ += static_cast<char>(static_cast<unsigned char>(hexadecimal(begin, at_ + 2)));
        return;
      case 'u':
        return character(begin);
      default:
        fail("unknown escape in a string; a backslash itself is written \\\\", begin, at_);
    }
  }

  /// The digits from here to `end`, which must all be hexadecimal.
  std::uint32_t hexadecimal(std::size_t begin, std::size_t end) {
    std::uint32_t value = 0;
    if (end > text_.size()) end = text_.size();
    const auto read = std::from_chars(text_.data() + at_, text_.data() + end, value, 16);
    const bool is_whole = read.ec == std::errc{} && read.ptr == text_.data() + end;
    if (!is_whole) fail("the escape wants hexadecimal digits: \\xHH or \\u{HHHH}", begin, at_);
    at_ = end;
    return value;
  }

  void character(std::size_t begin) {
    const std::size_t close = text_.find('}', at_);
    const bool is_braced = at_ < text_.size() && text_[at_] == '{' && close != std::string_view::npos;
    if (!is_braced) fail("a character by number is written \\u{HHHH}", begin, at_);
    ++at_;
    const char32_t c = hexadecimal(begin, close);
    ++at_;
    if (c > 0x10FFFF || is_surrogate(c)) fail("there is no such character", begin, at_);
    append_utf8(result_, c);
  }

  [[noreturn]] void fail(const char* message, std::size_t begin, std::size_t end) const {
    throw ScriptError(message, source_, {begin, end});
  }

  std::string_view text_;
  const SourcePtr& source_;
  std::size_t& at_;
  std::size_t begin_;
  std::string result_;
};

/// Takes one character from the front of UTF-8; a byte that begins none counts as itself.
char32_t take_character(std::string_view& text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  const bool is_valid = first_invalid_utf8(text.substr(0, length)) == std::string::npos;
  if (length == 1 || !is_valid) return text.remove_prefix(1), lead;
  char32_t c = lead & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) c = (c << 6) | (static_cast<unsigned char>(text[i]) & 0x3F);
  text.remove_prefix(length);
  return c;
}

}  // namespace

std::string read_string(const SourceText& text, const SourcePtr& source, std::size_t& at) {
  return StringReader(text, source, at).read();
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

std::string narrow_text(std::u16string_view text) {
  std::string narrow;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    const bool is_pair =
        c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
    if (is_pair) c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00u);
    append_utf8(narrow, is_surrogate(c) ? replacement : c);
  }
  return narrow;
}

std::string string_literal(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    switch (c) {
      case '\n':
        result += "\\n";
        break;
      case '\t':
        result += "\\t";
        break;
      case '\r':
        result += "\\r";
        break;
      case '\\':
        result += "\\\\";
        break;
      case '"':
        result += "\\\"";
        break;
      default:
        if (static_cast<unsigned char>(c) < 0x20)
          result += fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
        else
          result += c;
    }
  }
  return result + '"';
}

}  // namespace hvm
