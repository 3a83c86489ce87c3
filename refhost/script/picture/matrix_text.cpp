// script/picture/matrix_text.cpp: a matrix as text, a character or two for each element

#include "script/picture/matrix_text.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "script/picture/range.hpp"
#include "script/picture/thinning.hpp"

namespace hvm {
namespace {

constexpr std::string_view shades = " .:-=+*#%@";
constexpr char no_number = '?';

char shade_of(double value, const PictureRange& range) {
  if (!std::isfinite(value)) return no_number;
  const double width = range.high - range.low;
  if (!(width > 0)) return shades[shades.size() / 2];
  const auto level = static_cast<std::size_t>((value - range.low) / width * static_cast<double>(shades.size()));
  return shades[std::min(level, shades.size() - 1)];
}

}  // namespace

std::string matrix_text(const Figure& figure, TextSize size) {
  PictureRange range;
  for (const double value : figure.cells.values) range.take(value);
  range.require_drawable();
  constexpr int frame = 2;
  constexpr int beside_rows = 5;  // title, frame, label and legend
  const auto columns = static_cast<std::size_t>(std::max(size.columns - frame, 1));
  const auto rows = static_cast<std::size_t>(std::max(size.lines - beside_rows, 1));
  const Cells cells = thinned_cells(figure.cells, rows, columns);
  const std::size_t width = cells.columns * 2 <= columns ? 2 : 1;
  const std::string edge = fmt::format("+{}+\n", std::string(cells.columns * width, '-'));
  std::string text = figure.title.empty() ? "" : fmt::format("{}\n", figure.title);
  text += edge;
  for (std::size_t row = 0; row < cells.rows; ++row) {
    text += '|';
    for (std::size_t column = 0; column < cells.columns; ++column)
      text += std::string(width, shade_of(cells.values[row * cells.columns + column], range));
    text += "|\n";
  }
  text += edge;
  const auto legend = [&](double value) { return fmt::format("\"{}\" {:.6g}", shade_of(value, range), value); };
  text += legend(range.low);
  if (range.high > range.low) text += "  " + legend(range.high);
  return text + "\n";
}

}  // namespace hvm
