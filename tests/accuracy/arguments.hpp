// accuracy/arguments.hpp: random arguments of wide domains, the same in every run

#pragma once

#include <cstddef>
#include <vector>

namespace arrayfold::accuracy {

/// `count` finite doubles, an equal share of each of these: every bit pattern, magnitudes from 2^-60 to 2^60, numbers
/// below 2^-960 and subnormals, even spreads of several widths, neighbours of multiples of pi/2, neighbours of 1, of
/// integers and halves, and the ends of the ranges where results overflow, vanish or saturate.
/// `batch` chooses which `count` of the endless sequence.
std::vector<double> arguments(std::size_t count, unsigned batch);

}  // namespace arrayfold::accuracy
