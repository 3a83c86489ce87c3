// object/division_faults_test.cpp: integer divisions for which the processor faults, and those for which it does not

#include <csignal>
#include <cstdint>
#include <limits>

#include "plugin/object/operator_fixture.hpp"

namespace arrayfold::test {
namespace {

const auto faulted = ::testing::KilledBySignal(SIGFPE);

/// The forms of one division that faults in its last element: new and in place, by a number, by an array, by itself.
class DivisionFaultsDeathTest : public OperatorTest {
 protected:
  template <class Kind>
  void expect_faults(typename Kind::element dividend, typename Kind::element divisor) const {
    using T = typename Kind::element;
    const std::size_t size = 1037;
    std::vector<T> dividends(size, 1), divisors(size, 1);
    dividends.back() = dividend;
    divisors.back() = divisor;
    const Value number = Value(std::int64_t{divisor});
    const Value by = array_of<Kind>(ctx(), {size}, divisors), one_by = array_of<Kind>(ctx(), {1}, {divisor});
    for (const Opcode opcode : {Opcode::divide, Opcode::remainder}) {
      Value array = array_of<Kind>(ctx(), {size}, dividends);
      EXPECT_EXIT(operate(opcode, array, number), faulted, "");
      EXPECT_EXIT(operate(opcode, array, by), faulted, "");
      EXPECT_EXIT(operate(opcode, array, one_by), faulted, "");
      EXPECT_EXIT(change(opcode, array, number), faulted, "");
      EXPECT_EXIT(change(opcode, array, by), faulted, "");
      EXPECT_EXIT(change(opcode, array, one_by), faulted, "");
    }
  }
};

TEST_F(DivisionFaultsDeathTest, Required_OfInts_ByZero) { expect_faults<XTInt>(7, 0); }
TEST_F(DivisionFaultsDeathTest, Required_OfInts_MinimumByMinusOne) { expect_faults<XTInt>(INT32_MIN, -1); }
TEST_F(DivisionFaultsDeathTest, Required_OfInt64s_ByZero) { expect_faults<XTInt64>(7, 0); }
TEST_F(DivisionFaultsDeathTest, Required_OfInt64s_MinimumByMinusOne) { expect_faults<XTInt64>(INT64_MIN, -1); }

TEST_F(DivisionFaultsDeathTest, Required_OfAnArrayByItself) {
  std::vector<int> elements(1037, 5);
  elements.back() = 0;
  for (const Opcode opcode : {Opcode::divide, Opcode::remainder}) {
    Value i = ints(elements), l = int64s({elements.begin(), elements.end()});
    EXPECT_EXIT(change(opcode, i, i), faulted, "");
    EXPECT_EXIT(change(opcode, l, l), faulted, "");
    EXPECT_EXIT(operate(opcode, i, i), faulted, "");
    EXPECT_EXIT(operate(opcode, array_of<XTInt>(ctx(), {}, {1}), i), faulted, "");
  }
}

using Division = OperatorTest;

TEST_F(Division, OfNoElements_DoesNotFault) {
  for (const Opcode opcode : {Opcode::divide, Opcode::remainder})
    for (Value empty : {ints({}), int64s({})}) {
      const Value zero = type_of(empty) == "$xintarray" ? ints({0}) : int64s({0});
      for (const Value& other : {Value(0), Value(-1), empty, zero}) {
        EXPECT_EQ(given(operate(opcode, empty, other)), "[]");
        EXPECT_EQ(change(opcode, empty, other).returned, 1);
        EXPECT_EQ(dump(empty), "[]");
      }
    }
}

TEST_F(Division, OfDoubles_DoesNotFault) {
  const double infinity = std::numeric_limits<double>::infinity();
  const Value quotients = operate(Opcode::divide, doubles({1, -1}), Value(0)).result;
  EXPECT_EQ(elements_of<XTDouble>(quotients), (std::vector<double>{infinity, -infinity}));
  Value zero = doubles({0.0});
  EXPECT_EQ(change(Opcode::divide, zero, zero).returned, 1);
  EXPECT_NE(elements_of<XTDouble>(zero)[0], elements_of<XTDouble>(zero)[0]);
}

}  // namespace
}  // namespace arrayfold::test
