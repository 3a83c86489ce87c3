// script/data/descriptor.hpp: an open file of the system

#pragma once

#include <unistd.h>

#include <cerrno>

namespace hvm {

/// Owns a file descriptor. That of a standard stream it leaves open.
class Descriptor {
 public:
  explicit Descriptor(int number) noexcept : number_(number) {}
  ~Descriptor() { close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const noexcept { return number_; }
  /// Closes its file and owns another one.
  void take(int number) noexcept {
    close();
    number_ = number;
  }
  bool is_open() const noexcept { return number_ >= 0; }
  /// Returns 0, or -1 with an error in `errno`.
  int close() noexcept {
    const int number = number_;
    number_ = -1;
    return number > STDERR_FILENO ? ::close(number) : 0;
  }

 private:
  int number_;
};

/// Calls until no signal interrupts the call.
template <class Call>
auto uninterrupted(Call call) noexcept {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

}  // namespace hvm
