// script/data/progress.hpp: how far the reading or writing of a file has come, shown at a terminal

#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace hvm {

/// If the standard error is a terminal, and the work takes more than a second, one line there says how far it has come:
/// `reading data.csv: 45 %`. The line is replaced several times a second, and cleared at the end.
class Progress {
 public:
  /// `action` is what is done with the file, such as `reading`.
  Progress(const std::string& action, const std::string& file);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Both throw `ScriptInterrupted` when the user has asked for it.

  /// So many bytes are done, of so many; 0: nobody knows of how many.
  void bytes(std::uint64_t done, std::uint64_t total);
  /// So many things are done, of so many.
  void parts(const char* what, std::uint64_t done, std::uint64_t total);

 private:
  using Clock = std::chrono::steady_clock;

  bool is_due();
  void show(const std::string& state);

  bool is_at_terminal_;
  std::string front_;
  Clock::time_point next_;
  std::size_t shown_width_ = 0;
};

}  // namespace hvm
