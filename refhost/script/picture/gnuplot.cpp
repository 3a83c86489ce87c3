// script/picture/gnuplot.cpp: running gnuplot

#include "script/picture/gnuplot.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <string_view>
#include <system_error>
#include <vector>

#include "script/data/descriptor.hpp"
#include "script/picture/figure.hpp"
#include "script/stop/interruption.hpp"

namespace hvm {
namespace {

constexpr std::size_t longest_output = std::size_t{256} << 20;

[[noreturn]] void fail_by_system(const char* what) {
  throw PictureError(fmt::format("{}: {}", what, std::generic_category().message(errno)));
}

/// A file without a name that ends with its last descriptor.
Descriptor nameless_file(const char* purpose) {
  const int number = memfd_create(purpose, MFD_CLOEXEC);
  if (number < 0) fail_by_system("no room for a picture");
  return Descriptor(number);
}

std::string read_whole(const Descriptor& file) {
  std::string text;
  std::vector<char> part(std::size_t{1} << 16);
  while (true) {
    const ssize_t count = uninterrupted([&] { return read(file.number(), part.data(), part.size()); });
    if (count < 0) fail_by_system("gnuplot cannot be read");
    if (count == 0) return text;
    text.append(part.data(), static_cast<std::size_t>(count));
    if (text.size() > longest_output) throw PictureError("the picture is too large");
  }
}

/// The environment, with points in numbers and UTF-8 in texts.
class Environment {
 public:
  Environment() {
    for (char** entry = environ; *entry; ++entry)
      if (std::strncmp(*entry, "LC_ALL=", std::strlen("LC_ALL=")) != 0) entries_.push_back(*entry);
    entries_.push_back(locale_.data());
    entries_.push_back(nullptr);
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

  char** entries() { return entries_.data(); }

 private:
  std::string locale_ = "LC_ALL=C.UTF-8";
  std::vector<char*> entries_;
};

/// A running gnuplot, which is awaited or, when that does not come about, ended.
class Process {
 public:
  Process(const Descriptor& input, const Descriptor& output, const Descriptor& errors) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input.number(), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output.number(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors.number(), STDERR_FILENO);
    std::string name = "gnuplot";
    std::string no_settings = "-d";
    std::string standard_input = "-";
    char* arguments[] = {name.data(), no_settings.data(), standard_input.data(), nullptr};
    const int error = posix_spawnp(&id_, name.c_str(), &actions, nullptr, arguments, Environment().entries());
    posix_spawn_file_actions_destroy(&actions);
    if (error == 0) return;
    if (error == ENOENT || error == EACCES)
      throw PictureError("it draws with gnuplot, which is not installed (Debian's package gnuplot-nox)");
    throw PictureError(fmt::format("gnuplot does not start: {}", std::generic_category().message(error)));
  }
  ~Process() {
    if (is_awaited_) return;
    kill(id_, SIGKILL);
    await();
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  /// Whether it ended well.
  bool await() {
    is_awaited_ = true;
    int status = 0;
    return uninterrupted([&] { return waitpid(id_, &status, 0); }) == id_ && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
  }

 private:
  pid_t id_ = -1;
  bool is_awaited_ = false;
};

/// The last line that has words: gnuplot shows the command first, and its complaint last.
std::string complaint_in(const std::string& errors) {
  std::string complaint = "it does not say why";
  std::string_view rest = errors;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    if (line.find_first_not_of(" \t^\f") != std::string_view::npos) complaint = line;
  }
  return complaint;
}

}  // namespace

std::string output_of_gnuplot(const std::string& commands) {
  const Descriptor input = nameless_file("commands");
  const bool is_written = write_all(input.number(), commands);
  if (!is_written || lseek(input.number(), 0, SEEK_SET) < 0) fail_by_system("no room for a picture");
  const Descriptor errors = nameless_file("errors");
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) fail_by_system("no pipe to gnuplot");
  const Descriptor read_end(ends[0]);
  Descriptor write_end(ends[1]);
  Process gnuplot(input, write_end, errors);
  write_end.close();
  std::string output = read_whole(read_end);
  if (gnuplot.await()) return output;
  obey_interruption();  // it has ended gnuplot, too
  if (lseek(errors.number(), 0, SEEK_SET) < 0) fail_by_system("gnuplot fails");
  throw PictureError(fmt::format("gnuplot fails: {}", complaint_in(read_whole(errors))));
}

}  // namespace hvm
