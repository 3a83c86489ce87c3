// script/picture/figure.hpp: what a picture shows

#pragma once

#include <cmath>
#include <cstddef>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace hvm {

/// Points in their order. Values that are not finite leave a gap.
struct Curve {
  std::vector<double> x;
  std::vector<double> y;  // as many
  std::string name;       // in the legend; empty: none
};

/// Whether the curve has a point at `i`, and no gap.
inline bool is_point(const Curve& curve, std::size_t i) {
  return i < curve.x.size() && std::isfinite(curve.x[i]) && std::isfinite(curve.y[i]);
}

/// A matrix of numbers, row by row.
struct Cells {
  std::size_t rows = 0;
  std::size_t columns = 0;
  std::vector<double> values;
};

struct Figure {
  enum class Form { lines, points, bars, matrix };
  Form form = Form::lines;
  std::string title;
  std::string x_label;
  std::string y_label;
  std::vector<Curve> curves;  // of bars one: their centres and heights
  double bar_width = 0;
  Cells cells;           // of the form `matrix`, perhaps thinned
  std::size_t rows = 0;  // of the matrix itself
  std::size_t columns = 0;
};

/// The columns and lines of text that a picture may take.
struct TextSize {
  int columns = 79;
  int lines = 20;
};

/// Where pictures go, and the one that was drawn last.
struct Pictures {
  std::function<TextSize()> text_size;  // asked for each picture; none: the default
  std::optional<Figure> last;
};

/// Why a picture cannot be drawn, in words.
class PictureError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace hvm
