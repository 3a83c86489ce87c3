// script/picture/thinning.hpp: as much of the data as a picture can show

#pragma once

#include "script/picture/figure.hpp"

namespace hvm {

/// The curve in at most some thousand points. Of each run of successive points, the first, the last, those with the
/// smallest and the largest x and y, and a gap stay.
Curve thinned_line(const Curve& curve);

/// At most one point in each cell of a fine grid, and the points with the smallest and the largest x and y.
Curve thinned_points(const Curve& curve);

/// The matrix in at most `rows` and `columns`. Each cell is the one, of those that it stands for, that is farthest from
/// the mean of the matrix, so that extremes stay; NaN when none of them is finite. Requires: `rows`, `columns` > 0.
Cells thinned_cells(const Cells& cells, std::size_t rows, std::size_t columns);

}  // namespace hvm
