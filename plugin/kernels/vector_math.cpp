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

/// The function of a register. `of_usual` is right where `is_usual` holds for each lane, `of_any` everywhere.
template <class Function>
HWY_INLINE Lanes value_of(Lanes x) {
  if (HWY_LIKELY(hn::AllTrue(Doubles(), Function::is_usual(x)))) return Function::of_usual(x);
  return Function::of_any(x);
}

/// The remainder is padded with the last element.
template <class Function, class T>
void over_registers(const T* in, double* out, std::size_t count) {
  const Doubles tag;
  const hn::Rebind<T, Doubles> numbers;
  constexpr std::size_t lanes = hn::MaxLanes(tag);
  std::size_t i = 0;
  for (; count - i >= lanes; i += lanes) hn::StoreU(value_of<Function>(load_as(tag, in + i)), tag, out + i);
  if (i == count) return;
  const auto padding = hn::Set(numbers, in[count - 1]);
  if constexpr (lanes <= 2) {
    out[i] = hn::GetLane(value_of<Function>(as_doubles(numbers, padding)));
  } else {
    const auto left = hn::FirstN(numbers, count - i);
    const auto padded = hn::IfThenElse(left, hn::MaskedLoad(left, numbers, in + i), padding);
    hn::BlendedStore(value_of<Function>(as_doubles(numbers, padded)), hn::FirstN(tag, count - i), tag, out + i);
  }
}

template <class Function>
constexpr VectorFunctions of_every_type{&over_registers<Function, double>, &over_registers<Function, std::int32_t>,
                                        &over_registers<Function, std::int64_t>};

constexpr VectorMath all_vector_math{of_every_type<Exp>,   of_every_type<Expm1>, of_every_type<Log>,
                                     of_every_type<Log1p>, of_every_type<Cbrt>,  of_every_type<Sin>,
                                     of_every_type<Cos>,   of_every_type<Tan>,   of_every_type<Sinh>,
                                     of_every_type<Cosh>,  of_every_type<Tanh>};

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

const VectorMath* const vector_math_by_target[] = ARRAYFOLD_LOOPS(all_vector_math);

}  // namespace arrayfold
#endif
