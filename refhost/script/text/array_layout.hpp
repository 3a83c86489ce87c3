// script/text/array_layout.hpp: the elements of an array in nested brackets

#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace hvm {

/// The number of positions on each axis, first axis first.
using Extents = std::vector<std::int64_t>;

/// The product of the extents; 0 where one is negative or the product has no place in 63 bits.
std::int64_t element_count(const Extents& extents);

/// `(2, 3)`.
std::string in_parentheses(const Extents& extents);

/// Gives the text of the element at a position, which has an index for each axis.
using ElementText = std::function<std::string(const Extents& position)>;

/// The most elements that a brief text shows.
inline constexpr std::int64_t most_shown = 1000;

/// How many positions to show at each end of every axis: the largest of 3, 2 and 1 with which at most `most_shown`
/// elements are shown, and 1 where none is small enough.
std::int64_t edge_of(const Extents& extents);

/// `[[1, 2], [3, 4]]` in one line when it fits, otherwise with a line for each row of the last axis, the first one
/// after a line end. Of an axis with more than twice `edge` positions it shows `edge` at each end and `...` between
/// them; an `edge` of 0 shows every position.
std::string bracketed(const Extents& extents, std::int64_t edge, const ElementText& element);

/// The same for a terminal of `width` columns: in one line when there is one row and it fits behind the `front` columns
/// that precede it, otherwise in lines of their own, the first one after a line end, with the elements of each column
/// below each other. A row that is too wide continues in the next lines.
std::string aligned(const Extents& extents, std::int64_t edge, const ElementText& element, std::size_t front,
                    std::size_t width);

}  // namespace hvm
