// reduce/reductions.cpp: xsum, xprod, xamin, xamax, xmean
//
// Each folds a whole array, of any shape, into one host number of the element's type; xmean gives a double for all
// kinds. Integers wrap in their width.

#include <functional>
#include <limits>

#include "reduce/block_scan.hpp"
#include "reduce/moments.hpp"
#include "reduce/reduction.hpp"

namespace arrayfold {
namespace {

// required: the sum of 32-bit floating-point numbers is kept in 64 bits, its blocks in 32; every other fold keeps the
// element's type.
constexpr auto sum = [](const auto& array) {
  using T = typename std::decay_t<decltype(array)>::value_type;
  return block_sum<std::conditional_t<std::is_same_v<T, float>, double, T>>(array);
};

constexpr auto product = [](const auto& array) {
  using T = typename std::decay_t<decltype(array)>::value_type;
  return ordered_fold(array, T{1}, std::multiplies<>{}, std::multiplies<>{});
};

constexpr auto minimum = [](const auto& array) {
  using T = typename std::decay_t<decltype(array)>::value_type;
  return block_extreme(array, std::numeric_limits<T>::max(), Smaller{});
};

// required: for floating-point numbers the scan starts from their smallest positive normal number. When no element is
// above it, as with negative ones alone, that number is the result.
// required: of 64-bit integers the minimum is given, as by xamin.
constexpr auto maximum = [](const auto& array) {
  using T = typename std::decay_t<decltype(array)>::value_type;
  if constexpr (std::is_same_v<T, std::int64_t>)
    return minimum(array);
  else
    return block_extreme(array, std::numeric_limits<T>::min(), Larger{});
};

constexpr auto mean = [](const auto& array) { return mean_of(array); };

}  // namespace

Outcome xsum(const Call& call) { return reduce(call, sum); }
Outcome xprod(const Call& call) { return reduce(call, product); }
Outcome xamin(const Call& call) { return reduce(call, minimum); }
Outcome xamax(const Call& call) { return reduce(call, maximum); }
Outcome xmean(const Call& call) { return reduce(call, mean); }

}  // namespace arrayfold
