// cli/streams.cpp: writing to the standard output and the error output

#include "cli/streams.hpp"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>
#include <utility>

#include "cli/safe_text.hpp"

namespace hvm {
namespace {

[[noreturn]] void fail(int error) {
  const std::string reason = error != 0 ? std::generic_category().message(error) : "text was lost";
  throw OutputError("the output cannot be written: " + reason);
}

/// Takes the place of a standard stream that is closed. Reading or writing it fails as before.
void keep_place(int stream, int unusable_mode) {
  if (fcntl(stream, F_GETFD) >= 0) return;
  // The lowest free number, which is this one when all below it are taken.
  [[maybe_unused]] const int taken = open("/dev/null", unusable_mode);
}

}  // namespace

void prepare_streams() noexcept {
  keep_place(STDIN_FILENO, O_WRONLY);
  keep_place(STDOUT_FILENO, O_RDONLY);
  keep_place(STDERR_FILENO, O_RDONLY);
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
}

void put(std::string_view text) {
  errno = 0;
  const std::size_t written = std::fwrite(text.data(), 1, text.size(), stdout);
  if (written < text.size() || std::ferror(stdout)) fail(errno);
}

void finish_output() {
  errno = 0;
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) fail(errno);
}

void put_error(std::initializer_list<std::string_view> texts) noexcept {
  std::fflush(stdout);
  // No memory is asked for: that it is missing may be the message.
  char safe[4096];
  std::size_t filled = 0;
  for (std::string_view text : texts)
    while (!text.empty()) {
      const std::string_view character = take_safe_character(text);
      if (filled + character.size() > sizeof(safe)) std::fwrite(safe, 1, std::exchange(filled, 0), stderr);
      filled += character.copy(safe + filled, character.size());
    }
  std::fwrite(safe, 1, filled, stderr);
}

void put_error_as_it_is(std::initializer_list<std::string_view> texts) noexcept {
  std::fflush(stdout);
  for (const std::string_view text : texts) std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace hvm
