// order/row_sort.hpp: sorting one run of elements
//
// Long runs go to a vectorised quicksort, wherever the outcome is the same in every bit. Short ones, and reals with NaN
// or with a negative zero, go to the standard library's sort, whose arrangement is then the defined one. NaN
// breaks its rules; GNU's library stays within the elements wherever it stands.

#pragma once

#include <cstddef>
#include <cstdint>

namespace arrayfold {

/// Sorts `count` elements ascending by `<`.
void sort_row(double* elements, std::size_t count);
void sort_row(float* elements, std::size_t count);
void sort_row(std::int32_t* elements, std::size_t count);
void sort_row(std::int64_t* elements, std::size_t count);

/// Writes the positions, counted from 0, that bring the elements into ascending order, each cut to its low 32 bits.
void sort_positions(const double* elements, std::size_t count, std::int32_t* positions);
void sort_positions(const float* elements, std::size_t count, std::int32_t* positions);
void sort_positions(const std::int32_t* elements, std::size_t count, std::int32_t* positions);
void sort_positions(const std::int64_t* elements, std::size_t count, std::int32_t* positions);

}  // namespace arrayfold
