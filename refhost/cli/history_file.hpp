// cli/history_file.hpp: the inputs of earlier sessions

#pragma once

#include <string>
#include <vector>

namespace hvm {

/// The path of the history: what `HVM_HISTORY` names, otherwise `$XDG_STATE_HOME/hvm/history` or
/// `~/.local/state/hvm/history`; empty when there is none, and for `/dev/null`.
std::string history_path();

/// A file with an input in each line. There `\n` stands for a line end, `\\` for a backslash, and `\xHH` for a byte of
/// another control character.
/// Only its owner can read it. Sessions that run at the same time add to it one after the other.
class HistoryFile {
 public:
  /// An empty path is no history.
  explicit HistoryFile(std::string path) : path_(std::move(path)) {}

  /// The latest inputs, oldest first. When there are far more in the file, it keeps only these.
  std::vector<std::string> read();
  /// Adds an input. One that is very long is left out.
  void add(const std::string& input);
  /// What is wrong with the file, as a sentence; empty when nothing is. It is told once.
  std::string complaint();

 private:
  void fail();

  std::string path_;
  std::string complaint_;
  bool has_failed_ = false;
};

}  // namespace hvm
