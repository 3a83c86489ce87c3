// cli/line_editor.hpp: lines typed at a terminal

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace hvm {

/// What may stand at the cursor.
struct Completion {
  std::size_t begin = 0;             // the offset at which the word to complete begins
  std::vector<std::string> matches;  // the words that it may become, sorted
  std::string shown_after;           // what follows a match at its end, such as a bracket; of each alike
  std::string notice;                // a line that is shown where there are no matches; empty: none
};

/// Gives the completion of a line up to the cursor.
using Completer = std::function<Completion(std::string_view line)>;

/// What was typed at a prompt.
struct TypedLine {
  enum class End {
    entered,  // a line
    dropped,  // Ctrl-C
    closed    // the end of the input, or a terminal that is gone
  };
  End end = End::closed;
  std::string text = {};          // of an entered line, without its end; an entry of the history may have several lines
  bool has_replacements = false;  // U+FFFD stands in the text for what was typed and is no text in UTF-8
};

/// Reads lines with the keys of Emacs, a history, and completion by Tab. It reads UTF-8 in every locale. While a line
/// is edited Ctrl-C is a key like others; afterwards the terminal is as it was. In a window of less than ten columns
/// the terminal itself takes the lines.
class LineEditor {
 public:
  /// Throws `std::bad_alloc`.
  explicit LineEditor(Completer completer);
  ~LineEditor();
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;

  TypedLine read(const std::string& prompt);
  /// Adds an entry to the history that the arrow keys walk.
  void remember(const std::string& entry);

 private:
  class Editor;
  std::unique_ptr<Editor> editor_;
};

}  // namespace hvm
