// kernels/mathematics-inl.hpp: what the mathematical functions share
//
// Each function takes and gives a register of doubles. Its operations are the same for every width of registers, and
// each is rounded once: products with a sum are fused, by name, wherever the processor does that. So the bits of a
// result are the same on all these processors. On the others the error is larger, within a bound that they keep too.

#if defined(ARRAYFOLD_MATHEMATICS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ARRAYFOLD_MATHEMATICS_INL
#undef ARRAYFOLD_MATHEMATICS_INL
#else
#define ARRAYFOLD_MATHEMATICS_INL
#endif

#include <cstddef>
#include <cstdint>
#include <limits>

#include <hwy/highway.h>

#include "kernels/per_target-inl.hpp"
#include "kernels/vector_math_tables.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

using Doubles = hn::ScalableTag<double>;
using Words = hn::RebindToUnsigned<Doubles>;
/// A register of doubles, one of 64-bit words, and a truth for each double.
using Lanes = hn::Vec<Doubles>;
using BitLanes = hn::Vec<Words>;
using Truths = hn::Mask<Doubles>;

// ---- Registers of one number, and bits

HWY_INLINE Lanes all(double x) { return hn::Set(Doubles(), x); }
HWY_INLINE BitLanes all_words(std::uint64_t x) { return hn::Set(Words(), x); }
HWY_INLINE BitLanes bits_of(Lanes x) { return hn::BitCast(Words(), x); }
HWY_INLINE Lanes from_bits(BitLanes bits) { return hn::BitCast(Doubles(), bits); }

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();
constexpr double smallest_normal = std::numeric_limits<double>::min();
constexpr std::uint64_t bits_of_one = std::uint64_t{1023} << 52;
constexpr std::uint64_t exponent_bits = std::uint64_t{0x7ff} << 52;
constexpr std::uint64_t below_exponent = (std::uint64_t{1} << 52) - 1;
constexpr std::uint64_t sign_bit = std::uint64_t{1} << 63;

/// The bits of a double.
constexpr std::uint64_t word_of(double x) { return __builtin_bit_cast(std::uint64_t, x); }

/// Loops leave smaller magnitudes to `of_any`: their squares and cubes may be subnormal, and processors take a hundred
/// times as long for a subnormal product.
constexpr double least_usual = 0x1p-300;

/// False where the magnitude is from `least_usual` up to `most`: one comparison of bits, as signed integers.
HWY_INLINE Truths is_unusual_above(Lanes x, double most) {
  const hn::RebindToSigned<Doubles> integers;
  constexpr std::uint64_t offset = sign_bit - word_of(least_usual);
  const auto placed = hn::BitCast(integers, hn::Add(bits_of(hn::Abs(x)), all_words(offset)));
  const auto end = hn::BitCast(integers, all_words(word_of(most) + offset));
  return hn::RebindMask(Doubles(), hn::Gt(placed, end));
}

HWY_INLINE Truths is_tiny(Lanes x) { return hn::Lt(hn::Abs(x), all(least_usual)); }

/// At most `most` and at least `least`; NaN stays.
HWY_INLINE Lanes clamped(Lanes x, double least, double most) {
  return first_if_greater(Doubles(), all(least), first_if_less(Doubles(), all(most), x));
}

// ---- Rounding to integers

/// The sum with it ends in the bits of the nearest integer.
constexpr double to_integer = 0x1.8p52;

/// An integer as a double, and as the lowest bits of a word.
struct Integer {
  Lanes value;
  BitLanes bits;
};

/// The integer nearest to `x * factor`, which lies within 2^50.
HWY_INLINE Integer nearest_integer(Lanes x, Lanes factor, double rounding = to_integer) {
  const Lanes sum = hn::MulAdd(x, factor, all(rounding));
  return {hn::Sub(sum, all(rounding)), bits_of(sum)};
}

// ---- Sums and products without loss

