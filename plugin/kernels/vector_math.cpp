// kernels/vector_math.cpp: mathematical functions over many numbers at once, for each processor target

#include "kernels/vector_math.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector_math.cpp"
#include <hwy/foreach_target.h>

#include "kernels/circular-inl.hpp"
#include "kernels/dispatch.hpp"
#include "kernels/exponentials-inl.hpp"
#include "kernels/logarithms-inl.hpp"
#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

// ---- Fewer elements than a register has

/// The elements, and the last one in the other lanes.
template <class D, class T>
HWY_INLINE hn::Vec<D> padded(D tag, const T* elements, std::size_t count) {
  const auto padding = hn::Set(tag, elements[count - 1]);
  if constexpr (hn::MaxLanes(tag) <= 2) {
    return padding;
  } else {
    const auto first = hn::FirstN(tag, count);
    return hn::IfThenElse(first, hn::MaskedLoad(first, tag, elements), padding);
  }
}

template <class D, class V>
HWY_INLINE void store_first(D tag, V lanes, double* out, std::size_t count) {
  if constexpr (hn::MaxLanes(tag) <= 2)
    out[0] = hn::GetLane(lanes);
  else
    hn::BlendedStore(lanes, hn::FirstN(tag, count), tag, out);
}

// ---- The loops

/// The function of a register. `of_usual` is right where `is_unusual` holds for no lane, `of_any` everywhere.
template <class Function>
HWY_INLINE Lanes value_of(Lanes x) {
  if (HWY_LIKELY(hn::AllFalse(Doubles(), Function::is_unusual(x)))) return Function::of_usual(x);
  return Function::of_any(x);
}

/// The remainder, padded with the last element, goes through the same instructions.
template <class Function, class T>
void over_registers(const T* in, double* out, std::size_t count) {
  const Doubles tag;
  const hn::Rebind<T, Doubles> numbers;
  constexpr std::size_t lanes = hn::MaxLanes(tag);
  for (; count != 0; in += lanes, out += lanes, count -= lanes) {
    const bool is_whole = count >= lanes;
    const auto loaded = is_whole ? hn::LoadU(numbers, in) : padded(numbers, in, count);
    const Lanes y = value_of<Function>(as_doubles(numbers, loaded));
    if (!is_whole) return store_first(tag, y, out, count);
    hn::StoreU(y, tag, out);
  }
}

template <class Function>
constexpr VectorFunctions of_every_type{&over_registers<Function, double>, &over_registers<Function, std::int32_t>,
                                        &over_registers<Function, std::int64_t>};

constexpr VectorMath all_vector_math{of_every_type<Exp>,  of_every_type<Exp10>, of_every_type<Expm1>,
                                     of_every_type<Log>,  of_every_type<Log1p>, of_every_type<Cbrt>,
                                     of_every_type<Sin>,  of_every_type<Cos>,   of_every_type<Tan>,
                                     of_every_type<Sinh>, of_every_type<Cosh>,  of_every_type<Tanh>};

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

const VectorMath* const vector_math_by_target[] = ARRAYFOLD_LOOPS(all_vector_math);

}  // namespace arrayfold
#endif
