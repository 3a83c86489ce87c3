// script/array_text.hpp: an array as text, through its methods

#pragma once

#include <string>

#include "script/module_calls.hpp"
#include "script/number_text.hpp"

namespace hvm {

/// An object as text. Brief: `double(2, 3) [[1.0, 2.0, 3.0], [4.0, 5.0, 6.0]]`, the kind from the type's name and the
/// shape from `shape`; up to a thousand elements from `dump`, of more the head and the tail of every axis. Full: what
/// `dump` gives. An object that has no such methods shows as its type's name in angle brackets. Throws `Failure` when
/// a method of the object throws.
std::string array_text(const ModuleCaller& caller, Value& object, Detail detail);

/// The kind in a type's name: `double` of `$xdoublearray`; any other name as it is.
std::string array_kind(const std::string& type_name);

}  // namespace hvm
