// kernels/logarithms-inl.hpp: log, log1p and cbrt of a register
//
// x = 2^k * z, where z lies in one of 16 cells from 0.98 to 1.97. The table has a short number near 1/z for each cell:
// its product with z is 1 + r, where |r| is below 1/16, and r is a double exactly wherever the logarithm is below 0.09.
// The logarithm is the sum of k ln 2, the logarithm of the cell, r and a polynomial in r. The first two have upper
// parts whose sum is exact. In the cell of 1 both are 0, so that results near 0 keep their accuracy.
//
// Errors in units in the last place: the last rounding has 0.5. The polynomial and the lower parts have less than 0.15,
// since they are at least 2^5 times smaller than the first two and r. In log1p they meet what the sum 1 + x has lost,
// which has up to 0.25 where x is near 2^-53. In cbrt all before the last rounding has less than 0.01.

#if defined(ARRAYFOLD_LOGARITHMS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ARRAYFOLD_LOGARITHMS_INL
#undef ARRAYFOLD_LOGARITHMS_INL
#else
#define ARRAYFOLD_LOGARITHMS_INL
#endif

#include "kernels/mathematics-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

/// The bits from which cell and exponent are read.
HWY_INLINE BitLanes cell_bits(Lanes x) { return hn::Add(bits_of(x), all_words(constants::to_cells)); }

/// True where x is negative, 0, subnormal, among the largest or no number: these bits are beyond those of the others.
HWY_INLINE Truths lacks_cell(BitLanes bits) {
  constexpr std::uint64_t exponents = 2041;
  return hn::RebindMask(Doubles(), hn::Gt(bits, all_words((exponents << 52) - 1)));
}

/// x as its cell, in the lowest bits; its exponent, biased; and what multiplies it to 1 + r.
struct InCell {
  BitLanes cell;
  Lanes exponent, inverse;
};

/// The lower bits of a word which are neither cell nor exponent.
constexpr std::uint64_t below_cells = (std::uint64_t{1} << 48) - 1;

/// A biased exponent, and the fraction below it, as a double.
HWY_INLINE Lanes exponent_as_double(BitLanes upper) {
  constexpr double with_exponent = 2048;
  return from_bits(hn::Or(hn::ShiftRight<11>(upper), bits_of(all(with_exponent))));
}

HWY_INLINE InCell in_cell(BitLanes bits) {
  const BitLanes cell = hn::ShiftRight<48>(bits), upper = hn::And(bits, all_words(~below_cells));
  return {cell, exponent_as_double(upper), from_bits(hn::Sub(lookup(constants::cell_inverses, cell), upper))};
}

/// The logarithm of x, where x * inverse is 1 + r, without the polynomial in r.
HWY_INLINE Pair logarithm_of_cell(const InCell& x, Lanes r) {
  const Lanes main = hn::MulAdd(x.exponent, all(constants::ln2_high), lookup(constants::cell_logs, x.cell));
  const Lanes tail = hn::MulAdd(x.exponent, all(constants::ln2_low), lookup(constants::cell_log_tails, x.cell));
  const Pair sum = sum_of(main, r);
  return {sum.high, hn::Add(sum.low, tail)};
}

HWY_INLINE Lanes with_polynomial(Pair sum, Lanes r) {
  const Lanes squared = hn::Mul(r, r);
  return hn::Add(sum.high, hn::MulAdd(squared, polynomial(constants::logarithm, r, squared), sum.low));
}

/// The logarithm's value where `y` is that of the positive numbers.
HWY_INLINE Lanes with_special_values(Lanes y, Lanes x) {
  const Lanes finite = hn::IfThenElse(hn::Eq(x, all(infinity)), x, y);
  const Lanes at_most_zero = hn::IfThenElse(hn::Eq(x, all(0)), all(-infinity), all(not_a_number));
  return hn::IfThenElse(hn::Gt(x, all(0)), finite, at_most_zero);
}

/// A positive number beyond those that have a cell, times 2^exponent.
struct Near {
  Lanes number, exponent;
};

/// Subnormal numbers are read as integers, since processors take a hundred times as long for products with them.
HWY_INLINE Near near_of(Lanes x) {
  const Truths large = hn::Ge(x, all(1)), subnormal = hn::Lt(x, all(smallest_normal));
  const Lanes with_integer = from_bits(hn::Or(bits_of(x), bits_of(all(0x1p52))));
  const Lanes integer = hn::Sub(with_integer, all(0x1p52));
  const Lanes of_normal =
      hn::Mul(hn::IfThenElse(subnormal, all(1), x), hn::IfThenElse(large, all(0x1p-60), all(0x1p60)));
  return {hn::IfThenElse(subnormal, integer, of_normal),
          hn::IfThenElse(subnormal, all(1074), hn::IfThenElse(large, all(-60), all(60)))};
}

struct Log {
  static HWY_INLINE Truths is_unusual(Lanes x) { return lacks_cell(cell_bits(x)); }
  static HWY_INLINE Lanes of_usual(Lanes x) { return of_cell(x, in_cell(cell_bits(x))); }
  static HWY_INLINE Lanes of_any(Lanes x) {
    const Truths unusual = is_unusual(x);
    const Near near = near_of(x);
    InCell cell = in_cell(cell_bits(hn::IfThenElse(unusual, near.number, x)));
    cell.exponent = hn::Sub(cell.exponent, hn::IfThenElseZero(unusual, near.exponent));
    return with_special_values(of_cell(hn::IfThenElse(unusual, near.number, x), cell), x);
  }

