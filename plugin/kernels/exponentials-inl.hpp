// kernels/exponentials-inl.hpp: exp, exp10, expm1, sinh, cosh and tanh of a register
//
// x = n * ln(2)/16 + r, where |r| is at most ln(2)/32. The power 2^(n/16) is one of 16 doubles with the exponent added,
// and e^r is a polynomial. What r and the double have lost stays in a number of its own, which is added late.
//
// Errors in units in the last place: the last rounding has 0.5. All before it has less than 0.05, since it is smaller
// by 2^5 at least: in exp and cosh that is what is added to the power. expm1, sinh and tanh cancel where n is small, so
// they keep the sum of the power and its product with r in two parts; in sinh what is added to these has less than 0.1.
// exp10 keeps r and that sum in two parts, both exact to 2^-63: all before the last rounding has less than 0.003. So a
// power that is a double, such as 10^22, gives that double.

#if defined(ARRAYFOLD_EXPONENTIALS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ARRAYFOLD_EXPONENTIALS_INL
#undef ARRAYFOLD_EXPONENTIALS_INL
#else
#define ARRAYFOLD_EXPONENTIALS_INL
#endif

#include <cmath>

#include "kernels/mathematics-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

/// x as steps of ln(2)/16 and what is left of it, exactly but for the lower part of the steps.
struct Steps {
  Integer n;
  Lanes left;
};

HWY_INLINE Steps steps_of(Lanes x, double rounding = to_integer) {
  const Integer n = nearest_integer(x, all(constants::steps_per_unit), rounding);
  return {n, hn::NegMulAdd(n.value, all(constants::step_high), x)};
}

/// The lowest bits as those above the lower 48 of a double: n adds n/16 to its exponent.
HWY_INLINE BitLanes as_exponent(BitLanes n) { return hn::ShiftLeft<48>(n); }

/// 2^(n/16), where n is in the lowest bits.
HWY_INLINE Lanes power_of(BitLanes n) { return from_bits(hn::Add(lookup(constants::power_bits, n), as_exponent(n))); }

/// What the power and the rest of x lack: it is added to the exponent.
HWY_INLINE Lanes lost_by(Lanes n, BitLanes bits) {
  return hn::NegMulAdd(n, all(constants::step_low), lookup(constants::power_tails, bits));
}

/// e^x is the power times e^(left + low). For |x| up to 708.
struct Exponential {
  Lanes power, left, low;
};

HWY_INLINE Exponential exponential(Lanes x) {
  const Steps steps = steps_of(x);
  return {power_of(steps.n.bits), steps.left, lost_by(steps.n.value, steps.n.bits)};
}

/// e^r - 1 as an absolute matter: r is small, and 1 is added to it.
HWY_INLINE Lanes small_exponential(Lanes r) {
  const Lanes squared = hn::Mul(r, r);
  return hn::MulAdd(squared, polynomial(constants::exponential, r, squared), r);
}

// ---- Results near the ends of the range

/// e^x, or half of it, for every x: results overflow, and subnormal ones are rounded once.
template <bool halved = false>
HWY_INLINE Lanes exponential_of_any(Lanes any) {
  constexpr int shift = halved ? -1 : 0;
  // Beyond these the result is infinity or 0.
  const Lanes x = clamped(hn::IfThenZeroElse(is_tiny(any), any), -760, halved ? 710.6 : 709.9);
  const Steps steps = steps_of(x);
  const Lanes sum = small_exponential(hn::Add(steps.left, lost_by(steps.n.value, steps.n.bits)));
  // The power without its exponent k.
  const BitLanes exponent = as_exponent(steps.n.bits), k = hn::And(exponent, all_words(~below_exponent));
  const BitLanes fraction = hn::And(exponent, all_words(below_exponent));
  const Lanes power = from_bits(hn::Add(lookup(constants::power_bits, steps.n.bits), fraction));
  const Lanes value = hn::MulAdd(power, sum, power);
  // The value is about 1 to 2, and its exponent gets less than is due, so that a product gives infinity.
  constexpr std::uint64_t unit = std::uint64_t{1} << 52, due = shift * unit;
  const BitLanes bits = hn::Add(bits_of(value), k);
  const Lanes doubled = hn::Mul(from_bits(hn::Add(bits, all_words(due - unit))), all(2));
  const Lanes normal = hn::IfThenElse(hn::IsNaN(any), any, doubled);
  const Truths small = hn::Le(steps.n.value, all((-1021 - shift) * 16.0));
  if (hn::AllFalse(Doubles(), small)) return normal;
  // The sum of the value and this power of two has its last place where that of a subnormal result would be: the sum
  // is rounded there, and its fraction is that of the result. Products would take a hundred times as long.
  const Lanes above = from_bits(hn::Sub(all_words(unit - due), k));
  const Pair rounded = sum_of(above, value);
  const Lanes lost = hn::Add(rounded.low, hn::MulAdd(power, sum, hn::Sub(power, value)));
  const Lanes subnormal = from_bits(hn::Sub(bits_of(hn::Add(rounded.high, lost)), bits_of(above)));
  const Lanes smallest_normals = from_bits(hn::Add(bits, all_words(due)));
  return hn::IfThenElse(small, hn::IfThenElse(hn::Lt(value, above), subnormal, smallest_normals), normal);
}

