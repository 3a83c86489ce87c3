// script/data/output_file.hpp: writing a file so that a failure loses nothing

#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "script/data/descriptor.hpp"
#include "script/data/progress.hpp"

namespace hvm {

/// The path of a file that is removed at the end.
class Temporary {
 public:
  Temporary() = default;
  ~Temporary();
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;

  const std::string& path() const { return path_; }
  bool exists() const { return !path_.empty(); }
  void set(std::string path) { path_ = std::move(path); }
  /// Leaves the file where it is.
  void keep() { path_.clear(); }

 private:
  std::string path_;
};

/// Writes a file. A regular file is replaced at the end, in one step: until then the new text is in a temporary file in
/// the same folder, which is removed if anything fails. The new file keeps the mode and, where the system allows it,
/// the owner of the old one; a symbolic link stays, and the file that it names is replaced. Devices and pipes are
/// written directly. Everything that fails is a `DataError` of the form `file: cause`.
class OutputFile {
 public:
  explicit OutputFile(const std::string& path);

  void write(std::string_view text);
  /// Makes the text that was written the content of the file.
  void finish();

 private:
  void replace_later(const std::string& target, unsigned mode);
  void keep_owner_and_mode(const struct stat& old);
  void flush();
  void write_all(std::string_view text);
  [[noreturn]] void fail(const std::string& cause) const;
  [[noreturn]] void fail_by_system() const;

  std::string name_;
  Progress progress_;
  std::string target_;   // the file that is replaced
  Temporary temporary_;  // none: the file is written directly
  std::string waiting_;  // text that is not written yet
  std::uint64_t bytes_ = 0;
  Descriptor file_{-1};
};

}  // namespace hvm
