// script/syntax/source_text.cpp: lines and columns

#include "script/syntax/source_text.hpp"

#include <algorithm>

#include "script/syntax/unicode.hpp"

namespace hvm {

SourceText::SourceText(std::string name, std::string text, Origin origin)
    : name_(std::move(name)), text_(std::move(text)), origin_(origin) {
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

}  // namespace hvm
