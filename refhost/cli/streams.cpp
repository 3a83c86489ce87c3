// cli/streams.cpp: writing to the standard output and the error output

#include "cli/streams.hpp"

#include <signal.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

namespace hvm {
namespace {

[[noreturn]] void fail(int error) {
  const std::string reason = error != 0 ? std::generic_category().message(error) : "text was lost";
  throw OutputError("the output cannot be written: " + reason);
}

}  // namespace

void prepare_streams() noexcept {
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
  for (const std::string_view text : texts) std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace hvm
