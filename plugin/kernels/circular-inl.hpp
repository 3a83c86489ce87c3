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

/// What a number leaves beside a multiple of pi/2, in two parts.
HWY_INLINE Pair remainder_of(Lanes x, Lanes quarters) {
  const Lanes first = fused_from(x, quarters, all(constants::quarter_first));
  const Lanes r = hn::NegMulAdd(quarters, all(constants::quarter_second), first);
  const Lanes lost = hn::NegMulAdd(quarters, all(constants::quarter_second), hn::Sub(first, r));
  return {r, hn::NegMulAdd(quarters, all(constants::quarter_third), lost)};
}

/// The truth of each lane whose lowest bit is set.
HWY_INLINE Truths is_odd(BitLanes bits) { return hn::RebindMask(Doubles(), hn::TestBit(bits, all_words(1))); }

/// Sine of x, `turned` by so many quarters. The cosine of r is 1 - 2 s^2, where s is the sine of r / 2: so one
/// polynomial serves all lanes. Every step for -x gives the negative number of that for x, or the same square.
HWY_INLINE Lanes sine_of(Lanes x, double turned) {
  // Ends in the bits of n, turned.
  const Lanes rounding = all(to_integer + turned);
  const Lanes with_n = hn::MulAdd(x, all(constants::quarters_per_unit), rounding);
  const BitLanes quarters = bits_of(with_n);
  // Odd lanes take half of x and half of n, so that r is halved. One less in the exponent does that: none of the
  // numbers is 0 or near the smallest.
  const BitLanes one_less = hn::ShiftRight<11>(hn::ShiftLeft<63>(quarters));
  const auto halved_if_odd = [&](Lanes y) HWY_ATTR { return from_bits(hn::Sub(bits_of(y), one_less)); };
  const Lanes n = hn::Sub(halved_if_odd(with_n), halved_if_odd(rounding));
  const Pair r = remainder_of(halved_if_odd(x), n);
  const Lanes square = hn::Mul(r.high, r.high);
  const Lanes factor = polynomial(constants::sine, square, hn::Mul(square, square));
  const Lanes sine = hn::Add(r.high, hn::MulAdd(hn::Mul(square, r.high), factor, r.low));
  const Lanes cosine = hn::NegMulAdd(hn::Add(sine, sine), sine, all(1));
  const Lanes value = hn::IfThenElse(is_odd(quarters), cosine, sine);
  return from_bits(hn::Xor(bits_of(value), hn::And(hn::ShiftLeft<62>(quarters), all_words(sign_bit))));
}

/// The largest magnitude that the kernel computes itself.
constexpr double largest = 1e5;

/// The C library's function beyond that, NaN for what is not finite, and `Function::of_usual` below, which takes tiny
/// numbers for `least_usual`.
template <class Function>
HWY_INLINE Lanes with_library(Lanes x, double (*function)(double)) {
  const Lanes magnitude = hn::Abs(x);
  const Truths usual = hn::Le(magnitude, all(largest));
  const Lanes y = Function::of_usual(hn::IfThenElse(Function::is_unusual(x), all(least_usual), x));
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
    const Integer n = nearest_integer(x, all(constants::quarters_per_unit));
    const Pair r = remainder_of(x, n.value);
    const Lanes square = hn::Mul(r.high, r.high), fourth = hn::Mul(square, square);
    const Lanes lower = hn::Mul(r.low, hn::MulAdd(square, all(constants::tangent_slope), all(1)));
    const Lanes p_tail =
        hn::MulAdd(hn::Mul(square, r.high), short_polynomial(constants::tangent_dividend, square), lower);
    const Lanes first = all(constants::tangent_divisor_first);
    const Lanes q = hn::MulAdd(square, first, all(1));
    const Lanes lost = hn::MulAdd(square, first, hn::Sub(all(1), q));
    const Lanes q_tail = hn::MulAdd(fourth, short_polynomial(constants::tangent_divisor, square), lost);
    const Truths odd = is_odd(n.bits);
    const Pair dividend = sum_of(hn::IfThenElse(odd, q, r.high), hn::IfThenElse(odd, q_tail, p_tail));
    const Pair divisor = sum_of(hn::IfThenElse(odd, r.high, q), hn::IfThenElse(odd, p_tail, q_tail));
    return from_bits(hn::Xor(bits_of(quotient(dividend, divisor)), hn::ShiftLeft<63>(n.bits)));
  }
  static HWY_INLINE Lanes of_any(Lanes x) { return hn::IfThenElse(is_tiny(x), x, with_library<Tan>(x, std::tan)); }
};

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
