// cli/terminal.hpp: the terminal behind the standard output

#pragma once

#include <cstddef>
#include <optional>

namespace hvm {

struct TerminalSize {
  int columns;
  int rows;
};

/// The size of the terminal that the standard output is. Nothing when it is none, or does not tell its size.
std::optional<TerminalSize> output_terminal();
/// The columns of that terminal; 80 when nobody knows.
std::size_t terminal_width();

}  // namespace hvm
