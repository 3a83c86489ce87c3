// reduce/reductions.cpp: xsum, xprod, xamin, xamax, xmean
//
// Each folds a whole array, of any shape, into one host number of the element's type; xmean gives a double for all
// kinds. Integers wrap in their width. Sums and extremes are scans of the storage, block by block; in the elements
// behind the last whole block the scan moves by the stride of the last axis.
// required: where the last extent is 1 that stride is 0: element 0 is then folded in once for each of them.

#include <functional>
#include <limits>

#include "array/ordered_fold.hpp"
#include "array/rows.hpp"
#include "kernels/extremes.hpp"
#include "kernels/folds.hpp"
#include "reduce/moments.hpp"
#include "reduce/reduction.hpp"

namespace arrayfold {
namespace {

constexpr auto sum = [](const auto& array) {
  using T = typename std::decay_t<decltype(array)>::value_type;
  return folds<T>().sum_by_blocks(array.storage().data(), array.storage().size(), last_stride(array));
};

constexpr auto product = [](const auto& array) {
  using T = typename std::decay_t<decltype(array)>::value_type;
  return ordered_fold(array, T{1}, folds<T>().product, std::multiplies<>{});
};

/// The extreme of `start` and the elements.
template <class T>
T extreme_of(const xarray_of<T>& array, const Extreme<T>& extreme, T start) {
  return extreme.by_blocks(array.storage().data(), array.storage().size(), last_stride(array), start);
}

constexpr auto minimum = [](const auto& array) {
  using T = typename std::decay_t<decltype(array)>::value_type;
  return extreme_of(array, extremes<T>().smallest, std::numeric_limits<T>::max());
};

// required: for floating-point numbers the scan starts from their smallest positive normal number. When no element is
// above it, as with negative ones alone, that number is the result.
// required: of 64-bit integers the minimum is given, as by xamin.
constexpr auto maximum = [](const auto& array) {
  using T = typename std::decay_t<decltype(array)>::value_type;
  if constexpr (std::is_same_v<T, std::int64_t>)
    return minimum(array);
  else
    return extreme_of(array, extremes<T>().largest, std::numeric_limits<T>::min());
};

constexpr auto mean = [](const auto& array) { return mean_of(array); };

}  // namespace

Outcome xsum(const Call& call) { return reduce(call, sum); }
Outcome xprod(const Call& call) { return reduce(call, product); }
Outcome xamin(const Call& call) { return reduce(call, minimum); }
Outcome xamax(const Call& call) { return reduce(call, maximum); }
Outcome xmean(const Call& call) { return reduce(call, mean); }

}  // namespace arrayfold
