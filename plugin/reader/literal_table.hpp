// reader/literal_table.hpp: the table that an array literal writes down

#pragma once

#include "reader/expression_evaluator.hpp"

namespace arrayfold {

/// Makes `result` the table of an array literal.
void build_literal_table(ExpressionEvaluator& evaluator, const HostCodeNode* node, HostValue* result);

}  // namespace arrayfold
