// object/arithmetic_test.cpp: the elements that operators give, against a plain formula and against the array library
//
// The module's own loops are as wide as the processor's registers. The copy of the operators in this program is of four
// lanes, and is asked the same, so that every machine tests it.
//
// Every kind, operator and form is run over sizes from 0 to 300 and over random shapes. Results are compared bit for
// bit. The one NaN that goes in is the processor's own, so that the bits of every NaN that comes out are known.

#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

#include "object/operators.hpp"
#include "plugin/object/operator_fixture.hpp"

#include <xtensor/xmath.hpp>

namespace arrayfold::test {
namespace {

using Extents = std::vector<std::size_t>;

// ---- The formulas: of two elements, and of two containers by the array library

/// Wide enough for every sum, difference and product of elements.
__extension__ using WideInteger = __int128;
template <class T>
using Wide = std::conditional_t<std::is_integral_v<T>, WideInteger, double>;

#define ARRAYFOLD_FORMULA(Name, code, formula)          \
  struct Name {                                         \
    static constexpr Opcode opcode = Opcode::code;      \
    template <class T>                                  \
    static auto of_elements(T left, T right) {          \
      const Wide<T> a = left, b = right;                \
      return formula;                                   \
    }                                                   \
    template <class A, class B>                         \
    static auto of_containers(const A& a, const B& b) { \
      return formula;                                   \
    }                                                   \
  };
ARRAYFOLD_FORMULA(Add, add, a + b)
ARRAYFOLD_FORMULA(Subtract, subtract, a - b)
ARRAYFOLD_FORMULA(Multiply, multiply, a* b)
ARRAYFOLD_FORMULA(Divide, divide, a / b)
ARRAYFOLD_FORMULA(Modulo, remainder, a % b)
ARRAYFOLD_FORMULA(LessOrEqual, less_equal, a <= b)
ARRAYFOLD_FORMULA(GreaterOrEqual, greater_equal, a >= b)
ARRAYFOLD_FORMULA(Below, less, a < b)
ARRAYFOLD_FORMULA(Above, greater, a > b)
#undef ARRAYFOLD_FORMULA

template <class Formula>
constexpr bool is_comparison = Formula::opcode < Opcode::add;
template <class Formula>
constexpr bool is_division = Formula::opcode == Opcode::divide || Formula::opcode == Opcode::remainder;
template <class Kind, class Formula>
using ResultKind = std::conditional_t<is_comparison<Formula>, XTBool, Kind>;

/// Calls `use(kind, formula)` for every kind and every operator that it has.
template <class Use>
void for_each_operator(Use use) {
  const auto for_kind = [&](auto kind) {
    const auto with = [&](auto... formula) { (use(kind, formula), ...); };
    with(Add{}, Subtract{}, Multiply{}, Divide{}, LessOrEqual{}, GreaterOrEqual{}, Below{}, Above{});
    if constexpr (std::is_integral_v<typename decltype(kind)::element>) with(Modulo{});
  };
  const auto for_all = [&](auto... kind) { (for_kind(kind), ...); };
  for_kinds(kinds<XTInt, XTInt64, XTDouble>{}, for_all);
}

// ---- Operands

template <class T>
struct Operand {
  Extents extents;
  std::vector<T> elements;

  xarray_of<T> container() const {
    xarray_of<T> made(Shape(extents.begin(), extents.end()));
    std::copy(elements.begin(), elements.end(), made.storage().begin());
    return made;
  }
};

class RandomOperands {
 public:
  explicit RandomOperands(std::uint64_t seed) : engine_(seed) {}

  std::size_t below(std::size_t limit) { return static_cast<std::size_t>(engine_() % limit); }

