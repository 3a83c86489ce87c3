// script/explain/creation_conditions.hpp: arrays that are made with other elements than they seem

#pragma once

#include "script/explain/warning_subjects.hpp"

namespace hvm {

/// Whether the first two arguments are numbers, the first of them an integer.
inline bool has_integer_start(const std::vector<Value>& arguments) noexcept {
  return arguments.size() > 1 && arguments[0].is_number() && arguments[0].tag() != ValueTag::real &&
         arguments[1].is_number();
}
/// Whether integers from the first argument to the second one have no whole spacing. Requires: the start is an integer.
bool are_cut(const std::vector<Value>& arguments) noexcept;
/// Whether one of the powers from 10 to the first argument on is no integer of its kind. Requires: the start is
/// an integer.
bool are_odd_powers(const std::vector<Value>& arguments) noexcept;

Found integer_spacing(const AnsweredCall& call);
Found integer_powers(const AnsweredCall& call);
Found integer_range(const AnsweredCall& call);
Found empty_range(const AnsweredCall& call);
Found draws_without_elements(const AnsweredCall& call);
Found fraction_of_an_argument(const AnsweredCall& call);

}  // namespace hvm
