// script/explain/warning_table.hpp: every warning there is: its name, when it comes, what it says, and its page

#pragma once

#include <string_view>
#include <variant>
#include <vector>

#include "script/explain/warning_signs.hpp"
#include "script/explain/warning_subjects.hpp"

namespace hvm {

struct CallCondition {
  Sign sign;
  std::vector<std::string_view> functions;  // empty: all
  Found (*find)(const AnsweredCall& call);  // asked about calls of these functions that bear the sign
};
struct OperationCondition {
  Found (*find)(const ArrayOperation& operation);
};
struct ElementCondition {
  Found (*find)(const ElementAccess& access);
};
struct MethodCondition {
  Found (*find)(const AnsweredMethod& call);
};

struct WarningRow {
  std::string_view name;
  std::string_view sentence;  // for the list of all; `a` is an array, `n` a number
  std::string_view page;      // below docs, `NAME` being the function; behind the comma its section
  std::variant<CallCondition, OperationCondition, ElementCondition, MethodCondition> condition;
};

/// All rows, in the order in which they are listed and looked at.
const std::vector<WarningRow>& warning_table();

}  // namespace hvm
