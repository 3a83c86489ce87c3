// script/picture/gnuplot_commands.cpp: a figure in the commands of gnuplot

#include "script/picture/gnuplot_commands.hpp"

#include <fmt/format.h>

#include <cmath>

#include "script/picture/range.hpp"
#include "script/picture/thinning.hpp"
#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

constexpr std::size_t longest_text = 200;  // in characters
constexpr double pixels_of_an_inch = 96;
// More cells than that are less than a pixel each.
constexpr std::size_t most_cell_rows = 1000;
constexpr std::size_t most_cell_columns = 1500;

/// A quoted text of gnuplot, in which every character of ASCII but letters and blanks stands as its number: none of
/// them can end the text or start anything. That holds for digits too, which would else go on the number before them.
/// A control character becomes a blank, and a byte that is no character a question mark.
std::string as_gnuplot_text(std::string_view text) {
  std::string made = "\"";
  for (std::size_t i = 0; i < longest_text && !text.empty(); ++i) {
    const std::size_t before = text.size();
    const char32_t c = take_character(text);
    const bool is_lone_byte = c >= 0x80 && before - text.size() == 1;
    const char32_t shown = is_lone_byte ? U'?' : is_control(c) ? U' ' : c;
    const bool is_plain =
        (shown >= U'A' && shown <= U'Z') || (shown >= U'a' && shown <= U'z') || shown == U' ' || shown >= 0x80;
    if (is_plain)
      append_utf8(made, shown);
    else
      made += fmt::format("\\{:03o}", static_cast<unsigned>(shown));
  }
  return made + '"';
}

std::string terminal(const Canvas& canvas) {
  const auto sized = [&](const char* name, const char* rest) {
    return fmt::format("set terminal {} size {},{} noenhanced{}\n", name, canvas.width, canvas.height, rest);
  };
  switch (canvas.form) {
    case Canvas::Form::text:
      return sized("dumb", "");
    case Canvas::Form::svg:
      return sized("svg", " rounded background '#ffffff'");
    case Canvas::Form::png:
      return sized("pngcairo", " rounded background '#ffffff'");
    case Canvas::Form::pdf:
      return fmt::format("set terminal pdfcairo size {:.3f}in,{:.3f}in noenhanced rounded background '#ffffff'\n",
                         canvas.width / pixels_of_an_inch, canvas.height / pixels_of_an_inch);
  }
  return {};
}

std::string labels(const Figure& figure) {
  std::string text;
  if (!figure.title.empty()) text += fmt::format("set title {}\n", as_gnuplot_text(figure.title));
  if (!figure.x_label.empty()) text += fmt::format("set xlabel {}\n", as_gnuplot_text(figure.x_label));
  if (!figure.y_label.empty()) text += fmt::format("set ylabel {}\n", as_gnuplot_text(figure.y_label));
  return text;
}

/// A number as gnuplot reads it; what is not finite leaves a gap.
void append_number(std::string& text, double value) {
  if (std::isfinite(value))
    text += fmt::format("{}", value);
  else
    text += "NaN";
}

void append_point(std::string& text, const Curve& curve, std::size_t i) {
  append_number(text, curve.x[i]);
  text += ' ';
  append_number(text, curve.y[i]);
  text += '\n';
}

/// The points as a block of data with a name.
std::string data_block(const std::string& name, const Curve& curve) {
  std::string text = fmt::format("{} << end\n", name);
  for (std::size_t i = 0; i < curve.x.size(); ++i) append_point(text, curve, i);
  return text + "end\n";
}

/// The points between two gaps, which a line does not show.
Curve points_alone(const Curve& curve) {
  Curve alone;
  for (std::size_t i = 0; i < curve.x.size(); ++i) {
    if (!is_point(curve, i) || is_point(curve, i + 1) || (i > 0 && is_point(curve, i - 1))) continue;
    alone.x.push_back(curve.x[i]);
    alone.y.push_back(curve.y[i]);
  }
  return alone;
}

std::string range_command(const char* axis, const PictureRange& range) {
  return fmt::format("set {}range [{}:{}]\n", axis, range.low, range.high);
}

