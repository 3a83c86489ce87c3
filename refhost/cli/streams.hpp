// cli/streams.hpp: writing to the standard output and the error output
//
// Output that is lost is an error; an error message that is lost is not.

#pragma once

#include <initializer_list>
#include <stdexcept>
#include <string_view>

namespace hvm {

/// The standard output cannot be written; the message gives the reason.
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Makes each line go out at once, so that none is lost when a module ends the process. A pipe without a reader and a
/// file that may not grow become errors of writing instead of signals that end the process. A file that is opened later
/// cannot take the place of a standard stream that is closed, where `print` would write into it.
void prepare_streams() noexcept;

/// Writes text to the standard output. Throws `OutputError`.
void put(std::string_view text);

/// Writes everything that waits in the standard output. Throws `OutputError`, also for text that was lost earlier.
void finish_output();

/// Flushes the standard output, then writes these texts to the error output, control characters in them shown as
/// `safe_text` shows them: they may come from a script, a path or a file. What cannot be written is lost.
void put_error(std::initializer_list<std::string_view> texts) noexcept;
/// The same for texts that are safe, apart from their colours.
void put_error_as_it_is(std::initializer_list<std::string_view> texts) noexcept;

}  // namespace hvm