/// `a * b + c`, rounded once; where the processor does not fuse them, from parts that lose nothing but a last rounding.
/// Elsewhere `hn::MulAdd` rounds the product on such a processor.
HWY_INLINE Lanes fused(Lanes a, Lanes b, Lanes c) {
#if HWY_NATIVE_FMA
  return hn::MulAdd(a, b, c);
#else
  const auto upper_half = [](Lanes x) { return from_bits(hn::And(bits_of(x), all_words(~std::uint64_t{0x7ffffff}))); };
  const Lanes product = hn::Mul(a, b), upper_a = upper_half(a), upper_b = upper_half(b);
  const Lanes lower_a = hn::Sub(a, upper_a), lower_b = hn::Sub(b, upper_b);
  const Lanes crossed = hn::Add(hn::Add(hn::Sub(hn::Mul(upper_a, upper_b), product), hn::Mul(upper_a, lower_b)),
                                hn::Mul(lower_a, upper_b));
  const Lanes lost_of_product = hn::Add(crossed, hn::Mul(lower_a, lower_b));
  const Lanes sum = hn::Add(product, c), of_c = hn::Sub(sum, product);
  const Lanes lost_of_sum = hn::Add(hn::Sub(product, hn::Sub(sum, of_c)), hn::Sub(c, of_c));
  return hn::Add(sum, hn::Add(lost_of_sum, lost_of_product));
#endif
}
/// `c - a * b` in the same way.
HWY_INLINE Lanes fused_from(Lanes c, Lanes a, Lanes b) {
#if HWY_NATIVE_FMA
  return hn::NegMulAdd(a, b, c);
#else
  return fused(hn::Neg(a), b, c);
#endif
}

/// What `sum`, the rounded sum of the two, has lost. `larger` has the larger magnitude.
HWY_INLINE Lanes lost_in(Lanes sum, Lanes larger, Lanes smaller) { return hn::Add(hn::Sub(larger, sum), smaller); }

/// A number of two parts, the second within the rounding of the first.
struct Pair {
  Lanes high, low;
};

HWY_INLINE Pair sum_of(Lanes larger, Lanes smaller) {
  const Lanes sum = hn::Add(larger, smaller);
  return {sum, lost_in(sum, larger, smaller)};
}

/// What the rounded quotient leaves of the dividend corrects it.
HWY_INLINE Lanes quotient(Pair dividend, Pair divisor) {
  const Lanes inverse = hn::Div(all(1), divisor.high);
  const Lanes rounded = hn::Mul(dividend.high, inverse);
  const Lanes left = fused_from(dividend.high, rounded, divisor.high);
  const Lanes left_of_both = hn::Add(left, hn::NegMulAdd(rounded, divisor.low, dividend.low));
  return hn::MulAdd(left_of_both, inverse, rounded);
}

// ---- Beyond the range of a kernel

/// `y` in the usual lanes, and the library's function of x in the others.
template <class Function>
HWY_INLINE Lanes or_by_library(Truths usual, Lanes y, Lanes x, Function function) {
  if (hn::AllTrue(Doubles(), usual)) return y;
  // Usual lanes are stored as 0. In the others x is not 0.
  alignas(64) double lanes[hn::MaxLanes(Doubles())];
  hn::Store(hn::IfThenZeroElse(usual, x), Doubles(), lanes);
  for (double& lane : lanes)
    if (lane != 0) lane = function(lane);
  return hn::IfThenElse(usual, y, hn::Load(Doubles(), lanes));
}

// ---- Polynomials

/// Every second term from `c[first]` on, in powers of x^2.
template <std::size_t first, std::size_t count>
HWY_INLINE Lanes every_second(const double (&c)[count], Lanes squared) {
  if constexpr (first + 2 >= count)
    return all(c[first]);
  else
    return hn::MulAdd(every_second<first + 2>(c, squared), squared, all(c[first]));
}

/// `c[0] + c[1] * x + c[2] * x^2 + …`: terms of even and of odd powers are two sums, which wait less for each other.
template <std::size_t count>
HWY_INLINE Lanes polynomial(const double (&c)[count], Lanes x, Lanes squared) {
  return hn::MulAdd(every_second<1>(c, squared), x, every_second<0>(c, squared));
}

/// The same for few terms.
template <std::size_t first = 0, std::size_t count>
HWY_INLINE Lanes short_polynomial(const double (&c)[count], Lanes x) {
  if constexpr (first + 1 == count)
    return all(c[first]);
  else
    return hn::MulAdd(short_polynomial<first + 1>(c, x), x, all(c[first]));
}

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
