// script/data/json_text.hpp: values as JSON

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "kernel/kernel.hpp"

namespace hvm {

/// The JSON text of a value: a table of the keys 0, 1, 2, ... is a list, and so is an empty one; a table with string
/// keys is an object; nil, NaN and infinities are null; `object_text` gives the text of an object. With `indent` every
/// entry stands on a line of its own, with so many blanks for each level. Throws `DataError` for other tables and other
/// values, for strings that are not valid UTF-8, and for tables that nest deeper than `deepest_json`. Does not recurse.
std::string json_text(const Value& value, std::optional<std::size_t> indent, const ObjectText& object_text);

/// Appends a JSON string. Requires: `text` is valid UTF-8.
void append_json_string(std::string& out, std::string_view text);

}  // namespace hvm
