// script/library/arguments.hpp: the arguments of built-in functions, checked
//
// Each function takes the argument at `i`, counted from 0. When it is of another kind, a `Failure` says what the
// function takes and what it got: `find: it takes a string, not an int`.

#pragma once

#include <cstdint>
#include <string_view>

#include "script/library/builtins.hpp"
#include "script/library/numbers.hpp"

namespace hvm {

/// Throws a `Failure` that says what the function takes and what `value` is, and for an array what takes one instead.
[[noreturn]] void fail_kind(const BuiltinCall& call, const char* wanted, const Value& value);

/// Whether the call has an argument at `i` that is not nil.
bool has_argument(const BuiltinCall& call, std::size_t i);

/// The text of a string in UTF-8. It lasts as long as the argument; that of a wide string until the eighth conversion
/// after this one.
std::string_view text_argument(const BuiltinCall& call, std::size_t i);
/// A number of any kind.
Number exact_number_argument(const BuiltinCall& call, std::size_t i);
/// A number of any kind, as a double.
double number_argument(const BuiltinCall& call, std::size_t i);
/// An int or an int64.
std::int64_t integer_argument(const BuiltinCall& call, std::size_t i);
/// A table; never null.
HostHash* table_argument(const BuiltinCall& call, std::size_t i);
/// A key of a table.
const HostValue& key_argument(const BuiltinCall& call, std::size_t i);

/// The path of a file, the first argument. A `Failure` says that it is empty, has a zero byte, or that files are
/// switched off.
std::string path_argument(const BuiltinCall& call);
/// The path of a file that is written. It is not that of the standard input.
std::string output_path(const BuiltinCall& call);

}  // namespace hvm
