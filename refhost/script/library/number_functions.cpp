// script/library/number_functions.cpp: numbers: conversions, rounding, elementary functions
//
// Each takes single numbers of any kind. Integers never wrap: what does not fit in 32 bits becomes an int64, and what
// does not fit in 64 bits is an error. The elementary functions give reals, NaN where they have no result.

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

#include "script/library/arguments.hpp"
#include "script/syntax/string_literals.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

// ---- Conversions

Value number(const BuiltinCall& call) {
  const std::string_view text = text_argument(call, 0);
  NumberInText read = number_in(text);
  if (read.problem) call.fail(fmt::format("{} {}", short_literal(text), read.problem));
  return std::move(read.value);
}

[[noreturn]] void fail_range(const BuiltinCall& call, const std::string& number, int bits) {
  call.fail(fmt::format("{} does not fit in {} bits", number, bits));
}

/// A whole real as an integer of so many bits.
std::int64_t integer_of(const BuiltinCall& call, double x, int bits) {
  if (std::isnan(x)) call.fail("nan is not an integer");
  const double limit = std::ldexp(1.0, bits - 1);
  if (x < -limit || x >= limit) fail_range(call, real_text(x, Detail::brief), bits);
  return static_cast<std::int64_t>(x);
}

Value to_int(const BuiltinCall& call) {
  const Number x = exact_number_argument(call, 0);
  if (x.is_real()) return Value(static_cast<int>(integer_of(call, std::trunc(x.real), 32)));
  if (!fits_32_bits(x.whole)) fail_range(call, fmt::format("{}", x.whole), 32);
  return Value(static_cast<int>(x.whole));
}

Value to_int64(const BuiltinCall& call) {
  const Number x = exact_number_argument(call, 0);
  return Value(x.is_real() ? integer_of(call, std::trunc(x.real), 64) : x.whole);
}

Value to_real(const BuiltinCall& call) { return Value(number_argument(call, 0)); }

// ---- Rounding

template <double (*rounding)(double)>
Value rounded(const BuiltinCall& call) {
  const Number x = exact_number_argument(call, 0);
  return x.is_real() ? integer_value(integer_of(call, rounding(x.real), 64)) : call.arguments[0];
}

/// To a multiple of a power of ten. The remainder is exact, so one rounding remains.
double rounded_to_power(double x, std::int64_t exponent) {
  constexpr std::int64_t beyond_all = 400;
  const double unit = std::pow(10.0, static_cast<double>(std::min(exponent, beyond_all)));
  return std::copysign(x - std::remainder(x, unit), x);
}

/// To digits behind the point, by the exact decimal digits of the number.
double rounded_to_digits(double x, std::int64_t digits) {
  constexpr std::int64_t most_digits = 341;  // a real that is rounded to more of them stays the same
  if (digits > most_digits) return x;
  const std::string text = fmt::format("{:.{}f}", x, digits);
  double nearest = x;
  std::from_chars(text.data(), text.data() + text.size(), nearest);
  return nearest;
}

Value round(const BuiltinCall& call) {
  if (!has_argument(call, 1)) return rounded<std::nearbyint>(call);
  const double x = number_argument(call, 0);
  const std::int64_t digits = integer_argument(call, 1);
  if (!std::isfinite(x)) return Value(x);
  const double nearest =
      digits < 0 ? rounded_to_power(x, -std::max<std::int64_t>(digits, -INT32_MAX)) : rounded_to_digits(x, digits);
  if (std::isinf(nearest)) call.fail("the result is beyond the range of 64-bit floating-point numbers");
  return Value(nearest);
}

// ---- Magnitudes

Value abs(const BuiltinCall& call) {
  const Number x = exact_number_argument(call, 0);
  if (x.is_real()) return Value(std::fabs(x.real));
  std::int64_t magnitude = x.whole;
  if (x.whole < 0 && __builtin_sub_overflow(0, x.whole, &magnitude)) fail_range(call, "9223372036854775808", 64);
  return x.tag == ValueTag::integer ? integer_value(magnitude) : Value(magnitude);
}

using Beats = bool (*)(const Number& a, const Number& b);
bool is_greater(const Number& a, const Number& b) { return is_less(b, a); }

/// The first of the numbers that none of the others beats. NaN beats everything.
class Extreme {
 public:
  Extreme(const BuiltinCall& call, Beats beats) : call_(call), beats_(beats) {}

  void add(const HostValue& record) {
    const Value value = Value::sharing(record);
    if (!value.is_number()) fail_kind(call_, "numbers", value);
    const Number number = number_of(value);
    const bool is_better = !std::isnan(best_.real) && (std::isnan(number.real) || beats_(number, best_));
    if (found_.is_nil() || is_better) best_ = number, found_ = value;
  }

  Value found() const {
    if (found_.is_nil()) call_.fail("the table is empty");
    return found_;
  }

 private:
  const BuiltinCall& call_;
  Beats beats_;
  Number best_;
  Value found_;
};

template <Beats beats>
Value extreme(const BuiltinCall& call) {
  Extreme extreme(call, beats);
  if (call.count() == 1 && call.arguments[0].is_table()) {
    TableWalk walk(table_argument(call, 0));
    while (const Entry entry = walk.next()) extreme.add(*entry.value);
  } else {
    for (const Value& argument : call.arguments) extreme.add(argument.record());
  }
  return extreme.found();
}

