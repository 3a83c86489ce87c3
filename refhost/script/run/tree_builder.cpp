// script/run/tree_builder.cpp: from a quotation's syntax to the tree that a module reads

#include "script/run/tree_builder.hpp"

#include <type_traits>
#include <utility>

namespace hvm {
namespace {

using arrayfold::SlotTag;
using arrayfold::store;

void lead(HostCodeSlot& slot, const HostCodeNode* node) {
  slot.tag = SlotTag::node;
  store<const HostCodeNode*>(slot.payload, node);
}

/// Points at text of the quotation. The length counts the terminator.
template <class Text>
void point_at(HostCodeSlot& slot, const Text& text) {
  slot.tag = std::is_same_v<Text, std::string> ? SlotTag::string : SlotTag::wide_string;
  store<const typename Text::value_type*>(slot.payload, text.c_str());
  slot.length = static_cast<std::uint32_t>(text.size() + 1);
}

struct LiteralWriter {
  HostCodeSlot& slot;

  bool operator()(const IntegerLiteral& form) const { return number<std::int32_t>(SlotTag::integer, form.value); }
  bool operator()(const Integer64Literal& form) const { return number<std::int64_t>(SlotTag::integer64, form.value); }
  bool operator()(const RealLiteral& form) const { return number<double>(SlotTag::real, form.value); }
  bool operator()(const StringLiteral& form) const { return point_at(slot, form.text), true; }
  bool operator()(const WideStringLiteral& form) const { return point_at(slot, form.text), true; }
  template <class Other>
  bool operator()(const Other&) const {
    return false;
  }

  template <class Number>
  bool number(SlotTag tag, Number x) const {
    slot.tag = tag;
    store<Number>(slot.payload, x);
    return true;
  }
};

/// Writes a literal into `slot`. Returns false when the expression is not a literal.
bool write_literal(HostCodeSlot& slot, const Expression& expression) {
  return std::visit(LiteralWriter{slot}, expression.form);
}

/// A table literal of literals alone, however nested.
bool is_literal_table(const Expression& expression) {
  const auto* table = std::get_if<TableLiteral>(&expression.form);
  if (!table) return false;
  for (const TableEntry& entry : table->entries) {
    if (entry.key && !is_literal(*entry.key)) return false;
    if (!is_literal(*entry.value) && !is_literal_table(*entry.value)) return false;
  }
  return true;
}

bool has_range(const Expression& selection) {
  const auto& index = std::get<Index>(std::get<Postfix>(selection.form).suffixes.front().form);
  for (const ExpressionPtr& item : index.indices)
    if (std::holds_alternative<KeyRange>(item->form)) return true;
  return false;
}

class TreeBuilder {
 public:
  TreeBuilder(Code& code, const VariableView& variables) : code_(code), variables_(variables) {}

  HostCodeNode* quotation(const Quotation& quoted) {
    HostCodeNode* root = node(NodeKind::quotation);
    switch (quoted.form) {
      case Quotation::Form::plain:
        named(root->link, quoted);
        break;
      case Quotation::Form::nested: {
        HostCodeNode* inner = node(NodeKind::quotation);
        named(inner->link, quoted);
        lead(root->link, inner);
        break;
      }
      case Quotation::Form::text: {
        HostCodeNode* inner = node(NodeKind::variable_name);
        variable(inner->value, *quoted.subject);
        lead(root->link, inner);
        break;
      }
      case Quotation::Form::labelled: {
        HostCodeNode* inner = node(NodeKind::labelled);
        named(inner->link, quoted);
        point_at(inner->value, quoted.label);
        lead(root->link, inner);
        break;
      }
      case Quotation::Form::data:
        lead(root->link, row(std::get<TableLiteral>(quoted.subject->form)));
        break;
    }
    return root;
  }

 private:
  HostCodeNode* node(NodeKind kind) {
    HostCodeNode& made = code_.nodes.emplace_back(HostCodeNode{});
    made.kind = kind;
    return &made;
  }

