// kernels/vector_math.cpp: the C library's vector functions, for each processor target

#include "kernels/vector_math.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector_math.cpp"
#include <hwy/foreach_target.h>
#include "kernels/dispatch.hpp"
#include "kernels/per_target-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

// ---- The library's functions

constexpr bool takes_registers = sizeof(ARRAYFOLD_VECTOR_PREFIX) > 1;

using Doubles = hn::CappedTag<double, takes_registers ? HWY_MAX_BYTES / sizeof(double) : 1>;

/// What a function of the library takes and returns: the compiler's vector, or a double.
template <class V>
HWY_INLINE auto library_operand(V x) {
  if constexpr (takes_registers)
    return x.raw;
  else
    return hn::GetLane(x);
}
using Operand = decltype(library_operand(hn::Zero(Doubles())));

namespace library {

Operand exp(Operand) __asm__(ARRAYFOLD_VECTOR_PREFIX "exp");
Operand expm1(Operand) __asm__(ARRAYFOLD_VECTOR_PREFIX "expm1");
Operand log(Operand) __asm__(ARRAYFOLD_VECTOR_PREFIX "log");
Operand log1p(Operand) __asm__(ARRAYFOLD_VECTOR_PREFIX "log1p");
Operand cbrt(Operand) __asm__(ARRAYFOLD_VECTOR_PREFIX "cbrt");
Operand sin(Operand) __asm__(ARRAYFOLD_VECTOR_PREFIX "sin");
Operand cos(Operand) __asm__(ARRAYFOLD_VECTOR_PREFIX "cos");
Operand tan(Operand) __asm__(ARRAYFOLD_VECTOR_PREFIX "tan");
Operand sinh(Operand) __asm__(ARRAYFOLD_VECTOR_PREFIX "sinh");
Operand cosh(Operand) __asm__(ARRAYFOLD_VECTOR_PREFIX "cosh");
Operand tanh(Operand) __asm__(ARRAYFOLD_VECTOR_PREFIX "tanh");

}  // namespace library

// ---- The loop

template <Operand (*function)(Operand), class D>
HWY_INLINE hn::Vec<D> value_of(D tag, hn::Vec<D> x) {
  (void)tag;
  if constexpr (takes_registers)
    return hn::Vec<D>{function(library_operand(x))};
  else
    return hn::Set(tag, function(library_operand(x)));
}

/// The remainder is padded with the last element.
template <Operand (*function)(Operand)>
void over_registers(const double* in, double* out, std::size_t count) {
  const Doubles tag;
  constexpr std::size_t lanes = hn::MaxLanes(tag);
  std::size_t i = 0;
  for (; count - i >= lanes; i += lanes) hn::StoreU(value_of<function>(tag, hn::LoadU(tag, in + i)), tag, out + i);
  if (i == count) return;
  const auto padding = hn::Set(tag, in[count - 1]);
  if constexpr (lanes <= 2) {
    out[i] = hn::GetLane(value_of<function>(tag, padding));
  } else {
    const auto left = hn::FirstN(tag, count - i);
    const auto padded = hn::IfThenElse(left, hn::MaskedLoad(left, tag, in + i), padding);
    hn::BlendedStore(value_of<function>(tag, padded), left, tag, out + i);
  }
}

constexpr VectorMath all_vector_math{
    &over_registers<library::exp>,   &over_registers<library::expm1>, &over_registers<library::log>,
    &over_registers<library::log1p>, &over_registers<library::cbrt>,  &over_registers<library::sin>,
    &over_registers<library::cos>,   &over_registers<library::tan>,   &over_registers<library::sinh>,
    &over_registers<library::cosh>,  &over_registers<library::tanh>};

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

const VectorMath* const vector_math_by_target[] = ARRAYFOLD_LOOPS(all_vector_math);

}  // namespace arrayfold
#endif
