// elementwise/unary.cpp: the functions of one array
//
// Each gives a new array of the operand's shape. Its elements are doubles, except for `xabs` of integers. Integers are
// converted to double first, except in `xabs`, `xsquare` and `xcube`, which compute in the element's own width. A float
// operand is computed in 32 bits and stored as doubles. An object of another kind (bool, foreign) counts as handled and
// gives no value.

#include <algorithm>
#include <cmath>
#include <limits>

#include "array/arguments.hpp"
#include "array/storage.hpp"
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

// ---- Ways to compute an element
//
// Loops of one or two instructions are unrolled: for operands in the first-level cache the loop's own instructions
// would cost as much.

/// Applies `function` to the elements in their own kind.
template <class Function>
auto in_its_kind(Function function) {
  return [function](const auto* in, auto* __restrict out, std::size_t count) {
#pragma GCC unroll 4
    for (std::size_t i = 0; i < count; ++i) out[i] = function(in[i]);
  };
}

/// Applies `vectors` to doubles and `function` to floats, in 32 bits. Integers are converted to double, block by block.
template <class Function>
struct ByVectors {
  VectorFunction vectors;
  Function function;

  void operator()(const double* in, double* out, std::size_t count) const { vectors(in, out, count); }
  void operator()(const float* in, double* __restrict out, std::size_t count) const {
    for (std::size_t i = 0; i < count; ++i) out[i] = function(in[i]);
  }
  template <class Integer>
  void operator()(const Integer* in, double* out, std::size_t count) const {
    constexpr std::size_t block = 512;
    for (std::size_t first = 0; first < count; first += block) {
      const std::size_t size = std::min(block, count - first);
      convert(in + first, out + first, size);
      vectors(out + first, out + first, size);
    }
  }

 private:
  template <class Integer>
  static void convert(const Integer* in, double* __restrict out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<double>(in[i]);
  }
};

template <class Function>
ByVectors<Function> by_vectors(VectorFunction vectors, Function function) {
  return {vectors, function};
}

/// Applies `function` to doubles and floats; integers are converted to double first.
template <class Function>
auto in_floating(Function function) {
  return [function](const auto* in, double* __restrict out, std::size_t count) {
    using T = std::decay_t<decltype(*in)>;
    using Floating = std::conditional_t<std::is_same_v<T, float>, float, double>;
#pragma GCC unroll 4
    for (std::size_t i = 0; i < count; ++i) out[i] = function(static_cast<Floating>(in[i]));
  };
}

/// Applies `test` to doubles and floats; true is stored as 1, false as 0.
/// required: integers are not read, since their result is known.
template <class Test>
auto classified(double of_integers, Test test) {
  return [of_integers, test](const auto* in, double* __restrict out, std::size_t count) {
#pragma GCC unroll 4
    for (std::size_t i = 0; i < count; ++i) {
      if constexpr (std::is_integral_v<std::decay_t<decltype(*in)>>)
        out[i] = of_integers;
      else
        out[i] = test(in[i]) ? 1.0 : 0.0;
    }
  };
}

// ---- Scalar functions that <cmath> does not give in this form

template <class Floating>
constexpr Floating pi = static_cast<Floating>(3.141592653589793238L);

/// Integers wrap in their width: the smallest one stays itself.
constexpr auto magnitude = [](auto x) {
  using T = decltype(x);
  if constexpr (std::is_integral_v<T>)
    return x < 0 ? static_cast<T>(-x) : x;
  else
    return std::abs(x);
};
constexpr auto signum = [](auto x) {
  using Floating = decltype(x);
  if (x != x) return std::numeric_limits<Floating>::quiet_NaN();
  return std::copysign(x == 0 ? Floating{0} : Floating{1}, x);
};
// The multiplication comes first: the other order rounds otherwise.
constexpr auto degrees = [](auto x) { return x * decltype(x){180} / pi<decltype(x)>; };
constexpr auto radians = [](auto x) { return x * pi<decltype(x)> / decltype(x){180}; };
/// Integers wrap in their width before they become doubles.
constexpr auto square = [](auto x) { return static_cast<decltype(x)>(x * x); };
constexpr auto cube = [](auto x) { return static_cast<decltype(x)>(square(x) * x); };

