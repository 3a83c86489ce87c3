// cli/completions.hpp: what a word at the prompt may become

#pragma once

#include <string_view>

#include "cli/line_editor.hpp"
#include "script/run/interpreter.hpp"

namespace hvm {

/// The completion at the end of `line`: a variable, function or keyword, behind a point a method, between quotation
/// marks a file, behind `use` also a library, at the beginning also a command of the prompt.
Completion completion_of(std::string_view line, const Interpreter& interpreter);

}  // namespace hvm