// ---- The functions

struct Exp {
  static HWY_INLINE Truths is_unusual(Lanes x) { return is_unusual_above(x, 708); }
  static HWY_INLINE Lanes of_usual(Lanes x) {
    const Exponential e = exponential(x);
    return hn::MulAdd(e.power, small_exponential(hn::Add(e.left, e.low)), e.power);
  }
  static HWY_INLINE Lanes of_any(Lanes x) { return exponential_of_any(x); }
};

/// 10^x, nearly always rounded as the exact power. The remainder of x, and its product with ln 10, have two parts.
struct Exp10 {
  /// Below 10^-290, what a step loses may be subnormal.
  static constexpr double largest = 290;

  static HWY_INLINE Truths is_unusual(Lanes x) { return is_unusual_above(x, largest); }
  static HWY_INLINE Lanes of_usual(Lanes x) {
    const Integer n = nearest_integer(x, all(constants::steps_per_decade));
    const Lanes left = hn::NegMulAdd(n.value, all(constants::step_of_ten_high), x);
    const Pair r = sum_of(left, hn::Mul(n.value, all(-constants::step_of_ten_low)));
    const Lanes ln10 = all(constants::ln10_high);
    const Lanes t = hn::Mul(r.high, ln10), gained = fused_from(t, r.high, ln10);
    const Lanes t_low = hn::MulAdd(r.high, all(constants::ln10_low), hn::MulSub(r.low, ln10, gained));
    const Lanes power = power_of(n.bits), power_low = lookup(constants::power_tails, n.bits);
    // What e^t and the power have beside 1 + t and the double.
    const Lanes lower = hn::Add(t_low, hn::MulAdd(power_low, t, power_low)), squared = hn::Mul(t, t);
    const Lanes tail = hn::MulAdd(squared, polynomial(constants::exponential, t, squared), lower);
    const Lanes sum = hn::MulAdd(power, t, power);
    const Lanes lost = fused(power, t, hn::Sub(power, sum));
    return hn::Add(sum, hn::MulAdd(power, tail, lost));
  }
  /// Powers beyond 10^290 and below 10^-290 are the C library's, up to where each of them is infinity or 0.
  static HWY_INLINE Lanes of_any(Lanes x) {
    const Lanes magnitude = hn::Abs(x);
    const Truths usual = hn::Le(magnitude, all(largest)), is_far = hn::Not(hn::Le(magnitude, all(330)));
    const Lanes y = of_usual(hn::IfThenElse(is_unusual(x), all(least_usual), x));
    const Lanes far = hn::IfThenElse(hn::Lt(x, all(0)), all(0), hn::Mul(x, all(infinity)));
    return or_by_library(hn::Or(usual, is_far), hn::IfThenElse(is_far, far, y), x,
                         [](double exponent) { return std::pow(10.0, exponent); });
  }
};

/// e^x - 1 in two parts, for |x| up to 708. The second part is far below the first one, but not within its rounding.
template <bool is_negative = false>
HWY_INLINE Pair exponential_less_one(Lanes x) {
  const Exponential e = exponential(x);
  // Nothing is lost from 1/2 up to 2^53. Beyond, 1 is at most half of the last place, and `lost` misses it.
  const Lanes less_one = hn::Sub(e.power, all(1));
  Lanes lost = hn::Add(hn::Sub(all(-1), less_one), e.power);
  if constexpr (!is_negative) lost = hn::IfThenElse(hn::Gt(e.power, all(0x1p53)), hn::Sub(lost, all(1)), lost);
  const Lanes sum = hn::MulAdd(e.power, e.left, less_one);
  const Lanes lost_of_sum = hn::Add(fused(e.power, e.left, hn::Sub(less_one, sum)), lost);
  const Lanes r = hn::Add(e.left, e.low), squared = hn::Mul(r, r);
  const Lanes tail = hn::MulAdd(squared, polynomial(constants::exponential, r, squared), e.low);
  return {sum, hn::MulAdd(e.power, tail, lost_of_sum)};
}

struct Expm1 {
  static HWY_INLINE Truths is_unusual(Lanes x) { return is_unusual_above(x, 600); }
  static HWY_INLINE Lanes of_usual(Lanes x) {
    const Pair value = exponential_less_one(x);
    return hn::Add(value.high, value.low);
  }
  static HWY_INLINE Lanes of_any(Lanes x) {
    const Truths large = hn::Gt(x, all(600)), tiny = is_tiny(x);
    const Lanes usual = hn::IfThenElse(tiny, x, of_usual(clamped(hn::IfThenZeroElse(tiny, x), -600, 600)));
    return hn::AllFalse(Doubles(), large) ? usual : hn::IfThenElse(large, exponential_of_any(x), usual);
  }
};

