// order/row_sort.hpp: sorting one row of elements
//
// Where the processor has vector instructions, long rows are sorted by a vectorised quicksort wherever the result is
// the same in every bit. Short rows, and floating-point numbers with NaN or a negative zero, are sorted by the standard
// library, whose arrangement is then the defined one. NaN violates the ordering that std::sort requires; libstdc++ does
// not read out of bounds for it.

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
