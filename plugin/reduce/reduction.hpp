// reduce/reduction.hpp: from an array to one host number

#pragma once

#include "array/arguments.hpp"

namespace arrayfold {

/// Gives the number `fold(array)` for the array in the first argument, by the setter of the number's type; a 32-bit
/// floating-point number is widened. A bool array or a foreign object counts as handled and gives no value.
template <class Fold>
Outcome reduce(const Call& call, Fold fold) {
  return visit_first(double_first{}, call, [&](auto, const auto& array) { give(call, fold(array)); });
}

}  // namespace arrayfold