  /// Small, extreme and arbitrary elements; as divisors none by which a division faults.
  template <class T>
  T element(bool as_divisor) {
    T x = any<T>();
    while (std::is_integral_v<T> && as_divisor && (x == 0 || x == T(-1))) x = any<T>();
    return x;
  }
  template <class T>
  Operand<T> operand(const Extents& extents, bool as_divisor) {
    std::size_t size = 1;
    for (const std::size_t extent : extents) size *= extent;
    Operand<T> made{extents, std::vector<T>(size)};
    for (T& x : made.elements) x = element<T>(as_divisor);
    return made;
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
  template <class T>
  T any() {
    using Limits = std::numeric_limits<T>;
    if constexpr (std::is_integral_v<T>) {
      const T extremes[] = {Limits::min(), Limits::max(), T(Limits::min() + 1), T(0), T(1), T(-1), T(2), T(-2)};
      switch (below(4)) {
        case 0:
          return extremes[below(8)];
        case 1:
          return static_cast<T>(below(41)) - 20;
        default:
          return static_cast<T>(engine_()) >> below(sizeof(T) * 8);
      }
    } else {
      const T extremes[] = {0.0,
                            -0.0,
                            Limits::infinity(),
                            -Limits::infinity(),
                            -Limits::quiet_NaN(),
                            Limits::min(),
                            -Limits::denorm_min(),
                            Limits::max()};
      if (below(3) == 0) return extremes[below(8)];
      if (below(3) == 0) return static_cast<T>(below(9)) / 4 - 1;
      T x = load<T>(std::array{engine_()}.data());
      return x != x ? -Limits::quiet_NaN() : x;
    }
  }

  std::mt19937_64 engine_;
};

/// The offset of the element at `index` of the result, counted from the last dimension.
std::size_t offset_at(const Extents& index, const Extents& extents) {
  std::size_t offset = 0, stride = 1;
  for (std::size_t back = 1; back <= extents.size(); ++back) {
    const std::size_t extent = extents[extents.size() - back];
    if (extent != 1) offset += index[index.size() - back] * stride;
    stride *= extent;
  }
  return offset;
}

/// The broadcasting rule and the formula, an element at a time.
template <class R, class Formula, class T>
Operand<R> plainly(const Operand<T>& left, const Operand<T>& right) {
  const std::size_t rank = std::max(left.extents.size(), right.extents.size());
  Operand<R> made{Extents(rank, 1), {}};
  for (const Extents& extents : {left.extents, right.extents})
    for (std::size_t back = 1; back <= extents.size(); ++back)
      if (extents[extents.size() - back] != 1) made.extents[rank - back] = extents[extents.size() - back];
  std::size_t size = 1;
  for (const std::size_t extent : made.extents) size *= extent;
  Extents index(rank, 0);
  for (std::size_t at = 0; at < size; ++at) {
    std::size_t rest = at;
    for (std::size_t axis = rank; axis-- > 0; rest /= made.extents[axis]) index[axis] = rest % made.extents[axis];
    made.elements.push_back(static_cast<R>(Formula::of_elements(left.elements[offset_at(index, left.extents)],
                                                                right.elements[offset_at(index, right.extents)])));
  }
  return made;
}

// ---- Comparing bits

template <class T>
bool same_bits(T a, T b) {
  return std::memcmp(&a, &b, sizeof(T)) == 0;
}

/// The first element of `array` that is not the one of `expected`, or its size when all are.
template <class Kind>
std::size_t first_difference(const Value& array, const Operand<typename Kind::element>& expected) {
  const auto* container = container_of<Kind>(array);
  if (container == nullptr) throw std::invalid_argument("no array of this kind");
  const auto& extents = container->shape();
  if (Extents(extents.begin(), extents.end()) != expected.extents) throw std::invalid_argument("another shape");
  for (std::size_t i = 0; i < expected.elements.size(); ++i)
    if (!same_bits<typename Kind::element>(container->storage()[i], expected.elements[i])) return i;
  return container->storage().size();
}

class Arithmetic : public OperatorTest {
 protected:
  template <class Kind>
  Value boxed(const Operand<typename Kind::element>& operand) const {
    return array_of<Kind>(ctx(), operand.extents, operand.elements);
  }
  template <class Kind>
  static void expect_same(const Value& array, const Operand<typename Kind::element>& expected, Opcode opcode) {
    EXPECT_EQ(first_difference<Kind>(array, expected), expected.elements.size())
        << Kind::type_name << ' ' << static_cast<int>(opcode) << " of " << expected.elements.size();
  }

  /// What this program's copy of the operators gives for `left op right`; it is `left` itself that `in_place` changes.
  template <class Kind>
  Value on_four_lanes(Opcode opcode, Value left, Value right, bool in_place) const {
    Value result;
    HostValue* into = in_place ? left.address() : result.address();
    auto& array = *unbox_array<Kind>(hvm::object_of(left.record()));
    EXPECT_TRUE(operator_handlers.of<Kind>()(array, ctx(), left.address(), opcode, left.address(), right.address(), into));
    return in_place ? left : result;
  }

  /// Two arrays, into a new one and in place.
  template <class Kind, class Formula>
  void check(const Operand<typename Kind::element>& left, const Operand<typename Kind::element>& right) const {
    using R = ResultKind<Kind, Formula>;
    const auto expected = plainly<typename R::element, Formula>(left, right);
    Value array = boxed<Kind>(left);
    const Value other = boxed<Kind>(right);
    expect_same<R>(operate(Formula::opcode, array, other).result, expected, Formula::opcode);
    expect_same<R>(on_four_lanes<Kind>(Formula::opcode, array, other, false), expected, Formula::opcode);
    expect_same<R>(on_four_lanes<Kind>(Formula::opcode, boxed<Kind>(left), other, true), expected, Formula::opcode);
    expect_same<Kind>(array, left, Formula::opcode);
    change(Formula::opcode, array, other);
    expect_same<R>(array, expected, Formula::opcode);
    expect_same<Kind>(other, right, Formula::opcode);
  }

