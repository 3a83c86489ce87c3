// refhost/script/data/cell_number_test.cpp: the numbers that cells spell

#include "script/data/cell_number.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace hvm {
namespace {

using Kind = CellNumber::Kind;

TEST(CellNumber, TellsIntegersRealsTextAndWhatIsMissing) {
  struct Row {
    const char* cell;
    Kind kind;
    double real;
  };
  const double inf = std::numeric_limits<double>::infinity();
  for (const Row& row : {Row{"0", Kind::integer, 0},
                         {"-12", Kind::integer, -12},
                         {"+7", Kind::integer, 7},
                         {" \t42 ", Kind::integer, 42},
                         {"007", Kind::integer, 7},
                         {"9223372036854775807", Kind::integer, 9223372036854775807.0},
                         {"9223372036854775808", Kind::real, 9223372036854775808.0},
                         {"1.5", Kind::real, 1.5},
                         {"+1.5", Kind::real, 1.5},
                         {".5", Kind::real, 0.5},
                         {"5.", Kind::real, 5},
                         {"1e5", Kind::real, 1e5},
                         {"-2.5E-3", Kind::real, -2.5e-3},
                         {"1e-999", Kind::real, 0},
                         {"4.9e-324", Kind::real, 4.9406564584124654e-324},
                         {"inf", Kind::real, inf},
                         {"-Infinity", Kind::real, -inf},
                         {"1e999", Kind::beyond_range, inf},
                         {"-1e309", Kind::beyond_range, -inf},
                         {"a", Kind::none, 0},
                         {"+-1", Kind::none, 0},
                         {"++1", Kind::none, 0},
                         {"+", Kind::none, 0},
                         {"-", Kind::none, 0},
                         {".", Kind::none, 0},
                         {"1 2", Kind::none, 0},
                         {"1,5", Kind::none, 0},
                         {"0x10", Kind::none, 0},
                         {"1e", Kind::none, 0},
                         {"nan(1)", Kind::none, 0},
                         {"1_000", Kind::none, 0}}) {
    const CellNumber number = number_in(row.cell);
    EXPECT_EQ(number.kind, row.kind) << row.cell;
    EXPECT_EQ(number.real, row.real) << row.cell;
  }
  for (const char* cell : {"", " ", "\t"}) EXPECT_EQ(number_in(cell).kind, Kind::missing) << cell;
  for (const char* cell : {"nan", "NaN", "-nan", ""}) EXPECT_TRUE(std::isnan(number_in(cell).real)) << cell;
}

TEST(CellNumber, MinusZeroKeepsItsSignAsAReal) {
  EXPECT_TRUE(std::signbit(number_in("-0").real));
  EXPECT_TRUE(std::signbit(number_in("-0.0").real));
  EXPECT_FALSE(std::signbit(number_in("0").real));
}

TEST(CellNumber, LongDigits_AreJudgedByTheirValue) {
  EXPECT_EQ(number_in("1" + std::string(400, '0')).kind, Kind::beyond_range);
  EXPECT_EQ(number_in("1" + std::string(400, '0') + "e-400").real, 1);
  EXPECT_EQ(number_in("0." + std::string(400, '0') + "1").real, 0);
  EXPECT_EQ(number_in(std::string(400, '0') + "1").integer, 1);
}

}  // namespace
}  // namespace hvm
