// order/extreme_positions.cpp: xargmin, xargmax

#include "array/arguments.hpp"
#include "array/extremes.hpp"
#include "array/storage.hpp"

namespace arrayfold {
namespace {

/// The flat position of the first extreme element, as a zero-dimensional array; 0 without elements. A NaN in front is
/// never beaten, and beats nothing elsewhere.
template <class Choose>
auto position_of(Choose choose) {
  return [choose](auto, const auto& array) {
    const auto& elements = array.storage();
    std::size_t position = 0;
    if (!elements.empty()) {
      const auto* first = elements.data();
      const auto* found = first_extreme(first, elements.size(), *first, choose);
      if (found != nullptr) position = static_cast<std::size_t>(found - first);
    }
    return make_scalar<XTInt>(static_cast<std::int32_t>(position));
  };
}

}  // namespace

Outcome xargmin(const Call& call) { return give_made(double_first{}, call, position_of(Smaller{})); }
Outcome xargmax(const Call& call) { return give_made(double_first{}, call, position_of(Larger{})); }

}  // namespace arrayfold
