// script/syntax/source_text.hpp: the text of a script, and places in it

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace hvm {

/// A half-open range of byte offsets in a source text.
struct Span {
  std::size_t begin = 0;
  std::size_t end = 0;
};

/// From the beginning of `first` to the end of `last`.
inline Span joined(Span first, Span last) { return {first.begin, last.end}; }

/// A line and a column, both counted from 1; columns count characters, not bytes.
struct Place {
  std::size_t line = 1;
  std::size_t column = 1;
};

/// Whose text a script is: its author's, in a file or at a prompt, which shows the values of statements; or part of
/// hvm. What fails in a library is an error of the line that calls it.
enum class Origin { script, prompt, library };

/// A named text that finds lines and columns of byte offsets.
class SourceText {
 public:
  SourceText(std::string name, std::string text, Origin origin = Origin::script);

  const std::string& name() const { return name_; }
  bool is_library() const { return origin_ == Origin::library; }
  bool is_typed() const { return origin_ == Origin::prompt; }
  const std::string& text() const { return text_; }
  /// The bytes of `span`.
  std::string_view text(Span span) const;
  /// The line of a byte offset, from 1.
  std::size_t line(std::size_t offset) const;
  Place place(std::size_t offset) const;
  /// The text of a line, without its end. `line` counts from 1.
  std::string_view line_text(std::size_t line) const;

 private:
  std::string name_;
  std::string text_;
  Origin origin_;
  std::vector<std::size_t> line_starts_;
};

using SourcePtr = std::shared_ptr<const SourceText>;

}  // namespace hvm
