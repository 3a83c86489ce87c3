// script/guards.hpp: what the host checks because the module does not
//
// A module that takes its host's word for indices, extents and divisors would read beyond its memory or end the
// process. Each guard throws a `Failure` instead. The host never looks into an object: it knows an array by its type's
// name and by what `shape` answers.

#pragma once

#include <string>
#include <vector>

#include "script/module_calls.hpp"
#include "script/syntax.hpp"

namespace hvm {

/// `xarange` with more than three arguments, with a step of zero, or over a range that its division cannot take.
void guard_call(const std::string& name, std::vector<Value>& arguments);

/// `reshape` to extents that are negative or claim more elements than there are, and every other method but `shape`
/// on an array that already has such extents.
void guard_method(const ModuleCaller& caller, Value& self, const std::string& name, std::vector<Value>& arguments);

/// An integer array under `/` or `%` with a number that it reads as zero, and arrays whose extents claim more elements
/// than there are.
void guard_operator(const ModuleCaller& caller, BinaryOperator op, Value& left, Value& right);

/// Indices that are no numbers, or lie outside of the extents that they meet. Indices align with the last extents;
/// leading indices beyond the number of extents pass.
void guard_indices(const ModuleCaller& caller, Value& object, std::vector<Value>& indices);

/// Fails on an array whose extents claim more elements than it can have.
void guard_extents(const ModuleCaller& caller, Value& object);

}  // namespace hvm
