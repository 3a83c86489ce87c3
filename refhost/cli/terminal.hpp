// cli/terminal.hpp: the terminal behind the standard output

#pragma once

#include <optional>

namespace hvm {

struct TerminalSize {
  int columns;
  int rows;
};

/// The size of the terminal that the standard output is. Nothing when it is none, or does not tell its size.
std::optional<TerminalSize> output_terminal();

}  // namespace hvm
