// array/expression_reader.cpp: the forms of a quotation, and the values of its arguments

#include "array/expression_reader.hpp"

#include <cmath>
#include <exception>
#include <new>
#include <vector>

#include "array/dyn_array.hpp"
#include "array/table_cursor.hpp"
#include "array/xt_object.hpp"

namespace arrayfold {
namespace {

std::int32_t frame_slot(const HostCodeSlot& slot) { return load<std::int32_t>(slot.payload); }

/// The text of a symbol record, or of a string; empty for any other slot.
std::string_view name_in(const HostCodeSlot& slot) {
  if (slot.tag == SlotTag::string) return text_at(load<const char*>(slot.payload));
  if (slot.tag != SlotTag::node) return {};
  const auto* symbol = load<const HostSymbol*>(slot.payload);
  return symbol == nullptr ? std::string_view() : text_at(symbol->text);
}

/// The node that a wrapper of a name holds in place of the name itself.
const HostCodeNode* unwrapped(const HostCodeNode* node) {
  const HostCodeNode* wrapper = node_in(node->link, NodeKind::name_wrapper);
  if (wrapper == nullptr) return node;
  const auto* name = load<const HostCodeNode*>(wrapper->value.payload);
  if (name == nullptr || name->kind != NodeKind::name) std::terminate();
  return name;
}

// ---- The forms of a quotation

ArraySpec named_spec(std::string name, std::int32_t slot, const HostCodeSlot* args, std::uint32_t frame_base) {
  return {std::move(name), slot, args, frame_base, {}};
}

/// The argument chain of a call and the variable that may stand first in it, under this name.
ArraySpec spec_of_call(const HostCodeNode* call, std::string name, std::uint32_t frame_base) {
  const HostCodeNode* first = node_in(call->value);
  const bool by_variable =
      first != nullptr && first->kind == NodeKind::list_cell && first->value.tag == SlotTag::variable;
  return named_spec(std::move(name), by_variable ? frame_slot(first->value) : -1,
                    first == nullptr ? nullptr : &call->value, frame_base);
}

/// Form 1, a named call: `double(2, n)`.
std::optional<ArraySpec> read_named_call(const HostCodeSlot& link, std::uint32_t frame_base) {
  const HostCodeNode* call = node_in(link, NodeKind::call);
  if (call == nullptr) return std::nullopt;
  call = unwrapped(call);
  return spec_of_call(call, std::string(name_in(call->link)), frame_base);
}

/// Form 2, a quotation inside the quotation.
std::optional<ArraySpec> read_nested_quotation(const HostCodeSlot& link, std::uint32_t frame_base) {
  const HostCodeNode* quotation = node_in(link, NodeKind::quotation);
  if (quotation == nullptr) return std::nullopt;
  if (quotation->link.tag == SlotTag::variable)
    return named_spec("@@", frame_slot(quotation->link), nullptr, frame_base);
  const HostCodeNode* inner = node_in(quotation->link);
  if (inner == nullptr) return std::nullopt;
  inner = unwrapped(inner);
  return spec_of_call(inner, "@" + std::string(name_in(inner->link)), frame_base);
}

/// Form 3, a variable with an argument list.
std::optional<ArraySpec> read_slot_list(const HostCodeSlot& link, std::uint32_t frame_base) {
  const HostCodeNode* list = node_in(link, NodeKind::slot_list);
  if (list == nullptr || list->link.tag != SlotTag::variable) return std::nullopt;
  const HostCodeNode* inner = node_in(list->value, NodeKind::slot_list_inner);
  if (inner == nullptr) return std::nullopt;
  return named_spec("", frame_slot(list->link), &inner->value, frame_base);
}

/// Form 4, a variable that would name the dtype.
/// required: the variable is read by its raw slot and its text is dropped; the form never gives a result.
void read_named_variable(HostContext ctx, const HostCodeSlot& link) {
  const HostCodeNode* name = node_in(link, NodeKind::variable_name);
  if (name == nullptr || name->value.tag != SlotTag::variable) return;
  HostValue* variable = ctx->read_slot.get()(ctx, frame_slot(name->value));
  if (variable == nullptr) return;
  const std::string text(text_at(HVM_AsString(variable)));
}

/// Form 6, a variable alone.
std::optional<ArraySpec> read_variable(const HostCodeSlot& link, std::uint32_t frame_base) {
  if (link.tag != SlotTag::variable) return std::nullopt;
  return named_spec("@", frame_slot(link), nullptr, frame_base);
}

/// Form 5, an expression with a label.
std::optional<ArraySpec> read_labelled(const HostCodeSlot& link, std::uint32_t frame_base) {
  const HostCodeNode* labelled = node_in(link, NodeKind::labelled);
  if (labelled == nullptr) return std::nullopt;
  auto spec = read_named_call(labelled->link, frame_base);
  if (!spec) spec = read_variable(labelled->link, frame_base);
  if (spec) spec->label = std::string(name_in(labelled->value));
  return spec;
}

// ---- Arguments

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

/// Calls a function of the host with what `arguments` evaluated to. False: the call failed.
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

/// The slot of the next key, counted up from 0.
class NextSlot {
 public:
  NextSlot(HostContext ctx, HostHash* table) : ctx_(ctx), table_(table) {
    if (table == nullptr) throw std::bad_alloc();
  }
  HostValue* operator()() {
    HostValue* slot = HVM_HashSetInt(ctx_, table_, key_++);
    if (slot == nullptr) throw std::bad_alloc();
    return slot;
  }

