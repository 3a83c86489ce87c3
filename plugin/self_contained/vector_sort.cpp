// self_contained/vector_sort.cpp: Highway's vectorised sort, compiled into the module for each processor target
//
// Highway defines the sort in headers. order/row_sort.cpp calls it through a class that Highway's library defines. This
// file defines the members of that class that are called.

#include <hwy/contrib/sort/vqsort.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "self_contained/vector_sort.cpp"
#include <hwy/foreach_target.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <hwy/contrib/sort/traits-inl.h>
#include <hwy/contrib/sort/traits128-inl.h>
#include <hwy/contrib/sort/vqsort-inl.h>
#include <hwy/highway.h>

#include "kernels/dispatch.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

#if VQSORT_ENABLED

namespace hd = hwy::HWY_NAMESPACE::detail;

/// In ascending order. Registers of a fixed width need no buffer.
template <class Order, class Lane>
void sort_lanes(Lane* lanes, std::size_t count) {
  constexpr Lane* no_buffer = nullptr;
  hwy::HWY_NAMESPACE::Sort(hwy::HWY_NAMESPACE::SortTag<Lane>(), hd::SharedTraits<Order>(), lanes, count, no_buffer);
}

void sort_int64(std::int64_t* numbers, std::size_t count) {
  sort_lanes<hd::TraitsLane<hd::OrderAscending<std::int64_t>>>(numbers, count);
}
void sort_uint64(std::uint64_t* numbers, std::size_t count) {
  sort_lanes<hd::TraitsLane<hd::OrderAscending<std::uint64_t>>>(numbers, count);
}
void sort_uint128(hwy::uint128_t* numbers, std::size_t count) {
  static_assert(sizeof(hwy::uint128_t) == 2 * sizeof(std::uint64_t), "a number is two lanes");
  sort_lanes<hd::Traits128<hd::OrderAscending128>>(static_cast<std::uint64_t*>(static_cast<void*>(numbers)), 2 * count);
}

#else

void sort_int64(std::int64_t* numbers, std::size_t count) { std::sort(numbers, numbers + count); }
void sort_uint64(std::uint64_t* numbers, std::size_t count) { std::sort(numbers, numbers + count); }
void sort_uint128(hwy::uint128_t* numbers, std::size_t count) { std::sort(numbers, numbers + count); }

#endif

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {
namespace {

template <class Number>
using Sort = void (*)(Number* numbers, std::size_t count);

constexpr Sort<std::int64_t> int64_sorts[] = ARRAYFOLD_LOOPS(sort_int64);
constexpr Sort<std::uint64_t> uint64_sorts[] = ARRAYFOLD_LOOPS(sort_uint64);
constexpr Sort<hwy::uint128_t> uint128_sorts[] = ARRAYFOLD_LOOPS(sort_uint128);

}  // namespace
}  // namespace arrayfold

namespace hwy {

Sorter::Sorter() = default;
void Sorter::Delete() {}

void Sorter::operator()(std::int64_t* numbers, std::size_t count, SortAscending) const {
  arrayfold::int64_sorts[arrayfold::target_index()](numbers, count);
}
void Sorter::operator()(std::uint64_t* numbers, std::size_t count, SortAscending) const {
  arrayfold::uint64_sorts[arrayfold::target_index()](numbers, count);
}
void Sorter::operator()(uint128_t* numbers, std::size_t count, SortAscending) const {
  arrayfold::uint128_sorts[arrayfold::target_index()](numbers, count);
}

// The sort begins its choice of pivots with these. Equal numbers have equal bits, so the choice changes no result.
void Sorter::Fill24Bytes(const void*, std::size_t count, void* bytes) {
  const std::uint64_t words[] = {0x9E3779B97F4A7C15u * (count + 1), 0xD1B54A32D192ED03u ^ count, count};
  static_assert(sizeof words == 24, "three words");
  std::memcpy(bytes, words, sizeof words);
}

}  // namespace hwy
#endif
