// script/data/text_input.hpp: the text of a file, read in chunks

#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "script/data/descriptor.hpp"
#include "script/data/progress.hpp"

namespace hvm {

/// What `TextInput` leaves out at the beginning of a file.
inline constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

/// Whether a path means the standard input.
bool is_standard_input(std::string_view path);

/// Reads a file as UTF-8, however large it is, with memory for one chunk. A byte order mark at the beginning is left
/// out. Everything that is wrong is a `DataError`: what the system says, bytes that are no text, and a file that
/// changes while it is read. The path `-` is the standard input.
class TextInput {
 public:
  explicit TextInput(const std::string& path);

  /// The next part of the text, in whole characters; empty at the end of the file. It lasts until the next call.
  std::string_view next();

  /// Throws a `DataError` whose message is `file: cause`.
  [[noreturn]] void fail(const std::string& cause) const;
  Progress& progress() { return progress_; }

 private:
  /// The size of a regular file when it was opened, otherwise 0.
  std::uint64_t size() const;
  [[noreturn]] void fail_by_system() const;
  void leave_out_mark();
  void pass(std::string_view text);
  [[noreturn]] void fail_at(std::string_view text, std::size_t offset, const char* cause);
  bool read_more();
  void require_unchanged() const;
  void require_text(std::string_view text);

  std::string name_;
  Progress progress_;
  std::vector<char> buffer_;
  Descriptor file_;
  struct stat status_ = {};  // when it was opened
  std::size_t filled_ = 0;
  std::size_t given_ = 0;  // the front of the buffer, which the last call gave
  bool is_at_start_ = true;
  bool has_ended_ = false;
  std::uint64_t bytes_ = 0;
  std::uint64_t lines_ = 0;       // those that end before the buffer
  std::uint64_t characters_ = 0;  // before the buffer in its first line
};

}  // namespace hvm