 private:
  HostContext ctx_;
  HostHash* table_;
  int key_ = 0;
};

/// Makes `value` a new table; the table.
HostHash* force_table(HostContext ctx, HostValue* value, int capacity) {
  HVM_ForceTable(ctx, value, capacity);
  auto* table = load<HostHash*>(value->payload);
  if (value->tag != ValueTag::table || table == nullptr) throw std::bad_alloc();
  return table;
}

/// A quotation among the arguments becomes a table: its name, its variable's slot, its label, its arguments.
ScalarRef evaluate_quotation(ExpressionEvaluator& evaluator, const HostCodeNode* quotation) {
  const auto spec = read_named_call(quotation->link, evaluator.frame_base());
  if (!spec) return false;
  const HostContext ctx = evaluator.ctx();
  ExpressionEvaluator arguments(ctx, evaluator.frame_base());
  evaluate_cell_list(arguments, spec->args);
  HostValue* object = evaluator.new_object();
  NextSlot next_slot(ctx, force_table(ctx, object, 4));
  HVM_SetString(ctx, next_slot(), spec->name.c_str());
  HVM_SetInt(ctx, next_slot(), spec->slot);
  HVM_SetString(ctx, next_slot(), spec->label.c_str());
  for (const ScalarRef& argument : arguments.results()) write_scalar(ctx, next_slot(), argument);
  return read_value(object);
}

/// An argument that has to be computed; unreadable for every other kind of node.
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

}  // namespace

// ---- Interface

std::optional<ArraySpec> read_array_spec(HostContext ctx, HostValue* value) {
  if (value->tag != ValueTag::code) return std::nullopt;
  const auto* code = load<const HostCode*>(value->payload);
  if (code == nullptr || code->root.get() == nullptr) return std::nullopt;
  if (code->root.get()->kind != NodeKind::quotation) return std::nullopt;
  const HostCodeSlot& link = code->root.get()->link;
  const std::uint32_t frame_base = code->frame_base;
  if (auto spec = read_named_call(link, frame_base)) return spec;
  if (auto spec = read_nested_quotation(link, frame_base)) return spec;
  if (auto spec = read_slot_list(link, frame_base)) return spec;
  read_named_variable(ctx, link);
  if (auto spec = read_labelled(link, frame_base)) return spec;
  return read_variable(link, frame_base);
}

ExpressionEvaluator::ExpressionEvaluator(HostContext ctx, std::uint32_t frame_base)
    : ctx_(ctx), frame_base_(frame_base) {}

ExpressionEvaluator::~ExpressionEvaluator() {
  for (HostValue* object : objects_) HVM_FreeObj(ctx_, object);
}

HostValue* ExpressionEvaluator::new_object() {
  objects_.push_back(nullptr);  // the place first: a record that is made is then kept
  HostValue* object = HVM_NewObject();
  if (object == nullptr) {
    objects_.resize(objects_.size() - 1);
    throw std::bad_alloc();
  }
  return objects_.back() = object;
}

HostValue* ExpressionEvaluator::variable(std::uint32_t slot) const {
  const HostFrame* frame = ctx_->frame;
  const std::uint32_t slot_base = frame == nullptr ? 0 : frame->slot_base.get();
  return ctx_->read_slot.get()(ctx_, static_cast<int>(slot - slot_base + frame_base_));
}

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
      return read_value(evaluator.variable(load<std::uint32_t>(value.payload)));
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
      return read_value(evaluator.variable(load<std::uint32_t>(slot->payload)));
    default:
      break;
  }
  // required: neither 64-bit integers nor wide strings are read here.
  const HostCodeNode* name = node_in(*slot, NodeKind::name);
  if (name == nullptr || name->link.tag != SlotTag::string) return false;
  return text_at(load<const char*>(name->link.payload));
}

