// script/explain/script_words.hpp: the words of a script, as warnings repeat them

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "script/syntax/tree.hpp"

namespace hvm {

/// The texts of the arguments in the text of a call, `f(a, [1, 2])`: `a` and `[1, 2]`. None where the text is no call.
std::vector<std::string_view> argument_texts(std::string_view call);

/// Whether the text is the name of a variable: a sentence may repeat it, since reading it twice changes nothing.
bool is_name(std::string_view text);

/// The text, or `otherwise` where it is too long for a sentence.
std::string short_text(std::string_view text, std::string_view otherwise);

/// The text of an expression, in parentheses where it has operators; empty where it is too long for a sentence.
std::string operand_text(const Expression& expression, const SourceText& source);

/// The text of a chain from its first operand to the one before `link`; null for all of it. Empty where it is too long.
std::string chain_text(const Chain& chain, const Link* link, const SourceText& source);

}  // namespace hvm
