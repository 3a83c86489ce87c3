// script/value_kinds.hpp: what kind of value a script has in its hands

#pragma once

#include <string>

#include "kernel/kernel.hpp"

namespace hvm {

/// The name that `type` gives: "int", "int64", "real", "string", "table", "nil", or the object's type.
std::string kind_name(const Value& value);
/// The kind with its article, for messages: `an int`, `a table`.
std::string kind_in_words(const Value& value);

/// Whether a condition holds: a number that is not zero; nil does not. Throws `Failure` for everything else.
bool truth(const Value& value);

/// Whether `table` is `value` or lies anywhere in it.
bool holds_table(const Value& value, const HostHash* table);

}  // namespace hvm
