// cli/streams.hpp: the standard output, whose failures count, and the error output, whose failures do not

#pragma once

#include <initializer_list>
#include <stdexcept>
#include <string_view>

namespace hvm {

/// The standard output cannot be written; the words say why.
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Lets lines go out as they come, so that none is lost when a module ends the process, and makes a reader that is gone
/// an error like any other instead of a signal that ends the process.
void prepare_streams() noexcept;

/// Writes text to the standard output. Throws `OutputError`.
void put(std::string_view text);

/// Writes everything that waits in the standard output. Throws `OutputError`, also for text that was lost earlier.
void finish_output();

/// Writes these texts, one behind the other, to the error output, behind what was written to the standard output. What
/// cannot be written is lost.
void put_error(std::initializer_list<std::string_view> texts) noexcept;

}  // namespace hvm
