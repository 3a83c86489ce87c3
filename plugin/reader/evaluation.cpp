// reader/evaluation.cpp: the values of arguments

#include "reader/evaluation.hpp"

#include <exception>
#include <new>

#include "array/table_slots.hpp"
#include "reader/array_spec.hpp"
#include "reader/expression_nodes.hpp"
#include "reader/literal_table.hpp"
#include "reader/selection.hpp"

namespace arrayfold {
namespace {

// ---- Calls and quotations

/// Records of the host for the arguments of a call, given back on every way out.
class ArgumentRecords {
 public:
  ArgumentRecords(HostContext ctx, std::int64_t count) : ctx_(ctx), count_(count), records_(HVM_NewObjects(count)) {
    if (records_ == nullptr) throw std::bad_alloc();
  }
  ~ArgumentRecords() { HVM_FreeObjs(ctx_, records_, count_); }
  ArgumentRecords(const ArgumentRecords&) = delete;
  ArgumentRecords& operator=(const ArgumentRecords&) = delete;

  HostValue* first() { return records_; }

 private:
  HostContext ctx_;
  std::int64_t count_;
  HostValue* records_;
};

/// Calls a function of the host with the values of `arguments`. False: the call failed.
bool call_host(const ExpressionEvaluator& arguments, const void* callee, HostValue* result) {
  const HostContext ctx = arguments.ctx();
  const auto call_function = ctx->call_function.get();
  const auto& values = arguments.results();
  if (values.empty()) return call_function(callee, ctx, nullptr, 0, result) != 0;
  const auto count = static_cast<int>(values.size());
  ArgumentRecords records(ctx, count);
  for (int n = 0; n < count; ++n) write_scalar(ctx, records.first() + n, values[static_cast<std::size_t>(n)]);
  return call_function(callee, ctx, records.first(), count, result) != 0;
}

ScalarRef evaluate_call(ExpressionEvaluator& evaluator, const HostCodeNode* call) {
  HostValue* result = evaluator.new_object();
  ExpressionEvaluator arguments(evaluator.ctx(), evaluator.frame_base());
  evaluate_cell_list(arguments, &call->value);
  if (!call_host(arguments, load<const void*>(call->link.payload), result)) return false;
  return read_value(result);
}

/// A quotation among the arguments becomes a table: its name, its variable's slot, its label, its arguments.
ScalarRef evaluate_quotation(ExpressionEvaluator& evaluator, const HostCodeNode* quotation) {
  const auto spec = read_named_call(quotation->link, evaluator.frame_base());
  if (!spec) return false;
  const HostContext ctx = evaluator.ctx();
  ExpressionEvaluator arguments(ctx, evaluator.frame_base());
  evaluate_cell_list(arguments, spec->args);
  HostValue* object = evaluator.new_object();
  KeySequence keys{0, force_table(ctx, object, 4), ctx};
  HVM_SetString(ctx, keys.next_slot(), spec->name.c_str());
  keys.add(spec->slot);
  HVM_SetString(ctx, keys.next_slot(), spec->label.c_str());
  for (const ScalarRef& argument : arguments.results()) write_scalar(ctx, keys.next_slot(), argument);
  return read_value(object);
}

// ---- Nodes

/// The value of an argument that has to be computed; unreadable for every other kind of node.
ScalarRef evaluate_node(ExpressionEvaluator& evaluator, const HostCodeNode* node) {
  switch (node->kind) {
    case NodeKind::call:
      return evaluate_call(evaluator, node);
    case NodeKind::selection: {
      HostValue* object = evaluator.new_object();
      build_selection(evaluator, load<const HostCodeNode*>(node->value.payload), object);
      return read_value(object);
    }
    case NodeKind::array_literal: {
      HostValue* object = evaluator.new_object();
      build_literal_table(evaluator, node, object);
      return read_value(object);
    }
    case NodeKind::quotation:
      return evaluate_quotation(evaluator, node);
    default:
      return false;
  }
}

// ---- Selections

/// A new record with the value of a selector's slot; nil, an open end, where there is none.
HostValue* selector_in(ExpressionEvaluator& evaluator, const HostCodeSlot& slot) {
  const HostContext ctx = evaluator.ctx();
  HostValue* record = evaluator.new_object();
  if (slot.tag == SlotTag::variable)
    write_scalar(ctx, record, read_value(evaluator.variable(frame_slot(slot))));
  else if (const HostCodeNode* node = node_in(slot))
    write_scalar(ctx, record,
                 node->kind == NodeKind::name ? evaluate_slot(evaluator, &slot) : evaluate_node(evaluator, node));
  else
    write_literal(ctx, record, slot);
  return record;
}

/// The pair of a selector cell: two ends when the cell leads to a range node, or when the node after it is not a list
/// cell; otherwise one key.
SelectorPair pair_in(ExpressionEvaluator& evaluator, const HostCodeNode* cell) {
  if (const HostCodeNode* range = node_in(cell->link, NodeKind::range)) {
    HostValue* first = selector_in(evaluator, range->link);
    return {first, selector_in(evaluator, range->value)};
  }
  HostValue* first = selector_in(evaluator, cell->link);
  const HostCodeNode* next = node_in(cell->value);
  if (next == nullptr || next->kind == NodeKind::list_cell) return {first, nullptr};
  return {first, selector_in(evaluator, next->value)};
}

}  // namespace

// ---- Interface

void evaluate_cell_list(ExpressionEvaluator& evaluator, const HostCodeSlot* slot) {
  if (slot == nullptr) return;
  if (slot->tag != SlotTag::node) std::terminate();
  for (const HostCodeNode* cell = node_in(*slot); cell != nullptr; cell = node_in(*slot)) {
    evaluator.add_result(evaluate_cell(evaluator, slot));
    slot = &cell->link;
  }
}

ScalarRef evaluate_cell(ExpressionEvaluator& evaluator, const HostCodeSlot* slot) {
  const HostCodeNode* cell = node_in(*slot);
  if (cell == nullptr) return false;
  const HostCodeSlot& value = cell->value;
  switch (value.tag) {
    case SlotTag::string:
      return text_at(load<const char*>(value.payload));
    case SlotTag::integer:
      return load<std::int32_t>(value.payload);
    case SlotTag::real:
      return load<double>(value.payload);
    case SlotTag::variable:
      return read_value(evaluator.variable(frame_slot(value)));
    case SlotTag::wide_string: {
      const auto* text = load<const char16_t*>(value.payload);
      if (text == nullptr || value.length == 0) return wide_text_at(text);
      return std::u16string_view(text, value.length - 1);
    }
    default:
      break;
  }
  if (value.tag != SlotTag::node) return false;
  if (cell->kind == NodeKind::name && cell->link.tag == SlotTag::string)
    return text_at(load<const char*>(value.payload));
  const HostCodeNode* child = node_in(value);
  if (cell->kind != NodeKind::list_cell || child == nullptr) return false;
  return evaluate_node(evaluator, child);
}

ScalarRef evaluate_slot(ExpressionEvaluator& evaluator, const HostCodeSlot* slot) {
  switch (slot->tag) {
    case SlotTag::string:
      return text_at(load<const char*>(slot->payload));
    case SlotTag::integer:
      return load<std::int32_t>(slot->payload);
    case SlotTag::real:
      return load<double>(slot->payload);
    case SlotTag::variable:
      return read_value(evaluator.variable(frame_slot(*slot)));
    default:
      break;
  }
  // required: neither 64-bit integers nor wide strings are read here.
  const HostCodeNode* name = node_in(*slot, NodeKind::name);
  if (name == nullptr || name->link.tag != SlotTag::string) return false;
  return text_at(load<const char*>(name->link.payload));
}

void build_selection(ExpressionEvaluator& evaluator, const HostCodeNode* node, HostValue* result) {
  if (node == nullptr) return;
  SelectorPairs pairs;
  for (const HostCodeNode* cell = node_in(node->value); cell != nullptr && cell->kind == NodeKind::list_cell;
       cell = node_in(cell->value))
    pairs.push_back(pair_in(evaluator, cell));
  // The table comes last: a selector may run script code that changes the variable.
  HostHash* table =
      table_in(node->link.tag == SlotTag::variable ? evaluator.variable(frame_slot(node->link)) : nullptr);
  select_entries(evaluator.ctx(), table, pairs, result);
}

}  // namespace arrayfold
