// refhost/script/text/number_reading_test.cpp: the numbers that texts spell

#include "script/text/number_reading.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace hvm {
namespace {

using Kind = SpelledNumber::Kind;

TEST(NumberReading, TellsIntegersRealsTextAndNoNumbers) {
  struct Row {
    const char* text;
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
                         {"9223372036854775808", Kind::wide_integer, 9223372036854775808.0},
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
    const SpelledNumber number = spelled_number(row.text);
    EXPECT_EQ(number.kind, row.kind) << row.text;
    if (row.kind == Kind::none) {
      EXPECT_TRUE(std::isnan(number.real)) << row.text;
    } else {
      EXPECT_EQ(number.real, row.real) << row.text;
    }
  }
  for (const char* text : {"", " ", "\t"}) EXPECT_EQ(spelled_number(text).kind, Kind::empty) << text;
  for (const char* text : {"nan", "NaN", "-nan", ""}) EXPECT_TRUE(std::isnan(spelled_number(text).real)) << text;
}

TEST(NumberReading, MinusZeroKeepsItsSignAsAReal) {
  EXPECT_TRUE(std::signbit(spelled_number("-0").real));
  EXPECT_TRUE(std::signbit(spelled_number("-0.0").real));
  EXPECT_FALSE(std::signbit(spelled_number("0").real));
}

TEST(NumberReading, LongDigits_AreJudgedByTheirValue) {
  EXPECT_EQ(spelled_number("1" + std::string(400, '0')).kind, Kind::beyond_range);
  EXPECT_EQ(spelled_number("1" + std::string(400, '0') + "e-400").real, 1);
  EXPECT_EQ(spelled_number("0." + std::string(400, '0') + "1").real, 0);
  EXPECT_EQ(spelled_number(std::string(400, '0') + "1").integer, 1);
}

}  // namespace
}  // namespace hvm
