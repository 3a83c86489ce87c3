// support/captured_output.hpp: what a piece of code writes to standard output, below all buffers

#pragma once

#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string>

namespace arrayfold::test {

/// From its making until `text` or its end, whatever is written to file descriptor 1 goes into a file.
class CapturedOutput {
 public:
  CapturedOutput() {
    std::fflush(stdout);
    if (file_ == nullptr || before_ < 0 || dup2(fileno(file_), 1) < 0) throw std::runtime_error("no capture");
  }
  ~CapturedOutput() {
    stop();
    if (before_ >= 0) close(before_);
    if (file_ != nullptr) std::fclose(file_);
  }
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  /// Ends the capture; what was written.
  std::string text() {
    stop();
    std::string written;
    std::rewind(file_);
    for (int c = std::fgetc(file_); c != EOF; c = std::fgetc(file_)) written += static_cast<char>(c);
    return written;
  }

 private:
  void stop() {
    std::fflush(stdout);
    if (before_ >= 0) dup2(before_, 1);
  }

  std::FILE* file_ = std::tmpfile();
  int before_ = dup(1);
};

}  // namespace arrayfold::test
