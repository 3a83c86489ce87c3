// script/text/array_layout.cpp: the elements of an array in nested brackets

#include "script/text/array_layout.hpp"

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

}  // namespace

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

}  // namespace hvm
