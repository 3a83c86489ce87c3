// kernels/binning.cpp: elements counted in bins, or placed among edges, for each processor target

#include "kernels/binning.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/binning.cpp"
#include <hwy/foreach_target.h>

#include <algorithm>
#include <type_traits>

#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

// ---- Bins

/// The bin of each element, as doubles.
template <class T>
void find_bins(const T* elements, std::size_t size, const EqualBins& bins, double* found) {
  const double beyond = static_cast<double>(bins.count), last = beyond - 1.0;
  const double low = bins.low, high = bins.high, norm = 1.0 / (high - low);
  for_each_register(hn::ScalableTag<double>(), size, [=](auto tag, std::size_t i) HWY_ATTR {
    const auto x = load_as(tag, elements + i);
    const auto lowest = hn::Set(tag, low), highest = hn::Set(tag, high), last_bin = hn::Set(tag, last);
    auto place = hn::Mul(hn::Mul(hn::Sub(x, lowest), hn::Set(tag, beyond)), hn::Set(tag, norm));
    // The product may round up to the number of bins, and is NaN or infinite where the norm is.
    place = hn::IfThenElseZero(hn::Gt(place, hn::Zero(tag)), place);
    place = hn::IfThenElse(hn::Lt(place, last_bin), place, last_bin);
    place = hn::IfThenElse(hn::Eq(x, highest), last_bin, place);
    const auto is_inside = hn::And(hn::Ge(x, lowest), hn::Le(x, highest));
    hn::StoreU(hn::IfThenElse(is_inside, place, hn::Set(tag, beyond)), tag, found + i);
  });
}

template <class T>
void count_in_blocks(const T* elements, std::size_t size, const EqualBins& bins, std::int64_t times,
                     std::int64_t* counts) {
  constexpr std::size_t block = 256;
  double found[block];
  for (std::size_t i = 0; i < size; i += block) {
    const std::size_t together = std::min(block, size - i);
    find_bins(elements + i, together, bins, found);
    for (std::size_t j = 0; j < together; ++j) counts[static_cast<std::int64_t>(found[j])] += times;
  }
}

constexpr ForElementTypes<BinCounts> all_bin_counts({&count_in_blocks}, {&count_in_blocks}, {}, {});

// ---- Places among edges

/// Compares every element with every edge.
template <class T, class Edge>
void place_among_few(const T* elements, std::size_t size, const Edge* edges, std::size_t count, double* places) {
  using Common = std::common_type_t<T, Edge>;
  for_each_register(TagFor<Common, double>(), size, [=](auto tag, std::size_t i) HWY_ATTR {
    const auto x = load_as(tag, elements + i), one = hn::Set(tag, Common{1});
    auto place = hn::Zero(tag);
    for (std::size_t k = 0; k < count; ++k) {
      const auto edge = hn::Set(tag, static_cast<Common>(edges[k]));
      place = hn::IfThenElse(hn::Lt(x, edge), place, hn::Add(place, one));
    }
    store(tag, place, places + i);
  });
}

/// Searches by halving. All elements of a block take a step of the search before any takes the next, and no step is one
/// that a processor could guess wrong. Registers do not help: processors gather no faster than they load one by one.
template <class T, class Edge>
void place_by_search(const T* elements, std::size_t size, const Edge* edges, std::size_t count, double* places) {
  using Common = std::common_type_t<T, Edge>;
  constexpr std::size_t block = 64;
  for (std::size_t start = 0; start < size; start += block) {
    const std::size_t together = std::min(block, size - start);
    const T* const x = elements + start;
    std::size_t first[block] = {};
    const auto step = [&](std::size_t probe, std::size_t passed) HWY_ATTR {
      for (std::size_t j = 0; j < together; ++j) {
        const bool is_less = static_cast<Common>(x[j]) < static_cast<Common>(edges[first[j] + probe]);
        first[j] += passed & (static_cast<std::size_t>(is_less) - 1);
      }
    };
    for (std::size_t left = count; left > 1; left -= left / 2) step(left / 2 - 1, left / 2);
    step(0, 1);
    for (std::size_t j = 0; j < together; ++j) places[start + j] = static_cast<double>(first[j]);
  }
}

template <class T, class Edge>
void place(const T* elements, std::size_t size, const Edge* edges, std::size_t count, double* places) {
  constexpr std::size_t few = 32;
  if (count <= few)
    place_among_few(elements, size, edges, count, places);
  else
    place_by_search(elements, size, edges, count, places);
}

constexpr auto placings_among = [](auto zero) {
  using Edge = decltype(zero);
  return Placings<Edge>{&place<double, Edge>, &place<float, Edge>};
};
constexpr auto all_placings = for_element_types<Placings>(placings_among);

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

const ForElementTypes<BinCounts>* const bin_counts_by_target[] = ARRAYFOLD_LOOPS(all_bin_counts);
const ForElementTypes<Placings>* const placings_by_target[] = ARRAYFOLD_LOOPS(all_placings);

}  // namespace arrayfold
#endif
