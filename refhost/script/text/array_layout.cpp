// script/text/array_layout.cpp: the elements of an array in nested brackets

#include "script/text/array_layout.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace hvm {
namespace {

constexpr std::size_t line_width = 100;

/// The positions on an axis that are shown; -1 for those between head and tail.
Extents shown_positions(std::int64_t extent, std::int64_t edge) {
  Extents positions;
  for (std::int64_t i = 0; i < extent; ++i) {
    if (extent > 2 * edge && i == edge) {
      positions.push_back(-1);
      i = extent - edge;
    }
    positions.push_back(i);
  }
  return positions;
}

/// Writes the nested brackets of an array, row by row.
class BracketWriter {
 public:
  /// `edge` 0 shows every element.
  BracketWriter(const Extents& extents, std::int64_t edge, const ElementText& element)
      : extents_(extents), edge_(edge), element_(element), at_(extents.size()) {}

  /// In one line when it fits, otherwise with a line for every row of the last axis.
  std::string text() {
    axis(0, false);
    if (out_.size() <= line_width || extents_.size() < 2) return std::move(out_);
    out_.clear();
    axis(0, true);
    return "\n" + out_;
  }

 private:
  void axis(std::size_t number, bool in_lines) {
    if (number == extents_.size()) return void(out_ += element_(at_));
    const std::int64_t extent = extents_[number];
    const Extents positions = shown_positions(extent, edge_ > 0 ? edge_ : extent);
    out_ += '[';
    for (std::size_t i = 0; i < positions.size(); ++i) {
      if (i > 0) separator(number, in_lines);
      at_[number] = positions[i];
      positions[i] < 0 ? void(out_ += "...") : axis(number + 1, in_lines);
    }
    out_ += ']';
  }

  void separator(std::size_t number, bool in_lines) {
    const bool has_rows = in_lines && number + 1 < extents_.size();
    out_ += has_rows ? ",\n" + std::string(number + 1, ' ') : ", ";
  }

  const Extents& extents_;
  std::int64_t edge_;
  const ElementText& element_;
  Extents at_;
  std::string out_;
};

/// Collects the rows of an array, and writes them in columns.
class ColumnWriter {
 public:
  ColumnWriter(const Extents& extents, std::int64_t edge, const ElementText& element)
      : extents_(extents), edge_(edge), element_(element), at_(extents.size()) {}

  std::string text(std::size_t front, std::size_t width) {
    if (extents_.empty()) return element_(at_);
    axis(0);
    const std::size_t brackets = 2 * extents_.size();
    if (rows_.size() == 1 && front + brackets + plain_width(rows_.front()) <= width) return line(rows_.front());
    measure(width > brackets ? width - brackets : 0);
    std::string out;
    for (const Row& row : rows_) out += "\n" + aligned_line(row);
    return out;
  }

 private:
  struct Row {
    std::size_t opened = 0;  // brackets that open here
    std::size_t closed = 0;
    bool is_gap = false;  // stands for rows that are left out
    std::vector<std::string> cells;
  };

  void axis(std::size_t number) {
    const std::int64_t extent = extents_[number];
    const bool is_row = number + 1 == extents_.size();
    // Rows without elements are many where nothing limits them.
    const std::int64_t edge = edge_ > 0 ? edge_ : std::max<std::int64_t>(extent <= most_shown ? extent : 3, 1);
    const Extents positions = shown_positions(extent, edge);
    if (is_row || positions.empty()) return add_row(number, is_row ? positions : Extents{});
    ++opened_;
    for (const std::int64_t position : positions) {
      at_[number] = position;
      position < 0 ? rows_.push_back({0, 0, true, {}}) : axis(number + 1);
    }
    ++rows_.back().closed;
  }

  void add_row(std::size_t number, const Extents& positions) {
    Row row;
    row.opened = opened_ + 1;
    row.closed = 1;
    opened_ = 0;
    for (const std::int64_t position : positions) {
      at_[number] = position;
      row.cells.push_back(position < 0 ? "..." : element_(at_));
    }
    rows_.push_back(std::move(row));
  }

  static std::size_t plain_width(const Row& row) {
    std::size_t width = 0;
    for (const std::string& cell : row.cells) width += cell.size() + 2;
    return width;
  }

  static std::string line(const Row& row) {
    std::string out(row.opened, '[');
    for (std::size_t i = 0; i < row.cells.size(); ++i) out += (i > 0 ? ", " : "") + row.cells[i];
    return out.append(row.closed, ']');
  }

  /// Decides how many columns stand side by side. When rows are wrapped, all columns are alike.
  void measure(std::size_t room) {
    for (const Row& row : rows_)
      for (std::size_t i = 0; i < row.cells.size(); ++i) {
        if (i == widths_.size()) widths_.push_back(0);
        widths_[i] = std::max(widths_[i], row.cells[i].size());
      }
    std::size_t whole = 0;
    std::size_t widest = 0;
    for (const std::size_t width : widths_) {
      whole += width + 2;
      widest = std::max(widest, width);
    }
    in_line_ = std::max<std::size_t>(widths_.size(), 1);
    if (whole <= room + 2) return;
    std::fill(widths_.begin(), widths_.end(), widest);
    in_line_ = std::max<std::size_t>((room + 2) / (widest + 2), 1);
  }

  std::string aligned_line(const Row& row) const {
    const std::size_t depth = extents_.size();
    std::string out;
    if (row.is_gap) {
      out = std::string(depth - 1, ' ') + "...";
    } else {
      out.append(depth - std::min(depth, row.opened), ' ').append(row.opened, '[');
      for (std::size_t i = 0; i < row.cells.size(); ++i) {
        if (i > 0) out += i % in_line_ == 0 ? ",\n" + std::string(depth, ' ') : ", ";
        out.append(widths_[i] - row.cells[i].size(), ' ') += row.cells[i];
      }
      out.append(row.closed, ']');
    }
    return &row == &rows_.back() ? out : out + ",";
  }

  const Extents& extents_;
  std::int64_t edge_;
  const ElementText& element_;
  Extents at_;
  std::size_t opened_ = 0;  // brackets before the next row
  std::vector<Row> rows_;
  std::vector<std::size_t> widths_;
  std::size_t in_line_ = 1;
};

}  // namespace

std::int64_t element_count(const Extents& extents) {
  std::int64_t count = 1;
  for (const std::int64_t extent : extents)
    if (extent < 0 || __builtin_mul_overflow(count, extent, &count)) return 0;
  return count;
}

std::string in_parentheses(const Extents& extents) { return fmt::format("({})", fmt::join(extents, ", ")); }

std::int64_t edge_of(const Extents& extents) {
  const auto shown = [&](std::int64_t edge) {
    std::int64_t product = 1;
    for (const std::int64_t extent : extents) {
      product *= std::min(extent, 2 * edge);
      if (product > most_shown) break;
    }
    return product;
  };
  for (std::int64_t edge = 3; edge > 1; --edge)
    if (shown(edge) <= most_shown) return edge;
  return 1;
}

std::string bracketed(const Extents& extents, std::int64_t edge, const ElementText& element) {
  return BracketWriter(extents, edge, element).text();
}

std::string aligned(const Extents& extents, std::int64_t edge, const ElementText& element, std::size_t front,
                    std::size_t width) {
  return ColumnWriter(extents, edge, element).text(front, width);
}

}  // namespace hvm
