// script/explain/warning_signs.hpp: what is seen of a call at once, so that most calls cost next to nothing

#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "script/explain/array_integers.hpp"
#include "script/explain/creation_conditions.hpp"

namespace hvm {

/// When the condition of a row about calls is looked at.
enum class Sign : std::uint8_t {
  call,             // at each call of its functions
  used_value,       // when something takes the value
  unused_value,     // when nothing takes it
  zero_extent,      // when the first of several arguments is 0
  real_argument,    // when an argument is a real
  three_arguments,  // when there are three arguments
  cut_integers,     // when integers from the first argument to the second one have no whole spacing
  odd_powers,       // the same, or when such powers of ten are no integers
  integer_array,    // when the first argument is an array of integers
  odd_extreme,      // when the result is an int64, or the smallest normal number
  // Of `xarray`, whose data are looked at before:
  data,         // when there are two arguments
  table_data,   // when the second argument is a table
  quoted_data,  // when the second argument is a quotation
  // Of all functions alike:
  nothing,         // when the call gave nil
  more_arguments,  // when there are more arguments than the function looks at
  column,          // when an argument may be a column
};

/// Whether a call bears a sign before `nothing`. Integers alone are computed with out of line.
inline bool bears(Sign sign, const IntegerArrays& integer_arrays, const std::vector<Value>& arguments,
                  const Value& result, bool is_used) noexcept {
  switch (sign) {
    case Sign::used_value:
      return is_used;
    case Sign::unused_value:
      return !is_used;
    case Sign::zero_extent:
      return arguments.size() > 1 && arguments[0].tag() == ValueTag::integer && as_int(arguments[0]) == 0;
    case Sign::real_argument:
      for (const Value& argument : arguments)
        if (argument.tag() == ValueTag::real) return true;
      return false;
    case Sign::three_arguments:
      return arguments.size() == 3;
    case Sign::cut_integers:
      return has_integer_start(arguments) && are_cut(arguments);
    case Sign::odd_powers:
      return has_integer_start(arguments) && are_odd_powers(arguments);
    case Sign::integer_array:
      return !arguments.empty() && integer_arrays.have(arguments[0]);
    case Sign::odd_extreme:
      if (result.tag() != ValueTag::real) return result.tag() == ValueTag::integer64;
      return arrayfold::load<double>(result.record().payload) == std::numeric_limits<double>::min();
    case Sign::data:
      return arguments.size() > 1;
    case Sign::table_data:
      return arguments.size() > 1 && arguments[1].is_table();
    case Sign::quoted_data:
      return arguments.size() > 1 && arguments[1].tag() == ValueTag::code;
    default:
      return true;
  }
}

}  // namespace hvm
