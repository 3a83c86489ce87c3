// reader/selection.cpp: what a selection takes out of a table

#include <new>
#include <vector>

#include "reader/expression_reader.hpp"
#include "reader/table_cursor.hpp"
#include "array/table_slots.hpp"
#include "array/xt_object.hpp"

namespace arrayfold {
namespace {

/// A selector of one level: a key, or the two ends of a range.
struct SelectorPair {
  HostValue* first = nullptr;
  HostValue* second = nullptr;
};
using SelectorPairs = xt::svector<SelectorPair, 4>;

/// A new record with the value of a selector's slot; nil, an open end, where there is none.
HostValue* selector_in(ExpressionEvaluator& evaluator, const HostCodeSlot& slot) {
  const HostContext ctx = evaluator.ctx();
  HostValue* record = evaluator.new_object();
  if (slot.tag == SlotTag::variable)
    write_scalar(ctx, record, read_value(evaluator.variable(load<std::uint32_t>(slot.payload))));
  else if (const HostCodeNode* node = node_in(slot))
    write_scalar(ctx, record,
                 node->kind == NodeKind::name ? evaluate_slot(evaluator, &slot) : evaluate_node(evaluator, node));
  else
    write_literal(ctx, record, slot);
  return record;
}

/// The pair that a selector cell stands for. Two ends come from a range, or from a cell that is followed by another
/// kind of node; otherwise there is one key.
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

/// The table that a value holds. Throws invalid_array_object when it holds none.
HostHash* table_in(const HostValue* value) {
  if (value == nullptr || value->tag != ValueTag::table) throw invalid_array_object();
  return load<HostHash*>(value->payload);
}

/// Takes what the pairs choose, one for each level of nesting. Levels are kept on a stack of its own: their number is
/// the script's, and the thread's stack is not.
class Selection {
 public:
  Selection(HostContext ctx, const SelectorPairs& pairs) : ctx_(ctx), pairs_(pairs) {}

  void select(HostHash* table, HostValue* destination) {
    enter(table, 0, destination);
    while (!open_.empty()) {
      OpenLevel& innermost = open_.back();
      if (!innermost.cursor.next()) {
        open_.pop_back();
        continue;
      }
      HostHash* below = table_in(&innermost.cursor.item()->value);
      if (HostValue* slot = slot_for(innermost)) enter(below, innermost.pair + 1, slot);
    }
  }

 private:
  /// A level below which others follow, and the table that its matches go into.
  struct OpenLevel {
    TableCursor cursor;
    std::size_t pair;
    HostHash* made;
    KeySequence keys;
  };

  /// Applies a pair to `table`: the last one fills `destination`, any other opens a level.
  void enter(HostHash* table, std::size_t pair, HostValue* destination) {
    while (true) {
      TableCursor cursor(table, pairs_[pair].first, pairs_[pair].second);
      const bool last = pair + 1 == pairs_.size();
      if (!cursor.selects_one_key()) return last ? take_all(cursor, destination) : open(cursor, pair, destination);
      cursor.next();
      if (cursor.item() == nullptr) return;
      HostValue* value = &cursor.item()->value;
      if (last) return HVM_DupObject(ctx_, destination, value, 1);
      // A single key adds no level to the result.
      table = table_in(value);
      ++pair;
    }
  }

  void open(const TableCursor& cursor, std::size_t pair, HostValue* destination) {
    HostHash* made = force_table(ctx_, destination, cursor.capacity());
    open_.push_back({cursor, pair, made, KeySequence{0, made, ctx_}});
  }

  /// required: below the last level integer keys are counted anew and string keys are kept ... A key of any other kind
  /// has no place in the result: its entry is passed over.
  HostValue* slot_for(OpenLevel& level) const {
    HostValue* key = &level.cursor.item()->key;
    if (key->tag == ValueTag::integer) return level.keys.next_slot();
    if (key->tag != ValueTag::string_record) return nullptr;
    HostValue* slot = HVM_HashSet(ctx_, level.made, key);
    if (slot == nullptr) throw std::bad_alloc();
    return slot;
  }

  /// required: ... and at the last level every key is counted anew.
  void take_all(TableCursor& cursor, HostValue* destination) const {
    KeySequence keys{0, force_table(ctx_, destination, cursor.capacity()), ctx_};
    while (cursor.next()) HVM_DupObject(ctx_, keys.next_slot(), &cursor.item()->value, 1);
  }

  HostContext ctx_;
  const SelectorPairs& pairs_;
  std::vector<OpenLevel> open_;
};

}  // namespace

void build_selection(ExpressionEvaluator& evaluator, const HostCodeNode* node, HostValue* result) {
  if (node == nullptr) return;
  SelectorPairs pairs;
  for (const HostCodeNode* cell = node_in(node->value); cell != nullptr && cell->kind == NodeKind::list_cell;
       cell = node_in(cell->value))
    pairs.push_back(pair_in(evaluator, cell));
  // The table last: a selector may run script code, and the variable hold something else afterwards.
  HostHash* table = table_in(
      node->link.tag == SlotTag::variable ? evaluator.variable(load<std::uint32_t>(node->link.payload)) : nullptr);
  if (pairs.empty()) return;
  if (pairs.size() > 1) return Selection(evaluator.ctx(), pairs).select(table, result);
  // required: one selector gives its first match alone, a range too.
  TableCursor cursor(table, pairs[0].first, pairs[0].second);
  if (cursor.next() && cursor.item() != nullptr) HVM_DupObject(evaluator.ctx(), result, &cursor.item()->value, 1);
}

}  // namespace arrayfold
