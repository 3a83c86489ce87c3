// kernels/transposition.hpp: from matrices by columns to matrices by rows

#pragma once

#include <algorithm>
#include <cstddef>

namespace arrayfold {

/// Transposes a column-major matrix into row-major order; swap the counts for the opposite direction. `rows` and
/// `columns` do not overlap. Works in squares that fit the first-level cache on both sides.
template <class From, class To>
void transpose(const From* __restrict columns, std::size_t row_count, std::size_t column_count, To* __restrict rows) {
  if (row_count == 0 || column_count == 0) return;
  constexpr std::size_t side = 16;
  for (std::size_t i = 0; i < row_count; i += side) {
    const std::size_t rows_end = std::min(i + side, row_count);
    for (std::size_t j = 0; j < column_count; j += side) {
      const std::size_t columns_end = std::min(j + side, column_count);
      for (std::size_t row = i; row < rows_end; ++row)
        for (std::size_t column = j; column < columns_end; ++column)
          rows[row * column_count + column] = static_cast<To>(columns[column * row_count + row]);
    }
  }
}

}  // namespace arrayfold
