// kernels/folds.cpp: sums, products and counts, for each processor target

#include "kernels/folds.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/folds.cpp"
#include <hwy/foreach_target.h>

#include <limits>

#include "kernels/block_scan-inl.hpp"
#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

// ---- The steps, of numbers and of registers

struct Adding {
  template <class T>
  HWY_INLINE T operator()(T sum, T x) const {
    return static_cast<T>(sum + x);
  }
  template <class D, class V>
  HWY_INLINE V operator()(D, V sum, V x) const {
    return hn::Add(sum, x);
  }
};
struct Multiplying {
  template <class T>
  HWY_INLINE T operator()(T a, T x) const {
    return static_cast<T>(a * x);
  }
  template <class D, class V>
  HWY_INLINE V operator()(D tag, V a, V x) const {
    return product(tag, a, x);
  }
};
struct AddingSquare {
  template <class D, class V>
  HWY_INLINE V operator()(D, V sum, V x) const {
    return hn::Add(sum, hn::Mul(x, x));
  }
};
struct AddingSquaredDistance {
  double from;

  template <class D, class V>
  HWY_INLINE V operator()(D tag, V sum, V x) const {
    const V distance = hn::Sub(x, hn::Set(tag, from));
    return hn::Add(sum, hn::Mul(distance, distance));
  }
};

// ---- Chains, from left to right
//
// Each step waits for the one before. The chains are written with registers of one lane, or of one for each of a few
// rows: from numbers compilers make wider registers, which they take apart again for each step.

template <class R>
using OneLane = hn::CappedTag<R, 1>;

template <class R, class T>
HWY_INLINE hn::Vec<OneLane<R>> load_one(const T* element) {
  if constexpr (std::is_same_v<R, T>)
    return hn::LoadU(OneLane<R>(), element);
  else
    return hn::Set(OneLane<R>(), static_cast<R>(*element));
}

/// One element of each of as many rows as D has lanes; rows are `length` elements apart.
template <class D, class T>
HWY_INLINE hn::Vec<D> load_column(D tag, const T* element, std::size_t length) {
  if constexpr (hn::MaxLanes(tag) == 1) {
    return load_one<hn::TFromD<D>>(element);
  } else {
    // A single lane is combined with none: the name is found by its arguments.
    const hn::Half<D> half;
    return Combine(tag, load_column(half, element + hn::MaxLanes(half) * length, length),
                   load_column(half, element, length));
  }
}

/// Two neighbours of each of half as many rows as D has lanes: those of every other row.
template <class D, class T>
HWY_INLINE hn::Vec<D> load_pairs(D tag, const T* element, std::size_t length) {
  if constexpr (hn::MaxLanes(tag) == 2) {
    return hn::LoadU(tag, element);
  } else {
    const hn::Half<D> half;
    return Combine(tag, load_pairs(half, element + hn::MaxLanes(half) * length, length),
                   load_pairs(half, element, length));
  }
}

/// Steps over the next two elements of as many rows as D has lanes. Both are loaded at once where they are a register.
template <class D, class T, class Step>
HWY_INLINE hn::Vec<D> fold_two_columns(D tag, hn::Vec<D> folded, const T* element, std::size_t length, Step step) {
  if constexpr (std::is_same_v<T, hn::TFromD<D>> && sizeof(T) == 8 && hn::MaxLanes(tag) > 1) {
    const auto even = load_pairs(tag, element, length), odd = load_pairs(tag, element + length, length);
    folded = step(tag, folded, InterleaveLower(tag, even, odd));
    return step(tag, folded, InterleaveUpper(tag, even, odd));
  } else {
    folded = step(tag, folded, load_column(tag, element, length));
    return step(tag, folded, load_column(tag, element + 1, length));
  }
}

/// Folds `together` rows, interleaved, one accumulator a row.
template <std::size_t together, class R, class T, class Step>
HWY_INLINE void fold_interleaved(const T* elements, std::size_t length, R start, Step step, R* folded) {
  constexpr std::size_t most = together < 4 ? together : 4;
  const hn::CappedTag<R, most> tag;
  constexpr std::size_t lanes = hn::MaxLanes(tag), registers = together / lanes;
  hn::Vec<decltype(tag)> accumulators[registers];
  for (auto& accumulator : accumulators) accumulator = hn::Set(tag, start);
  std::size_t i = 0;
  // Unrolled: the steps of a short row cost less than the counting.
#pragma GCC unroll 2
  for (; i + 2 <= length; i += 2)
    for (std::size_t n = 0; n < registers; ++n)
      accumulators[n] = fold_two_columns(tag, accumulators[n], elements + n * lanes * length + i, length, step);
  if (i < length)
    for (std::size_t n = 0; n < registers; ++n)
      accumulators[n] = step(tag, accumulators[n], load_column(tag, elements + n * lanes * length + i, length));
  for (std::size_t n = 0; n < registers; ++n) {
    if constexpr (lanes == 1)
      folded[n] = hn::GetLane(accumulators[n]);
    else
      hn::StoreU(accumulators[n], tag, folded + n * lanes);
  }
}

