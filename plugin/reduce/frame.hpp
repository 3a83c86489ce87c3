// reduce/frame.hpp: from an array to one host number

#pragma once

#include "array/arguments.hpp"

namespace arrayfold {

/// Gives the number that `reduce` makes of the container in the first argument, by the setter of the number's type; a
/// 32-bit real is widened. A bool array or a foreign object counts as handled and gives nothing.
template <class Reduce>
Outcome reduce_to_number(const Call& call, Reduce reduce) {
  return visit_first(real_first{}, call, [&](const auto& array) { give(call, reduce(*array.array)); });
}

}  // namespace arrayfold
