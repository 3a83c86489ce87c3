// script/run/plain_operators.cpp: operators on numbers and strings

#include <fmt/format.h>

#include <cmath>
#include <limits>

#include "script/library/characters.hpp"
#include "script/library/numbers.hpp"
#include "script/run/operators.hpp"
#include "script/syntax/diagnostics.hpp"
#include "script/syntax/unicode.hpp"
#include "script/text/value_kinds.hpp"

namespace hvm {
namespace {

Value integer_result(const Number& left, const Number& right, std::int64_t x) {
  const bool is_short = left.tag == ValueTag::integer && right.tag == ValueTag::integer && fits_32_bits(x);
  return is_short ? Value(static_cast<int>(x)) : Value(x);
}

[[noreturn]] void fail_overflow(BinaryOperator op) {
  throw Failure(fmt::format("the result of '{}' does not fit in 64 bits", spelling(op)));
}

/// The quotient or remainder; the divisor is tested here, since the processor's own division would end the process.
std::int64_t divided(BinaryOperator op, std::int64_t a, std::int64_t b) {
  if (b == 0) throw Failure(fmt::format("'{}' by the integer zero", spelling(op)));
  const bool is_remainder = op == BinaryOperator::remainder;
  if (b == -1 && is_remainder) return 0;
  if (b == -1 && a == std::numeric_limits<std::int64_t>::min()) fail_overflow(op);
  return is_remainder ? a % b : a / b;
}

Value whole_arithmetic(BinaryOperator op, const Number& left, const Number& right) {
  std::int64_t x = 0;
  bool has_overflown = false;
  switch (op) {
    case BinaryOperator::add:
      has_overflown = __builtin_add_overflow(left.whole, right.whole, &x);
      break;
    case BinaryOperator::subtract:
      has_overflown = __builtin_sub_overflow(left.whole, right.whole, &x);
      break;
    case BinaryOperator::multiply:
      has_overflown = __builtin_mul_overflow(left.whole, right.whole, &x);
      break;
    default:
      x = divided(op, left.whole, right.whole);
  }
  if (has_overflown) fail_overflow(op);
  return integer_result(left, right, x);
}

Value real_arithmetic(BinaryOperator op, double a, double b) {
  switch (op) {
    case BinaryOperator::add:
      return Value(a + b);
    case BinaryOperator::subtract:
      return Value(a - b);
    case BinaryOperator::multiply:
      return Value(a * b);
    case BinaryOperator::divide:
      return Value(a / b);
    default:
      return Value(std::fmod(a, b));
  }
}

template <class T>
bool compared(BinaryOperator op, const T& a, const T& b) {
  switch (op) {
    case BinaryOperator::less_equal:
      return a <= b;
    case BinaryOperator::greater_equal:
      return a >= b;
    case BinaryOperator::not_equal:
      return a != b;
    case BinaryOperator::less:
      return a < b;
    case BinaryOperator::greater:
      return a > b;
    default:
      return a == b;
  }
}

bool is_comparison(BinaryOperator op) { return op >= BinaryOperator::less_equal; }

Value on_numbers(BinaryOperator op, const Number& left, const Number& right) {
  const bool are_whole = !left.is_real() && !right.is_real();
  if (!is_comparison(op))
    return are_whole ? whole_arithmetic(op, left, right) : real_arithmetic(op, left.real, right.real);
  if (are_whole) return Value(compared(op, left.whole, right.whole) ? 1 : 0);
  if (left.is_real() && right.is_real()) return Value(compared(op, left.real, right.real) ? 1 : 0);
  return Value(compared(op, left.exact(), right.exact()) ? 1 : 0);
}

std::u16string as_wide(const Value& value) {
  return value.tag() == ValueTag::wide_string ? std::u16string(wide_text_of(value.record()))
                                              : wide_text(text_of(value.record()));
}

Value joined_strings(const Value& left, const Value& right) {
  if (left.tag() == ValueTag::wide_string || right.tag() == ValueTag::wide_string)
    return Value(as_wide(left) + as_wide(right));
  return Value(std::string(text_of(left.record())).append(text_of(right.record())));
}

template <class Text>
Value repeated(Text text, std::int64_t times) {
  constexpr std::int64_t longest = std::numeric_limits<std::int32_t>::max();
  if (times <= 0 || text.empty()) return Value(text.substr(0, 0));
  if (times > longest / static_cast<std::int64_t>(text.size()))
    throw Failure(fmt::format("a string of {} repetitions is too long", times));
  const std::size_t size = text.size() * static_cast<std::size_t>(times);
  std::basic_string<typename Text::value_type> whole;
  whole.reserve(size);
  whole = text;
  while (whole.size() < size) whole.append(whole, 0, size - whole.size());
  return Value(Text(whole));
}

/// The string so often, an empty one when the number is not positive.
Value repeated(const Value& text, const Value& times) {
  return with_characters(text, [&](auto characters) { return repeated(characters, number_of(times).whole); });
}

}  // namespace

Value plain_binary(BinaryOperator op, const Value& left, const Value& right) {
  if (left.is_number() && right.is_number()) return on_numbers(op, number_of(left), number_of(right));
  if (left.is_string() && right.is_string()) {
    if (is_comparison(op)) return Value(compared(op, text_of(left.record()), text_of(right.record())) ? 1 : 0);
    if (op == BinaryOperator::add) return joined_strings(left, right);
  }
  if (left.is_string() && op == BinaryOperator::multiply && is_integer(right)) return repeated(left, right);
  const bool has_nil = left.is_nil() || right.is_nil();
  const bool has_table = left.is_table() || right.is_table();
  const bool is_equality = op == BinaryOperator::equal || op == BinaryOperator::not_equal;
  if (is_equality && (has_nil || !has_table)) {
    const bool are_equal = left.is_nil() && right.is_nil();
    return Value(are_equal == (op == BinaryOperator::equal) ? 1 : 0);
  }
  const bool joins = op == BinaryOperator::add && (left.is_string() || right.is_string());
  throw Failure(fmt::format("'{}' is not defined for {} and {}{}", spelling(op), kind_in_words(left),
                            kind_in_words(right), joins ? "; str(x) makes a string of x, number(s) a number of s" : ""));
}

}  // namespace hvm
