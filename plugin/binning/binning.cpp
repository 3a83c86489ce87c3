// binning/binning.cpp: xhistogram, xhistogram_bin_edges, xbincount, xdigitize, xsearchsorted
//
// This family takes its arrays through an ArrayRef, int first.
// required: here a call fails for an object without numeric elements, and for a kind that the function does not take.

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <type_traits>

#include "array/arguments.hpp"
#include "array/rows.hpp"
#include "array/scratch.hpp"
#include "array/spacing.hpp"
#include "array/storage.hpp"
#include "kernels/binning.hpp"
#include "kernels/extremes.hpp"

namespace arrayfold {
namespace {

/// The smallest and the largest of some numbers, NaN passed over. For no elements: low is the type's maximum, high its
/// lowest value.
template <class T>
struct Bounds {
  T low = std::numeric_limits<T>::max();
  T high = std::numeric_limits<T>::lowest();
};

template <class T>
Bounds<T> bounds_of(const xarray_of<T>& array) {
  check_extents(array);
  const auto& elements = array.storage();
  const auto beyond = [&](const Extreme<T>& extreme, T start) {
    const T* found = extreme.first(elements.data(), elements.size(), start);
    return found == nullptr ? start : *found;
  };
  const Bounds<T> none;
  const Extremes<T>& of = extremes<T>();
  return {beyond(of.smallest, none.low), beyond(of.largest, none.high)};
}

/// The first `count` elements are read, each counted `times` times.
struct Reads {
  std::size_t count;
  std::int64_t times;
};

/// required: where the last extent is 1 the first element is read in place of every other one.
template <class T>
Reads reads_of(const xarray_of<T>& array) {
  const std::size_t count = array.storage().size();
  if (last_stride(array) != 0 || count == 0) return {count, 1};
  return {1, static_cast<std::int64_t>(count)};
}

// ---- Histograms

/// The smallest and the largest edge of `bins` bins of equal width. Edges round: where the bounds are only a few
/// representable numbers apart, an edge in between may exceed the last one, which is the upper bound itself.
template <class Kind, class T>
Bounds<T> edge_bounds(Kind, const Bounds<T>& bounds, std::size_t bins) {
  const Spacing<Kind> edges(bounds.low, bounds.high, bins + 1);
  Bounds<T> of;
  const auto include = [&of](T edge) { of = {std::min(of.low, edge), std::max(of.high, edge)}; };
  for (std::size_t i = 0; i < bins; ++i) include(edges[i]);
  include(bounds.high);
  return of;
}

template <class Kind, class T>
std::unique_ptr<ArrayOf<XTDouble>> histogram(Kind kind, const xarray_of<T>& array, std::size_t bins) {
  const Bounds<T> bounds = bounds_of(array);
  auto made = make_vector<XTDouble>(bins);
  if (bins == 0) return made;
  const Bounds<T> edges = edge_bounds(kind, bounds, bins);
  const Scratch<std::int64_t> counts(bins + 1);
  std::fill_n(counts.data(), bins + 1, 0);
  const auto [count, times] = reads_of(array);
  const EqualBins range{static_cast<double>(edges.low), static_cast<double>(edges.high), bins};
  count_by_bin(array.storage().data(), count, range, times, counts.data());
  std::copy_n(counts.data(), bins, made->array->storage().data());
  return made;
}

/// The eleven edges of ten bins.
template <class Kind, class T>
std::unique_ptr<ArrayOf<XTDouble>> ten_bin_edges(Kind, const xarray_of<T>& array) {
  constexpr std::size_t bins = 10;
  const Bounds<T> bounds = bounds_of(array);
  const Spacing<Kind> spacing(bounds.low, bounds.high, bins + 1);
  auto made = make_vector<XTDouble>(bins + 1);
  auto& edges = made->array->storage();
  // The length comes from the array: in a loop of constant length GCC 12 leaves the last two edges of floats unrounded.
  const std::size_t last = edges.size() - 1;
  for (std::size_t i = 0; i < last; ++i) edges[i] = spacing[i];
  edges[last] = bounds.high;
  return made;
}

// ---- Counts of integers

/// Adds `times` to the count of each element; `size` is the number of counts. An element that equals one shortly before
/// it waits for that one's count. Where the counts are few, four tables share the elements, and are added at the end.
template <class T>
void count_elements(const T* elements, std::size_t count, T times, T* counts, std::size_t size) {
  constexpr std::size_t most = 1024;  // what fits into the first cache four times
  const auto add = [=](T* table, std::size_t i) { table[static_cast<std::size_t>(elements[i])] += times; };
  std::size_t i = 0;
  if (size <= most && count >= 8 * size) {
    T second[most], third[most], fourth[most];
    for (T* const table : {second, third, fourth}) std::fill_n(table, size, T{0});
    for (; i + 4 <= count; i += 4) {
      add(counts, i);
      add(second, i + 1);
      add(third, i + 2);
      add(fourth, i + 3);
    }
    for (std::size_t k = 0; k < size; ++k) counts[k] += second[k] + third[k] + fourth[k];
  }
  for (; i < count; ++i) add(counts, i);
}

/// How often each number from 0 to the largest element occurs. Throws std::runtime_error for a negative element, and
/// std::bad_alloc without elements or when the largest element is the maximum of its type.
template <class Kind, class T>
std::unique_ptr<ArrayOf<Kind>> occurrences(Kind, const xarray_of<T>& array) {
  const auto [low, high] = bounds_of(array);
  if (low < 0) throw std::runtime_error("Data argument for bincount can only contain positive integers!");
  // required: one more than the largest wraps in the width of the elements; a negative size is far too large.
  const auto size = static_cast<T>(high + 1);
  auto made = make_vector<Kind>(static_cast<std::size_t>(std::int64_t{size}));
  auto& counts = made->array->storage();
  std::fill(counts.begin(), counts.end(), T{0});
  const auto [count, times] = reads_of(array);
  count_elements(array.storage().data(), count, static_cast<T>(times), counts.data(), counts.size());
  return made;
}

// ---- Places among edges

/// How many of the edges come before the first one greater than `x`, by halving.
template <class T, class Edge>
std::size_t place_of(T x, const Edge* edges, std::size_t count) {
  return static_cast<std::size_t>(std::upper_bound(edges, edges + count, x) - edges);
}

template <class Edge>
bool ascend(const Edge* edges, std::size_t count) {
  for (std::size_t i = 1; i < count; ++i)
    if (!(edges[i - 1] <= edges[i])) return false;
  return count > 0;
}

/// The place of each element among edges that ascend.
template <class T, class Edge>
Placing<T, Edge> placing() {
  if constexpr (std::is_same_v<T, double>)
    return placings<Edge>().doubles;
  else
    return placings<Edge>().floats;
}

/// The place of each element among the edges, as doubles in the shape of `array`.
/// required: with a last extent of 1 only the first element is looked up; the other places are 0.
template <class T, class Edge>
std::unique_ptr<ArrayOf<XTDouble>> places(const xarray_of<T>& array, const xarray_of<Edge>& edge_array) {
  check_extents(array);
  const auto& elements = array.storage();
  const auto& edges = edge_array.storage();
  auto made = make_array<XTDouble>(array.shape());
  auto& out = made->array->storage();
  const std::size_t looked_up = reads_of(array).count;
  std::fill(out.begin() + static_cast<std::ptrdiff_t>(looked_up), out.end(), 0.0);
  // Checking all edges first pays where they are no more than the elements.
  if (edges.size() <= looked_up && ascend(edges.data(), edges.size()))
    placing<T, Edge>()(elements.data(), looked_up, edges.data(), edges.size(), out.data());
  else
    for (std::size_t i = 0; i < looked_up; ++i)
      out[i] = static_cast<double>(place_of(elements[i], edges.data(), edges.size()));
  return made;
}

}  // namespace

Outcome xhistogram(const Call& call) {
  const auto array = numeric_argument(call, 0);
  if (!array) return Outcome::failed;
  std::int64_t bins = 10;
  if (call.nargs > 1) {
    if (!is_number(call, 1)) return Outcome::failed;
    bins = HVM_AsInt64(call.args + 1);
  }
  return visit_floating(*array, [&](auto kind, const auto& data) {
    give_array(call, histogram(kind, data, static_cast<std::size_t>(bins)));
  });
}

// required: always ten bins; only the kind of the second array is checked.
Outcome xhistogram_bin_edges(const Call& call) {
  const auto array = numeric_argument(call, 0);
  if (!array || !numeric_argument(call, 1)) return Outcome::failed;
  return visit_floating(*array, [&](auto kind, const auto& data) { give_array(call, ten_bin_edges(kind, data)); });
}

Outcome xbincount(const Call& call) {
  const auto array = numeric_argument(call, 0);
  if (!array) return Outcome::failed;
  return visit_integers(*array, [&](auto kind, const auto& data) { give_array(call, occurrences(kind, data)); });
}

// required: the places are doubles.
Outcome xdigitize(const Call& call) {
  const auto array = numeric_argument(call, 0);
  if (!array) return Outcome::failed;
  const auto edges = numeric_argument(call, 1);
  if (!edges) return Outcome::failed;
  return visit_floating(*array, [&](auto, const auto& data) {
    visit_ref(*edges, [&](auto, const auto& edge_array) { give_array(call, places(data, edge_array)); });
  });
}

// required: finished as it stands; the first argument is checked and nothing is searched.
Outcome xsearchsorted(const Call& call) { return check_one_object(call); }

}  // namespace arrayfold
