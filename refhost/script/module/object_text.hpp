// script/module/object_text.hpp: an object as text, through its methods

#pragma once

#include "script/module/array_module.hpp"
#include "script/text/number_text.hpp"

namespace hvm {

/// Appends objects as text, for a `Printer`. Brief: `double(2, 3) [[1.0, 2.0, 3.0], [4.0, 5.0, 6.0]]`, the kind from
/// the type's name and the shape from `shape`; up to a thousand elements from `dump`, of more the head and the tail of
/// every axis. Full: the text of `dump`. An object without these methods shows as its type's name in angle brackets.
/// The text of an array throws `Failure` when its extents fail `checks` or when a method of it throws. `checks` must
/// outlive the result.
ObjectText object_text(const ModuleCaller& caller, const ArrayChecks& checks, Detail detail);

/// The brief text of an object for a terminal of this width: its rows are aligned, see `aligned`, and
/// more than two hundred elements are shortened. Throws `Failure`.
std::string aligned_object_text(const ModuleCaller& caller, const ArrayChecks& checks, Value object, std::size_t width);

}  // namespace hvm
