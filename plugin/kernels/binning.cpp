// kernels/binning.cpp: elements counted in bins, or placed among edges, for each processor target

#include "kernels/binning.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/binning.cpp"
#include <hwy/foreach_target.h>

#include <algorithm>
#include <type_traits>

#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold {
namespace HWY_NAMESPACE {

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
HWY_INLINE void count_in_blocks(const T* elements, std::size_t size, const EqualBins& bins, std::int64_t times,
                                std::int64_t* counts) {
  constexpr std::size_t block = 256;
  double found[block];
  for (std::size_t i = 0; i < size; i += block) {
    const std::size_t together = std::min(block, size - i);
    find_bins(elements + i, together, bins, found);
    for (std::size_t j = 0; j < together; ++j) counts[static_cast<std::int64_t>(found[j])] += times;
  }
}

void count_doubles(const double* elements, std::size_t size, const EqualBins& bins, std::int64_t times,
                   std::int64_t* counts) {
  count_in_blocks(elements, size, bins, times, counts);
}
void count_floats(const float* elements, std::size_t size, const EqualBins& bins, std::int64_t times,
                  std::int64_t* counts) {
  count_in_blocks(elements, size, bins, times, counts);
}

// ---- Places among few edges

template <class T, class Edge>
void place(const T* elements, std::size_t size, const Edge* edges, std::size_t count, double* places) {
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

template <class Edge>
constexpr Placings<Edge> placings_among{&place<double, Edge>, &place<float, Edge>};

constexpr ForElementTypes<Placings> all_placings(placings_among<double>, placings_among<float>,
                                                 placings_among<std::int32_t>, placings_among<std::int64_t>);

}  // namespace HWY_NAMESPACE
}  // namespace arrayfold
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

ARRAYFOLD_EXPORT(count_doubles_by_target, count_doubles);
ARRAYFOLD_EXPORT(count_floats_by_target, count_floats);
ARRAYFOLD_EXPORT(placings_by_target, all_placings);

void count_by_bin(const double* elements, std::size_t size, const EqualBins& bins, std::int64_t times,
                  std::int64_t* counts) {
  count_doubles_by_target[target_index()](elements, size, bins, times, counts);
}
void count_by_bin(const float* elements, std::size_t size, const EqualBins& bins, std::int64_t times,
                  std::int64_t* counts) {
  count_floats_by_target[target_index()](elements, size, bins, times, counts);
}

}  // namespace arrayfold
#endif
