// create/ranged_test.cpp: xarange, xlinspace, xlogspace

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "kernels/conversion.hpp"
#include "reference.hpp"
#include "support/containers.hpp"

namespace arrayfold::test {
namespace {

using Doubles = std::vector<double>;
using Ints = std::vector<std::int32_t>;
using Int64s = std::vector<std::int64_t>;

class Ranged : public ModuleTest {
 protected:
  template <class Kind>
  std::vector<typename Kind::element> elements(const std::string& name, std::vector<Value> args) const {
    Answer answer = call(name, std::move(args));
    EXPECT_EQ(answer.returned, 1) << name;
    EXPECT_EQ(type_of(answer.result), Kind::type_name) << name;
    EXPECT_EQ(shape(answer.result).size(), 1u);
    return elements_of<Kind>(answer.result);
  }
  Doubles arange(std::vector<Value> args) const { return elements<XTDouble>("xarange", std::move(args)); }
  Doubles doubles(const std::string& name, std::vector<Value> args) const {
    return elements<XTDouble>(name, std::move(args));
  }
  Ints ints(const std::string& name, std::vector<Value> args) const { return elements<XTInt>(name, std::move(args)); }
  Int64s int64s(const std::string& name, std::vector<Value> args) const {
    return elements<XTInt64>(name, std::move(args));
  }
};

Value wide(std::int64_t x) { return Value(x); }

// ---- xarange

TEST_F(Ranged, Xarange_CountsFromStartToBeforeStop) {
  EXPECT_EQ(arange({Value(5)}), (Doubles{0, 1, 2, 3, 4}));
  EXPECT_EQ(arange({Value(2), Value(5)}), (Doubles{2, 3, 4}));
  EXPECT_EQ(arange({Value(10), Value(0), Value(-3)}), (Doubles{10, 7, 4, 1}));
  EXPECT_EQ(arange({Value(0), Value(10), Value(3)}), (Doubles{0, 3, 6, 9}));
  EXPECT_EQ(arange({Value(0), Value(9), Value(3)}), (Doubles{0, 3, 6}));
  EXPECT_EQ(arange({Value(-2), Value(2)}), (Doubles{-2, -1, 0, 1}));
}

TEST_F(Ranged, Xarange_ThatNeverGetsThere_IsEmpty) {
  EXPECT_EQ(arange({Value(0), Value(10), Value(-1)}), Doubles{});
  EXPECT_EQ(arange({Value(3), Value(3)}), Doubles{});
  EXPECT_EQ(arange({Value(0)}), Doubles{});
  EXPECT_EQ(arange({Value(-4)}), Doubles{});
  EXPECT_EQ(arange({Value(0), Value(2), Value(5)}), Doubles{});  // the quotient is 0, so nothing is counted
}

TEST_F(Ranged, Xarange_WorksInIntegersWhateverNumbersItIsGiven) {
  EXPECT_EQ(arange({Value(3.9)}), (Doubles{0, 1, 2}));
  EXPECT_EQ(arange({Value(0.9), Value(3.2), Value(1.5)}), (Doubles{0, 1, 2}));
  EXPECT_EQ(arange({wide(3)}), (Doubles{0, 1, 2}));
}

/// Start, stop and step as 32-bit integers, by the formula, one by one.
Doubles counted(int start, int stop, int step) {
  const auto wrap = [](std::int64_t x) { return static_cast<int>(static_cast<unsigned>(x)); };
  const int span = wrap(std::int64_t{stop} - start);
  const std::int64_t quotient = std::int64_t{span} / step;
  std::int64_t count = 0;
  if (static_cast<int>(quotient) > 0)
    count = stop > start ? std::int64_t{wrap(wrap(std::int64_t{span} + step) - std::int64_t{1})} / step
                         : std::int64_t{wrap(wrap(wrap(std::int64_t{start} - stop) - std::int64_t{step}) - 1)} /
                               wrap(-std::int64_t{step});
  if (count < 0) throw std::bad_alloc();
  Doubles numbers;
  unsigned number = static_cast<unsigned>(start);
  for (std::int64_t i = 0; i < count; ++i, number += static_cast<unsigned>(step))
    numbers.push_back(static_cast<int>(number));
  return numbers;
}

TEST_F(Ranged, Xarange_OfManyTriples_FollowsTheFormula) {
  for (int start = -7; start <= 7; ++start)
    for (int stop = -7; stop <= 7; ++stop)
      for (const int step : {-4, -3, -2, -1, 1, 2, 3, 4})
        EXPECT_EQ(arange({Value(start), Value(stop), Value(step)}), counted(start, stop, step))
            << start << ' ' << stop << ' ' << step;
}

TEST_F(Ranged, Xarange_AtTheEndsOfItsRange_WrapsAsItsArithmeticDoes) {
  const int triples[][3] = {{INT_MAX - 5, INT_MIN + 5, 1},       {INT_MIN, INT_MIN + 9, 3},  {INT_MAX, INT_MAX - 9, -2},
                            {INT_MIN + 3, INT_MAX - 3, 1 << 30}, {-5, INT_MAX, 1 << 29},     {5, INT_MIN, -(1 << 29)},
                            {INT_MIN, INT_MAX, INT_MAX},         {INT_MAX, INT_MIN, INT_MIN}};
  for (const auto& [start, stop, step] : triples)
    EXPECT_EQ(arange({Value(start), Value(stop), Value(step)}), counted(start, stop, step)) << start << ' ' << stop;
}

TEST_F(Ranged, Required_Xarange_WhoseCountWraps_EndsInBadAlloc) {
  EXPECT_THROW(arange({Value(0), Value(INT_MAX), Value(2)}), std::bad_alloc);
  EXPECT_THROW(counted(0, INT_MAX, 2), std::bad_alloc);
}

TEST_F(Ranged, Xarange_ChecksEveryArgumentBeforeItFails) {
  for (int wrong = 0; wrong < 3; ++wrong) {
    std::vector<Value> args = {Value(0), Value(5), Value(1)};
    args[static_cast<std::size_t>(wrong)] = Value("text");
    const Answer answer = call("xarange", args);
    EXPECT_EQ(answer.returned, 0);
    EXPECT_TRUE(answer.untouched);
    EXPECT_EQ(answer.operations, (Words{"NumberCheck 0", "NumberCheck 1", "NumberCheck 2"}));
  }
  expect_failure("xarange", {});
  expect_failure("xarange", {Value()});
  expect_failure("xarange", {Value(1), Value::table()});
}

TEST_F(Ranged, Xarange_ReadsItsArgumentsInOrder) {
  EXPECT_EQ(call("xarange", {Value(0), Value(5), Value(1)}).operations,
            (Words{"NumberCheck 0", "NumberCheck 1", "NumberCheck 2", "AsInt 0", "AsInt 1", "AsInt 2", "NewAny",
                   "SetTypeAny result"}));
  EXPECT_EQ(call("xarange", {Value(5)}).operations, (Words{"NumberCheck 0", "AsInt 0", "NewAny", "SetTypeAny result"}));
}

TEST_F(Ranged, Required_XarangeWithFourArguments_GivesAnObjectWithoutContainer) {
  for (const auto& args : {std::vector<Value>{Value(1), Value(2), Value(3), Value(4)},
                           std::vector<Value>{Value("a"), Value(), Value::table(), Value(0), Value(0)}}) {
    const Answer answer = call("xarange", args);
    EXPECT_EQ(answer.returned, 1);
    EXPECT_EQ(answer.operations, (Words{"NewAny", "SetTypeAny result"}));  // not even a check
    ASSERT_EQ(type_of(answer.result), "$xdoublearray");
    const auto* array = unbox_array<XTDouble>(hvm::object_of(answer.result.record()));
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(array->array, nullptr);
  }
}

using RangedDeathTest = Ranged;

TEST_F(RangedDeathTest, Required_XarangeWithStepZero_IsTheDivisionFault) {
  EXPECT_EXIT(call("xarange", {Value(0), Value(5), Value(0)}), ::testing::KilledBySignal(SIGFPE), "");
  EXPECT_EXIT(call("xarange", {Value(0), Value(5), Value(0.5)}), ::testing::KilledBySignal(SIGFPE), "");
}

// The smallest integer by -1 does not fit its quotient.
TEST_F(RangedDeathTest, Required_XarangeWithAWidthThatWrapsToTheSmallestInteger_IsTheDivisionFault) {
  struct Triple {
    int start, stop, step;
  };
  // Here the first division faults, and then the second one of a range upwards and of one downwards.
  for (const auto& [start, stop, step] :
       {Triple{INT_MIN, 0, -1}, Triple{-1073741825, 1073741825, -1}, Triple{1073741825, -1073741825, 1}})
    EXPECT_EXIT(call("xarange", {Value(start), Value(stop), Value(step)}), ::testing::KilledBySignal(SIGFPE), "")
        << start << ' ' << stop;
}

// ---- xlinspace

TEST_F(Ranged, Xlinspace_OfDoubles_IncludesBothEnds) {
  EXPECT_EQ(doubles("xlinspace", {Value(0.0), Value(1.0), Value(5)}), (Doubles{0, 0.25, 0.5, 0.75, 1}));
  EXPECT_EQ(doubles("xlinspace", {Value(1.0), Value(0.0), Value(3)}), (Doubles{1, 0.5, 0}));
  EXPECT_EQ(doubles("xlinspace", {Value(0.0), Value(1.0), Value(1)}), (Doubles{0}));
  EXPECT_EQ(doubles("xlinspace", {Value(0.0), Value(1.0), Value(0)}), Doubles{});
}

TEST_F(Ranged, Xlinspace_WithoutCount_HasFifty) {
  const Doubles numbers = doubles("xlinspace", {Value(0.0), Value(1.0)});
  ASSERT_EQ(numbers.size(), 50u);
  EXPECT_EQ(numbers.back(), 1.0);
  EXPECT_EQ(numbers[1], 1.0 / 49);
}

TEST_F(Ranged, Xlinspace_EndsInStopExactly) {
  // With some of these counts the formula alone misses stop in the last bit.
  const double start = 0.1, stop = 0.7;
  for (int count = 2; count < 100; ++count)
    EXPECT_EQ(doubles("xlinspace", {Value(start), Value(stop), Value(count)}).back(), stop) << count;
}

TEST_F(Ranged, Xlinspace_OfIntegers_Truncates) {
  EXPECT_EQ(ints("xlinspace", {Value(0), Value(2), Value(5)}), (Ints{0, 0, 1, 1, 2}));
  EXPECT_EQ(ints("xlinspace", {Value(0), Value(-2), Value(5)}), (Ints{0, 0, -1, -1, -2}));
  EXPECT_EQ(int64s("xlinspace", {wide(0), Value(10), Value(4)}), (Int64s{0, 3, 6, 10}));
}

TEST_F(Ranged, Xlinspace_TheFirstArgumentAloneDecidesTheKind) {
  EXPECT_EQ(ints("xlinspace", {Value(0), Value(2.5), Value(5)}), (Ints{0, 0, 1, 1, 2}));
  EXPECT_EQ(doubles("xlinspace", {Value(0.0), Value(2), Value(5)}), (Doubles{0, 0.5, 1, 1.5, 2}));
  EXPECT_EQ(int64s("xlinspace", {wide(0), Value(2.5), Value(3)}), (Int64s{0, 1, 2}));
}

TEST_F(Ranged, Xlinspace_OfIntegers_SubtractsInTheirWidth) {
  // The span of the whole range wraps to -1.
  EXPECT_EQ(ints("xlinspace", {Value(INT_MIN), Value(INT_MAX), Value(3)}), (Ints{INT_MIN, INT_MIN, INT_MAX}));
  EXPECT_EQ(int64s("xlinspace", {wide(INT64_MIN), wide(INT64_MAX), Value(3)}),
            (Int64s{INT64_MIN, INT64_MIN, INT64_MAX}));
}

TEST_F(Ranged, Xlinspace_OfInt64_EndsInStopToTheLastBit) {
  EXPECT_EQ(int64s("xlinspace", {wide(0), wide((std::int64_t{1} << 53) + 1), Value(2)}),
            (Int64s{0, (std::int64_t{1} << 53) + 1}));
  EXPECT_EQ(int64s("xlinspace", {wide(0), wide(INT64_MAX), Value(2)}).back(), INT64_MAX);
}

TEST_F(Ranged, Xlinspace_OfTooFewArgumentsOrNoNumbers_Fails) {
  expect_failure("xlinspace", {});
  expect_failure("xlinspace", {Value(0.0)});
  expect_failure("xlinspace", {Value("a"), Value(1)});
  expect_failure("xlinspace", {Value(), Value(1)});
  expect_failure("xlinspace", {Value::table(), Value(1)});
  expect_failure("xlinspace", {array_of<XTInt>(ctx(), {1}, {1}), Value(1)});
  expect_failure("xlinspace", {Value(0.0), Value("b")});
  expect_failure("xlinspace", {Value(0), Value()});
  expect_failure("xlinspace", {Value(0), Value(1), Value("5")});
  for (const int tag : {4, 18, 25, 80, 81}) expect_failure("xlinspace", {raw(static_cast<ValueTag>(tag)), Value(1)});
}

TEST_F(Ranged, Xlinspace_ChecksTheCountThenBothEnds) {
  EXPECT_EQ(call("xlinspace", {Value(0), Value(1), Value(2), Value(9)}).operations,
            (Words{"NumberCheck 2", "AsInt 2", "NumberCheck 0", "NumberCheck 1", "AsInt 0", "AsInt 1", "NewAny",
                   "SetTypeAny result"}));
  EXPECT_EQ(call("xlinspace", {Value(0.0), Value(1)}).operations,
            (Words{"NumberCheck 0", "NumberCheck 1", "AsDouble 0", "AsDouble 1", "NewAny", "SetTypeAny result"}));
  EXPECT_EQ(call("xlinspace", {wide(0), Value(1)}).operations,
            (Words{"NumberCheck 0", "NumberCheck 1", "AsInt64 0", "AsInt64 1", "NewAny", "SetTypeAny result"}));
  EXPECT_EQ(call("xlinspace", {Value(0), Value(1), Value("2")}).operations, (Words{"NumberCheck 2"}));
  EXPECT_EQ(call("xlinspace", {Value("0"), Value(1), Value(2)}).operations, (Words{"NumberCheck 2", "AsInt 2"}));
}

TEST_F(Ranged, ANegativeCount_EndsInBadAlloc) {
  for (const char* name : {"xlinspace", "xlogspace"})
    for (const Value& start : {Value(0), Value(0.0), wide(0)})
      for (const int count : {-1, -2, INT_MIN})
        EXPECT_THROW(call(name, {start, Value(1), Value(count)}), std::bad_alloc) << name << count;
}

TEST_F(Ranged, Xlinspace_OfRandomEnds_IsTheLibrarysToTheBit) {
  std::mt19937_64 engine(7);
  const auto random_real = [&] {
    return std::ldexp(static_cast<double>(static_cast<std::int64_t>(engine())), static_cast<int>(engine() % 80) - 90);
  };
  for (int round = 0; round < 400; ++round) {
    const std::size_t count = engine() % 300;
    const Value given_count(static_cast<int>(count));
    const double start = random_real(), stop = random_real();
    EXPECT_EQ(TestArray(Extents{count}, doubles("xlinspace", {Value(start), Value(stop), given_count})),
              library_linspace(Kind::float64, start, stop, count));
    const int from = static_cast<std::int32_t>(engine()) / 4, to = static_cast<std::int32_t>(engine()) / 4;
    EXPECT_EQ(TestArray(Extents{count}, ints("xlinspace", {Value(from), Value(to), given_count})),
              library_linspace(Kind::int32, from, to, count));
  }
}

TEST_F(Ranged, Xlinspace_OfRandomInt64Ends_FollowsTheFormula) {
  std::mt19937_64 engine(11);
  for (int round = 0; round < 200; ++round) {
    const int count = 2 + static_cast<int>(engine() % 100);
    const auto start = static_cast<std::int64_t>(engine()) >> (engine() % 60);
    const auto stop = static_cast<std::int64_t>(engine()) >> (engine() % 60);
    const auto span = static_cast<std::int64_t>(static_cast<std::uint64_t>(stop) - static_cast<std::uint64_t>(start));
    const double step = static_cast<double>(span) / (count - 1);
    Int64s expected;
    for (int i = 0; i < count; ++i) expected.push_back(truncated<std::int64_t>(static_cast<double>(start) + i * step));
    expected.back() = stop;
    EXPECT_EQ(int64s("xlinspace", {wide(start), wide(stop), Value(count)}), expected);
  }
}

TEST_F(Ranged, Xlinspace_OfInfiniteEnds_FollowsTheFormula) {
  const double infinity = std::numeric_limits<double>::infinity();
  const Doubles numbers = doubles("xlinspace", {Value(0.0), Value(infinity), Value(3)});
  EXPECT_TRUE(std::isnan(numbers[0]));  // 0 times an infinite step
  EXPECT_EQ(numbers[1], infinity);
  EXPECT_EQ(numbers[2], infinity);
}

// ---- xlogspace

TEST_F(Ranged, Xlogspace_GivesPowersOfTen) {
  EXPECT_EQ(doubles("xlogspace", {Value(0.0), Value(2.0), Value(3)}), (Doubles{1, 10, 100}));
  EXPECT_EQ(doubles("xlogspace", {Value(0.0), Value(1.0), Value(1)}), (Doubles{1}));
  EXPECT_EQ(doubles("xlogspace", {Value(0.0), Value(1.0), Value(0)}), Doubles{});
  EXPECT_EQ(doubles("xlogspace", {Value(0.0), Value(1.0)}).size(), 50u);
}

/// Nearly always the double nearest to the power, here that of the 80 bits.
TEST_F(Ranged, Xlogspace_OfDoubles_IsThePowerOfEachExponent) {
  const Doubles exponents = doubles("xlinspace", {Value(-330.7), Value(310.1), Value(1001)});
  const Doubles powers = doubles("xlogspace", {Value(-330.7), Value(310.1), Value(1001)});
  ASSERT_EQ(powers.size(), exponents.size());
  for (std::size_t i = 0; i < exponents.size(); ++i)
    EXPECT_EQ(powers[i], static_cast<double>(std::pow(10.0L, static_cast<long double>(exponents[i])))) << exponents[i];
}

TEST_F(Ranged, Xlogspace_OfManyIntegers_IsThePowerOfEach) {
  const Ints exponents = ints("xlinspace", {Value(-3), Value(11), Value(1000)});
  const Ints powers = ints("xlogspace", {Value(-3), Value(11), Value(1000)});
  ASSERT_EQ(powers.size(), exponents.size());
  for (std::size_t i = 0; i < exponents.size(); ++i)
    EXPECT_EQ(powers[i], truncated<std::int32_t>(std::pow(10.0, exponents[i]))) << exponents[i];
}

TEST_F(Ranged, Required_Xlogspace_OfIntegers_TruncatesExponentAndPower) {
  EXPECT_EQ(ints("xlogspace", {Value(0), Value(2), Value(5)}), (Ints{1, 1, 10, 10, 100}));
  EXPECT_EQ(ints("xlogspace", {Value(-2), Value(1), Value(4)}), (Ints{0, 0, 1, 10}));
  EXPECT_EQ(int64s("xlogspace", {wide(0), wide(18), Value(2)}), (Int64s{1, 1000000000000000000}));
}

TEST_F(Ranged, Xlogspace_BeyondTheElement_IsItsSmallestValue) {
  EXPECT_EQ(ints("xlogspace", {Value(9), Value(10), Value(2)}), (Ints{1000000000, INT_MIN}));
  EXPECT_EQ(int64s("xlogspace", {wide(18), wide(19), Value(2)}), (Int64s{1000000000000000000, INT64_MIN}));
}

TEST_F(Ranged, Xlogspace_FailsAsXlinspaceDoes) {
  expect_failure("xlogspace", {});
  expect_failure("xlogspace", {Value(0.0)});
  expect_failure("xlogspace", {Value("a"), Value(1)});
  expect_failure("xlogspace", {Value(0), Value("b")});
  expect_failure("xlogspace", {Value(0), Value(1), Value()});
  EXPECT_EQ(call("xlogspace", {wide(0), Value(1), Value(2)}).operations,
            (Words{"NumberCheck 2", "AsInt 2", "NumberCheck 0", "NumberCheck 1", "AsInt64 0", "AsInt64 1", "NewAny",
                   "SetTypeAny result"}));
}

TEST_F(Ranged, WithoutAnObjectOfTheHost_ResultIsNilAndHandled) {
  for (const char* name : {"xarange", "xlinspace", "xlogspace"})
    for (const Value& start : {Value(0), Value(0.0), wide(0)}) {
      hvm::withhold_objects(true);
      const Answer answer = call(name, {start, Value(2)});
      hvm::withhold_objects(false);
      EXPECT_EQ(answer.returned, 1);
      EXPECT_TRUE(answer.result.is_nil());
    }
}

}  // namespace
}  // namespace arrayfold::test
