// kernels/differences.cpp: elements minus their neighbours, for each processor target

#include "kernels/differences.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/differences.cpp"
#include <hwy/foreach_target.h>

#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

template <class T>
void subtract_neighbours(const T* rows, T* out, std::size_t length, std::size_t count) {
  // The two operands are one element apart, so at most one of them begins with a line of the cache. A register of half
  // a line crosses into the next line half as often.
  const hn::CappedTag<T, 32 / sizeof(T)> whole;
  constexpr std::size_t lanes = hn::MaxLanes(whole);
  const std::size_t width = length - 1;
  const auto difference_at = [&](auto tag, std::size_t i)
                                 HWY_ATTR { return hn::Sub(hn::LoadU(tag, rows + i + 1), hn::LoadU(tag, rows + i)); };
  for (std::size_t row = 0; row < count; ++row, rows += length, out += width) {
    // A register may reach into the rows that follow, whose results are written later. None follow the last row.
    const std::size_t left = (count - row) * width, whole_registers = (width + lanes - 1) / lanes * lanes;
    if (row + 1 < count && whole_registers <= left)
      for (std::size_t i = 0; i < width; i += lanes) store(whole, difference_at(whole, i), out + i);
    else
      store_results(whole, out, width, difference_at);
  }
}

constexpr auto differences_of = [](auto zero) { return Differences<decltype(zero)>{&subtract_neighbours}; };
constexpr auto all_differences = for_element_types<Differences>(differences_of);

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

const ForElementTypes<Differences>* const differences_by_target[] = ARRAYFOLD_LOOPS(all_differences);

}  // namespace arrayfold
#endif
