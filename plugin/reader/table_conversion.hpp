// reader/table_conversion.hpp: gathering elements and shape from host tables and data literals
//
// The shape is not verified: each depth records the count of the last table or row that was visited there, numbers and
// nested tables may mix, and the elements are whatever was found, in their order. The caller fits them to the shape.

#pragma once

#include <algorithm>
#include <optional>
#include <vector>

#include "array/storage.hpp"
#include "reader/evaluation.hpp"
#include "reader/expression_nodes.hpp"
#include "reader/table_cursor.hpp"

namespace arrayfold {

/// The working record of one conversion.
template <class T>
struct ArrayData {
  std::uint32_t cell_count = 0;  // cells of the row that ended last
  std::vector<int> shape;        // one entry for each depth
  std::vector<T> values;         // in order of arrival
};

template <class T>
void enter_depth(ArrayData<T>& data, std::size_t depth) {
  if (depth == data.shape.size()) data.shape.push_back(0);
}

// ---- Tables

/// A table on the way to the innermost one, and the number of its entries so far.
struct OpenTable {
  explicit OpenTable(HostHash* hash) : cursor(hash) {}
  TableCursor cursor;
  int count = 0;
};

/// Makes room for the entries of a table that is entered, so that a long one is not copied as it grows. Room comes in
/// powers of two, as it does by growing.
template <class T>
void make_room(std::vector<T>& values, std::size_t more) {
  const std::size_t minimum = values.size() + more;
  if (minimum <= values.capacity()) return;
  std::size_t room = 8;
  while (room < minimum) room *= 2;
  reserve_elements(values, room);
}

/// What follows the numbers of a table.
enum class Following { nothing, table, no_number };

/// Appends numbers up to what is none. A table that follows is in `inner`: its entry may be gone when the host has been
/// asked for something else.
template <class Kind>
Following take_numbers(OpenTable& table, std::vector<StoredElement<Kind>>& values, HostHash*& inner) {
  while (table.cursor.next_entry()) {
    HostValue* value = &table.cursor.item()->value;
    if (value->tag == ValueTag::table) {
      inner = load<HostHash*>(value->payload);
      return Following::table;
    }
    if (!HVM_NumberCheck(value)) return Following::no_number;
    values.push_back(Kind::stored::read(value));
    ++table.count;
  }
  return Following::nothing;
}

/// Gathers from `hash` and the tables in it, from `depth` on. Returns 0 at the first leaf that is not a number; the
/// elements read so far are kept. `message` is the kind's, handed from level to level and never shown. The tables
/// around the innermost one are kept on a stack of their own, since a script decides their depth.
template <class Kind>
int read_table_data(ArrayData<StoredElement<Kind>>& data, HostContext, HostHash* hash, const char* /*message*/,
                    std::size_t depth) {
  std::vector<OpenTable> outer;
  OpenTable innermost(hash);
  const auto enter = [&] {
    enter_depth(data, depth + outer.size());
    make_room(data.values, innermost.cursor.most_left());
  };
  enter();
  while (true) {
    HostHash* inner = nullptr;
    switch (take_numbers<Kind>(innermost, data.values, inner)) {
      case Following::nothing:
        data.shape[depth + outer.size()] = innermost.count;
        if (outer.empty()) return 1;
        innermost = outer.back();
        outer.pop_back();
        ++innermost.count;
        break;
      case Following::table:
        outer.push_back(innermost);
        innermost = OpenTable(inner);
        enter();
        break;
      case Following::no_number:
        return 0;
    }
  }
}

// ---- Data literals

/// Takes the element in a cell of a row. False: the row ends there.
/// required: a scalar of another form adds no element, and its cell counts all the same.
template <class Kind>
bool take_cell(const ScalarRef& scalar, ArrayData<StoredElement<Kind>>& data) {
  if (const auto* literal = std::get_if<typename Kind::literal>(&scalar)) {
    data.values.push_back(static_cast<StoredElement<Kind>>(*literal));
  } else if (scalar.index() == value_scalar) {
    HostValue* value = std::get<value_scalar>(scalar);
    if (!HVM_NumberCheck(value)) return false;
    data.values.push_back(Kind::stored::read(value));
  }
  return true;
}

/// A node that data literals are made of: its value slot leads to the next one, whatever the tag there says.
inline bool is_row(const HostCodeNode* node) {
  return node->kind == NodeKind::data_row || node->kind == NodeKind::list_cell;
}

/// The elements of a row, cell by cell. A row may begin with a node of another kind, which is then its first cell. In
/// such a row a value slot is followed only if its tag is that of a node.
template <class Kind>
void read_elements(ExpressionEvaluator& evaluator, const HostCodeNode* row, ArrayData<StoredElement<Kind>>& data) {
  const bool of_rows = is_row(row);
  std::uint32_t cells = 0;
  for (const HostCodeNode* cell = row; cell != nullptr;
       cell = of_rows ? load<const HostCodeNode*>(cell->value.payload) : node_in(cell->value)) {
    if (!take_cell<Kind>(evaluate_slot(evaluator, &cell->link), data)) return;
    ++cells;
  }
  data.cell_count = cells;
}

/// Rows that are being read: the cell of the one that was entered last, and how many there are so far.
struct OpenRows {
  const HostCodeNode* cell = nullptr;
  int count = 0;
};

/// The row that a cell's link leads to. Null for what leads nowhere, and for a node of another kind whose value slot
/// has another tag than that of a node: these count as a row and add nothing.
inline const HostCodeNode* row_in(const HostCodeSlot& link) {
  const HostCodeNode* node = node_in(link);
  return node == nullptr || is_row(node) || node->value.tag == SlotTag::node ? node : nullptr;
}

/// Gathers from a row of a data literal and the rows in it. Always true: a row that cannot be read ends early. Like
/// nested tables, nested rows need none of the thread's stack.
template <class Kind>
bool read_code_data(HostContext, ExpressionEvaluator& evaluator, const HostCodeNode* node,
                    ArrayData<StoredElement<Kind>>& data, std::size_t depth) {
  xt::svector<OpenRows, 8> open;
  for (const HostCodeNode* row = node; row != nullptr;) {
    const std::size_t row_depth = depth + open.size();
    enter_depth(data, row_depth);
    if (const HostCodeNode* first = node_in(row->link, NodeKind::data_row)) {
      open.push_back({row, 1});
      row = first;
      continue;
    }
    read_elements<Kind>(evaluator, row, data);
    data.shape[row_depth] = static_cast<int>(data.cell_count);
    row = nullptr;
    while (row == nullptr && !open.empty()) {
      OpenRows& innermost = open.back();
      const HostCodeNode* cell = node_in(innermost.cell->value, NodeKind::list_cell);
      if (cell == nullptr) {
        data.shape[depth + open.size() - 1] = innermost.count;
        open.resize(open.size() - 1);
      } else {
        innermost = {cell, innermost.count + 1};
        row = row_in(cell->link);
      }
    }
  }
  return true;
}

/// Gathers from the data literal in `value`; nothing when it holds none.
template <class Kind>
std::optional<ArrayData<StoredElement<Kind>>> read_code_value(HostContext ctx, HostValue* value) {
  if (value->tag != ValueTag::code) return std::nullopt;
  const auto* code = load<const HostCode*>(value->payload);
  if (code == nullptr || code->root.get() == nullptr) return std::nullopt;
  if (code->root.get()->kind != NodeKind::quotation) return std::nullopt;
  const HostCodeNode* row = node_in(code->root.get()->link, NodeKind::data_row);
  if (row == nullptr) return std::nullopt;
  std::optional<ArrayData<StoredElement<Kind>>> data(std::in_place);
  ExpressionEvaluator evaluator(ctx, code->frame_base);
  read_code_data<Kind>(ctx, evaluator, row, *data, 0);
  return data;
}

}  // namespace arrayfold
