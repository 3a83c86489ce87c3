// elementwise/unary.cpp: the functions of one array
//
// Each gives a new array of the operand's shape. Its elements are doubles, except for `xabs` of integers. Integers are
// converted to double first, except in `xabs`, `xsquare` and `xcube`, which compute in the element's own width. A float
// operand is computed in 32 bits and stored as doubles. An object of another kind (bool, foreign) counts as handled and
// gives no value.

#include <cmath>
#include <type_traits>

#include "array/arguments.hpp"
#include "array/storage.hpp"
#include "kernels/maps.hpp"
#include "kernels/sequences.hpp"
#include "kernels/vector_math.hpp"

namespace arrayfold {
namespace {

// ---- The frame

/// A new array of the operand's shape, stored as `Stored`, filled by `map(in, out, count)`.
template <class Stored, class T, class Map>
auto mapped(const xarray_of<T>& operand, Map map) {
  check_extents(operand);
  auto made = make_array<Stored>(operand.shape());
  auto& out = made->array->storage();
  map(operand.storage().data(), out.data(), out.size());
  return made;
}

/// Maps an operand of any numeric kind to doubles.
template <class Map>
Outcome map_unary(const Call& call, Map map) {
  return give_made(double_first{}, call, [&](auto, const auto& array) { return mapped<XTDouble>(array, map); });
}

/// Maps an operand of one of the kinds to the kind in which its results are stored, under the operand's own name.
template <class Kinds, class Map>
Outcome map_in_kind(Kinds kinds_in_order, const Call& call, Map map) {
  return visit_first(kinds_in_order, call, [&](auto kind, const auto& array) {
    give_array(call, kind, mapped<typename decltype(kind)::stored>(array, map));
  });
}

// ---- Ways to compute the elements

/// Applies the loop that `choose` takes from the maps of the operand's kind.
template <class Choose>
constexpr auto by_kernel(Choose choose) {
  return [choose](const auto* in, auto* out, std::size_t count) {
    choose(maps<std::decay_t<decltype(*in)>>())(in, out, count);
  };
}

/// Maps doubles and floats to truth values by the loop that `choose` takes from the maps of the operand's kind.
/// required: integers are not read, since their result is known.
template <class Choose>
Outcome classify(const Call& call, bool of_integers, Choose choose) {
  return give_made(double_first{}, call, [&](auto, const auto& array) {
    using T = typename std::decay_t<decltype(array)>::value_type;
    if constexpr (!std::is_integral_v<T>) {
      return mapped<XTDouble>(array, by_kernel(choose));
    } else if (of_integers) {
      return mapped<XTDouble>(array, [](const T*, double* out, std::size_t count) { fill(out, count, 1.0); });
    } else {
      // The elements are not walked, and extents beyond them are too many for an array.
      return make_array_of_zeros<XTDouble>(array.shape());
    }
  });
}

/// Applies vectors to doubles and to integers, as doubles, and `function` to floats, in 32 bits.
template <class Function>
struct ByVectors {
  VectorFunctions VectorMath::*vectors;
  Function function;

