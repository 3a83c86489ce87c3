// cli/command_line.hpp: reading the command line of hvm

#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "cli/options.hpp"

namespace hvm {

/// A command line that hvm cannot follow. The message is a sentence that says what is wrong and what there is.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads the arguments behind the name of the program. Options end at `--`. Behind a script, or the first argument of
/// the code of -e, everything belongs to the script; options may follow the arguments of another task. An option with a
/// value is given at most once. --help hides what follows it. Throws `UsageError`.
Settings read_command_line(const std::vector<std::string>& arguments);

/// What --help says.
std::string help_text();

}  // namespace hvm
