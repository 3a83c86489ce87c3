// kernels/arithmetic.hpp: operations on two elements, and their loops
//
// Integers wrap in their width; their division is the processor's, with its fault. Floating-point numbers follow IEEE
// 754. The loops take pointers that do not overlap, or one that is changed in place, so that the compiler keeps several
// elements in a register.

#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <type_traits>

#include "kernels/lanes.hpp"

namespace arrayfold {

// required: an integer division that faults raises the processor's own fault. The divisor is hidden from the compiler:
// it would otherwise fold a division whose divisor it knows something about, and remove the fault (x / x becomes 1, a
// division by -1 a negation). The sanitizer's check is switched off, because it would report before the fault.
#define ARRAYFOLD_FAULTING __attribute__((no_sanitize("integer-divide-by-zero")))

template <class T>
T hidden(T divisor) {
  if constexpr (std::is_integral_v<T>) asm volatile("" : "+r"(divisor));
  return divisor;
}

struct Quotient {
  template <class T>
  ARRAYFOLD_FAULTING T operator()(T a, T b) const {
    return a / hidden(b);
  }
};
struct Remainder {
  template <class T>
  ARRAYFOLD_FAULTING T operator()(T a, T b) const {
    return a % hidden(b);
  }
};

#undef ARRAYFOLD_FAULTING

using Sum = std::plus<>;
using Difference = std::minus<>;
using Product = std::multiplies<>;
using LessEqual = std::less_equal<>;
using GreaterEqual = std::greater_equal<>;
using Less = std::less<>;
using Greater = std::greater<>;

// ---- Division of 32-bit integers
//
// The truncated quotient of two doubles is exact for them: a quotient that is not an integer differs from the next
// integer by at least 2^-31 of itself. Blocks are checked first; one in which a division would fault goes to the
// processor's own division.

template <class Operation>
struct ExactInDoubles;

template <>
struct ExactInDoubles<Quotient> {
  std::int32_t operator()(std::int32_t a, std::int32_t b) const {
    return static_cast<std::int32_t>(static_cast<double>(a) / static_cast<double>(b));
  }
};
template <>
struct ExactInDoubles<Remainder> {
  std::int32_t operator()(std::int32_t a, std::int32_t b) const { return a - ExactInDoubles<Quotient>{}(a, b) * b; }
};

/// Division of every element by one divisor (not 0 or -1): multiplies by the reciprocal, rounded one step away from
/// zero so that exact quotients never truncate too low. The product exceeds the quotient by less than 2^-20 / divisor,
/// and a quotient that is not an integer lies at least 1 / divisor below the next one.
template <class Operation>
class ByNumber {
 public:
  explicit ByNumber(std::int32_t number) : number_(number), reciprocal_(beyond(1.0 / number)) {}

  std::int32_t operator()(std::int32_t a, std::int32_t) const {
    const auto quotient = static_cast<std::int32_t>(static_cast<double>(a) * reciprocal_);
    return std::is_same_v<Operation, Quotient> ? quotient : a - quotient * number_;
  }

 private:
  static double beyond(double x) { return std::nextafter(x, x < 0 ? -1.0 : 2.0); }

  std::int32_t number_;
  double reciprocal_;
};

template <class Operation, class T>
constexpr bool divides_int32 = std::is_same_v<T, std::int32_t> &&
                               (std::is_same_v<Operation, Quotient> || std::is_same_v<Operation, Remainder>);

// ---- Loops. An operand is a pointer to elements, or one number that is used for all of them.

template <class T>
T element(const T* elements, std::size_t i) {
  return elements[i];
}
template <class T>
T element(T number, std::size_t) {
  return number;
}
template <class T>
const T* behind(const T* elements, std::size_t count) {
  return elements + count;
}
template <class T>
T behind(T number, std::size_t) {
  return number;
}

template <class Left, class Right>
bool any_division_faults(Left left, Right right, std::size_t count) {
  int found = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const std::int32_t a = element(left, i);
    const std::int32_t b = element(right, i);
    found |= (b == 0) | ((b == -1) & (a == std::numeric_limits<std::int32_t>::min()));
  }
  return found != 0;
}

