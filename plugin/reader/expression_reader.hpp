// reader/expression_reader.hpp: what a quoted expression of a script says
//
// The host hands over the tree of an expression. It names a dtype, a variable or a label, and its arguments are values
// to compute: literals, variables, calls, selections from tables, array literals. Calls and variables are the host's:
// it may run script code meanwhile, so nothing is held across them but what stands on the stack.

#pragma once

#include <optional>
#include <string>

#include <xtensor/xstorage.hpp>

#include "reader/scalar_ref.hpp"

namespace arrayfold {

/// What a quotation says about an array.
struct ArraySpec {
  std::string name;                    // the dtype as written; "@" and "@@..." for forms that name no dtype
  std::int32_t slot = -1;              // frame slot of a variable
  const HostCodeSlot* args = nullptr;  // begins the argument chain
  std::uint32_t frame_base = 0;
  std::string label;  // of a labelled expression; nothing reads it
};

/// Reads the quotation in `value`. Nothing when it is no code, or of no form that is known here.
std::optional<ArraySpec> read_array_spec(HostContext ctx, HostValue* value);

/// One evaluation. The records that it makes live as long as it does, and so do the scalars that refer to them.
class ExpressionEvaluator {
 public:
  ExpressionEvaluator(HostContext ctx, std::uint32_t frame_base);
  /// Gives the records back in the order in which they were made.
  ~ExpressionEvaluator();
  ExpressionEvaluator(const ExpressionEvaluator&) = delete;
  ExpressionEvaluator& operator=(const ExpressionEvaluator&) = delete;

  HostContext ctx() const { return ctx_; }
  std::uint32_t frame_base() const { return frame_base_; }
  const xt::svector<ScalarRef, 8>& results() const { return results_; }

  void add_result(const ScalarRef& scalar) { results_.push_back(scalar); }
  /// A new record that this evaluator gives back. Throws std::bad_alloc when the host has none.
  HostValue* new_object();
  /// The variable in a frame slot; null when the host has none there.
  HostValue* variable(std::uint32_t slot) const;

 private:
  HostContext ctx_;
  std::uint32_t frame_base_;
  xt::svector<ScalarRef, 8> results_;
  xt::svector<HostValue*, 8> objects_;
};

/// Evaluates the chain of cells that begins at `slot` and appends to the evaluator's results. Ends the process through
/// std::terminate when the slot does not lead to a node.
void evaluate_cell_list(ExpressionEvaluator& evaluator, const HostCodeSlot* slot);

/// The value of the argument cell behind `slot`.
ScalarRef evaluate_cell(ExpressionEvaluator& evaluator, const HostCodeSlot* slot);

/// The short form for data literals: a literal, a name or a variable in `slot` itself.
ScalarRef evaluate_slot(ExpressionEvaluator& evaluator, const HostCodeSlot* slot);

/// The value of an argument that has to be computed; unreadable for every other kind of node.
ScalarRef evaluate_node(ExpressionEvaluator& evaluator, const HostCodeNode* node);

/// Makes `result` the table that an array literal writes down.
void build_literal_table(ExpressionEvaluator& evaluator, const HostCodeNode* node, HostValue* result);

/// Makes `result` what a selection takes out of a table variable. Throws invalid_array_object where a level below is no
/// table.
void build_selection(ExpressionEvaluator& evaluator, const HostCodeNode* node, HostValue* result);

/// The node that a slot leads to: null unless its tag says so.
inline const HostCodeNode* node_in(const HostCodeSlot& slot) {
  return slot.tag == SlotTag::node ? load<const HostCodeNode*>(slot.payload) : nullptr;
}

/// The node of this kind that a slot leads to, else null.
inline const HostCodeNode* node_in(const HostCodeSlot& slot, NodeKind kind) {
  const HostCodeNode* node = node_in(slot);
  return node != nullptr && node->kind == kind ? node : nullptr;
}

}  // namespace arrayfold
