// script/explain/result_conditions.hpp: functions that give nothing, or something else than their result

#pragma once

#include "script/explain/warning_subjects.hpp"

namespace hvm {

/// The functions that never give a result.
std::vector<std::string_view> functions_without_result();

Found nothing_computed(const AnsweredCall& call);
Found values_for_positions(const AnsweredCall& call);
Found unused_order(const AnsweredCall& call);
Found value_of_shuffle(const AnsweredCall& call);
Found bool_array(const AnsweredCall& call);
Found two_kinds(const AnsweredCall& call);
Found integers_without_result(const AnsweredCall& call);
Found no_diagonal(const AnsweredCall& call);

/// The functions whose answer depends on an order of all elements.
std::vector<std::string_view> functions_that_order_elements();

Found order_with_nan(const AnsweredCall& call);
Found position_with_nan(const AnsweredCall& call);

}  // namespace hvm
