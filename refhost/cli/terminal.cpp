// cli/terminal.cpp: the terminal behind the standard output

#include "cli/terminal.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

namespace hvm {
namespace {

/// What is not known is 0.
winsize output_window() {
  winsize window = {};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) == 0 ? window : winsize{};
}

}  // namespace

std::optional<TerminalSize> output_terminal() {
  const winsize window = output_window();
  if (window.ws_col == 0 || window.ws_row == 0) return std::nullopt;
  return TerminalSize{window.ws_col, window.ws_row};
}

std::size_t terminal_width() {
  constexpr std::size_t usual = 80;
  const winsize window = output_window();
  return window.ws_col > 0 ? window.ws_col : usual;
}

}  // namespace hvm