  /// A call of `callee_text` by its name, or of an unnamed function that evaluates an expression.
  HostCodeNode* call_node(const char* callee_text, const Expression* expression, bool takes_arguments) {
    Callee& callee = code_.callees.emplace_back(Callee{});
    callee.text = callee_text;
    callee.code = &code_;
    callee.expression = expression;
    callee.takes_arguments = takes_arguments;
    HostCodeNode* call = node(NodeKind::call);
    store<const arrayfold::HostSymbol*>(call->link.payload, &callee);
    return call;
  }

  bool is_set(const Variable& variable) const { return variables_.state(variable) != VariableState::unset; }

  /// Writes the variable that `name` is.
  void variable(HostCodeSlot& slot, const Expression& name) {
    const auto& variable = std::get<Variable>(name.form);
    if (!is_set(variable)) variables_.fail_unset(variable, name.span);
    slot.tag = SlotTag::variable;
    store<std::uint64_t>(slot.payload, variables_.slot(variable));
  }

  /// What a quoted name leads to: the variable of that name, with its arguments if it has any; otherwise a call.
  void named(HostCodeSlot& link, const Quotation& quoted) {
    const auto& name = std::get<Variable>(quoted.subject->form);
    if (!is_set(name)) {
      HostCodeNode* call = call_node(name.name.c_str(), nullptr, false);
      arguments(call->value, quoted.arguments);
      lead(link, call);
    } else if (quoted.has_arguments) {
      HostCodeNode* list = node(NodeKind::slot_list);
      HostCodeNode* inner = node(NodeKind::slot_list_inner);
      variable(list->link, *quoted.subject);
      lead(list->value, inner);
      arguments(inner->value, quoted.arguments);
      lead(link, list);
    } else {
      variable(link, *quoted.subject);
    }
  }

  // ---- Arguments

  /// A chain of cells: the argument in the value, the next cell behind the link.
  void arguments(HostCodeSlot& begin, const Expressions& expressions) {
    HostCodeSlot* at = &begin;
    for (const ExpressionPtr& expression : expressions) {
      HostCodeNode* cell = node(NodeKind::list_cell);
      lead(*at, cell);
      argument(*cell, *expression, expression == expressions.back());
      at = &cell->link;
    }
  }

  void argument(HostCodeNode& cell, const Expression& expression, bool is_last) {
    if (const auto* name = std::get_if<Variable>(&expression.form)) {
      if (is_last && !is_set(*name)) return bare_name(cell, *name);
      return variable(cell.value, expression);
    }
    // A module reads no 64-bit integer in a cell; computed ones it takes.
    const bool is_wide = std::holds_alternative<Integer64Literal>(expression.form);
    if (is_wide || !write_literal(cell.value, expression)) lead(cell.value, computed(expression));
  }

  /// The cell itself becomes the name, so nothing can follow it.
  static void bare_name(HostCodeNode& cell, const Variable& name) {
    cell.kind = NodeKind::name;
    point_at(cell.link, name.name);
    store<const char*>(cell.value.payload, name.name.c_str());
  }

  /// The node of what is neither a literal nor a variable.
  HostCodeNode* computed(const Expression& expression) {
    if (const auto* quoted = std::get_if<QuotationLiteral>(&expression.form)) return quotation(*quoted->quotation);
    if (is_literal_table(expression)) return array_literal(std::get<TableLiteral>(expression.form));
    if (is_selection(expression)) return selection(expression);
    const auto* call = std::get_if<Call>(&expression.form);
    // A module would make a table of a quotation among the arguments; the host hands it over as it is.
    if (!call || call->has_quotation) return call_node("", &expression, false);
    HostCodeNode* made = call_node(call->name.c_str(), &expression, true);
    arguments(made->value, call->arguments);
    return made;
  }

  // ---- Selections

  /// Keys of anything but a table, such as the indices of an array, are evaluated by the host.
  bool is_selection(const Expression& expression) const {
    const Expression* from = selected_variable(expression);
    if (!from) return false;
    return has_range(expression) || variables_.state(std::get<Variable>(from->form)) == VariableState::table;
  }

