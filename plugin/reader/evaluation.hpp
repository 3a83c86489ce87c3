// reader/evaluation.hpp: the values of the arguments in a quoted expression
//
// Arguments are literals, variables, calls, selections from tables and array literals. The host runs calls and reads
// variables, and may run any script code for them: no pointer into host data is kept across either.

#pragma once

#include "reader/expression_evaluator.hpp"

namespace arrayfold {

/// Evaluates the chain of cells that begins at `slot` and appends the values to the evaluator's results. Ends the
/// process through std::terminate when the slot's tag is not that of a node.
void evaluate_cell_list(ExpressionEvaluator& evaluator, const HostCodeSlot* slot);

/// The value of the argument cell that `slot` leads to.
ScalarRef evaluate_cell(ExpressionEvaluator& evaluator, const HostCodeSlot* slot);

/// The short form for data literals: a literal, a name or a variable in `slot` itself.
ScalarRef evaluate_slot(ExpressionEvaluator& evaluator, const HostCodeSlot* slot);

/// Makes `result` what a selection chooses from a table variable. Throws invalid_array_object when the variable, or a
/// value on a level below that is selected from, is no table.
void build_selection(ExpressionEvaluator& evaluator, const HostCodeNode* node, HostValue* result);

}  // namespace arrayfold
