// reader/selection.cpp: what selectors choose from a table

#include "reader/selection.hpp"

#include <new>
#include <vector>

#include "array/table_slots.hpp"
#include "array/xt_object.hpp"
#include "reader/table_cursor.hpp"

namespace arrayfold {

HostHash* table_in(const HostValue* value) {
  if (value == nullptr || value->tag != ValueTag::table) throw invalid_array_object();
  return load<HostHash*>(value->payload);
}

namespace {

/// Applies the pairs, one for each level of nesting. The levels are kept on a stack of their own, since a script
/// decides their number.
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

  /// required: above the last level integer keys are renumbered and string keys are kept. A key of any other kind has
  /// no place in the result: its entry is passed over.
  HostValue* slot_for(OpenLevel& level) const {
    HostValue* key = &level.cursor.item()->key;
    if (key->tag == ValueTag::integer) return level.keys.next_slot();
    if (key->tag != ValueTag::string_record) return nullptr;
    HostValue* slot = HVM_HashSet(ctx_, level.made, key);
    if (slot == nullptr) throw std::bad_alloc();
    return slot;
  }

  /// required: at the last level every key is renumbered, string keys too.
  void take_all(TableCursor& cursor, HostValue* destination) const {
    KeySequence keys{0, force_table(ctx_, destination, cursor.capacity()), ctx_};
    while (cursor.next()) HVM_DupObject(ctx_, keys.next_slot(), &cursor.item()->value, 1);
  }

  HostContext ctx_;
  const SelectorPairs& pairs_;
  std::vector<OpenLevel> open_;
};

}  // namespace

void select_entries(HostContext ctx, HostHash* table, const SelectorPairs& pairs, HostValue* result) {
  if (pairs.empty()) return;
  if (pairs.size() > 1) return Selection(ctx, pairs).select(table, result);
  // required: a single selector gives its first match alone, even when it is a range.
  TableCursor cursor(table, pairs[0].first, pairs[0].second);
  if (cursor.next() && cursor.item() != nullptr) HVM_DupObject(ctx, result, &cursor.item()->value, 1);
}

}  // namespace arrayfold