 private:
  static HWY_INLINE Lanes of_cell(Lanes x, const InCell& cell) {
    const Lanes r = fused(x, cell.inverse, all(-1));
    return with_polynomial(logarithm_of_cell(cell, r), r);
  }
};

/// The sum 1 + x is rounded. What it has lost is added to r.
struct Log1p {
  static HWY_INLINE Truths is_unusual(Lanes x) {
    // The square of a number without these bits of the exponent is subnormal.
    constexpr std::uint64_t upper_exponent_bits = std::uint64_t{3} << 61;
    const BitLanes upper = hn::And(bits_of(x), all_words(upper_exponent_bits));
    return hn::Or(lacks_cell(cell_bits(hn::Add(x, all(1)))), hn::RebindMask(Doubles(), hn::Eq(upper, all_words(0))));
  }
  static HWY_INLINE Lanes of_usual(Lanes x) {
    const Lanes sum = hn::Add(x, all(1));
    return of_sum(x, sum, in_cell(cell_bits(sum)));
  }
  static HWY_INLINE Lanes of_any(Lanes x) {
    const Truths unusual = is_unusual(x), tiny = is_tiny(x);
    const Lanes number = hn::IfThenZeroElse(tiny, x);
    const Lanes nearer = hn::IfThenElse(unusual, hn::Mul(number, all(0x1p-100)), number);
    const Lanes sum = hn::Add(nearer, all(1));
    InCell cell = in_cell(cell_bits(sum));
    cell.exponent = hn::Add(cell.exponent, hn::IfThenElseZero(unusual, all(100)));
    return hn::IfThenElse(tiny, x, with_special_values(of_sum(nearer, sum, cell), hn::Add(x, all(1))));
  }

 private:
  static HWY_INLINE Lanes of_sum(Lanes x, Lanes sum, const InCell& cell) {
    // 1 stands for the larger one: up to 2^53 this is exact where x is larger, too, and beyond 1 no longer counts.
    const Lanes lost = lost_in(sum, all(1), x);
    const Lanes r = fused(sum, cell.inverse, all(-1)), low = hn::Mul(lost, cell.inverse);
    const Pair main = logarithm_of_cell(cell, r);
    return with_polynomial({main.high, hn::Add(main.low, low)}, hn::Add(r, low));
  }
};

/// x = 8^q * z, where z has an exponent e of -1, 0 or 1. A polynomial gives t, near the inverse cube root of z by
/// 2^-30; the product of t^2 and z is near the cube root, and what its cube leaves corrects it. Cubes have exact roots,
/// since all that is computed before the last rounding is right to far more than its half unit.
struct Cbrt {
  static HWY_INLINE Truths is_unusual(Lanes x) { return lacks_cell(cell_bits(hn::Abs(x))); }
  static HWY_INLINE Lanes of_usual(Lanes x) { return hn::CopySign(of_positive(hn::Abs(x)), x); }
  static HWY_INLINE Lanes of_any(Lanes x) {
    const Lanes magnitude = hn::Abs(x);
    const Truths unusual = is_unusual(x);
    const Near near = near_of(magnitude);
    const Lanes y = of_positive(hn::IfThenElse(unusual, near.number, magnitude));
    const Lanes root_of_power =
        hn::IfThenElse(hn::Gt(near.exponent, all(1000)), all(0x1p-358),
                       hn::IfThenElse(hn::Lt(near.exponent, all(0)), all(0x1p20), all(0x1p-20)));
    const Lanes back = hn::Mul(y, hn::IfThenElse(unusual, root_of_power, all(1)));
    const Truths is_finite = hn::And(hn::Gt(magnitude, all(0)), hn::Lt(magnitude, all(infinity)));
    return hn::IfThenElse(is_finite, hn::CopySign(back, x), hn::Add(x, x));
  }

 private:
  static HWY_INLINE Lanes of_positive(Lanes x) {
    const BitLanes bits = cell_bits(x);
    const InCell cell = in_cell(bits);
    // The bias of the exponent and what is added to it are 3 * 1023.
    const Lanes exponent = exponent_as_double(hn::And(bits, all_words(exponent_bits)));
    const Integer q = nearest_integer(exponent, all(1.0 / 3));
    const Lanes e = hn::NegMulAdd(q.value, all(3), exponent);
    const BitLanes power = hn::ShiftLeft<52>(q.bits);
    // Three times q is taken from the exponent; the word has its bias three times.
    const BitLanes with_biases = hn::Add(bits_of(x), all_words(3 * bits_of_one));
    const Lanes z = from_bits(hn::Sub(hn::Sub(with_biases, power), hn::ShiftLeft<53>(q.bits)));
    const Lanes r = hn::MulAdd(x, cell.inverse, all(-1));
    const Lanes start =
        hn::Mul(lookup(constants::cube_root_inverses, cell.cell), short_polynomial(constants::third_power, e));
    const Lanes t = hn::Mul(start, polynomial(constants::inverse_cube_root, r, hn::Mul(r, r)));
    const Lanes squared = hn::Mul(t, t);
    const Lanes near = hn::Mul(z, squared);
    const Lanes square = hn::Mul(near, near), square_low = fused(near, near, hn::Neg(square));
    const Lanes left = hn::NegMulAdd(square_low, near, fused_from(z, square, near));
    const Lanes root = hn::MulAdd(left, hn::Mul(squared, all(1.0 / 3)), near);
    return hn::Mul(root, from_bits(power));
  }
};

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