// ---- Elementary functions

template <double (*function)(double)>
Value elementary(const BuiltinCall& call) {
  return Value(function(number_argument(call, 0)));
}

template <double (*function)(double, double)>
Value elementary(const BuiltinCall& call) {
  return Value(function(number_argument(call, 0), number_argument(call, 1)));
}

Value is_nan(const BuiltinCall& call) { return Value(std::isnan(number_argument(call, 0)) ? 1 : 0); }

// clang-format off
constexpr Builtin number_rows[] = {
    {"abs", 1, 1, abs, "abs(x)", "Gives the number without its sign.",
     "print(abs(-3), abs(-2.5))  # expect: 3 2.5"},
    {"acos", 1, 1, elementary<std::acos>, "acos(x)", "Gives the arc cosine, from 0 to pi.",
     "print(acos(-1))  # expect: 3.14159"},
    {"asin", 1, 1, elementary<std::asin>, "asin(x)", "Gives the arc sine, from -pi/2 to pi/2.",
     "print(asin(1))  # expect: 1.5708"},
    {"atan", 1, 1, elementary<std::atan>, "atan(x)", "Gives the arc tangent, from -pi/2 to pi/2.",
     "print(4 * atan(1))  # expect: 3.14159"},
    {"atan2", 2, 2, elementary<std::atan2>, "atan2(y, x)", "Gives the angle of the point (x, y), from -pi to pi.",
     "print(atan2(1, -1))  # expect: 2.35619"},
    {"ceil", 1, 1, rounded<std::ceil>, "ceil(x)", "Gives the lowest whole number that is not below x.",
     "print(ceil(2.1), ceil(-2.1))  # expect: 3 -2"},
    {"cos", 1, 1, elementary<std::cos>, "cos(x)", "Gives the cosine of an angle in radians.",
     "print(cos(0))  # expect: 1.0"},
    {"exp", 1, 1, elementary<std::exp>, "exp(x)", "Gives e to the power of x.",
     "print(exp(1))  # expect: 2.71828"},
    {"floor", 1, 1, rounded<std::floor>, "floor(x)", "Gives the highest whole number that is not above x.",
     "print(floor(2.9), floor(-2.1))  # expect: 2 -3"},
    {"int", 1, 1, to_int, "int(x)", "Makes an int of a number. A fraction is cut off.",
     "print(int(2.9), int(-2.9))  # expect: 2 -2\n"
     "print(xarray(@int, [1, 2]))  # expect: int(2) [1, 2]"},
    {"int64", 1, 1, to_int64, "int64(x)", "Makes an int64 of a number. A fraction is cut off.",
     "print(int64(3e10))  # expect: 30000000000\n"
     "print(xarray(@int64, [1, 2]))  # expect: int64(2) [1, 2]"},
    {"is_nan", 1, 1, is_nan, "is_nan(x)", "Says whether the number is NaN.",
     "print(is_nan(number(\"nan\")), is_nan(1))  # expect: 1 0"},
    {"log", 1, 1, elementary<std::log>, "log(x)", "Gives the natural logarithm.",
     "print(log(exp(2)))  # expect: 2.0"},
    {"log10", 1, 1, elementary<std::log10>, "log10(x)", "Gives the logarithm to base 10.",
     "print(log10(1000))  # expect: 3.0"},
    {"max", 1, -1, extreme<is_greater>, "max(x, ...)\nmax(table)", "Gives the largest number.",
     "print(max(3, 7.5), max([3, 1]))  # expect: 7.5 3"},
    {"min", 1, -1, extreme<is_less>, "min(x, ...)\nmin(table)", "Gives the smallest number.",
     "print(min(3, 7.5), min([3, 1]))  # expect: 3 1"},
    {"number", 1, 1, number, "number(text)", "Reads a number, of the kind that its text has.",
     "print(number(\" 12 \") + 1, number(\"1e3\"))  # expect: 13 1000.0"},
    {"pow", 2, 2, elementary<std::pow>, "pow(x, y)", "Gives x to the power of y.",
     "print(pow(2, 10))  # expect: 1024.0"},
    {"real", 1, 1, to_real, "real(x)", "Makes a real of a number.",
     "print(7 / 2, real(7) / 2)  # expect: 3 3.5"},
    {"round", 1, 2, round, "round(x)\nround(x, digits)",
     "Gives the nearest whole number, or the number with so many digits after its decimal point.",
     "print(round(2.6), round(3.14159, 2), round(1234, -2))  # expect: 3 3.14 1200.0"},
    {"sin", 1, 1, elementary<std::sin>, "sin(x)", "Gives the sine of an angle in radians.",
     "print(sin(2 * atan(1)))  # expect: 1.0"},
    {"sqrt", 1, 1, elementary<std::sqrt>, "sqrt(x)", "Gives the square root.",
     "print(sqrt(2))  # expect: 1.41421"},
    {"tan", 1, 1, elementary<std::tan>, "tan(x)", "Gives the tangent of an angle in radians.",
     "print(tan(atan(1)))  # expect: 1.0"},
};
// clang-format on

}  // namespace

BuiltinFamily number_functions() { return family_of(number_rows); }

}  // namespace hvm
