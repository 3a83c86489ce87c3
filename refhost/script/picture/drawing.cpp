// script/picture/drawing.cpp: pictures as text and as files

#include "script/picture/drawing.hpp"

#include <algorithm>
#include <string_view>

#include "script/picture/gnuplot.hpp"
#include "script/picture/matrix_text.hpp"

namespace hvm {
namespace {

// gnuplot draws nothing of use on less, and nobody reads more.
constexpr int least_columns = 30;
constexpr int most_columns = 250;
constexpr int least_lines = 10;
constexpr int most_lines = 60;

/// The lines of `text` without blanks at their ends, and without empty lines at both ends.
std::string tidied(std::string_view text) {
  std::string made;
  std::size_t empty_lines = 0;
  while (!text.empty()) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    while (!line.empty() && (line.front() == '\f' || line.front() == '\r')) line.remove_prefix(1);
    while (!line.empty() && (line.back() == ' ' || line.back() == '\r')) line.remove_suffix(1);
    if (line.empty()) {
      ++empty_lines;
      continue;
    }
    if (!made.empty()) made += std::string(empty_lines + 1, '\n');
    empty_lines = 0;
    made += line;
  }
  return made;
}

}  // namespace

std::string drawn_as_text(const Figure& figure, TextSize size) {
  const TextSize used{std::clamp(size.columns, least_columns, most_columns),
                      std::clamp(size.lines, least_lines, most_lines)};
  if (figure.form == Figure::Form::matrix) return tidied(matrix_text(figure, used));
  return tidied(output_of_gnuplot(gnuplot_commands(figure, {Canvas::Form::text, used.columns, used.lines})));
}

std::string drawn_for_file(const Figure& figure, const Canvas& canvas) {
  return output_of_gnuplot(gnuplot_commands(figure, canvas));
}

}  // namespace hvm
