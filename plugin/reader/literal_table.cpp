// reader/literal_table.cpp: building the table of an array literal

#include "reader/literal_table.hpp"

#include <cmath>
#include <new>

#include "reader/dyn_array.hpp"
#include "reader/expression_nodes.hpp"

namespace arrayfold {
namespace {

constexpr std::int64_t deepest_nesting = 102400;

/// The table of an array literal. The literal is flat: opening and closing items stand in one chain, and two stacks
/// keep the open tables and the next key of each.
class LiteralTable {
 public:
  LiteralTable(HostContext ctx, HostValue* result) : ctx_(ctx), tables_(512), counts_(256) { open_in(result); }

  /// Takes an item of the chain. False: the literal ends there.
  bool take(const HostCodeNode* item) {
    switch (item->kind) {
      case NodeKind::literal_open:
        return open_next();
      case NodeKind::literal_close:
        return close();
      case NodeKind::literal_item:
        if (item->value.tag == SlotTag::absent) return add_element(item);
        return add_pair(item);
      default:
        return true;
    }
  }

 private:
  /// The slot of the next automatic key of the innermost table, emptied.
  HostValue* next_slot() { return emptied(HVM_HashSetInt(ctx_, tables_.back(), counts_.back())); }

  HostValue* emptied(HostValue* slot) {
    if (slot == nullptr) throw std::bad_alloc();
    free_content(ctx_, slot);
    return slot;
  }

  /// Puts a new table into `slot`, which becomes the innermost.
  void open_in(HostValue* slot) {
    tables_.add(nullptr);
    counts_.add(0);
    HostHash* table = HVM_NewHash(ctx_, 4);
    if (table == nullptr) throw std::bad_alloc();
    slot->tag = ValueTag::table;
    store<HostHash*>(slot->payload, table);
    tables_.back() = table;
  }

  /// required: at this depth the literal ends silently; the tables built so far stay.
  bool may_open() const { return tables_.count() < deepest_nesting; }

  bool open_next() {
    if (!may_open()) return false;
    HostValue* slot = next_slot();
    ++counts_.back();
    open_in(slot);
    return true;
  }

  bool close() {
    if (tables_.count() == 1) return false;  // nothing is open
    tables_.remove(tables_.count() - 1);
    counts_.remove(counts_.count() - 1);
    return true;
  }

  /// Writes the literal in the part of an item into `value`.
  void read_part(const HostCodeNode* item, TemporaryValue& value) {
    if (const HostCodeNode* part = node_in(item->link)) write_literal(ctx_, value.record(), part->value);
  }

  bool add_element(const HostCodeNode* item) {
    TemporaryValue value;
    read_part(item, value);
    HostValue* slot = next_slot();
    ++counts_.back();
    value.pass_to(ctx_, slot, false);
    return true;
  }

  bool add_pair(const HostCodeNode* item) {
    TemporaryValue key;
    read_part(item, key);
    advance_past(*key.record());
    if (node_in(item->value, NodeKind::literal_open) != nullptr) {
      // Without a key its slot may move when the table grows, so nothing can be built inside it.
      if (!may_open() || key.record()->tag == ValueTag::nil) return false;
      open_in(emptied(HVM_HashSet(ctx_, tables_.back(), key.record())));
      return true;
    }
    TemporaryValue value;
    write_literal(ctx_, value.record(), item->value);
    HostValue* slot = HVM_HashSet(ctx_, tables_.back(), key.record());
    if (slot == nullptr) throw std::bad_alloc();
    value.pass_to(ctx_, slot, false);
    return true;
  }

  /// required: a real key equal to the next automatic key advances it, an integer key does not.
  void advance_past(const HostValue& key) {
    if (key.tag != ValueTag::real) return;
    if (std::trunc(load<double>(key.payload)) == counts_.back()) ++counts_.back();
  }

  HostContext ctx_;
  DynArray<HostHash*> tables_;
  DynArray<int> counts_;
};

}  // namespace

void build_literal_table(ExpressionEvaluator& evaluator, const HostCodeNode* node, HostValue* result) {
  LiteralTable table(evaluator.ctx(), result);
  // In this chain a cell's link holds its item and its value leads on.
  const auto* cell = load<const HostCodeNode*>(node->value.payload);
  while (cell != nullptr && cell->kind == NodeKind::list_cell) {
    const auto* item = load<const HostCodeNode*>(cell->link.payload);
    if (item != nullptr && cell->link.tag != SlotTag::absent && !table.take(item)) return;
    cell = node_in(cell->value);
  }
}

}  // namespace arrayfold