/// Rows do not depend on each other, so `together` are folded side by side, then fewer. Where more than half as many
/// are left, some of the `done` rows in front of them are folded once more.
template <std::size_t together, class R, class T, class Step>
HWY_INLINE void fold_side_by_side(const T* elements, std::size_t done, std::size_t rows, std::size_t length, R start,
                                  Step step, R* folded) {
  while (done < rows) {
    const std::size_t left = rows - done;
    if (left <= together / 2 || rows < together) break;
    const std::size_t first = left < together ? rows - together : done;
    fold_interleaved<together>(elements + first * length, length, start, step, folded + first);
    done = first + together;
  }
  if constexpr (together > 1) fold_side_by_side<together / 2>(elements, done, rows, length, start, step, folded);
}
/// It stays a function of its own: a single row does not pay for the registers that many rows take.
template <class R, class T, class Step>
HWY_NOINLINE void fold_many_rows(const T* elements, std::size_t rows, std::size_t length, R start, Step step,
                                 R* folded) {
  fold_side_by_side<8>(elements, 0, rows, length, start, step, folded);
}

template <class R, class T, class Step>
HWY_INLINE void fold_rows(const T* elements, std::size_t rows, std::size_t length, R start, Step step, R* folded) {
  if (rows == 1)
    fold_interleaved<1>(elements, length, start, step, folded);
  else
    fold_many_rows(elements, rows, length, start, step, folded);
}

/// Rows by a step whose start does not change what is folded with it.
template <class Step, int start, class T>
void fold_each_row(const T* elements, std::size_t rows, std::size_t length, T* folded) {
  if constexpr (std::is_integral_v<T>)
    for (std::size_t row = 0; row < rows; ++row)
      folded[row] = fold_freely<Step, Reading::in_quarters>(elements + row * length, length, T{start});
  else
    fold_rows(elements, rows, length, T{start}, Step(), folded);
}

template <class T>
void sum_of_squares(const T* elements, std::size_t rows, std::size_t length, double* folded) {
  fold_rows(elements, rows, length, 0.0, AddingSquare(), folded);
}
template <class T>
void sum_of_squared_distances(const T* elements, std::size_t rows, std::size_t length, double from, double* folded) {
  fold_rows(elements, rows, length, 0.0, AddingSquaredDistance{from}, folded);
}
template <class T>
double sum_of_squared_deviations(const T* elements, std::size_t length) {
  T sum;
  fold_each_row<Adding, 0>(elements, 1, length, &sum);
  const double mean = static_cast<double>(sum) / static_cast<double>(length);
  double folded;
  fold_interleaved<1>(elements, length, 0.0, AddingSquaredDistance{mean}, &folded);
  return folded;
}

// ---- All elements

template <class T>
BlockSum<T> sum_by_blocks(const T* elements, std::size_t count, std::size_t stride) {
  const auto add_whole = [](const T* blocks, std::size_t whole, BlockSum<T> sum) {
    if constexpr (std::is_integral_v<T>)
      return fold_freely<Adding, Reading::in_quarters>(blocks, whole, sum);
    else
      return fold_blocks<Adding>(blocks, whole, sum, Adding());
  };
  return scan_blocks(elements, count, stride, BlockSum<T>{0}, add_whole, Adding());
}

template <class T>
double trapezoids(const T* elements, std::size_t count) {
  const OneLane<double> tag;
  auto sum = hn::Zero(tag);
  for (std::size_t i = 1; i < count; ++i) {
    const auto ends = static_cast<T>(elements[i] + elements[i - 1]);
    sum = hn::Add(sum, hn::Set(tag, static_cast<double>(ends) * 0.5));
  }
  return hn::GetLane(sum);
}

template <class T>
std::size_t count_of_zeros(const T* elements, std::size_t count) {
  std::size_t found = 0;
  for_each_register_in_quarters(hn::ScalableTag<T>(), count, [&](auto tag, std::size_t i) HWY_ATTR {
    found += hn::CountTrue(tag, hn::Eq(hn::LoadU(tag, elements + i), hn::Zero(tag)));
  });
  return found;
}

/// Without a branch on an element: an operand is rarely anything but finite.
template <class T>
bool finite_throughout(const T* elements, std::size_t count) {
  bool finite = true;
  for_each_register_in_quarters(hn::ScalableTag<T>(), count, [&](auto tag, std::size_t i) HWY_ATTR {
    const auto most = hn::Set(tag, std::numeric_limits<T>::max());
    finite &= hn::AllTrue(tag, hn::Le(hn::Abs(hn::LoadU(tag, elements + i)), most));
  });
  return finite;
}

constexpr auto folds_of = [](auto zero) {
  using T = decltype(zero);
  Folds<T> all{};
  all.sum = &fold_each_row<Adding, 0, T>;
  all.product = &fold_each_row<Multiplying, 1, T>;
  all.sum_of_squares = &sum_of_squares<T>;
  all.sum_of_squared_distances = &sum_of_squared_distances<T>;
  all.sum_of_squared_deviations = &sum_of_squared_deviations<T>;
  all.sum_by_blocks = &sum_by_blocks<T>;
  all.trapezoids = &trapezoids<T>;
  all.count_of_zeros = &count_of_zeros<T>;
  if constexpr (std::is_floating_point_v<T>) all.are_finite = &finite_throughout<T>;
  return all;
};

constexpr auto all_folds = for_element_types<Folds>(folds_of);

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

const ForElementTypes<Folds>* const folds_by_target[] = ARRAYFOLD_LOOPS(all_folds);

}  // namespace arrayfold
#endif