  HostCodeNode* selection(const Expression& expression) {
    const auto& index = std::get<Index>(std::get<Postfix>(expression.form).suffixes.front().form);
    HostCodeNode* chosen = node(NodeKind::selection);
    HostCodeNode* made = node(NodeKind::selection);
    lead(made->value, chosen);
    variable(chosen->link, *selected_variable(expression));
    HostCodeSlot* at = &chosen->value;
    for (const ExpressionPtr& item : index.indices) {
      HostCodeNode* cell = node(NodeKind::list_cell);
      lead(*at, cell);
      selector(cell->link, *item);
      at = &cell->value;
    }
    return made;
  }

  void selector(HostCodeSlot& slot, const Expression& expression) {
    if (const auto* range = std::get_if<KeyRange>(&expression.form)) {
      HostCodeNode* ends = node(NodeKind::range);
      range_end(ends->link, range->low.get());
      range_end(ends->value, range->high.get());
      lead(slot, ends);
    } else if (std::holds_alternative<Variable>(expression.form)) {
      variable(slot, expression);
    } else if (!write_literal(slot, expression)) {
      lead(slot, computed(expression));
    }
  }

  void range_end(HostCodeSlot& slot, const Expression* end) {
    if (end)
      selector(slot, *end);
    else
      slot.tag = SlotTag::absent;
  }

  // ---- Array literals

  /// A flat chain in which nested tables open and close. Here a cell's link holds its item and its value leads on.
  HostCodeNode* array_literal(const TableLiteral& table) {
    HostCodeNode* made = node(NodeKind::array_literal);
    HostCodeSlot* at = &made->value;
    items(at, table);
    if (table.entries.empty()) add_item(at, nullptr);
    at->tag = SlotTag::absent;
    return made;
  }

  void add_item(HostCodeSlot*& at, const HostCodeNode* item) {
    HostCodeNode* cell = node(NodeKind::list_cell);
    if (item)
      lead(cell->link, item);
    else
      cell->link.tag = SlotTag::absent;
    lead(*at, cell);
    at = &cell->value;
  }

  void items(HostCodeSlot*& at, const TableLiteral& table) {
    for (const TableEntry& entry : table.entries) {
      const auto* inner = std::get_if<TableLiteral>(&entry.value->form);
      const HostCodeNode* opening = inner ? node(NodeKind::literal_open) : nullptr;
      if (inner && !entry.key)
        add_item(at, opening);
      else
        add_item(at, item(entry, opening));
      if (!inner) continue;
      items(at, *inner);
      add_item(at, node(NodeKind::literal_close));
    }
  }

  HostCodeNode* item(const TableEntry& entry, const HostCodeNode* opening) {
    HostCodeNode* made = node(NodeKind::literal_item);
    HostCodeNode* first = node(NodeKind::list_cell);
    lead(made->link, first);
    write_literal(first->value, entry.key ? *entry.key : *entry.value);
    if (!entry.key)
      made->value.tag = SlotTag::absent;
    else if (opening)
      lead(made->value, opening);
    else
      write_literal(made->value, *entry.value);
    return made;
  }

  // ---- Data literals

  /// The node of a row is its first cell. Here too a cell's link holds the element and its value leads on.
  HostCodeNode* row(const TableLiteral& table) {
    HostCodeNode* first = nullptr;
    HostCodeSlot* at = nullptr;
    for (const TableEntry& entry : table.entries) {
      HostCodeNode* cell = node(first ? NodeKind::list_cell : NodeKind::data_row);
      if (at) lead(*at, cell);
      if (!first) first = cell;
      element(cell->link, *entry.value);
      at = &cell->value;
    }
    at->tag = SlotTag::absent;
    return first;
  }

  void element(HostCodeSlot& slot, const Expression& expression) {
    if (const auto* inner = std::get_if<TableLiteral>(&expression.form))
      lead(slot, row(*inner));
    else if (std::holds_alternative<Variable>(expression.form))
      variable(slot, expression);
    else
      write_literal(slot, expression);
  }

  Code& code_;
  const VariableView& variables_;
};

}  // namespace

void build_tree(Code& code, const VariableView& variables) {
  code.root = TreeBuilder(code, variables).quotation(*code.quotation);
}

}  // namespace hvm
