// explanations/failure_calls.hpp: for each row of a table of failures, scripts that make it happen

#pragma once

#include <string>
#include <vector>

#include "script/explain/description.hpp"

namespace hvm::testing {

/// A call in which every argument is a variable of the name that its page gives it.
struct FailureCall {
  std::string preparation;  // gives the variables their values
  std::string call;         // `xinv(a)`
};

/// Calls that fit the condition of a row, in the order in which they should be tried; empty when there is none. Several
/// are given where an earlier row takes some of them.
std::vector<FailureCall> failure_calls(const FunctionEntry& entry, const FailureRow& row);

/// Calls with arguments that the page accepts, also with an array of many dimensions.
std::vector<FailureCall> valid_calls(const FunctionEntry& entry);

}  // namespace hvm::testing
