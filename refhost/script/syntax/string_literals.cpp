// script/syntax/string_literals.cpp: text between quotation marks, and its escapes

#include "script/syntax/string_literals.hpp"

#include <fmt/format.h>

#include <charconv>

#include "script/syntax/diagnostics.hpp"
#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

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
    if (!is_whole) fail("the escape needs hexadecimal digits: \\xHH or \\u{HHHH}", begin, at_);
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

}  // namespace

std::string read_string(const SourceText& text, const SourcePtr& source, std::size_t& at) {
  return StringReader(text, source, at).read();
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

std::string short_literal(std::string_view text) {
  constexpr std::size_t longest = 40;
  const std::size_t end = character_offset(text, longest);
  return string_literal(text.substr(0, end)) + (end < text.size() ? "..." : "");
}

}  // namespace hvm
