// order/extreme_positions.cpp: xargmin, xargmax

#include "array/arguments.hpp"
#include "array/storage.hpp"
#include "kernels/extremes.hpp"

namespace arrayfold {
namespace {

/// The flat position of the first extreme element, as a zero-dimensional array; 0 without elements. A NaN in front is
/// never beaten, and beats nothing elsewhere.
template <class Choose>
auto position_of(Choose choose) {
  return [choose](auto kind, const auto& array) {
    const auto& elements = array.storage();
    std::size_t position = 0;
    if (!elements.empty()) {
      const auto* first = elements.data();
      const auto* found = choose(extremes<typename decltype(kind)::element>()).first(first, elements.size(), *first);
      if (found != nullptr) position = static_cast<std::size_t>(found - first);
    }
    return make_scalar<XTInt>(static_cast<std::int32_t>(position));
  };
}

constexpr auto smallest = [](const auto& of_kind) { return of_kind.smallest; };
constexpr auto largest = [](const auto& of_kind) { return of_kind.largest; };

}  // namespace

Outcome xargmin(const Call& call) { return give_made(double_first{}, call, position_of(smallest)); }
Outcome xargmax(const Call& call) { return give_made(double_first{}, call, position_of(largest)); }

}  // namespace arrayfold
