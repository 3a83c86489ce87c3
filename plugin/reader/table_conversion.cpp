// reader/table_conversion.cpp: the walks over tables and data literals

#include "reader/table_conversion.hpp"

#include <algorithm>

#include "array/storage.hpp"

namespace arrayfold {
namespace {

/// A table that is being walked, and its entries so far.
struct OpenTable {
  explicit OpenTable(HostHash* hash) : cursor(hash) {}
  TableCursor cursor;
  int count = 0;
};

template <class T>
void enter_depth(ArrayData<T>& data, std::size_t depth) {
  if (depth == data.shape.size()) data.shape.push_back(0);
}

/// Makes room for the entries of a table that is entered, so that a long one is not copied as it grows. Room comes in
/// powers of two, as it does by growing.
template <class T>
void make_room(std::vector<T>& values, std::size_t more) {
  const std::size_t least = values.size() + more;
  if (least <= values.capacity()) return;
  std::size_t room = 8;
  while (room < least) room *= 2;
  values.reserve(room);
  if constexpr (!std::is_same_v<T, bool>) advise_huge_pages(values.data(), values.capacity() * sizeof(T));
}

/// Takes numbers until the table ends, which is null, or something else comes.
template <class Kind>
HostValue* take_numbers(OpenTable& table, std::vector<typename Reading<Kind>::element>& values) {
  HostHashItem** const ordered = table.cursor.ordered_rest();
  const int left = table.cursor.ordered_left();
  for (int n = 0; n < left; ++n) {
    HostValue* value = &ordered[n]->value;
    if (value->tag == ValueTag::table || !HVM_NumberCheck(value)) {
      table.cursor.pass_ordered(n + 1);
      table.count += n;
      return value;
    }
    values.push_back(Reading<Kind>::read(value));
  }
  table.cursor.pass_ordered(left);
  table.count += left;
  while (table.cursor.next()) {
    HostValue* value = &table.cursor.item()->value;
    if (value->tag == ValueTag::table || !HVM_NumberCheck(value)) return value;
    values.push_back(Reading<Kind>::read(value));
    ++table.count;
  }
  return nullptr;
}

}  // namespace

// The tables around the innermost are kept on a stack of its own: their depth is the script's, and the thread's stack
// is not.
template <class Kind>
int read_table_data(ArrayData<typename Reading<Kind>::element>& data, HostContext, HostHash* hash,
                    const char* /*message*/, std::size_t depth) {
  std::vector<OpenTable> outer;
  OpenTable innermost(hash);
  const auto enter = [&] {
    enter_depth(data, depth + outer.size());
    make_room(data.values, innermost.cursor.most_left());
  };
  enter();
  while (true) {
    HostValue* other = take_numbers<Kind>(innermost, data.values);
    if (other == nullptr) {
      data.shape[depth + outer.size()] = innermost.count;
      if (outer.empty()) return 1;
      innermost = outer.back();
      outer.pop_back();
      ++innermost.count;
    } else if (other->tag == ValueTag::table) {
      outer.push_back(innermost);
      innermost = OpenTable(load<HostHash*>(other->payload));
      enter();
    } else {
      return 0;
    }
  }
}

namespace {

/// Takes the element in a cell of a row. False: it ends the row.
/// required: a scalar of the wrong form adds no element, and its cell counts all the same.
template <class Kind>
bool take_cell(const ScalarRef& scalar, ArrayData<typename Reading<Kind>::element>& data) {
  if (scalar.index() == Reading<Kind>::taken) {
    data.values.push_back(std::get<Reading<Kind>::taken>(scalar));
  } else if (scalar.index() == value_scalar) {
    HostValue* value = std::get<value_scalar>(scalar);
    if (!HVM_NumberCheck(value)) return false;
    data.values.push_back(Reading<Kind>::read(value));
  }
  return true;
}

template <class Kind>
void read_elements(ExpressionEvaluator& evaluator, const HostCodeNode* row,
                   ArrayData<typename Reading<Kind>::element>& data) {
  std::uint32_t cells = 0;
  // Here a cell leads on by its value slot, whatever the tag there says.
  for (const HostCodeNode* cell = row; cell != nullptr; cell = load<const HostCodeNode*>(cell->value.payload)) {
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

/// The row that a cell's link leads to. Null for what is no row and no cell: it counts as one and adds nothing.
const HostCodeNode* row_in(const HostCodeSlot& link) {
  const HostCodeNode* row = node_in(link, NodeKind::data_row);
  return row != nullptr ? row : node_in(link, NodeKind::list_cell);
}

}  // namespace

// Like nested tables, nested rows need none of the thread's stack.
template <class Kind>
bool read_code_data(HostContext, ExpressionEvaluator& evaluator, const HostCodeNode* node,
                    ArrayData<typename Reading<Kind>::element>& data, std::size_t depth) {
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

template <class Kind>
std::optional<ArrayData<typename Reading<Kind>::element>> read_code_value(HostContext ctx, HostValue* value) {
  if (value->tag != ValueTag::code) return std::nullopt;
  const auto* code = load<const HostCode*>(value->payload);
  if (code == nullptr || code->root.get() == nullptr) return std::nullopt;
  if (code->root.get()->kind != NodeKind::quotation) return std::nullopt;
  const HostCodeNode* row = node_in(code->root.get()->link, NodeKind::data_row);
  if (row == nullptr) return std::nullopt;
  std::optional<ArrayData<typename Reading<Kind>::element>> data(std::in_place);
  ExpressionEvaluator evaluator(ctx, code->frame_base);
  read_code_data<Kind>(ctx, evaluator, row, *data, 0);
  return data;
}

ARRAYFOLD_TABLE_CONVERSION(, XTBool)
ARRAYFOLD_TABLE_CONVERSION(, XTInt)
ARRAYFOLD_TABLE_CONVERSION(, XTInt64)
ARRAYFOLD_TABLE_CONVERSION(, XTFloat)
ARRAYFOLD_TABLE_CONVERSION(, XTDouble)

}  // namespace arrayfold
