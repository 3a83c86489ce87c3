// kernels/circular-inl.hpp: sin, cos and tan of a register
//
// x = n * pi/2 + r, where |r| is at most pi/4 and has two parts. pi/2 is the sum of three doubles, 143 bits: for |x|
// up to 1e5 each step is exact or lost bits are kept, and r is right to 2^-60 of itself, also next to multiples of
// pi/2. Sine and cosine of r are polynomials; n says which of them is taken, and its sign. The functions of larger
// numbers are the C library's.
//
// Errors in units in the last place: the last rounding has 0.5. Before it, sine has less than 0.35: of its polynomial,
// and of the lower part of r, which is added without its slope. Cosine has less than 0.49, near pi/4: half a unit of
// sin(r/2) counts 0.38 there, and its polynomial the rest. Tangent has less than 0.45, of r and both polynomials.

#if defined(ARRAYFOLD_CIRCULAR_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ARRAYFOLD_CIRCULAR_INL
#undef ARRAYFOLD_CIRCULAR_INL
#else
#define ARRAYFOLD_CIRCULAR_INL
#endif

#include <cmath>

#include "kernels/mathematics-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

/// n in the lowest bits, and r in two parts.
struct Angle {
  BitLanes quarters;
  Lanes r, low;
};

HWY_INLINE Angle angle_of(Lanes x) {
  const Integer n = nearest_integer(x, all(constants::quarters_per_unit));
  const Lanes first = fused_from(x, n.value, all(constants::quarter_first));
  const Lanes r = hn::NegMulAdd(n.value, all(constants::quarter_second), first);
  const Lanes lost = hn::NegMulAdd(n.value, all(constants::quarter_second), hn::Sub(first, r));
  const Lanes low = hn::NegMulAdd(n.value, all(constants::quarter_third), lost);
  return {n.bits, r, low};
}

/// The truth of each lane whose lowest bit is set.
HWY_INLINE Truths is_odd(BitLanes bits) { return hn::RebindMask(Doubles(), hn::TestBit(bits, all_words(1))); }

/// Sine of x, `turned` by so many quarters. The cosine of r is 1 - 2 s^2, where s is the sine of r / 2: so one
/// polynomial serves all lanes. Every step for -x gives the negative number of that for x, or the same square.
HWY_INLINE Lanes sine_of(Lanes x, std::uint64_t turned) {
  const Angle a = angle_of(x);
  const BitLanes quarters = hn::Add(a.quarters, all_words(turned));
  const Truths odd = is_odd(quarters);
  const Lanes r = hn::IfThenElse(odd, hn::Mul(a.r, all(0.5)), a.r);
  const Lanes low = hn::IfThenElse(odd, hn::Mul(a.low, all(0.5)), a.low);
  const Lanes square = hn::Mul(r, r);
  const Lanes factor = polynomial(constants::sine, square, hn::Mul(square, square));
  const Lanes sine = hn::Add(r, hn::MulAdd(hn::Mul(square, r), factor, low));
  const Lanes value = hn::IfThenElse(odd, hn::MulAdd(hn::Mul(sine, all(-2)), sine, all(1)), sine);
  return from_bits(hn::Xor(bits_of(value), hn::And(hn::ShiftLeft<62>(quarters), all_words(sign_bit))));
}

/// The largest magnitude that the kernel computes itself.
constexpr double largest = 1e5;

/// The C library's function beyond that, NaN for what is not finite, and `Function::of_usual` below.
template <class Function>
HWY_INLINE Lanes with_library(Lanes x, double (*function)(double)) {
  const Lanes magnitude = hn::Abs(x);
  const Truths usual = hn::Le(magnitude, all(largest));
  const Lanes y =
      Function::of_usual(hn::IfThenElseZero(hn::Ge(magnitude, all(least_usual)), hn::IfThenElseZero(usual, x)));
  const Truths is_finite = hn::Lt(magnitude, all(infinity));
  const Lanes with_nan = hn::IfThenElse(usual, y, hn::Sub(x, x));
  return or_by_library(hn::Or(usual, hn::Not(is_finite)), with_nan, x, function);
}

struct Sin {
  static HWY_INLINE Truths is_unusual(Lanes x) { return is_unusual_above(x, largest); }
  static HWY_INLINE Lanes of_usual(Lanes x) { return sine_of(x, 0); }
  static HWY_INLINE Lanes of_any(Lanes x) { return hn::IfThenElse(is_tiny(x), x, with_library<Sin>(x, std::sin)); }
};

struct Cos {
  static HWY_INLINE Truths is_unusual(Lanes x) { return is_unusual_above(x, largest); }
  static HWY_INLINE Lanes of_usual(Lanes x) { return sine_of(x, 1); }
  static HWY_INLINE Lanes of_any(Lanes x) { return with_library<Cos>(x, std::cos); }
};

/// A quotient of polynomials in r, or of the second one and the negative first one.
struct Tan {
  static HWY_INLINE Truths is_unusual(Lanes x) { return is_unusual_above(x, largest); }
  static HWY_INLINE Lanes of_usual(Lanes x) {
    const Angle a = angle_of(x);
    const Lanes square = hn::Mul(a.r, a.r), fourth = hn::Mul(square, square);
    const Lanes lower = hn::Mul(a.low, hn::MulAdd(square, all(constants::tangent_slope), all(1)));
    const Lanes p_tail = hn::MulAdd(hn::Mul(square, a.r), short_polynomial(constants::tangent_dividend, square), lower);
    const Lanes first = all(constants::tangent_divisor_first);
    const Lanes q = hn::MulAdd(square, first, all(1));
    const Lanes lost = hn::MulAdd(square, first, hn::Sub(all(1), q));
    const Lanes q_tail = hn::MulAdd(fourth, short_polynomial(constants::tangent_divisor, square), lost);
    const Truths odd = is_odd(a.quarters);
    const Pair dividend = sum_of(hn::IfThenElse(odd, q, a.r), hn::IfThenElse(odd, q_tail, p_tail));
    const Pair divisor = sum_of(hn::IfThenElse(odd, a.r, q), hn::IfThenElse(odd, p_tail, q_tail));
    return from_bits(hn::Xor(bits_of(quotient(dividend, divisor)), hn::ShiftLeft<63>(a.quarters)));
  }
  static HWY_INLINE Lanes of_any(Lanes x) { return hn::IfThenElse(is_tiny(x), x, with_library<Tan>(x, std::tan)); }
};

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
