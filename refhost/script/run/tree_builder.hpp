// script/run/tree_builder.hpp: from a quotation's syntax to the tree that a module reads

#pragma once

#include "script/run/code.hpp"

namespace hvm {

/// Gives `code` the tree of its quotation. Throws `ScriptError` for a variable without a value where a name alone is
/// not enough.
void build_tree(Code& code, const VariableView& variables);

}  // namespace hvm
