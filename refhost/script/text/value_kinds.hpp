// script/text/value_kinds.hpp: the names of the kinds of values

#pragma once

#include <string>

#include "kernel/kernel.hpp"

namespace hvm {

/// The name that `type` gives: "int", "int64", "real", "string", "table", "nil", or the object's type.
std::string kind_name(const Value& value);
/// A noun with its article, `an int`.
std::string with_article(const std::string& noun);
/// The kind with its article, for messages: `an int`, `a table`.
std::string kind_in_words(const Value& value);

}  // namespace hvm