/// The ranges of both axes, where gnuplot's own choice does not do: it cannot draw an axis without a length.
std::string ranges(const Figure& figure) {
  PictureRange x;
  PictureRange y;
  for (const Curve& curve : figure.curves)
    for (std::size_t i = 0; i < curve.x.size(); ++i) {
      if (!is_point(curve, i)) continue;
      x.take(curve.x[i]);
      y.take(curve.y[i]);
    }
  x.require_drawable();
  y.require_drawable();
  const bool has_width = x.has_length();
  const bool has_height = y.has_length();
  const bool has_bars = figure.form == Figure::Form::bars;
  x.widen();
  y.widen();
  if (has_bars) {
    x.low -= figure.bar_width / 2;
    x.high += figure.bar_width / 2;
    return range_command("x", x) + "set yrange [0:*]\n";
  }
  // The frame would hide points that lie on it.
  const std::string margins = "set offsets graph 0.01, graph 0.01, graph 0.04, graph 0.04\n";
  return margins + (has_width ? "set autoscale xfix\n" : range_command("x", x)) +
         (has_height ? "set autoscale yfix\n" : range_command("y", y));
}

std::string style(Figure::Form form, const Canvas& canvas) {
  const bool is_text = canvas.form == Canvas::Form::text;
  switch (form) {
    case Figure::Form::lines:
      return is_text ? "lines" : "lines linewidth 2";
    case Figure::Form::points:
      return is_text ? "points pointtype '*'" : "points pointtype 7 pointsize 0.5";
    default:
      return is_text ? "boxes" : "boxes fillstyle solid 0.5";
  }
}

std::string curves_commands(const Figure& figure, const Canvas& canvas) {
  std::string data;
  std::string plots;
  for (std::size_t i = 0; i < figure.curves.size(); ++i) {
    const Curve& curve = figure.curves[i];
    data += data_block(fmt::format("$curve{}", i), curve);
    const std::string title = curve.name.empty() ? "notitle" : "title " + as_gnuplot_text(curve.name);
    plots += fmt::format("{}$curve{} using 1:2 with {} linetype {} {}", i > 0 ? ", " : "", i,
                         style(figure.form, canvas), i + 1, title);
    const Curve alone = figure.form == Figure::Form::lines ? points_alone(curve) : Curve();
    if (alone.x.empty()) continue;
    data += data_block(fmt::format("$alone{}", i), alone);
    plots +=
        fmt::format(", $alone{} using 1:2 with {} linetype {} notitle", i, style(Figure::Form::points, canvas), i + 1);
  }
  const bool has_bars = figure.form == Figure::Form::bars;
  const std::string width = has_bars ? fmt::format("set boxwidth {} absolute\n", figure.bar_width) : "";
  const std::string grid = canvas.form == Canvas::Form::text ? "" : "set grid\n";
  return ranges(figure) + "set key tmargin center horizontal\n" + width + grid + data + "plot " + plots + '\n';
}

/// Row 0 is the uppermost, as in a printed matrix.
std::string matrix_commands(const Figure& figure) {
  PictureRange range;
  for (const double value : figure.cells.values) range.take(value);
  range.require_drawable();
  range.widen();
  const Cells cells = thinned_cells(figure.cells, most_cell_rows, most_cell_columns);
  std::string text = "$cells << end\n";
  for (std::size_t row = 0; row < cells.rows; ++row)
    for (std::size_t column = 0; column < cells.columns; ++column) {
      append_number(text, cells.values[row * cells.columns + column]);
      text += column + 1 == cells.columns ? '\n' : ' ';
    }
  const auto columns = static_cast<double>(figure.columns);
  const auto rows = static_cast<double>(figure.rows);
  const double width = columns / static_cast<double>(cells.columns);
  const double height = rows / static_cast<double>(cells.rows);
  return text + "end\n" + range_command("cb", range) +
         fmt::format("set xrange [{}:{}]\nset yrange [{}:{}]\n", -width / 2, columns - width / 2, rows - height / 2,
                     -height / 2) +
         fmt::format("plot $cells matrix using ($1*{}):($2*{}):3 with image pixels notitle\n", width, height);
}

}  // namespace

std::string gnuplot_commands(const Figure& figure, const Canvas& canvas) {
  const bool is_matrix = figure.form == Figure::Form::matrix;
  return "set encoding utf8\n" + terminal(canvas) + labels(figure) +
         (is_matrix ? matrix_commands(figure) : curves_commands(figure, canvas));
}

}  // namespace hvm
