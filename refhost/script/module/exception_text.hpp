// script/module/exception_text.hpp: what a module throws, in words

#pragma once

#include <optional>
#include <string>

namespace hvm {

/// The type of the exception that is being handled, as in C++ source. Requires: an exception is being handled.
std::string current_exception_type();
/// The words of a `std::exception`; no value for any other. Requires: an exception is being handled.
std::optional<std::string> current_exception_words();

/// The type, and of a `std::exception` its words: `std::runtime_error: some words`. Requires: an exception is being
/// handled.
std::string current_exception_text();

}  // namespace hvm
