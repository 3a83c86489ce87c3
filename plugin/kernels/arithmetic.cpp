// kernels/arithmetic.cpp: operations on two elements, for each processor target

#include "kernels/arithmetic.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/arithmetic.cpp"
#include <hwy/foreach_target.h>

#include "kernels/dispatch.hpp"
#include "kernels/element_types.hpp"
#include "kernels/integer_division-inl.hpp"
#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

// ---- The operations on registers

struct Sum {
  template <class D, class V>
  HWY_INLINE V operator()(D, V a, V b) const {
    return hn::Add(a, b);
  }
};
struct Difference {
  template <class D, class V>
  HWY_INLINE V operator()(D, V a, V b) const {
    return hn::Sub(a, b);
  }
};
struct Product {
  template <class D, class V>
  HWY_INLINE V operator()(D tag, V a, V b) const {
    return product(tag, a, b);
  }
};
struct Quotient {
  template <class D, class V>
  HWY_INLINE V operator()(D, V a, V b) const {
    return hn::Div(a, b);
  }
};
struct Minimum {
  template <class D, class V>
  HWY_INLINE V operator()(D tag, V a, V b) const {
    return first_if_less(tag, a, b);
  }
};
struct Maximum {
  template <class D, class V>
  HWY_INLINE V operator()(D tag, V a, V b) const {
    return first_if_greater(tag, a, b);
  }
};

struct Less {
  template <class D, class V>
  HWY_INLINE hn::Mask<D> operator()(D, V a, V b) const {
    return hn::Lt(a, b);
  }
};
struct Greater {
  template <class D, class V>
  HWY_INLINE hn::Mask<D> operator()(D, V a, V b) const {
    return hn::Gt(a, b);
  }
};
// Integers that are not greater are less or equal; with NaN floating-point numbers are neither.
struct LessEqual {
  template <class D, class V>
  HWY_INLINE hn::Mask<D> operator()(D, V a, V b) const {
    if constexpr (std::is_integral_v<hn::TFromD<D>>)
      return hn::Not(hn::Gt(a, b));
    else
      return hn::Le(a, b);
  }
};
struct GreaterEqual {
  template <class D, class V>
  HWY_INLINE hn::Mask<D> operator()(D, V a, V b) const {
    if constexpr (std::is_integral_v<hn::TFromD<D>>)
      return hn::Not(hn::Lt(a, b));
    else
      return hn::Ge(a, b);
  }
};

// ---- The loops

/// An operand that advances with the result.
template <class T>
struct Advancing {
  const T* elements;

  template <class D>
  HWY_INLINE hn::Vec<D> operator()(D tag, std::size_t i) const {
    return hn::LoadU(tag, elements + i);
  }
};

/// An operand that repeats its first element.
template <class T>
struct Repeating {
  T element;

  explicit Repeating(const T* first) : element(*first) {}

  template <class D>
  HWY_INLINE hn::Vec<D> operator()(D tag, std::size_t) const {
    return hn::Set(tag, element);
  }
};

template <class Apply, class Left, class Right, class T, class R>
void combine(const T* left, const T* right, R* out, std::size_t count) {
  const TagFor<T, R> whole;
  const auto result_at = [a = Left{left}, b = Right{right}](auto tag, std::size_t i)
                             HWY_ATTR { return Apply()(tag, a(tag, i), b(tag, i)); };
  if constexpr (!std::is_same_v<R, bool>) {
    const void* const written = out;
    store_results(whole, out, count, result_at, left == written || right == written);
  } else {
    std::size_t done = 0;
    if constexpr (hn::MaxLanes(whole) > 1) {
      // Stores of a few bytes take as much time as large ones.
      constexpr std::size_t lanes = hn::MaxLanes(whole);
      for (; count - done >= 2 * lanes; done += 2 * lanes)
        store_truths(whole, result_at(whole, done), result_at(whole, done + lanes), out + done);
    }
    for_each_register(whole, count - done, [=](auto tag, std::size_t i) HWY_ATTR {
      store_truths(tag, result_at(tag, done + i), out + done + i);
    });
  }
}

template <class Apply, class T, class R>
constexpr Operation<T, R> operation{&combine<Apply, Advancing<T>, Advancing<T>, T, R>,
                                    &combine<Apply, Advancing<T>, Repeating<T>, T, R>,
                                    &combine<Apply, Repeating<T>, Advancing<T>, T, R>};

// ---- Equality

/// Blocks are compared without a branch; the test ends with the first that differs.
template <class T>
bool equal_throughout(const T* left, const T* right, std::size_t count) {
  const hn::ScalableTag<T> tag;
  constexpr std::size_t lanes = hn::MaxLanes(tag), block = 4 * lanes;
  const auto equal_at = [=](std::size_t i)
                            HWY_ATTR { return hn::Eq(hn::LoadU(tag, left + i), hn::LoadU(tag, right + i)); };
  std::size_t i = 0;
  for (; i + block <= count; i += block) {
    const auto equal =
        hn::And(hn::And(equal_at(i), equal_at(i + lanes)), hn::And(equal_at(i + 2 * lanes), equal_at(i + 3 * lanes)));
    if (!hn::AllTrue(tag, equal)) return false;
  }
  for (; i + lanes <= count; i += lanes)
    if (!hn::AllTrue(tag, equal_at(i))) return false;
  for (; i < count; ++i)
    if (!(left[i] == right[i])) return false;
  return true;
}

// ---- The tables

constexpr auto arithmetic_of = [](auto zero) {
  using T = decltype(zero);
  Arithmetic<T> all{};
  all.sum = operation<Sum, T, T>;
  all.difference = operation<Difference, T, T>;
  all.product = operation<Product, T, T>;
  if constexpr (std::is_integral_v<T>) {
    all.quotient = integer_division<IntegerQuotient, T>;
    all.remainder = integer_division<IntegerRemainder, T>;
  } else {
    all.quotient = operation<Quotient, T, T>;
  }
  all.less_equal = operation<LessEqual, T, bool>;
  all.greater_equal = operation<GreaterEqual, T, bool>;
  all.less = operation<Less, T, bool>;
  all.greater = operation<Greater, T, bool>;
  all.minimum = operation<Minimum, T, double>;
  all.maximum = operation<Maximum, T, double>;
  all.are_equal = &equal_throughout<T>;
  return all;
};

constexpr auto all_arithmetic = for_element_types<Arithmetic>(arithmetic_of);

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

const ForElementTypes<Arithmetic>* const arithmetic_by_target[] = ARRAYFOLD_LOOPS(all_arithmetic);

}  // namespace arrayfold
#endif
