// script/source_text.cpp: lines, columns and the validity of UTF-8

#include "script/source_text.hpp"

#include <algorithm>

namespace hvm {
namespace {

bool is_continuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

/// The length of the UTF-8 sequence at `text`, which is not empty; 0 when it is none.
std::size_t sequence_length(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i)
    if (!is_continuation(byte(i))) return 0;
  const bool is_overlong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xF0 && byte(1) < 0x90);
  const bool is_surrogate = lead == 0xED && byte(1) > 0x9F;
  const bool is_beyond = lead == 0xF4 && byte(1) > 0x8F;
  return is_overlong || is_surrogate || is_beyond ? 0 : length;
}

}  // namespace

SourceText::SourceText(std::string name, std::string text) : name_(std::move(name)), text_(std::move(text)) {
  line_starts_.push_back(0);
  for (std::size_t i = 0; i < text_.size(); ++i)
    if (text_[i] == '\n') line_starts_.push_back(i + 1);
}

std::string_view SourceText::text(Span span) const {
  const std::size_t begin = std::min(span.begin, text_.size());
  return std::string_view(text_).substr(begin, span.end > begin ? span.end - begin : 0);
}

std::size_t SourceText::line(std::size_t offset) const {
  const auto after = std::upper_bound(line_starts_.begin(), line_starts_.end(), offset);
  return static_cast<std::size_t>(after - line_starts_.begin());
}

Place SourceText::place(std::size_t offset) const {
  const std::size_t at = line(offset);
  const std::size_t start = line_starts_[at - 1];
  return {at, character_count(text({start, std::max(start, offset)})) + 1};
}

std::string_view SourceText::line_text(std::size_t line) const {
  if (line == 0 || line > line_starts_.size()) return {};
  const std::size_t begin = line_starts_[line - 1];
  std::size_t end = std::min(text_.find('\n', begin), text_.size());
  if (end > begin && text_[end - 1] == '\r') --end;
  return text({begin, end});
}

std::size_t first_invalid_utf8(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = sequence_length(text.substr(at));
    if (length == 0) return at;
    at += length;
  }
  return std::string::npos;
}

std::size_t character_count(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return !is_continuation(static_cast<unsigned char>(c)); }));
}

}  // namespace hvm
