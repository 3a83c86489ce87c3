// script/syntax/parser.hpp: from the text of a script to its tree

#pragma once

#include "script/syntax/names.hpp"
#include "script/syntax/tree.hpp"

namespace hvm {

/// The maximum nesting of expressions and blocks.
inline constexpr int nesting_limit = 200;

/// Reads a whole script. Its global variables get their slots from `globals`. Throws `ScriptError`, which is
/// incomplete when the text ends where more was expected.
Program parse(const SourcePtr& source, NameTable& globals);

}  // namespace hvm
