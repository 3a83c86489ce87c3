// kernels/maps.cpp: one element computed from one element, for each processor target

#include "kernels/maps.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/maps.cpp"
#include <hwy/foreach_target.h>

#include <limits>

#include "kernels/dispatch.hpp"
#include "kernels/element_types.hpp"
#include "kernels/registers-inl.hpp"

HWY_BEFORE_NAMESPACE();
namespace arrayfold::HWY_NAMESPACE {

// ---- The functions on registers

template <class T>
constexpr T pi = static_cast<T>(3.141592653589793238L);
template <class T>
constexpr T infinity = std::numeric_limits<T>::infinity();

struct Magnitude {
  template <class D, class V>
  HWY_INLINE V operator()(D, V x) const {
    return hn::Abs(x);
  }
};
struct Sign {
  template <class D, class V>
  HWY_INLINE V operator()(D tag, V x) const {
    // The sum keeps a zero and makes a signaling NaN quiet.
    const auto is_number_but_zero = hn::Gt(hn::Abs(x), hn::Zero(tag));
    return hn::IfThenElse(is_number_but_zero, hn::CopySign(hn::Set(tag, 1), x), hn::Add(x, x));
  }
};
struct Degrees {
  template <class D, class V>
  HWY_INLINE V operator()(D tag, V x) const {
    return hn::Div(hn::Mul(x, hn::Set(tag, 180)), hn::Set(tag, pi<hn::TFromD<D>>));
  }
};
struct Radians {
  template <class D, class V>
  HWY_INLINE V operator()(D tag, V x) const {
    return hn::Div(hn::Mul(x, hn::Set(tag, pi<hn::TFromD<D>>)), hn::Set(tag, 180));
  }
};
struct Square {
  template <class D, class V>
  HWY_INLINE V operator()(D tag, V x) const {
    return product(tag, x, x);
  }
};
struct Cube {
  template <class D, class V>
  HWY_INLINE V operator()(D tag, V x) const {
    return product(tag, product(tag, x, x), x);
  }
};
struct SquareRoot {
  template <class D, class V>
  HWY_INLINE V operator()(D, V x) const {
    return hn::Sqrt(x);
  }
};

/// 1 where `Test` holds, else 0.
template <class Test>
struct Classified {
  template <class D, class V>
  HWY_INLINE V operator()(D tag, V x) const {
    return hn::IfThenElseZero(Test()(tag, x), hn::Set(tag, 1));
  }
};
struct IsNan {
  template <class D, class V>
  HWY_INLINE hn::Mask<D> operator()(D, V x) const {
    return hn::IsNaN(x);
  }
};
struct IsInfinite {
  template <class D, class V>
  HWY_INLINE hn::Mask<D> operator()(D tag, V x) const {
    return hn::Eq(hn::Abs(x), hn::Set(tag, infinity<hn::TFromD<D>>));
  }
};
struct IsFinite {
  template <class D, class V>
  HWY_INLINE hn::Mask<D> operator()(D tag, V x) const {
    return hn::Lt(hn::Abs(x), hn::Set(tag, infinity<hn::TFromD<D>>));
  }
};

// ---- The loops

template <class Apply, class T, class R>
void map(const T* in, R* out, std::size_t count) {
  store_results(TagFor<T, R>(), out, count,
                [=](auto tag, std::size_t i) HWY_ATTR { return Apply()(tag, hn::LoadU(tag, in + i)); });
}

/// For division and roots, which take a little longer in registers of 64 bytes than in two of 32. Integers are
/// converted to double first.
template <class Apply, class T>
void map_floating(const T* in, double* out, std::size_t count) {
  using Floating = std::conditional_t<std::is_floating_point_v<T>, T, double>;
  store_results(hn::Rebind<Floating, hn::CappedTag<double, 4>>(), out, count, [=](auto tag, std::size_t i) HWY_ATTR {
    const hn::Rebind<T, decltype(tag)> stored;
    const auto elements = hn::LoadU(stored, in + i);
    if constexpr (std::is_floating_point_v<T>)
      return Apply()(tag, elements);
    else
      return Apply()(tag, as_doubles(stored, elements));
  });
}

constexpr auto maps_of = [](auto zero) {
  using T = decltype(zero);
  Maps<T> all{};
  all.magnitude = &map<Magnitude>;
  all.degrees = &map_floating<Degrees>;
  all.radians = &map_floating<Radians>;
  all.square = &map<Square>;
  all.cube = &map<Cube>;
  all.square_root = &map_floating<SquareRoot>;
  if constexpr (std::is_floating_point_v<T>) {
    all.sign = &map<Sign>;
    all.is_nan = &map<Classified<IsNan>>;
    all.is_infinite = &map<Classified<IsInfinite>>;
    all.is_finite = &map<Classified<IsFinite>>;
  }
  return all;
};

constexpr auto all_maps = for_element_types<Maps>(maps_of);

}  // namespace arrayfold::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace arrayfold {

const ForElementTypes<Maps>* const maps_by_target[] = ARRAYFOLD_LOOPS(all_maps);

}  // namespace arrayfold
#endif