constexpr auto square_root = [](auto x) { return std::sqrt(x); };
constexpr auto gamma_function = [](auto x) { return std::tgamma(x); };

/// required: for doubles these two call the host's functions, for floats the C library's.
constexpr auto host_erf = [](auto x) { return std::erf(x); };
constexpr auto host_lgamma = [](auto x) { return std::lgamma(x); };

constexpr auto is_nan = [](auto x) { return x != x; };
constexpr auto is_infinite = [](auto x) { return std::isinf(x); };
constexpr auto is_finite = [](auto x) { return std::isfinite(x); };

}  // namespace

// ---- The entries

// required: the result is of the operand's kind, under the float name for floats.
Outcome xabs(const Call& call) { return map_in_kind(double_first{}, call, in_its_kind(magnitude)); }
// required: integers give no value, and floats give a result under the float name.
Outcome xsign(const Call& call) { return map_in_kind(kinds<XTDouble, XTFloat>{}, call, in_its_kind(signum)); }

Outcome xrad2deg(const Call& call) { return map_unary(call, in_floating(degrees)); }
Outcome xdegrees(const Call& call) { return map_unary(call, in_floating(degrees)); }
Outcome xdeg2rad(const Call& call) { return map_unary(call, in_floating(radians)); }
Outcome xradians(const Call& call) { return map_unary(call, in_floating(radians)); }
Outcome xsquare(const Call& call) { return map_unary(call, in_its_kind(square)); }
Outcome xcube(const Call& call) { return map_unary(call, in_its_kind(cube)); }
Outcome xsqrt(const Call& call) { return map_unary(call, in_floating(square_root)); }
Outcome xexp(const Call& call) { return map_unary(call, by_vectors(vector_exp, ::expf)); }
Outcome xexpm1(const Call& call) { return map_unary(call, by_vectors(vector_expm1, ::expm1f)); }
Outcome xlog(const Call& call) { return map_unary(call, by_vectors(vector_log, ::logf)); }
Outcome xlog1p(const Call& call) { return map_unary(call, by_vectors(vector_log1p, ::log1pf)); }
Outcome xcbrt(const Call& call) { return map_unary(call, by_vectors(vector_cbrt, ::cbrtf)); }
Outcome xsin(const Call& call) { return map_unary(call, by_vectors(vector_sin, ::sinf)); }
Outcome xcos(const Call& call) { return map_unary(call, by_vectors(vector_cos, ::cosf)); }
Outcome xtan(const Call& call) { return map_unary(call, by_vectors(vector_tan, ::tanf)); }
Outcome xsinh(const Call& call) { return map_unary(call, by_vectors(vector_sinh, ::sinhf)); }
Outcome xcosh(const Call& call) { return map_unary(call, by_vectors(vector_cosh, ::coshf)); }
Outcome xtanh(const Call& call) { return map_unary(call, by_vectors(vector_tanh, ::tanhf)); }
Outcome xerf(const Call& call) { return map_unary(call, in_floating(host_erf)); }
Outcome xtgamma(const Call& call) { return map_unary(call, in_floating(gamma_function)); }
Outcome xlgamma(const Call& call) { return map_unary(call, in_floating(host_lgamma)); }
Outcome xisnan(const Call& call) { return map_unary(call, classified(0.0, is_nan)); }
Outcome xisinf(const Call& call) { return map_unary(call, classified(0.0, is_infinite)); }
Outcome xisfinite(const Call& call) { return map_unary(call, classified(1.0, is_finite)); }

}  // namespace arrayfold
