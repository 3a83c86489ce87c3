// object/arithmetic_test.cpp: the elements that operators give, against a plain formula and against the array library
//
// Every kind, operator and form is run over sizes from 0 to 300 and over random shapes, on every target that the
// machine supports. Results are compared bit for bit. The one NaN that goes in is the processor's own, so that the bits
// of every NaN that comes out are known.

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

#include "plugin/object/operator_fixture.hpp"
#include "reference.hpp"
#include "support/plain_operators.hpp"
#include "support/targets.hpp"

namespace arrayfold::test {
namespace {

bool is_division(Opcode opcode) { return opcode == Opcode::divide || opcode == Opcode::remainder; }

/// A kind and an operator that it has.
struct Operation {
  Kind kind;
  Opcode opcode;
};
std::vector<Operation> all_operations() {
  std::vector<Operation> all;
  for (const Kind kind : {Kind::int32, Kind::int64, Kind::float64}) {
    for (const Opcode opcode : calculations)
      if (opcode != Opcode::remainder) all.push_back({kind, opcode});
    for (const Opcode opcode : comparisons) all.push_back({kind, opcode});
    if (is_integer(kind)) all.push_back({kind, Opcode::remainder});
  }
  return all;
}

// ---- Operands

class RandomOperands {
 public:
  explicit RandomOperands(std::uint64_t seed) : engine_(seed) {}

  std::size_t below(std::size_t limit) { return static_cast<std::size_t>(engine_() % limit); }

  /// Small, extreme and arbitrary elements; as divisors none by which a division faults.
  Number element(Kind kind, bool as_divisor) {
    Number x = any(kind);
    while (x.is_integer && as_divisor && (x.integer == 0 || x.integer == -1)) x = any(kind);
    return x;
  }
  TestArray operand(Kind kind, const Extents& extents, bool as_divisor) {
    Numbers numbers;
    for (std::size_t i = 0; i < size_of(extents); ++i) numbers.push_back(element(kind, as_divisor));
    return TestArray(kind, extents, numbers);
  }
  /// Two shapes that broadcast, of at most `rank` dimensions.
  std::pair<Extents, Extents> shapes(std::size_t rank) {
    Extents common(rank);
    for (std::size_t& extent : common) extent = below(30) == 0 ? 0 : 1 + below(rank > 6 ? 2 : 5);
    const auto part = [&] {
      Extents extents = common;
      for (std::size_t& extent : extents)
        if (below(3) == 0) extent = 1;
      extents.erase(extents.begin(), extents.begin() + static_cast<std::ptrdiff_t>(below(rank + 1)));
      return extents;
    };
    Extents left = part();
    return {left, below(6) == 0 ? left : part()};
  }

 private:
  Number any(Kind kind) {
    if (kind == Kind::int32) return any_integer<std::int32_t>();
    if (kind == Kind::int64) return any_integer<std::int64_t>();
    return any_double();
  }
  template <class T>
  T any_integer() {
    using Limits = std::numeric_limits<T>;
    const T extremes[] = {Limits::min(), Limits::max(), T(Limits::min() + 1), T(0), T(1), T(-1), T(2), T(-2)};
    switch (below(4)) {
      case 0:
        return extremes[below(8)];
      case 1:
        return static_cast<T>(below(41)) - 20;
      default:
        return static_cast<T>(engine_()) >> below(sizeof(T) * 8);
    }
  }
  double any_double() {
    using Limits = std::numeric_limits<double>;
    const double extremes[] = {0.0,
                               -0.0,
                               Limits::infinity(),
                               -Limits::infinity(),
                               -Limits::quiet_NaN(),
                               Limits::min(),
                               -Limits::denorm_min(),
                               Limits::max()};
    if (below(3) == 0) return extremes[below(8)];
    if (below(3) == 0) return static_cast<double>(below(9)) / 4 - 1;
    const double x = load<double>(std::array{engine_()}.data());
    return x != x ? -Limits::quiet_NaN() : x;
  }

