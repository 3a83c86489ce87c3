// script/data/descriptor.hpp: an open file of the system

#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>

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

/// Writes a text to an open file. Returns false, with an error in `errno`, when a part of it is not written.
inline bool write_all(int file, std::string_view text) noexcept {
  while (!text.empty()) {
    const ssize_t count = uninterrupted([&] { return ::write(file, text.data(), text.size()); });
    if (count < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace hvm
