// script/data/json_values.hpp: JSON as values

#pragma once

#include <string_view>

#include "kernel/kernel.hpp"

namespace hvm {

/// The value of a JSON text: an object is a table with string keys, where the last of equal keys counts; a list is a
/// table 0, 1, 2, ...; true and false are 1 and 0; null is nil; a number without a fraction and an exponent is an
/// integer, or a real when it needs more than 64 bits. Throws `DataError` with line and column, also for a text that
/// nests deeper than `deepest_json` and for numbers beyond the range of a real. Does not recurse.
Value json_value(std::string_view text);

}  // namespace hvm
