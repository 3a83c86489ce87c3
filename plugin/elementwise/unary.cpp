// elementwise/unary.cpp: the 26 functions of one array
//
// Each gives a new array of the operand's shape, its elements doubles but for `xabs` of integers. Integers are
// converted to double first, but for `xabs`, `xsquare` and `xcube`, which work in the element's own width. A float
// operand is computed in 32 bits and stored as doubles. An object of another kind (bool, foreign) counts as handled and
// gives nothing.

#include <algorithm>
#include <cmath>
#include <limits>

#include "array/arguments.hpp"
#include "array/storage.hpp"
#include "kernels/vector_math.hpp"

namespace arrayfold {
namespace {

// ---- The frame

/// A new array of the operand's shape, filled by `map(in, out, count)`, stored as `Stored` under the name of `Named`.
template <class Named, class Stored, class T, class Map>
void give_mapped(const Call& call, const xarray_of<T>& operand, Map map) {
  check_extents(operand);
  auto made = make_array<Stored>(operand.shape());
  auto& out = made->array->storage();
  map(operand.storage().data(), out.data(), out.size());
  give_array<Named>(call.ctx, call.result, std::move(made));
}

/// Maps an operand of one of the kinds to doubles.
template <class Kinds, class Map>
Outcome map_kinds(Kinds kinds_in_order, const Call& call, Map map) {
  return visit_first(kinds_in_order, call,
                     [&](const auto& array) { give_mapped<XTDouble, XTDouble>(call, *array.array, map); });
}

template <class Map>
Outcome map_unary(const Call& call, Map map) {
  return map_kinds(real_first{}, call, map);
}

// ---- Ways to compute an element
//
// Loops of one or two instructions are unrolled: within the first cache the loop's own instructions would cost as much.

/// Every kind by `function` on its own elements.
template <class Function>
auto in_its_kind(Function function) {
  return [function](const auto* in, auto* __restrict out, std::size_t count) {
#pragma GCC unroll 4
    for (std::size_t i = 0; i < count; ++i) out[i] = function(in[i]);
  };
}

/// Doubles by `vectors`, floats by `function` in 32 bits, integers converted to double first, a block at a time.
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

/// Doubles and floats by `function`, integers converted to double first.
template <class Function>
auto in_reals(Function function) {
  return [function](const auto* in, double* __restrict out, std::size_t count) {
    using T = std::decay_t<decltype(*in)>;
    using Real = std::conditional_t<std::is_same_v<T, float>, float, double>;
#pragma GCC unroll 4
    for (std::size_t i = 0; i < count; ++i) out[i] = function(static_cast<Real>(in[i]));
  };
}

/// Doubles and floats by `test`, a truth stored as 1 or 0.
/// required: of integers no element is read, the answer is known.
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

// ---- The functions, where the C library's are not meant as they stand

template <class Real>
constexpr Real pi = static_cast<Real>(3.141592653589793238L);

/// The smallest integer stays itself.
constexpr auto magnitude = [](auto x) {
  if constexpr (std::is_integral_v<decltype(x)>)
    return x < 0 ? -x : x;
  else
    return std::abs(x);
};
constexpr auto signum = [](auto x) {
  using Real = decltype(x);
  if (x != x) return std::numeric_limits<Real>::quiet_NaN();
  return std::copysign(x == 0 ? Real{0} : Real{1}, x);
};
// The multiplication comes first: the other order rounds otherwise.
constexpr auto degrees = [](auto x) { return x * decltype(x){180} / pi<decltype(x)>; };
constexpr auto radians = [](auto x) { return x * pi<decltype(x)> / decltype(x){180}; };
/// Integers wrap in their width before they become doubles.
constexpr auto square = [](auto x) { return x * x; };
constexpr auto cube = [](auto x) { return x * x * x; };

constexpr auto square_root = [](auto x) { return std::sqrt(x); };
constexpr auto gamma_function = [](auto x) { return std::tgamma(x); };

/// required: on doubles these two are the host's, on floats the C library's.
constexpr auto host_erf = [](auto x) { return std::erf(x); };
constexpr auto host_lgamma = [](auto x) { return std::lgamma(x); };

constexpr auto is_nan = [](auto x) { return x != x; };
constexpr auto is_infinite = [](auto x) { return std::isinf(x); };
constexpr auto is_finite = [](auto x) { return std::isfinite(x); };

}  // namespace

// ---- The entries

// required: the result is of the operand's kind, under the float name for floats.
Outcome xabs(const Call& call) {
  return visit_first(real_first{}, call, [&](const auto& array) {
    using Kind = typename std::decay_t<decltype(array)>::tag;
    using Stored = std::conditional_t<std::is_same_v<Kind, XTFloat>, XTDouble, Kind>;
    give_mapped<Kind, Stored>(call, *array.array, in_its_kind(magnitude));
  });
}

// required: integers are not served, and floats give a result under the float name.
Outcome xsign(const Call& call) {
  return visit_first(kinds<XTDouble, XTFloat>{}, call, [&](const auto& array) {
    using Kind = typename std::decay_t<decltype(array)>::tag;
    give_mapped<Kind, XTDouble>(call, *array.array, in_its_kind(signum));
  });
}

Outcome xrad2deg(const Call& call) { return map_unary(call, in_reals(degrees)); }
Outcome xdegrees(const Call& call) { return map_unary(call, in_reals(degrees)); }
Outcome xdeg2rad(const Call& call) { return map_unary(call, in_reals(radians)); }
Outcome xradians(const Call& call) { return map_unary(call, in_reals(radians)); }
Outcome xsquare(const Call& call) { return map_unary(call, in_its_kind(square)); }
Outcome xcube(const Call& call) { return map_unary(call, in_its_kind(cube)); }
Outcome xsqrt(const Call& call) { return map_unary(call, in_reals(square_root)); }
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
Outcome xerf(const Call& call) { return map_unary(call, in_reals(host_erf)); }
Outcome xtgamma(const Call& call) { return map_unary(call, in_reals(gamma_function)); }
Outcome xlgamma(const Call& call) { return map_unary(call, in_reals(host_lgamma)); }
Outcome xisnan(const Call& call) { return map_unary(call, classified(0.0, is_nan)); }
Outcome xisinf(const Call& call) { return map_unary(call, classified(0.0, is_infinite)); }
Outcome xisfinite(const Call& call) { return map_unary(call, classified(1.0, is_finite)); }

}  // namespace arrayfold