// ---- Array literals

namespace {

constexpr std::int64_t deepest_nesting = 102400;

/// The table that an array literal writes down. The literal is flat: opening and closing items stand in one chain, and
/// two stacks keep the open tables and the next key of each.
class LiteralTable {
 public:
  LiteralTable(HostContext ctx, HostValue* result) : ctx_(ctx), tables_(512), counts_(256) { open_in(result); }

  /// Takes an item of the chain. False: the literal is not read any further.
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

  /// required: at this depth the literal ends, silently, with what is built.
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
      // A table without a key has no place that is known to last: what follows in it could not be built.
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

  /// required: a real key that is the next automatic one advances it, an integer key does not.
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

// ---- Selections

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
    NextSlot next_slot;
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
    open_.push_back({cursor, pair, made, NextSlot(ctx_, made)});
  }

  /// required: below the last level integer keys are counted anew and string keys are kept ... A key of any other kind
  /// has no place in the result: its entry is passed over.
  HostValue* slot_for(OpenLevel& level) const {
    HostValue* key = &level.cursor.item()->key;
    if (key->tag == ValueTag::integer) return level.next_slot();
    return key->tag == ValueTag::string_record ? HVM_HashSet(ctx_, level.made, key) : nullptr;
  }

  /// required: ... and at the last level every key is counted anew.
  void take_all(TableCursor& cursor, HostValue* destination) const {
    NextSlot next_slot(ctx_, force_table(ctx_, destination, cursor.capacity()));
    while (cursor.next()) HVM_DupObject(ctx_, next_slot(), &cursor.item()->value, 1);
  }

  HostContext ctx_;
  const SelectorPairs& pairs_;
  std::vector<OpenLevel> open_;
};

}  // namespace

void build_selection(ExpressionEvaluator& evaluator, const HostCodeNode* node, HostValue* result) {
  if (node == nullptr) return;
  HostHash* table = table_in(
      node->link.tag == SlotTag::variable ? evaluator.variable(load<std::uint32_t>(node->link.payload)) : nullptr);
  SelectorPairs pairs;
  for (const HostCodeNode* cell = node_in(node->value); cell != nullptr && cell->kind == NodeKind::list_cell;
       cell = node_in(cell->value))
    pairs.push_back(pair_in(evaluator, cell));
  if (pairs.empty()) return;
  if (pairs.size() > 1) return Selection(evaluator.ctx(), pairs).select(table, result);
  // required: one selector gives its first match alone, a range too.
  TableCursor cursor(table, pairs[0].first, pairs[0].second);
  if (cursor.next() && cursor.item() != nullptr) HVM_DupObject(evaluator.ctx(), result, &cursor.item()->value, 1);
}

}  // namespace arrayfold
