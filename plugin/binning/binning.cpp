// binning/binning.cpp: xhistogram, xhistogram_bin_edges, xbincount, xdigitize, xsearchsorted
//
// This family takes its arrays through an ArrayRef, int first.
// required: here an object without numeric elements, and a kind that the function does not serve, is a failure.

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "array/arguments.hpp"
#include "array/extremes.hpp"
#include "array/runs.hpp"
#include "array/spacing.hpp"
#include "array/storage.hpp"

namespace arrayfold {
namespace {

/// The smallest and the largest of some numbers, NaN passed over. Of none they are the largest and the lowest there is.
template <class T>
struct Bounds {
  T low = std::numeric_limits<T>::max();
  T high = std::numeric_limits<T>::lowest();
};

template <class T>
Bounds<T> bounds_of(const xarray_of<T>& array) {
  check_extents(array);
  const auto& elements = array.storage();
  const auto extreme = [&](T start, auto choose) {
    const T* found = first_extreme(elements.data(), elements.size(), start, choose);
    return found == nullptr ? start : *found;
  };
  const Bounds<T> none;
  return {extreme(none.low, Smaller{}), extreme(none.high, Larger{})};
}

// ---- Histograms

/// The smallest and the largest edge of `bins` bins of equal width. Edges round: where the bounds are no more than a
/// few numbers apart, an edge in between may lie beyond the last one, which is the upper bound itself.
template <class T>
Bounds<T> edge_bounds(const Bounds<T>& bounds, std::size_t bins) {
  const Spacing<T> edges(bounds.low, bounds.high, bins + 1);
  Bounds<T> of;
  const auto include = [&of](T edge) { of = {Smaller{}(of.low, edge), Larger{}(of.high, edge)}; };
  for (std::size_t i = 0; i < bins; ++i) include(edges[i]);
  include(bounds.high);
  return of;
}

/// Adds each element between the bounds to the count of its bin; the last bin includes the upper bound.
template <class T>
void count_by_bin(const xarray_of<T>& array, const Bounds<double>& bounds, double* counts, std::size_t bins) {
  const auto [low, high] = bounds;
  const double bins_as_real = static_cast<double>(bins);
  const double norm = 1.0 / (high - low);
  const auto& elements = array.storage();
  const std::size_t stride = last_stride(array);
  for (std::size_t i = 0; i < elements.size(); ++i) {
    const double x = elements[i * stride];
    if (x >= low && x < high) {
      const double place = (x - low) * bins_as_real * norm;
      // The product may round up to the number of bins, and is NaN or infinite where the norm is.
      counts[static_cast<std::int64_t>(std::min(place > 0.0 ? place : 0.0, bins_as_real - 1.0))] += 1.0;
    } else if (x == high) {
      counts[bins - 1] += 1.0;
    }
  }
}

template <class T>
std::unique_ptr<ArrayOf<XTDouble>> histogram(const xarray_of<T>& array, std::size_t bins) {
  const Bounds<T> bounds = bounds_of(array);
  auto made = make_row<XTDouble>(bins);
  double* const counts = made->array->storage().data();
  std::fill_n(counts, bins, 0.0);
  if (bins == 0) return made;
  const Bounds<T> edges = edge_bounds(bounds, bins);
  count_by_bin(array, {static_cast<double>(edges.low), static_cast<double>(edges.high)}, counts, bins);
  return made;
}

/// The eleven edges of ten bins.
template <class T>
std::unique_ptr<ArrayOf<XTDouble>> ten_bin_edges(const xarray_of<T>& array) {
  constexpr std::size_t bins = 10;
  const Bounds<T> bounds = bounds_of(array);
  const Spacing<T> spacing(bounds.low, bounds.high, bins + 1);
  auto made = make_row<XTDouble>(bins + 1);
  auto& edges = made->array->storage();
  for (std::size_t i = 0; i < bins; ++i) edges[i] = spacing[i];
  edges[bins] = bounds.high;
  return made;
}

// ---- Counts of integers

/// How often each number from 0 to the largest element occurs. Throws std::runtime_error on a negative element, and
/// std::bad_alloc where there is no element, or where the largest one is the largest of its type.
template <class Kind, class T>
std::unique_ptr<ArrayOf<Kind>> occurrences(const xarray_of<T>& array) {
  const auto [low, high] = bounds_of(array);
  if (low < 0) throw std::runtime_error("Data argument for bincount can only contain positive integers!");
  // required: one more than the largest wraps in the width of the elements; a negative size is far too large.
  const T size = high + 1;
  auto made = make_row<Kind>(static_cast<std::size_t>(std::int64_t{size}));
  auto& counts = made->array->storage();
  std::fill(counts.begin(), counts.end(), T{0});
  const auto& elements = array.storage();
  const std::size_t stride = last_stride(array);
  for (std::size_t i = 0; i < elements.size(); ++i) ++counts[static_cast<std::size_t>(elements[i * stride])];
  return made;
}

// ---- Places among edges

/// How many of the edges come before the first one greater than `x`, by halving.
template <class T, class Edge>
std::size_t place_of(T x, const Edge* edges, std::size_t count) {
  return static_cast<std::size_t>(std::upper_bound(edges, edges + count, x) - edges);
}

/// The same for edges that ascend, of which there is at least one: always as many steps, and none that a processor
/// could guess wrong.
template <class T, class Edge>
std::size_t place_in_ascending(T x, const Edge* edges, std::size_t count) {
  const Edge* first = edges;
  for (std::size_t left = count; left > 1;) {
    const std::size_t half = left / 2;
    first += x < first[half - 1] ? 0 : half;
    left -= half;
  }
  return static_cast<std::size_t>(first - edges) + (x < *first ? 0 : 1);
}

template <class Edge>
bool ascend(const Edge* edges, std::size_t count) {
  for (std::size_t i = 1; i < count; ++i)
    if (!(edges[i - 1] <= edges[i])) return false;
  return count > 0;
}

/// The place of each element among the edges, as reals in the shape of `array`.
/// required: with a last extent of 1 only the first element is looked up; the others are 0.
template <class T, class Edge>
std::unique_ptr<ArrayOf<XTDouble>> places(const xarray_of<T>& array, const xarray_of<Edge>& edge_array) {
  check_extents(array);
  const auto& elements = array.storage();
  const auto& edges = edge_array.storage();
  auto made = make_array<XTDouble>(array.shape());
  auto& out = made->array->storage();
  const std::size_t looked_up = last_stride(array) != 0 ? out.size() : std::min<std::size_t>(out.size(), 1);
  std::fill(out.begin() + static_cast<std::ptrdiff_t>(looked_up), out.end(), 0.0);
  const auto look_up = [&](auto place) {
    for (std::size_t i = 0; i < looked_up; ++i)
      out[i] = static_cast<double>(place(elements[i], edges.data(), edges.size()));
  };
  // Looking at all edges first pays where they are fewer than the elements.
  if (edges.size() <= looked_up && ascend(edges.data(), edges.size()))
    look_up(place_in_ascending<T, Edge>);
  else
    look_up(place_of<T, Edge>);
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
  return serve_reals(*array, [&](const auto& data) {
    give_array<XTDouble>(call.ctx, call.result, histogram(*data.array, static_cast<std::size_t>(bins)));
  });
}

// required: ten bins whatever follows; the second array is looked at for its kind alone.
Outcome xhistogram_bin_edges(const Call& call) {
  const auto array = numeric_argument(call, 0);
  if (!array || !numeric_argument(call, 1)) return Outcome::failed;
  return serve_reals(
      *array, [&](const auto& data) { give_array<XTDouble>(call.ctx, call.result, ten_bin_edges(*data.array)); });
}

Outcome xbincount(const Call& call) {
  const auto array = numeric_argument(call, 0);
  if (!array) return Outcome::failed;
  return xtl::visit(
      [&](const auto* boxed) {
        using Kind = typename std::decay_t<decltype(*boxed)>::tag;
        if constexpr (std::is_integral_v<typename Kind::element>) {
          give_array<Kind>(call.ctx, call.result, occurrences<Kind>(*boxed->array));
          return Outcome::handled;
        }
        return Outcome::failed;
      },
      *array);
}

// required: the places are reals.
Outcome xdigitize(const Call& call) {
  const auto array = numeric_argument(call, 0);
  if (!array) return Outcome::failed;
  const auto edges = numeric_argument(call, 1);
  if (!edges) return Outcome::failed;
  return serve_reals(*array, [&](const auto& data) {
    xtl::visit(
        [&](const auto* boxed) { give_array<XTDouble>(call.ctx, call.result, places(*data.array, *boxed->array)); },
        *edges);
  });
}

// required: finished as it stands; the first argument is checked and nothing is searched.
Outcome xsearchsorted(const Call& call) { return check_one_object(call); }

}  // namespace arrayfold
