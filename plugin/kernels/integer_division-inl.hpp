// kernels/integer_division-inl.hpp: quotients and remainders of integers
//
// required: an integer division without a quotient ends the process by SIGFPE.
//
// 32-bit integers are divided in doubles. The truncated quotient of two doubles is exact for them: a quotient that is
// not an integer differs from the next integer by at least 2^-31 of itself. Blocks are checked first; one in which a
// division would fault goes to the processor's own division. Kernel sources include this header for each target.

#if defined(ARRAYFOLD_INTEGER_DIVISION_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ARRAYFOLD_INTEGER_DIVISION_INL
#undef ARRAYFOLD_INTEGER_DIVISION_INL
#else
#define ARRAYFOLD_INTEGER_DIVISION_INL
#endif

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "kernels/arithmetic.hpp"
#include "kernels/division_fault.hpp"
#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

// ---- By the processor

/// `from_quotient` gives the result of a division whose truncated quotient is known.
struct IntegerQuotient {
  template <class T>
  static T divide(T a, T b) {
    return quotient_or_fault(a, b);
  }
  template <class V>
  static HWY_INLINE V from_quotient(V quotient, V, V) {
    return quotient;
  }
};
struct IntegerRemainder {
  template <class T>
  static T divide(T a, T b) {
    return remainder_or_fault(a, b);
  }
  template <class V>
  static HWY_INLINE V from_quotient(V quotient, V a, V b) {
    return hn::Sub(a, hn::Mul(quotient, b));
  }
};

/// Divides each element on the left by the one on the right. A step of 0 repeats an element.
template <class Division, class T>
void divide_by_processor(const T* left, std::size_t left_step, const T* right, std::size_t right_step, T* out,
                         std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) out[i] = Division::divide(left[i * left_step], right[i * right_step]);
}

// ---- In doubles

using Ints = TagFor<std::int32_t, double>;

template <class D>
using DoublesOf = hn::Rebind<double, D>;

/// Elements, or one element repeated where the step is 0.
template <std::size_t step, class D>
HWY_INLINE hn::Vec<D> operand_at(D tag, const std::int32_t* elements, std::size_t i) {
  if constexpr (step == 0)
    return hn::Set(tag, *elements);
  else
    return hn::LoadU(tag, elements + i);
}

template <std::size_t left_step, std::size_t right_step>
bool any_division_faults(const std::int32_t* left, const std::int32_t* right, std::size_t count) {
  bool found = false;
  for_each_register(hn::ScalableTag<std::int32_t>(), count, [&](auto tag, std::size_t i) HWY_ATTR {
    const auto a = operand_at<left_step>(tag, left, i), b = operand_at<right_step>(tag, right, i);
    const auto smallest = hn::Set(tag, std::numeric_limits<std::int32_t>::min());
    const auto beyond = hn::And(hn::Eq(b, hn::Set(tag, -1)), hn::Eq(a, smallest));
    found |= !hn::AllFalse(tag, hn::Or(hn::Eq(b, hn::Zero(tag)), beyond));
  });
  return found;
}

template <class Division, std::size_t left_step, std::size_t right_step>
void divide_in_doubles(const std::int32_t* left, const std::int32_t* right, std::int32_t* out, std::size_t count) {
  for_each_register(Ints(), count, [=](auto tag, std::size_t i) HWY_ATTR {
    const DoublesOf<decltype(tag)> doubles;
    const auto a = operand_at<left_step>(tag, left, i), b = operand_at<right_step>(tag, right, i);
    const auto quotient = without_fraction(tag, hn::Div(hn::PromoteTo(doubles, a), hn::PromoteTo(doubles, b)));
    hn::StoreU(Division::from_quotient(quotient, a, b), tag, out + i);
  });
}

template <class Division, std::size_t left_step, std::size_t right_step>
void divide_in_blocks(const std::int32_t* left, const std::int32_t* right, std::int32_t* out, std::size_t count) {
  constexpr std::size_t block = 512;
  for (std::size_t first = 0; first < count; first += block) {
    const std::size_t size = std::min(block, count - first);
    const std::int32_t *const a = left + first * left_step, *const b = right + first * right_step;
    if (any_division_faults<left_step, right_step>(a, b, size))
      divide_by_processor<Division>(a, left_step, b, right_step, out + first, size);
    else
      divide_in_doubles<Division, left_step, right_step>(a, b, out + first, size);
  }
}

/// Division by one divisor, not 0 or -1: multiplies by the reciprocal, rounded one step away from zero so that exact
/// quotients never truncate too low. The product exceeds the quotient by less than 2^-20 / divisor, and a quotient that
/// is not an integer lies at least 1 / divisor below the next one.
template <class Division>
void divide_by_number(const std::int32_t* left, std::int32_t divisor, std::int32_t* out, std::size_t count) {
  const double reciprocal = std::nextafter(1.0 / divisor, divisor < 0 ? -1.0 : 2.0);
  for_each_register(Ints(), count, [=](auto tag, std::size_t i) HWY_ATTR {
    const DoublesOf<decltype(tag)> doubles;
    const auto a = hn::LoadU(tag, left + i);
    const auto quotient = without_fraction(tag, hn::Mul(hn::PromoteTo(doubles, a), hn::Set(doubles, reciprocal)));
    hn::StoreU(Division::from_quotient(quotient, a, hn::Set(tag, divisor)), tag, out + i);
  });
}

// ---- The loops

template <class Division, class T, std::size_t left_step, std::size_t right_step>
void divide(const T* left, const T* right, T* out, std::size_t count) {
  if constexpr (!std::is_same_v<T, std::int32_t>)
    divide_by_processor<Division>(left, left_step, right, right_step, out, count);
  else if (right_step == 0 && *right != 0 && *right != -1)
    divide_by_number<Division>(left, *right, out, count);
  else
    divide_in_blocks<Division, left_step, right_step>(left, right, out, count);
}

template <class Division, class T>
constexpr Operation<T, T> integer_division{&divide<Division, T, 1, 1>, &divide<Division, T, 1, 0>,
                                           &divide<Division, T, 0, 1>};

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