/// Half of e^|x| and half of e^-|x|, as powers p and q: their sum and their difference, and what cosh and sinh of the
/// rest are beside 1 and beside the rest.
struct Halves {
  Lanes left;          // of |x|
  Lanes sum, sum_low;  // p + q
  Lanes difference, difference_low;
  Lanes tails_sum, tails_difference;  // of the lower parts of p and q
  Lanes cosine_tail, sine_tail;
};

HWY_INLINE Halves halves(Lanes magnitude) {
  // 16 steps less are half of a power: the bits count these.
  const Steps steps = steps_of(magnitude, to_integer - 16);
  const BitLanes n = steps.n.bits, opposite = hn::Sub(all_words(0 - std::uint64_t{32}), n);
  const Lanes p = power_of(n), q = power_of(opposite);
  const Lanes p_low = hn::Mul(p, lookup(constants::power_tails, n)), q_low = lookup(constants::power_tails, opposite);
  const Pair sum = sum_of(p, q);
  const Lanes difference = hn::Sub(p, q);
  const Lanes low = hn::Mul(steps.n.value, all(-constants::step_low));
  const Lanes r = hn::Add(steps.left, low), y = hn::Mul(r, r);
  return {steps.left,
          sum.high,
          sum.low,
          difference,
          hn::Sub(hn::Sub(p, difference), q),
          hn::MulAdd(q, q_low, p_low),
          hn::NegMulAdd(q, q_low, p_low),
          hn::Mul(y, short_polynomial(constants::cosine_h, y)),
          hn::MulAdd(hn::Mul(y, r), short_polynomial(constants::sine_h, y), low)};
}

struct Cosh {
  static HWY_INLINE Truths is_unusual(Lanes x) { return is_unusual_above(x, 700); }
  static HWY_INLINE Lanes of_usual(Lanes x) {
    const Halves h = halves(hn::Abs(x));
    const Lanes sine = hn::Add(h.left, h.sine_tail);
    const Lanes lower = hn::Add(h.sum_low, h.tails_sum);
    return hn::Add(h.sum, hn::MulAdd(h.difference, sine, hn::MulAdd(h.sum, h.cosine_tail, lower)));
  }
  static HWY_INLINE Lanes of_any(Lanes x) {
    const Lanes magnitude = hn::IfThenZeroElse(is_tiny(x), hn::Abs(x));
    const Truths large = hn::Gt(magnitude, all(700));
    const Lanes usual = of_usual(clamped(magnitude, 0, 700));
    return hn::AllFalse(Doubles(), large) ? usual : hn::IfThenElse(large, exponential_of_any<true>(magnitude), usual);
  }
};

struct Sinh {
  static HWY_INLINE Truths is_unusual(Lanes x) { return is_unusual_above(x, 700); }
  static HWY_INLINE Lanes of_usual(Lanes x) {
    const Halves h = halves(hn::Abs(x));
    const Lanes main = hn::MulAdd(h.sum, h.left, h.difference);
    const Lanes lost = fused(h.sum, h.left, hn::Sub(h.difference, main));
    const Lanes lower = hn::Add(hn::Add(h.difference_low, h.tails_difference), lost);
    const Lanes rest = hn::MulAdd(h.sum, h.sine_tail, hn::MulAdd(h.difference, h.cosine_tail, lower));
    return hn::CopySign(hn::Add(main, hn::MulAdd(h.sum_low, h.left, rest)), x);
  }
  static HWY_INLINE Lanes of_any(Lanes x) {
    const Truths tiny = is_tiny(x), large = hn::Gt(hn::Abs(x), all(700));
    const Lanes usual = hn::IfThenElse(tiny, x, of_usual(clamped(hn::IfThenZeroElse(tiny, x), -700, 700)));
    if (hn::AllFalse(Doubles(), large)) return usual;
    return hn::IfThenElse(large, hn::CopySign(exponential_of_any<true>(hn::Abs(x)), x), usual);
  }
};

struct Tanh {
  static HWY_INLINE Truths is_unusual(Lanes x) { return is_tiny(x); }
  static HWY_INLINE Lanes of_any(Lanes x) {
    const Truths tiny = is_tiny(x);
    return hn::IfThenElse(tiny, x, of_usual(hn::IfThenZeroElse(tiny, x)));
  }
  /// tanh |x| = -e / (2 + e), where e is e^(-2|x|) - 1. From 20 on the value is 1.
  static HWY_INLINE Lanes of_usual(Lanes x) {
    const Lanes magnitude = hn::Abs(x);
    const Lanes nearer = first_if_less(Doubles(), all(20), magnitude);
    const Pair parts = exponential_less_one<true>(hn::Mul(nearer, all(-2)));
    const Pair e = sum_of(parts.high, parts.low);
    const Lanes divisor = hn::Add(all(2), e.high);
    const Lanes divisor_low = hn::Add(lost_in(divisor, all(2), e.high), e.low);
    return hn::CopySign(quotient(e, {divisor, divisor_low}), x);
  }
};

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
