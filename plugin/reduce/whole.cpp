// reduce/whole.cpp: xsum, xprod, xamin, xamax, xmean
//
// Each folds a whole array, of whatever shape, into one host number of the elements' type; xmean gives a real for all
// kinds. Integers wrap in their width.

#include <limits>

#include "reduce/block_scan.hpp"
#include "reduce/frame.hpp"
#include "reduce/moments.hpp"

namespace arrayfold {
namespace {

// required: the sum of 32-bit reals is kept in 64 bits, its blocks in 32; every other fold keeps the element's type.
double sum_of(const xarray_of<float>& array) { return block_sum<double>(array); }
template <class T>
T sum_of(const xarray_of<T>& array) {
  return block_sum<T>(array);
}

template <class T>
T product_of(const xarray_of<T>& array) {
  return ordered_fold(array, T{1}, Product{}, Product{});
}

template <class T>
T smallest_of(const xarray_of<T>& array) {
  return block_extreme(array, std::numeric_limits<T>::max(), Smaller{});
}

// required: for reals the scan starts from their smallest positive normal number. When no element is above it, as with
// negative ones alone, that number is the result.
template <class T>
T largest_of(const xarray_of<T>& array) {
  return block_extreme(array, std::numeric_limits<T>::min(), Larger{});
}

// required: of 64-bit integers the smallest is given, as xamin does.
std::int64_t largest_of(const xarray_of<std::int64_t>& array) { return smallest_of(array); }

}  // namespace

Outcome xsum(const Call& call) {
  return reduce_to_number(call, [](const auto& array) { return sum_of(array); });
}
Outcome xprod(const Call& call) {
  return reduce_to_number(call, [](const auto& array) { return product_of(array); });
}
Outcome xamin(const Call& call) {
  return reduce_to_number(call, [](const auto& array) { return smallest_of(array); });
}
Outcome xamax(const Call& call) {
  return reduce_to_number(call, [](const auto& array) { return largest_of(array); });
}
Outcome xmean(const Call& call) {
  return reduce_to_number(call, [](const auto& array) { return mean_of(array); });
}

}  // namespace arrayfold
