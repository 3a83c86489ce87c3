// script/data/waiting.cpp: files whose other end may keep a script waiting

#include "script/data/waiting.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include <cerrno>

#include "script/data/descriptor.hpp"
#include "script/stop/interruption.hpp"

namespace hvm {
namespace {

// While the user waits for the end, a signal comes again and again, so that none is missed.
void await(int file, short events) {
  obey_interruption();
  pollfd waiting{file, events, 0};
  while (poll(&waiting, 1, -1) < 0 && errno == EINTR) obey_interruption();
}

bool is_pipe(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
}

}  // namespace

int open_to_read(const std::string& path) {
  const int file = uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY); });
  if (file >= 0) fcntl(file, F_SETFL, fcntl(file, F_GETFL) & ~O_NONBLOCK);
  return file;
}

int open_to_write(const std::string& path) {
  constexpr int milliseconds_between_attempts = 20;
  while (true) {
    const int file = uninterrupted([&] { return open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY); });
    if (file >= 0 || errno != ENXIO || !is_pipe(path)) return file;
    poll(nullptr, 0, milliseconds_between_attempts);
    obey_interruption();
  }
}

void await_input(int file) { await(file, POLLIN); }

void await_output(int file) { await(file, POLLOUT); }

}  // namespace hvm
