// bench/tables.cpp: xarray over a host table of numbers, by dimensions, and over a quoted data literal

#include <array>
#include <cstdint>
#include <list>
#include <random>

#include "families.hpp"
#include "module.hpp"

namespace arrayfold::bench {
namespace {

const std::vector<int> table_sizes{10, 1'000, 100'000, 1'000'000};

/// The tree of a quotation: `@double`, or `@[[...], ...]` of three rows by three. The first cell of a row has a node
/// kind of its own. The link of a cell holds a row or an element, its value leads to the next cell.
class Quotation {
 public:
  void lead_to_dtype() {
    static HostSymbol symbol{};
    symbol.text = "double";
    nodes_[0].kind = NodeKind::call;
    store<const void*>(nodes_[0].link.payload, &symbol);
    finish(&nodes_[0]);
  }

  /// `@double(count)`.
  void lead_to_dimension(int count) {
    lead_to_dtype();
    store<const void*>(nodes_[0].value.payload, &nodes_[1]);
    nodes_[1].kind = NodeKind::list_cell;
    nodes_[1].value.tag = SlotTag::integer;
    store<std::int32_t>(nodes_[1].value.payload, count);
  }

  void lead_to_three_rows() {
    for (std::size_t row = 0; row < 3; ++row) {
      for (std::size_t column = 0; column < 3; ++column)
        write_element(cell(row, column), static_cast<double>(3 * row + column));
      // The chain of rows. Its first cell also has the node kind of a row.
      nodes_[9 + row].kind = row == 0 ? NodeKind::data_row : NodeKind::list_cell;
      store<const void*>(nodes_[9 + row].link.payload, &nodes_[3 * row]);
      if (row < 2) store<const void*>(nodes_[9 + row].value.payload, &nodes_[10 + row]);
    }
    finish(&nodes_[9]);
  }

  Value value() const {
    Value value;
    value.record().tag = ValueTag::code;
    value.record().lifetime = Lifetime::none;
    store<const void*>(value.record().payload, &code_);
    return value;
  }

 private:
  HostCodeNode& cell(std::size_t row, std::size_t column) {
    HostCodeNode& cell = nodes_[3 * row + column];
    cell.kind = column == 0 ? NodeKind::data_row : NodeKind::list_cell;
    if (column < 2) store<const void*>(cell.value.payload, &nodes_[3 * row + column + 1]);
    return cell;
  }

  static void write_element(HostCodeNode& cell, double element) {
    cell.link.tag = SlotTag::real;
    store<double>(cell.link.payload, element);
  }

  void finish(HostCodeNode* quoted) {
    root_.kind = NodeKind::quotation;
    store<const void*>(root_.link.payload, quoted);
    code_.root = &root_;
  }

  std::array<HostCodeNode, 12> nodes_{};
  HostCodeNode root_{};
  HostCode code_{};
};

Value quoted_double() {
  static Quotation quotation;
  quotation.lead_to_dtype();
  return quotation.value();
}

/// A host table of doubles of the normal distribution.
std::vector<Value> doubles(int n) {
  std::mt19937_64 random(1);
  std::normal_distribution<double> normal;
  Value table = Value::table(n);
  for (int key = 0; key < n; ++key)
    hvm::assign(*hvm::slot(hvm::table_of(table.record()), key), Value(normal(random)).record());
  return {quoted_double(), table};
}

std::vector<Value> three_rows(int) {
  static Quotation quotation;
  quotation.lead_to_three_rows();
  return {quoted_double(), quotation.value()};
}

std::vector<Value> dimension(int n) {
  static std::list<Quotation> quotations;
  quotations.emplace_back().lead_to_dimension(n);
  return {quotations.back().value()};
}

}  // namespace

void add_tables() {
  add_call("tables/xarray", "xarray", table_sizes, doubles);
  add_call("tables/dimensions", "xarray", four_sizes, dimension);
  add_call("tables/literal", "xarray", {9}, three_rows);
}

}  // namespace arrayfold::bench