  std::mt19937_64 engine_;
};

class Arithmetic : public OperatorTest {
 protected:
  Value boxed(const TestArray& array) const { return to_host(ctx(), array); }
  /// A number of the host's, as wide as an element.
  static Value number(Kind kind, const Number& x) {
    if (kind == Kind::int32) return Value(x.as<int>());
    if (kind == Kind::int64) return Value(x.as<std::int64_t>());
    return Value(x.as<double>());
  }
  static void expect_same(const Value& array, const TestArray& expected, Opcode opcode) {
    EXPECT_EQ(difference(from_host(array), expected), "")
        << dtype_of(expected.kind()) << ' ' << static_cast<int>(opcode) << " of " << expected.size();
  }

  /// Two arrays, into a new one and in place.
  void check(Opcode opcode, const TestArray& left, const TestArray& right) const {
    const TestArray expected = plain_result(opcode, left, right);
    on_each_target([&] {
      Value array = boxed(left);
      const Value other = boxed(right);
      expect_same(operate(opcode, array, other).result, expected, opcode);
      expect_same(array, left, opcode);
      change(opcode, array, other);
      expect_same(array, expected, opcode);
      expect_same(other, right, opcode);
    });
  }

  /// An array and a number, in either order, into a new array and in place.
  void check_number(Opcode opcode, const TestArray& left, const Number& right) const {
    const TestArray expected = plain_result(opcode, left, TestArray(left.kind(), {}, {right}));
    const Value other = number(left.kind(), right);
    on_each_target([&] {
      Value array = boxed(left);
      expect_same(operate(opcode, array, other).result, expected, opcode);
      expect_same(operate(opcode, other, array).result, expected, opcode);
      expect_same(array, left, opcode);
      change(opcode, array, other);
      expect_same(array, expected, opcode);
    });
  }
};

TEST_F(Arithmetic, OfEverySize_IsTheFormula) {
  RandomOperands random(1);
  for (const auto& [kind, opcode] : all_operations())
    for (std::size_t size = 0; size <= 300; ++size) {
      const TestArray left = random.operand(kind, {size}, false);
      check(opcode, left, random.operand(kind, {size}, is_division(opcode)));
      check_number(opcode, left, random.element(kind, is_division(opcode)));
    }
}

TEST_F(Arithmetic, OfRandomShapes_IsTheFormula) {
  RandomOperands random(2);
  for (const auto& [kind, opcode] : all_operations())
    for (std::size_t round = 0; round < 150; ++round) {
      const auto [left, right] = random.shapes(round % 10 == 9 ? 9 : round % 7);
      check(opcode, random.operand(kind, left, false), random.operand(kind, right, is_division(opcode)));
    }
}

TEST_F(Arithmetic, OfLongArrays_IsTheFormula) {
  RandomOperands random(3);
  for (const auto& [kind, opcode] : all_operations()) {
    for (const auto& [left, right] : {std::pair<Extents, Extents>{{5000}, {5000}},
                                      {{40, 130}, {130}},
                                      {{40, 130}, {40, 1}},
                                      {{1, 700}, {3, 1}},
                                      {{}, {1500}}})
      check(opcode, random.operand(kind, left, false), random.operand(kind, right, is_division(opcode)));
    check_number(opcode, random.operand(kind, {2, 1025}, false), random.element(kind, is_division(opcode)));
  }
}

TEST_F(Arithmetic, IsWhatTheArrayLibraryComputes) {
  RandomOperands random(4);
  for (const auto& [kind, opcode] : all_operations())
    for (std::size_t round = 0; round < 60; ++round) {
      const auto [left_extents, right_extents] = random.shapes(round % 10 == 9 ? 9 : round % 7);
      const TestArray left = random.operand(kind, left_extents, false);
      const TestArray right = random.operand(kind, right_extents, is_division(opcode));
      expect_same(operate(opcode, boxed(left), boxed(right)).result, library_result(opcode, left, right), opcode);
    }
}

// ---- Integers

TEST_F(Arithmetic, Integers_Wrap) {
  EXPECT_EQ(given(operate(Opcode::add, ints({INT32_MAX}), Value(1))), "[-2147483648]");
  EXPECT_EQ(given(operate(Opcode::subtract, ints({INT32_MIN}), Value(1))), "[2147483647]");
  EXPECT_EQ(given(operate(Opcode::multiply, ints({INT32_MIN}), Value(-1))), "[-2147483648]");
  EXPECT_EQ(given(operate(Opcode::multiply, ints({65536}), ints({65536}))), "[0]");
  EXPECT_EQ(given(operate(Opcode::add, int64s({INT64_MAX}), Value(1))), "[-9223372036854775808]");
  EXPECT_EQ(given(operate(Opcode::multiply, int64s({INT64_MIN}), Value(-1))), "[-9223372036854775808]");
  Value changed = ints({INT32_MAX});
  change(Opcode::add, changed, changed);
  EXPECT_EQ(dump(changed), "[-2]");
}

TEST_F(Arithmetic, IntegerDivision_TruncatesAndTheRemainderHasTheSignOfTheDividend) {
  for (const auto& [dividend, divisor, quotient, remainder] : {std::array{7, 3, 2, 1},
                                                               {-7, 3, -2, -1},
                                                               {7, -3, -2, 1},
                                                               {-7, -3, 2, -1},
                                                               {INT32_MIN, 1, INT32_MIN, 0},
                                                               {INT32_MIN, INT32_MIN, 1, 0},
                                                               {INT32_MAX, -1, -INT32_MAX, 0},
                                                               {INT32_MIN, 2, -1073741824, 0}}) {
    EXPECT_EQ(elements_of<XTInt>(operate(Opcode::divide, ints({dividend}), Value(divisor)).result)[0], quotient);
    EXPECT_EQ(elements_of<XTInt>(operate(Opcode::remainder, ints({dividend}), Value(divisor)).result)[0], remainder);
    EXPECT_EQ(elements_of<XTInt64>(operate(Opcode::divide, int64s({dividend}), Value(divisor)).result)[0], quotient);
    EXPECT_EQ(elements_of<XTInt64>(operate(Opcode::remainder, int64s({dividend}), Value(divisor)).result)[0],
              remainder);
  }
}

/// The processor's own division of 32 bits.
std::pair<std::int32_t, std::int32_t> divided(std::int32_t a, std::int32_t b) {
  volatile std::int32_t divisor = b;
  return {a / divisor, a % divisor};
}

/// Powers of two and their neighbours, the extremes, and arbitrary numbers of every size; no zero.
std::vector<std::int32_t> divisors_of_interest() {
  std::vector<std::int32_t> numbers = {INT32_MIN, INT32_MIN + 1, INT32_MAX, INT32_MAX - 1, 46340, 46341, -46341};
  for (int bit = 0; bit < 31; ++bit)
    for (const int near : {-1, 0, 1})
      for (const int number : {(1 << bit) + near, -(1 << bit) + near})
        if (number != 0) numbers.push_back(number);
  std::mt19937 engine(5);
  while (numbers.size() < 700) {
    const auto number = static_cast<std::int32_t>(engine()) >> (engine() % 31);
    if (number != 0) numbers.push_back(number);
  }
  return numbers;
}

/// Dividends for a divisor: the numbers themselves, and the multiples nearest to them with their neighbours, which is
/// where a rounded quotient would be off by one.
std::vector<std::int32_t> dividends_for(std::int32_t divisor, const std::vector<std::int32_t>& numbers) {
  std::vector<std::int32_t> dividends = {0};
  for (const std::int32_t number : numbers) {
    if (divisor == -1 && number <= INT32_MIN + 1) continue;
    const std::int32_t multiple = number - number % divisor;
    for (const std::int32_t dividend : {number, multiple, multiple == INT32_MIN ? multiple : multiple - 1,
                                        multiple == INT32_MAX ? multiple : multiple + 1})
      dividends.push_back(dividend);
  }
  return dividends;
}

TEST_F(Arithmetic, DivisionOf32Bits_IsTheProcessors) {
  const auto numbers = divisors_of_interest();
  for (const std::int32_t divisor : numbers) {
    const auto dividends = dividends_for(divisor, numbers);
    std::vector<std::int32_t> quotients, remainders;
    for (const std::int32_t dividend : dividends) {
      const auto [quotient, remainder] = divided(dividend, divisor);
      quotients.push_back(quotient);
      remainders.push_back(remainder);
    }
    const Value array = ints(dividends);
    for (const Value& right : {Value(divisor), ints(std::vector<int>(dividends.size(), divisor)), ints({divisor})})
      for (const Opcode opcode : {Opcode::divide, Opcode::remainder}) {
        const auto& expected = opcode == Opcode::divide ? quotients : remainders;
        EXPECT_TRUE(elements_of<XTInt>(operate(opcode, array, right).result) == expected) << divisor;
        Value changed = ints(dividends);
        change(opcode, changed, right);
        EXPECT_TRUE(elements_of<XTInt>(changed) == expected) << divisor << " in place";
      }
    // One dividend for many divisors is a row of another form.
    Value dividend = array_of<XTInt>(ctx(), {}, {dividends.back()});
    EXPECT_EQ(elements_of<XTInt>(operate(Opcode::divide, dividend, ints({divisor, 1, divisor})).result),
              (std::vector<int>{quotients.back(), dividends.back(), quotients.back()}));
  }
}

// ---- Doubles

TEST_F(Arithmetic, Doubles_AreIeee) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const auto at = [&](Opcode opcode, double left, double right) {
    return elements_of<XTDouble>(operate(opcode, doubles({left}), Value(right)).result)[0];
  };
  EXPECT_TRUE(std::signbit(at(Opcode::multiply, -0.0, 3)));
  EXPECT_FALSE(std::signbit(at(Opcode::add, -0.0, 0.0)));
  EXPECT_TRUE(std::signbit(at(Opcode::add, -0.0, -0.0)));
  EXPECT_EQ(at(Opcode::divide, 1, -0.0), -infinity);
  EXPECT_TRUE(std::isnan(at(Opcode::divide, 0, 0)));
  EXPECT_TRUE(std::isnan(at(Opcode::subtract, infinity, infinity)));
  EXPECT_TRUE(std::isnan(at(Opcode::multiply, infinity, 0)));
  EXPECT_EQ(at(Opcode::multiply, std::numeric_limits<double>::max(), 2), infinity);
  for (const Opcode opcode : comparisons) {
    EXPECT_EQ(given(operate(opcode, doubles({nan, 1}), Value(nan))), "[false,false]");
    EXPECT_EQ(given(operate(opcode, doubles({nan}), doubles({nan}))), "[false]");
  }
  EXPECT_EQ(given(operate(Opcode::less_equal, doubles({-0.0, -infinity}), Value(0))), "[true,true]");
  EXPECT_EQ(given(operate(Opcode::less, doubles({-0.0, -infinity}), Value(0))), "[false,true]");
}

/// A NaN whose bits are its own.
double nan_of(std::uint64_t bits) {
  bits |= std::uint64_t{0x7ff8} << 48;
  return load<double>(&bits);
}

TEST_F(Arithmetic, AQuotientOfNaNs_IsTheDividend_AtEveryPlace) {
  const double first = nan_of(7), second = nan_of((std::uint64_t{1} << 63) | 9);
  for (const auto& [left, right, expected] :
       {std::array{first, second, first}, {second, first, second}, {first, 2.0, first}, {2.0, second, second}})
    for (std::size_t size = 0; size <= 300; ++size) {
      const auto row = [](std::size_t count, double x) {
        return TestArray(Extents{count}, std::vector<double>(count, x));
      };
      const TestArray dividends = row(size, left), quotients = row(size, expected);
      const Value array = boxed(dividends);
      for (const Value& by : {boxed(row(size, right)), boxed(row(1, right)), Value(right)})
        on_each_target([&] {
          expect_same(operate(Opcode::divide, array, by).result, quotients, Opcode::divide);
          Value changed = boxed(dividends);
          change(Opcode::divide, changed, by);
          expect_same(changed, quotients, Opcode::divide);
        });
    }
}

}  // namespace
}  // namespace arrayfold::test
