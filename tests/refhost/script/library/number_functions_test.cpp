// refhost/script/library/number_functions_test.cpp: conversions, rounding, extremes, elementary functions

#include "script_run.hpp"

namespace hvm::testing {
namespace {

TEST(NumberFunctions, Number_ReadsIntegersAndReals) {
  expect_outputs({{R"(print(number("42"), number(" -7\t\r\n"), number("+5"), number("007")))", "42 -7 5 7"},
                  {R"(print(number("2147483647"), type(number("2147483647"))))", "2147483647 int"},
                  {R"(print(number("2147483648"), type(number("2147483648"))))", "2147483648 int64"},
                  {R"(print(number("-2147483648"), type(number("-2147483648"))))", "-2147483648 int"},
                  {R"(print(number("-9223372036854775808"), number("9223372036854775807")))",
                   "-9223372036854775808 9223372036854775807"},
                  {R"(print(number("1e5"), number("2.5E-1"), number(".5"), number("5."), number("+.5")))",
                   "100000.0 0.25 0.5 5.0 0.5"},
                  {R"(print(number("-0"), number("-0.0"), number("0.1") == 0.1))", "0 -0.0 1"},
                  {R"(print(number("inf"), number("-Infinity"), number("NaN"), number("+nan")))", "inf -inf nan nan"},
                  {R"(print(number("1e-400"), number("-1e-400"), number("4e-324") > 0))", "0.0 -0.0 1"},
                  {R"(print(number(w"12"), number("\u{a0}3\u{3000}")))", "12 3"}});
}

TEST(NumberFunctions, Number_OfAnythingElse_NamesTheText) {
  for (const char* text : {"",    " ", "abc", "1 2", "+-5", "--5", "++5",  "0x10",   "5L",    "1_0",
                           "1,5", "+", "-",   ".",   "e5",  "1e",  "1e5x", "nan(1)", "NaN()", "infi"})
    EXPECT_EQ(output_of("number(\"" + std::string(text) + "\")"),
              "!number: \"" + std::string(text) + "\" is not a number");
  expect_outputs({{R"(number("9223372036854775808"))", "!number: \"9223372036854775808\" does not fit in 64 bits"},
                  {R"(number("-99999999999999999999"))", "!number: \"-99999999999999999999\" does not fit in 64 bits"},
                  {R"(number("1e400"))", "!number: \"1e400\" is beyond the range of 64-bit floating-point numbers"},
                  {R"(number("-1e400"))", "!number: \"-1e400\" is beyond the range of 64-bit floating-point numbers"},
                  {R"(number("x" * 1000))", "!number: \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx\"... is not a number"},
                  {R"(number("a\nb\xff"))", "!number: \"a\\nb\xff\" is not a number"},
                  {"number(5)", "!number: it takes a string, not an int"},
                  {"number(nil)", "!number: it takes a string, not nil"},
                  {"number()", "!number: it takes 1 argument, not 0"}});
}

TEST(NumberFunctions, Conversions_TruncateAndChangeTheKind) {
  expect_outputs(
      {{"print(int(2.9), int(-2.9), int(-0.5), int(7), int(true))", "2 -2 0 7 1"},
       {"print(int(2147483647.9), int(-2147483648.9), type(int(5L)))", "2147483647 -2147483648 int"},
       {"print(int64(5), type(int64(5)), int64(-1e18), int64(-9223372036854775808.0))",
        "5 int64 -1000000000000000000 -9223372036854775808"},
       {"print(real(3), type(real(3)), real(5L), real(0.5), real(9007199254740993L))", "3.0 real 5.0 0.5 9.0072e+15"},
       {"int(1e10)", "!int: 1e+10 does not fit in 32 bits"},
       {"int(2147483648.0)", "!int: 2.14748e+09 does not fit in 32 bits"},
       {"int(-2147483649.0)", "!int: -2.14748e+09 does not fit in 32 bits"},
       {"int(3000000000L)", "!int: 3000000000 does not fit in 32 bits"},
       {"int(1.0 / 0)", "!int: inf does not fit in 32 bits"},
       {"int(0.0 / 0)", "!int: nan is not an integer"},
       {"int64(9223372036854775808.0)", "!int64: 9.22337e+18 does not fit in 64 bits"},
       {"int64(-1e19)", "!int64: -1e+19 does not fit in 64 bits"},
       {"int64(0.0 / 0)", "!int64: nan is not an integer"},
       {"int(\"5\")", "!int: it takes a number, not a string"},
       {"int64([])", "!int64: it takes a number, not a table"},
       {"real(nil)", "!real: it takes a number, not nil"},
       {"real(toy_int(2))", "!real: it takes a number, not $xintarray"}});
}

TEST(NumberFunctions, Rounding_GivesIntegers) {
  expect_outputs({{"print(round(0.5), round(1.5), round(2.5), round(-0.5), round(-2.5), round(2.6))", "0 2 2 0 -2 3"},
                  {"print(round(0.49999999999999994), round(4503599627370497.5))", "0 4503599627370498"},
                  {"print(floor(2.7), floor(-2.1), ceil(2.1), ceil(-2.7), ceil(-0.5))", "2 -3 3 -2 0"},
                  {"print(type(round(1.0)), type(round(3e9)), type(floor(-3e9)), type(ceil(3L)), type(round(3)))",
                   "int int64 int64 int64 int"},
                  {"print(floor(2147483647.5), ceil(2147483647.5), round(-9223372036854775808.0))",
                   "2147483647 2147483648 -9223372036854775808"},
                  {"round(1e19)", "!round: 1e+19 does not fit in 64 bits"},
                  {"floor(-1.0 / 0)", "!floor: -inf does not fit in 64 bits"},
                  {"ceil(0.0 / 0)", "!ceil: nan is not an integer"},
                  {"ceil(\"1\")", "!ceil: it takes a number, not a string"},
                  {"round(1, 2, 3)", "!round: it takes 1 to 2 arguments, not 3"}});
}

TEST(NumberFunctions, Round_ToDigits_GivesTheNearestReal) {
  expect_outputs(
      {{"print(round(2.675, 2), round(2.665, 2), round(0.125, 2), round(-0.125, 2))", "2.67 2.67 0.12 -0.12"},
       {"print(round(3.14159, 3), round(5, 2), round(5L, 0), round(2.5, 0), round(1.5, nil))", "3.142 5.0 5.0 2.0 2"},
       {"print(str(round(0.1 + 0.2, 15)), round(1e300, 5) == 1e300, round(1.1, 400) == 1.1)", "0.3 1 1"},
       {"print(round(1250, -2), round(1350.0, -2), round(-1251, -2), round(49.9, -2), round(51, -2))",
        "1200.0 1400.0 -1300.0 0.0 100.0"},
       {"print(round(-3, -1), round(-0.4, 0), round(5e-324, 341) > 0, round(1e308, -400))", "-0.0 -0.0 1 0.0"},
       {"print(round(1234, -9223372036854775807L - 1), round(1.25, 9223372036854775807L))", "0.0 1.25"},
       {"print(round(0.0 / 0, 2), round(1.0 / 0, -2), round(-1.0 / 0, 2))", "nan inf -inf"},
       {"round(1.7e308, -308)", "!round: the result is beyond the range of 64-bit floating-point numbers"},
       {"round(1.5, 1.0)", "!round: it takes an integer, not a real"},
       {"round(\"1\", 1)", "!round: it takes a number, not a string"}});
}

TEST(NumberFunctions, Abs_KeepsTheKindUntilItIsTooNarrow) {
  expect_outputs({{"print(abs(-5), abs(5), abs(-5L), abs(-1.5), abs(-0.0))", "5 5 5 1.5 0.0"},
                  {"print(type(abs(-5)), type(abs(-5L)), type(abs(-1.5)))", "int int64 real"},
                  {"print(abs(-2147483648), type(abs(-2147483648)))", "2147483648 int64"},
                  {"print(abs(-9223372036854775807L))", "9223372036854775807"},
                  {"abs(-9223372036854775807L - 1)", "!abs: 9223372036854775808 does not fit in 64 bits"},
                  {"abs(nil)", "!abs: it takes a number, not nil"}});
}

TEST(NumberFunctions, MinAndMax_KeepTheKindOfTheWinner) {
  expect_outputs({{"print(min(3, 1, 2), max(3, 1, 2), min(7), max(-1.5))", "1 3 7 -1.5"},
                  {"print(min([3, 1L, 2.0]), type(min([3, 1L, 2.0])), max([\"a\": 5, 2]))", "1 int64 5"},
                  {"print(type(max(1, 1.0)), type(max(1.0, 1)), min(0.0, -0.0))", "int real 0.0"},
                  {"print(max(9007199254740993L, 9007199254740992.0), min(9007199254740993L, 9007199254740992.0))",
                   "9007199254740993 9.0072e+15"},
                  {"print(max(9223372036854775807L, 9223372036854775808.0) > 9223372036854775807L)", "1"},
                  {"nan = 0.0 / 0; print(min(1, nan, 2), max([nan, 3]), min(nan))", "nan nan nan"},
                  {"max([])", "!max: the table is empty"},
                  {"min()", "!min: it takes at least 1 argument, not 0"},
                  {"min(1, \"a\")", "!min: it takes numbers, not a string"},
                  {"min(0.0 / 0, \"a\")", "!min: it takes numbers, not a string"},
                  {"max([1, nil])", "!max: it takes numbers, not nil"},
                  {"max([1], 2)", "!max: it takes numbers, not a table"}});
}

TEST(NumberFunctions, ElementaryFunctions_GiveReals) {
  expect_outputs(
      {{"print(sqrt(4), pow(2, 10), exp(0), log(1), log10(1000))", "2.0 1024.0 1.0 0.0 3.0"},
       {"print(sin(0), cos(0), tan(0), asin(0), acos(1), atan(0), atan2(0, 1))", "0.0 1.0 0.0 0.0 0.0 0.0 0.0"},
       {"print(asin(1) * 2, acos(-1), atan(1) * 4, atan2(1, -1), atan2(-1, 0))",
        "3.14159 3.14159 3.14159 2.35619 -1.5708"},
       {"print(sqrt(-1), log(0), log(-1), pow(0, -1), pow(-8, 0.5), exp(1000), acos(2))",
        "nan -inf nan inf nan inf nan"},
       {"print(sqrt(-0.0), sqrt(2L) * sqrt(2), type(sqrt(4)))", "-0.0 2.0 real"},
       {"print(is_nan(0.0 / 0), is_nan(1.0 / 0), is_nan(1), is_nan(5L))", "1 0 0 0"},
       {"sqrt(\"4\")", "!sqrt: it takes a number, not a string"},
       {"pow(2, nil)", "!pow: it takes a number, not nil"},
       {"pow(2)", "!pow: it takes 2 arguments, not 1"},
       {"is_nan(nil)", "!is_nan: it takes a number, not nil"}});
  for (const char* name : {"sqrt", "exp", "log", "log10", "sin", "cos", "tan", "asin", "acos", "atan", "is_nan"}) {
    EXPECT_EQ(output_of(std::string(name) + "([])"), "!" + std::string(name) + ": it takes a number, not a table");
    EXPECT_EQ(output_of(std::string(name) + "()"), "!" + std::string(name) + ": it takes 1 argument, not 0");
  }
}

}  // namespace
}  // namespace hvm::testing
