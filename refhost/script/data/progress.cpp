// script/data/progress.cpp: how far the reading or writing of a file has come, shown at a terminal

#include "script/data/progress.hpp"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "script/stop/interruption.hpp"

namespace hvm {
namespace {

constexpr std::chrono::milliseconds before_first{1000};
constexpr std::chrono::milliseconds between{200};
constexpr std::size_t longest_name = 40;

/// The end of a name, in characters that take one place each.
std::string short_name(const std::string& name) {
  std::string shown = name.size() > longest_name ? "..." + name.substr(name.size() - longest_name) : name;
  std::replace_if(
      shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  return shown;
}

std::string amount(std::uint64_t bytes) {
  if (bytes < 10'000) return fmt::format("{} bytes", bytes);
  return fmt::format("{:.1f} MB", static_cast<double>(bytes) / 1e6);
}

/// What a terminal does not take is lost.
void put(std::string_view text) { [[maybe_unused]] const auto count = write(STDERR_FILENO, text.data(), text.size()); }

}  // namespace

Progress::Progress(const std::string& action, const std::string& file)
    : is_at_terminal_(isatty(STDERR_FILENO) == 1), next_(Clock::now() + before_first) {
  if (is_at_terminal_) front_ = fmt::format("{} {}: ", action, short_name(file));
}

Progress::~Progress() {
  if (shown_width_ == 0) return;
  char blank[160];  // not a string: memory may be missing
  const std::size_t width = std::min(shown_width_, sizeof(blank) - 2);
  blank[0] = blank[width + 1] = '\r';
  std::fill_n(blank + 1, width, ' ');
  put({blank, width + 2});
}

void Progress::bytes(std::uint64_t done, std::uint64_t total) {
  if (!is_due()) return;
  show(total > 0 ? fmt::format("{} %", std::min<std::uint64_t>(100 * done / total, 100)) : amount(done));
}

void Progress::parts(const char* what, std::uint64_t done, std::uint64_t total) {
  if (is_due()) show(fmt::format("{} {} of {}", what, done, total));
}

bool Progress::is_due() {
  obey_interruption();
  if (!is_at_terminal_) return false;
  const Clock::time_point now = Clock::now();
  if (now < next_) return false;
  next_ = now + between;
  return true;
}

void Progress::show(const std::string& state) {
  const std::string line = front_ + state;
  const std::size_t old_width = std::max(shown_width_, line.size());
  shown_width_ = line.size();
  put(fmt::format("\r{:<{}}", line, old_width));
}

}  // namespace hvm
