// cli/shell_completions.hpp: files with which shells complete command lines of hvm

#pragma once

#include <string>

namespace hvm {

/// The file for bash.
std::string bash_completion();
/// The file for zsh.
std::string zsh_completion();

}  // namespace hvm
