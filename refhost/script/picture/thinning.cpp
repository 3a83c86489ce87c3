// script/picture/thinning.cpp: as much of the data as a picture can show

#include "script/picture/thinning.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace hvm {
namespace {

constexpr std::size_t most_points = 12000;  // more than the pixels of a picture can tell apart
constexpr std::size_t line_runs = 1500;
constexpr std::size_t grid_columns = 1000;
constexpr std::size_t grid_rows = 600;
constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

/// The points of the smallest and the largest x and y among those from `begin` to before `end`.
struct Extremes {
  std::size_t left = none;
  std::size_t right = none;
  std::size_t lowest = none;
  std::size_t highest = none;

  Extremes(const Curve& curve, std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end; ++i) {
      if (!is_point(curve, i)) continue;
      if (left == none) left = right = lowest = highest = i;
      if (curve.x[i] < curve.x[left]) left = i;
      if (curve.x[i] > curve.x[right]) right = i;
      if (curve.y[i] < curve.y[lowest]) lowest = i;
      if (curve.y[i] > curve.y[highest]) highest = i;
    }
  }
};

Curve chosen(const Curve& curve, const std::vector<std::size_t>& positions) {
  Curve made;
  made.name = curve.name;
  made.x.reserve(positions.size());
  made.y.reserve(positions.size());
  for (const std::size_t i : positions) {
    made.x.push_back(curve.x[i]);
    made.y.push_back(curve.y[i]);
  }
  return made;
}

void sort_once(std::vector<std::size_t>& positions) {
  std::sort(positions.begin(), positions.end());
  positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
}

/// The cell of `value` among `cells` of equal width from `low` to `high`.
std::size_t cell_of(double value, double low, double high, std::size_t cells) {
  const double width = high - low;
  if (!(width > 0)) return 0;
  return std::min(cells - 1, static_cast<std::size_t>((value - low) / width * static_cast<double>(cells)));
}

}  // namespace

Curve thinned_line(const Curve& curve) {
  const std::size_t count = curve.x.size();
  if (count <= most_points) return curve;
  std::vector<std::size_t> kept;
  for (std::size_t run = 0; run < line_runs; ++run) {
    const std::size_t begin = count * run / line_runs;
    const std::size_t end = count * (run + 1) / line_runs;
    const Extremes extremes(curve, begin, end);
    std::vector<std::size_t> of_run = {begin, end - 1};
    for (const std::size_t i : {extremes.left, extremes.right, extremes.lowest, extremes.highest})
      if (i != none) of_run.push_back(i);
    for (std::size_t i = begin; i < end; ++i) {
      if (is_point(curve, i)) continue;
      of_run.push_back(i);
      break;
    }
    sort_once(of_run);
    kept.insert(kept.end(), of_run.begin(), of_run.end());
  }
  return chosen(curve, kept);
}

Curve thinned_points(const Curve& curve) {
  const std::size_t count = curve.x.size();
  if (count <= most_points) return curve;
  const Extremes extremes(curve, 0, count);
  if (extremes.left == none) return {{}, {}, curve.name};
  std::vector<bool> is_taken(grid_columns * grid_rows);
  std::vector<std::size_t> kept = {extremes.left, extremes.right, extremes.lowest, extremes.highest};
  for (std::size_t i = 0; i < count; ++i) {
    if (!is_point(curve, i)) continue;
    const std::size_t column = cell_of(curve.x[i], curve.x[extremes.left], curve.x[extremes.right], grid_columns);
    const std::size_t row = cell_of(curve.y[i], curve.y[extremes.lowest], curve.y[extremes.highest], grid_rows);
    if (is_taken[row * grid_columns + column]) continue;
    is_taken[row * grid_columns + column] = true;
    kept.push_back(i);
  }
  sort_once(kept);
  return chosen(curve, kept);
}

Cells thinned_cells(const Cells& cells, std::size_t rows, std::size_t columns) {
  if (cells.rows <= rows && cells.columns <= columns) return cells;
  Cells made{std::min(rows, cells.rows), std::min(columns, cells.columns), {}};
  made.values.assign(made.rows * made.columns, std::numeric_limits<double>::quiet_NaN());
  double mean = 0;
  double counted = 0;
  for (const double value : cells.values)
    if (std::isfinite(value)) mean += (value - mean) / ++counted;
  for (std::size_t row = 0; row < cells.rows; ++row)
    for (std::size_t column = 0; column < cells.columns; ++column) {
      const double value = cells.values[row * cells.columns + column];
      double& shown = made.values[row * made.rows / cells.rows * made.columns + column * made.columns / cells.columns];
      if (std::isfinite(value) && !(std::abs(value - mean) <= std::abs(shown - mean))) shown = value;
    }
  return made;
}

}  // namespace hvm