  /// An array and a number on either side, into a new array and in place.
  template <class Kind, class Formula>
  void check_number(const Operand<typename Kind::element>& left, typename Kind::element number) const {
    using R = ResultKind<Kind, Formula>;
    const auto expected = plainly<typename R::element, Formula>(left, {{}, {number}});
    Value array = boxed<Kind>(left);
    expect_same<R>(operate(Formula::opcode, array, Value(number)).result, expected, Formula::opcode);
    expect_same<R>(operate(Formula::opcode, Value(number), array).result, expected, Formula::opcode);
    expect_same<R>(on_four_lanes<Kind>(Formula::opcode, array, Value(number), false), expected, Formula::opcode);
    expect_same<R>(on_four_lanes<Kind>(Formula::opcode, boxed<Kind>(left), Value(number), true), expected,
                   Formula::opcode);
    expect_same<Kind>(array, left, Formula::opcode);
    change(Formula::opcode, array, Value(number));
    expect_same<R>(array, expected, Formula::opcode);
  }
};

TEST_F(Arithmetic, OfEverySize_IsTheFormula) {
  RandomOperands random(1);
  for_each_operator([&](auto kind, auto formula) {
    using T = typename decltype(kind)::element;
    constexpr bool divides = is_division<decltype(formula)>;
    for (std::size_t size = 0; size <= 300; ++size) {
      const auto left = random.operand<T>({size}, false), right = random.operand<T>({size}, divides);
      check<decltype(kind), decltype(formula)>(left, right);
      check_number<decltype(kind), decltype(formula)>(left, random.element<T>(divides));
    }
  });
}

TEST_F(Arithmetic, OfRandomShapes_IsTheFormula) {
  RandomOperands random(2);
  for_each_operator([&](auto kind, auto formula) {
    using T = typename decltype(kind)::element;
    for (std::size_t round = 0; round < 150; ++round) {
      const auto [left, right] = random.shapes(round % 10 == 9 ? 9 : round % 7);
      check<decltype(kind), decltype(formula)>(random.operand<T>(left, false),
                                               random.operand<T>(right, is_division<decltype(formula)>));
    }
  });
}

TEST_F(Arithmetic, OfLongArrays_IsTheFormula) {
  RandomOperands random(3);
  for_each_operator([&](auto kind, auto formula) {
    using T = typename decltype(kind)::element;
    constexpr bool divides = is_division<decltype(formula)>;
    for (const auto& [left, right] : {std::pair<Extents, Extents>{{5000}, {5000}},
                                      {{40, 130}, {130}},
                                      {{40, 130}, {40, 1}},
                                      {{1, 700}, {3, 1}},
                                      {{}, {1500}}})
      check<decltype(kind), decltype(formula)>(random.operand<T>(left, false), random.operand<T>(right, divides));
    check_number<decltype(kind), decltype(formula)>(random.operand<T>({2, 1025}, false), random.element<T>(divides));
  });
}

TEST_F(Arithmetic, IsWhatTheArrayLibraryComputes) {
  RandomOperands random(4);
  for_each_operator([&](auto kind, auto formula) {
    using Kind = decltype(kind);
    using T = typename Kind::element;
    using R = ResultKind<Kind, decltype(formula)>;
    for (std::size_t round = 0; round < 60; ++round) {
      const auto [left_extents, right_extents] = random.shapes(round % 10 == 9 ? 9 : round % 7);
      const auto left = random.operand<T>(left_extents, false);
      const auto right = random.operand<T>(right_extents, is_division<decltype(formula)>);
      const xarray_of<T> a = left.container(), b = right.container();
      // Taken one by one: the library's vectorised assignment of <= and >= between broadcast integers (0.24.3) goes
      // wrong.
      const auto computed = formula.of_containers(a, b);
      Operand<typename R::element> expected;
      expected.extents.assign(computed.shape().begin(), computed.shape().end());
      expected.elements.assign(computed.begin(), computed.end());
      expect_same<R>(operate(formula.opcode, boxed<Kind>(left), boxed<Kind>(right)).result, expected, formula.opcode);
    }
  });
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

// ---- Reals

TEST_F(Arithmetic, Reals_AreIeee) {
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
      const Operand<double> dividends{{size}, std::vector<double>(size, left)};
      const Operand<double> divisors{{size}, std::vector<double>(size, right)};
      const Operand<double> quotients{{size}, std::vector<double>(size, expected)};
      const Value array = boxed<XTDouble>(dividends);
      for (const Value& by : {boxed<XTDouble>(divisors), boxed<XTDouble>({{1}, {right}}), Value(right)}) {
        expect_same<XTDouble>(operate(Opcode::divide, array, by).result, quotients, Opcode::divide);
        expect_same<XTDouble>(on_four_lanes<XTDouble>(Opcode::divide, array, by, false), quotients, Opcode::divide);
        Value changed = boxed<XTDouble>(dividends);
        change(Opcode::divide, changed, by);
        expect_same<XTDouble>(changed, quotients, Opcode::divide);
        expect_same<XTDouble>(on_four_lanes<XTDouble>(Opcode::divide, boxed<XTDouble>(dividends), by, true), quotients,
                              Opcode::divide);
      }
    }
}

}  // namespace
}  // namespace arrayfold::test