  template <class T>
  void operator()(const T* in, double* __restrict out, std::size_t count) const {
    if constexpr (std::is_same_v<T, float>)
      for (std::size_t i = 0; i < count; ++i) out[i] = function(in[i]);
    else
      (vector_math().*vectors)(in, out, count);
  }
};

template <class Function>
ByVectors<Function> by_vectors(VectorFunctions VectorMath::*vectors, Function function) {
  return {vectors, function};
}

/// Applies `function` to doubles and floats, one by one; integers are converted to double first.
template <class Function>
auto one_by_one(Function function) {
  return [function](const auto* in, double* __restrict out, std::size_t count) {
    using T = std::decay_t<decltype(*in)>;
    using Floating = std::conditional_t<std::is_same_v<T, float>, float, double>;
    for (std::size_t i = 0; i < count; ++i) out[i] = function(static_cast<Floating>(in[i]));
  };
}

// ---- The functions

constexpr auto magnitude = by_kernel([](const auto& of) { return of.magnitude; });
constexpr auto sign = by_kernel([](const auto& of) { return of.sign; });
constexpr auto degrees = by_kernel([](const auto& of) { return of.degrees; });
constexpr auto radians = by_kernel([](const auto& of) { return of.radians; });
constexpr auto square = by_kernel([](const auto& of) { return of.square; });
constexpr auto cube = by_kernel([](const auto& of) { return of.cube; });
constexpr auto square_root = by_kernel([](const auto& of) { return of.square_root; });
constexpr auto is_nan = [](const auto& of) { return of.is_nan; };
constexpr auto is_infinite = [](const auto& of) { return of.is_infinite; };
constexpr auto is_finite = [](const auto& of) { return of.is_finite; };

constexpr auto gamma_function = [](auto x) { return std::tgamma(x); };
/// required: for doubles these two call the host's functions, for floats the C library's.
constexpr auto host_erf = [](auto x) { return std::erf(x); };
constexpr auto host_lgamma = [](auto x) { return std::lgamma(x); };

}  // namespace

// ---- The entries

// required: the result is of the operand's kind, under the float name for floats.
Outcome xabs(const Call& call) { return map_in_kind(double_first{}, call, magnitude); }
// required: integers give no value, and floats give a result under the float name.
Outcome xsign(const Call& call) { return map_in_kind(kinds<XTDouble, XTFloat>{}, call, sign); }

Outcome xrad2deg(const Call& call) { return map_unary(call, degrees); }
Outcome xdegrees(const Call& call) { return map_unary(call, degrees); }
Outcome xdeg2rad(const Call& call) { return map_unary(call, radians); }
Outcome xradians(const Call& call) { return map_unary(call, radians); }
Outcome xsquare(const Call& call) { return map_unary(call, square); }
Outcome xcube(const Call& call) { return map_unary(call, cube); }
Outcome xsqrt(const Call& call) { return map_unary(call, square_root); }
Outcome xexp(const Call& call) { return map_unary(call, by_vectors(&VectorMath::exp, ::expf)); }
Outcome xexpm1(const Call& call) { return map_unary(call, by_vectors(&VectorMath::expm1, ::expm1f)); }
Outcome xlog(const Call& call) { return map_unary(call, by_vectors(&VectorMath::log, ::logf)); }
Outcome xlog1p(const Call& call) { return map_unary(call, by_vectors(&VectorMath::log1p, ::log1pf)); }
Outcome xcbrt(const Call& call) { return map_unary(call, by_vectors(&VectorMath::cbrt, ::cbrtf)); }
Outcome xsin(const Call& call) { return map_unary(call, by_vectors(&VectorMath::sin, ::sinf)); }
Outcome xcos(const Call& call) { return map_unary(call, by_vectors(&VectorMath::cos, ::cosf)); }
Outcome xtan(const Call& call) { return map_unary(call, by_vectors(&VectorMath::tan, ::tanf)); }
Outcome xsinh(const Call& call) { return map_unary(call, by_vectors(&VectorMath::sinh, ::sinhf)); }
Outcome xcosh(const Call& call) { return map_unary(call, by_vectors(&VectorMath::cosh, ::coshf)); }
Outcome xtanh(const Call& call) { return map_unary(call, by_vectors(&VectorMath::tanh, ::tanhf)); }
Outcome xerf(const Call& call) { return map_unary(call, one_by_one(host_erf)); }
Outcome xtgamma(const Call& call) { return map_unary(call, one_by_one(gamma_function)); }
Outcome xlgamma(const Call& call) { return map_unary(call, one_by_one(host_lgamma)); }
Outcome xisnan(const Call& call) { return classify(call, false, is_nan); }
Outcome xisinf(const Call& call) { return classify(call, false, is_infinite); }
Outcome xisfinite(const Call& call) { return classify(call, true, is_finite); }

}  // namespace arrayfold
