// script/module/array_module.hpp: all that the host knows of the module with the arrays
//
// A host knows a module by what it registers, and an object by its type's name and its methods; it never looks inside.
// What hvm knows beyond that of this very module is here: its file, the names of its types and of a few functions and
// methods, what it does not check itself, and which of its failures need an explanation. Its answers that surprise are
// in script/explain, in the table of warnings and its conditions.

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "script/module/module_calls.hpp"
#include "script/module/module_functions.hpp"
#include "script/syntax/tree.hpp"
#include "script/text/array_layout.hpp"

namespace hvm {

/// The file that is loaded when none is named.
inline constexpr const char* array_module_file = "arrayfold.so";

/// The names of the types of integer arrays. Each is a literal, so that its `data` ends with a zero.
inline constexpr std::string_view int_array_type = "$xintarray";
inline constexpr std::string_view int64_array_type = "$xint64array";

/// Whether these are the functions of the module with the arrays, which has registered its types.
bool is_array_module(const ModuleFunctions& module);

/// A method of arrays.
struct ArrayMethod {
  const char* name;
  const char* usage;
  const char* summary;
};
inline constexpr ArrayMethod array_methods[] = {
    {"dump", "a.dump()", "Gives the elements of an array as text."},
    {"reshape", "a.reshape(n, ...)", "Changes the shape of the array itself; there is no value."},
    {"shape", "a.shape()", "Gives a table of the extents."},
};
/// Whether two shapes have, counted from the last, equal extents wherever neither has 1.
bool do_broadcast(const Extents& left, const Extents& right);

/// Whether a quoted name is that of a kind, `@double`, and `float` among them.
bool names_kind(std::string_view name);

/// The kind of an array, such as `double` of `$xdoublearray`; no value for anything else.
std::optional<std::string> kind_of_array(const Value& value);

/// The same as `kind_of_array` without a copy, empty for anything else. It lasts as long as the type.
std::string_view array_kind_of(const Value& value);

/// Whether a value is an array of integers, of 32 bits or 64.
bool is_integer_array(const Value& value);

/// The extents that the method `shape` gives; no value when it fails, throws, or gives no table of integers.
std::optional<Extents> shape_of(const ModuleCaller& caller, Value& object);

/// The text that the method `dump` gives; no value when it fails or gives no string. Throws `Failure` when it throws.
std::optional<std::string> dump_of(const ModuleCaller& caller, Value& object);

/// The text of an element as its array shows it, with six significant digits for a floating-point number; no value when
/// the array does not read it. Throws `Failure`.
std::optional<std::string> element_text(const ModuleCaller& caller, Value& object, const Extents& position);

/// A new array of doubles with two axes. `next` gives its elements, row by row. Throws `Failure`.
Value double_matrix(const ModuleCaller& caller, const ModuleFunctions& module, std::size_t rows, std::size_t columns,
                    const std::function<double()>& next);

/// What reads the number of an array without axes, for the end of a message; empty for anything else.
std::string number_in_array(const ModuleCaller& caller, const Value& value);

/// The value in words for messages: `an int`, `a table`, `$xintarray (2, 3)`.
std::string described(const ModuleCaller& caller, Value& value);

/// Explains why the type of an object returns false for an operator. `name` is the operator as it is written.
std::string undefined_operator(const ModuleCaller& caller, const std::string& name, BinaryOperator op, Value& left,
                               Value& right);

/// `message`, which is of an exception from an operator, with the reason when it lies in the shapes of the operands.
std::string thrown_operator(const ModuleCaller& caller, const std::string& message, Value& left, Value& right);

/// Why a call of `function` failed with these quotations as its first arguments, null for other arguments, in the words
/// of its page's row, such as `an extent in `dtype` is no int`; null when that lies elsewhere.
const char* failing_quotation(const std::string& function, const Quotation* dtype, const Quotation* data,
                              std::size_t arguments);

/// Checks what the module does not. It trusts its host with indices, extents and divisors, and would read beyond its
/// memory or end the process. Each check throws a `Failure` instead. Switched off, it does nothing.
class ArrayChecks {
 public:
  explicit ArrayChecks(bool are_on) : are_on_(are_on) {}

  /// `xarange` with more than three arguments, with a step of zero, or over a range that its division cannot take; and
  /// an extent, a count or a number of `xarange` that does not fit into 32 bits.
  void call(const std::string& function, std::vector<Value>& arguments) const;

  /// `reshape` to extents that are negative, do not fit into 32 bits, or need more elements than the array has, and
  /// every other method but `shape` on an array that already has such extents.
  void method(const ModuleCaller& caller, Value& self, const std::string& name, std::vector<Value>& arguments) const;

  /// An integer array under `/` or `%` with a number that it reads as zero, and an operand with extents that fail the
  /// check `extents`.
  void operation(const ModuleCaller& caller, BinaryOperator op, Value& left, Value& right) const;

  /// Indices that are not numbers, or lie outside of the extents that they meet. Indices align with the last extents;
  /// leading indices beyond the number of extents pass. Returns whether there are fewer indices than extents.
  bool indices(const ModuleCaller& caller, Value& object, ValueSpan indices) const;

  /// An array with extents that are negative, or whose product is more than an array can hold.
  void extents(const ModuleCaller& caller, Value& object) const;

 private:
  bool are_on_;
};

}  // namespace hvm