/// Calls `run(operation, first, count)` once for all elements or, for the division of 32-bit integers, once per block
/// with the division that suits it.
template <class T, class Operation, class Left, class Right, class Run>
void in_blocks(Operation operation, Left left, Right right, std::size_t count, Run run) {
  if constexpr (divides_int32<Operation, T>) {
    if constexpr (std::is_same_v<Right, std::int32_t>)
      if (right != 0 && right != -1) return run(ByNumber<Operation>(right), 0, count);
    constexpr std::size_t block = 512;
    for (std::size_t first = 0; first < count; first += block) {
      const std::size_t size = std::min(block, count - first);
      if (any_division_faults(behind(left, first), behind(right, first), size))
        run(operation, first, size);
      else
        run(ExactInDoubles<Operation>{}, first, size);
    }
  } else {
    run(operation, 0, count);
  }
}

// Unrolled by four: the loop counter would otherwise cost as much as the arithmetic.
template <class Operation, class Left, class Right, class R>
void combine_all(Operation operation, Left left, Right right, R* __restrict out, std::size_t count) {
#pragma GCC unroll 4
  for (std::size_t i = 0; i < count; ++i) out[i] = operation(element(left, i), element(right, i));
}

template <class Operation, class T, class Right>
void change_all(Operation operation, T* __restrict elements, Right right, std::size_t count) {
#pragma GCC unroll 4
  for (std::size_t i = 0; i < count; ++i) elements[i] = operation(elements[i], element(right, i));
}

// ---- The same loops for AVX-512, for operations that are slower than memory

template <class Operation, class Left, class Right, class R>
ARRAYFOLD_AVX512 void combine_on_avx512(Operation operation, Left left, Right right, R* __restrict out,
                                        std::size_t count) {
#pragma GCC unroll 4
  for (std::size_t i = 0; i < count; ++i) out[i] = operation(element(left, i), element(right, i));
}

template <class Operation, class T, class Right>
ARRAYFOLD_AVX512 void change_on_avx512(Operation operation, T* __restrict elements, Right right, std::size_t count) {
#pragma GCC unroll 4
  for (std::size_t i = 0; i < count; ++i) elements[i] = operation(elements[i], element(right, i));
}

/// Divisions in doubles, products of 64-bit integers and comparisons with a number. Sums and comparisons of two arrays
/// are bound by memory.
template <class T, class R, class Operation, class Right>
constexpr bool gains_from_avx512 = divides_int32<Operation, T> ||
                                   (std::is_same_v<Operation, Quotient> && std::is_same_v<T, double>) ||
                                   (std::is_same_v<Operation, Product> && std::is_same_v<T, std::int64_t>) ||
                                   (std::is_same_v<R, bool> && std::is_same_v<Right, T>);
/// Fewer elements go to the AVX2 loops, whose remainders are shorter.
constexpr std::size_t minimum_for_avx512 = 64;

/// out[i] = operation(left, right). `out` overlaps neither operand.
template <class T, class Operation, class Left, class Right, class R>
void combine(Operation operation, Left left, Right right, R* out, std::size_t count) {
  in_blocks<T>(operation, left, right, count, [=](auto suited, std::size_t first, std::size_t size) {
    if constexpr (gains_from_avx512<T, R, Operation, Right>)
      if (size >= minimum_for_avx512 && has_avx512())
        return combine_on_avx512(suited, behind(left, first), behind(right, first), out + first, size);
    combine_all(suited, behind(left, first), behind(right, first), out + first, size);
  });
}

/// elements[i] = operation(elements[i], right). The right operand is a number or other memory.
template <class T, class Operation, class Right>
void change(Operation operation, T* elements, Right right, std::size_t count) {
  in_blocks<T>(operation, static_cast<const T*>(elements), right, count,
               [=](auto suited, std::size_t first, std::size_t size) {
                 if constexpr (gains_from_avx512<T, T, Operation, Right>)
                   if (size >= minimum_for_avx512 && has_avx512())
                     return change_on_avx512(suited, elements + first, behind(right, first), size);
                 change_all(suited, elements + first, behind(right, first), size);
               });
}

/// elements[i] = operation(elements[i], elements[i]).
template <class T, class Operation>
void change_by_itself(Operation operation, T* elements, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) elements[i] = operation(elements[i], elements[i]);
}

}  // namespace arrayfold
