// cli/style.hpp: how text looks at a terminal

#pragma once

#include <string>

namespace hvm {

/// Whether a stream is a terminal that takes control sequences.
bool is_capable_terminal(int descriptor);

/// Colours text where the terminal takes colours and the user has not switched them off by `NO_COLOR`.
class Style {
 public:
  /// That of a stream, such as the standard output.
  static Style of_stream(int descriptor);

  bool has_colours() const { return has_colours_; }
  std::string faint(const std::string& text) const { return in_form("2", text); }
  std::string strong(const std::string& text) const { return in_form("1", text); }
  /// An error report or warning with its first word, `error:` or `warning:`, in colour.
  std::string report(const std::string& text) const;

 private:
  explicit Style(bool has_colours) : has_colours_(has_colours) {}

  std::string in_form(const char* code, const std::string& text) const {
    return has_colours_ ? std::string("\x1b[") + code + "m" + text + "\x1b[0m" : text;
  }

  bool has_colours_;
};

}  // namespace hvm
