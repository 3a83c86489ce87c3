// cli/terminal.cpp: the terminal behind the standard output

#include "cli/terminal.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

namespace hvm {

std::optional<TerminalSize> output_terminal() {
  winsize window = {};
  const bool is_known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_col > 0 && window.ws_row > 0;
  if (!is_known) return std::nullopt;
  return TerminalSize{window.ws_col, window.ws_row};
}

}  // namespace hvm
