// refhost/script/module_test.cpp: what scripts do with a module's functions and objects

#include <fmt/format.h>

#include "script_run.hpp"

namespace hvm::testing {
namespace {

TEST(ModuleCalls, PassContiguousArgumentsAndStartWithNil) {
  expect_outputs({{"print(toy_count(), toy_count(1, 2.5, \"x\", []))", "0 4"},
                  {"print(toy_second(1, [2, \"k\": 3]), type(toy_nothing()))", "[2, \"k\": 3] nil"},
                  {"toy_fail()", "!toy_fail: the call failed without arguments"},
                  {"toy_fail(1, \"x\", [2], 2.5, toy_int(2))",
                   "!toy_fail: the call failed with an int, a string, a table, a real, $xintarray"}});
}

TEST(ModuleCalls, Exceptions_BecomeScriptErrors) {
  expect_outputs(
      {{"toy_throw(\"runtime\", \"some words\")", "!toy_throw: the module threw std::runtime_error: some words"},
       {"toy_throw(\"own\", \"more\")", "!toy_throw: the module threw toy::OwnError: more"},
       {"toy_throw(\"number\")", "!toy_throw: the module threw int"},
       {"a = toy_int(2); a.throw()", "!throw: the module threw toy::OwnError: from a method"},
       {"a = toy_int(2) + toy_int(3)",
        "!the shapes (2) and (3) do not broadcast; '+': the module threw std::runtime_error: shapes differ"},
       {"a = toy_int(2) + toy_int(1)",
        "!'+': the module threw std::runtime_error: shapes differ (operands: $xintarray (2) and $xintarray (1))"}});
}

TEST(Methods, AreCalledOnObjects) {
  expect_outputs({{"a = toy_int(2, 3); print(a.shape(), a.dump())", "[2, 3] [[0,1,2],[3,4,5]]"},
                  {"a = toy_int(6); a.reshape(2, 3); print(a.shape())", "[2, 3]"},
                  {"print(toy_int(6).reshape(3, 2))", "nil"},
                  {"a = toy_int(6); a.reshape(4)", "!reshape: the call failed on $xintarray (6)"},
                  {"a = toy_int(6); a.missing()", "!missing: the call failed on $xintarray (6)"},
                  {"a = 5; a.dump()", "!an int has no methods"},
                  {"[1].dump()", "!a table has no methods"}});
}

TEST(Operators, OfObjects_AreTheTypes) {
  expect_outputs({{"print((toy_int(3) + 1).dump(), (5 - toy_int(3)).dump())", "[1,2,3] [-5,-4,-3]"},
                  {"print((-toy_int(3)).dump())", "[0,-1,-2]"},
                  {"a = toy_int(3); print((a + a).dump(), a == a, a != a)", "[0,2,4] 1 0"},
                  {"a = toy_int(2) + toy_double(2)",
                   "!int array + double array: the kinds differ, and only arrays of one kind combine"},
                  {"a = toy_int(2); a -= toy_double(2)",
                   "!int array -= double array: the kinds differ, and only arrays of one kind combine"},
                  {"a = toy_int(2) == 3",
                   "!'==' is not defined for $xintarray (2) and an int: it compares whole arrays of one kind; '<=' and "
                   "'>=' compare element by element, with a number as well"},
                  {"a = toy_int(2) + \"x\"", "!'+' is not defined for $xintarray (2) and a string"},
                  {"print(toy_double(2) % toy_double(2))", "nil"}});
}

TEST(Operators, CompoundAssignment_ChangesTheSharedObject) {
  expect_outputs({{"a = toy_int(3); b = a; a += 1; print(b.dump())", "[1,2,3]"},
                  {"a = toy_int(3); b = a; a = a + 1; print(b.dump())", "[0,1,2]"},
                  {"x = 1; x += toy_int(2); print(x.dump())", "[1,2]"},
                  {"a = toy_int(3); t = [a]; t[0] += 1; print(a.dump(), t[0].dump())", "[0,1,2] [1,2,3]"},
                  {"fn f(a)\na += 1\nend\nb = toy_int(2); f(b); print(b.dump())", "[1,2]"}});
}

TEST(Elements, AreReadAndWrittenThroughIndexLists) {
  expect_outputs(
      {{"a = toy_int(2, 3); print(a[1, 2], a[2], a[7, 1, 0])", "5 2 3"},
       {"a = toy_double(2, 3); a[1, 2] = 7; a[0] += 0.5; print(a[1, 2], a.dump())",
        "7.0 [[0.5,1.0,2.0],[3.0,4.0,7.0]]"},
       {"a = toy_int(1, 1, 2, 3); print(a[0, 0, 1, 2])", "5"},
       {"a = toy_int(1, 1, 1, 2, 3); a[0, 0, 0, 1, 2] = 7; print(a[0, 0, 0, 1, 2], a[1, 1])", "7 4"},
       {"a = toy_int(2); a[0] = \"x\"", "!$xintarray (2) takes numbers as elements, not a string"},
       {"a = toy_int(2); a[0, 0, 0, 0, 0, 0, 0, 0, 0] = 1", "!$xintarray (2) has no element to write with 9 indices"},
       {"a = toy_int(1,1,1,1,1,1,1,1,1); print(a[0,0,0,0,0,0,0,0,0])",
        "!$xintarray (1, 1, 1, 1, 1, 1, 1, 1, 1) gives no element with 9 indices"},
       {"a = 5; a[0] = 1", "!an int has no elements to assign to"}});
}

TEST(Guards, Indices_AreHeldAgainstTheAlignedExtents) {
  expect_outputs(
      {{"a = toy_int(2, 3); print(a[2, 0])", "!index 2 is outside of axis 0, which has 2 elements (shape (2, 3))"},
       {"a = toy_int(2, 3); a[0, -1] = 1", "!index -1 is outside of axis 1, which has 3 elements (shape (2, 3))"},
       {"a = toy_int(2, 3); print(a[3])", "!index 3 is outside of axis 1, which has 3 elements (shape (2, 3))"},
       {"a = toy_int(2, 3); print(a[\"x\"])", "!an index must be a number, not a string"},
       {"a = toy_int(0, 3); print(a[1])", "!the array has no elements (shape (0, 3))"},
       {"a = toy_int(2); print(a[1.9])", "1"}});
}

TEST(Guards, Reshape_MayNotClaimMoreThanThereIs) {
  expect_outputs({{"a = toy_int(6); a.reshape(-2, -3)", "!reshape: the extents (-2, -3) are negative"},
                  {"a = toy_int(0); a.reshape(65536, 65536, 65536, 65536)",
                   "!reshape: the extents (65536, 65536, 65536, 65536) claim more than the 0 elements"},
                  {"a = toy_int(0); a.reshape(2, 0); print(a)", "int(2, 0) [[], []]"}});
  const char* unsound = "a = toy_int(6); a.reshape(-2, -3); print(a.shape())";
  EXPECT_EQ(output_of(unsound, false), "[-2, -3]");
}

TEST(Guards, ArraysThatClaimTooMuch_AreNotWalked) {
  expect_outputs(
      {{"a = toy_int(2000000000, 0); a.dump()", "!the array's extents (2000000000, 0) claim more than its elements"},
       {"a = toy_int(2000000000, 0); print(a)", "!the array's extents (2000000000, 0) claim more than its elements"},
       {"a = toy_int(2000000000, 0); b = a + 1", "!the array's extents (2000000000, 0) claim more than its elements"},
       {"a = toy_int(2000000000, 0); print(a.shape())", "[2000000000, 0]"}});
}

TEST(Guards, IntegerDivisionByAZeroNumber_IsRefusedOnEitherSide) {
  expect_outputs({{"a = toy_int(2) / 0", "!'/' of an integer array with zero"},
                  {"a = toy_int(2) % 0", "!'%' of an integer array with zero"},
                  {"a = toy_int(2) / 0.5", "!'/' of an integer array with zero"},
                  {"a = 0 / toy_int(2)", "!'/' of an integer array with zero"},
                  {"a = toy_int(2); a /= 0", "!'/' of an integer array with zero"},
                  {"a = toy_double(2) / 0; print(type(a))", "$xdoublearray"},
                  {"print((toy_int(2) * 0).dump())", "[0,0]"}});
  EXPECT_EQ(output_of("a = toy_int(2) % 0", false), "");
}

TEST(Guards, Xarange_TakesThreeArgumentsAndAStep) {
  expect_outputs({{"print(xarange(1), xarange(1, 2), xarange(1, 2, 3))", "1 2 3"},
                  {"xarange(1, 2, 3, 4)", "!xarange: it takes at most three arguments (start, stop, step)"},
                  {"xarange(1, 2, 0)", "!xarange: the step is zero as an integer"},
                  {"xarange(1, 2, 0.5)", "!xarange: the step is zero as an integer"},
                  {"xarange(0, -2147483648, -1)", "!xarange: the range has more than 2147483647 elements"}});
  EXPECT_EQ(output_of("print(xarange(1, 2, 3, 4), xarange(1, 2, 0))", false), "4 3");
}

TEST(ArrayText, ShowsKindShapeAndElements) {
  expect_outputs({{"print(toy_double(2, 3))", "double(2, 3) [[0.0, 1.0, 2.0], [3.0, 4.0, 5.0]]"},
                  {"print(toy_int())", "int() 0"},
                  {"print(toy_int(0))", "int(0) []"},
                  {"print([toy_int(2), \"k\": toy_double(1)])", "[int(2) [0, 1], \"k\": double(1) [0.0]]"},
                  {"print(str(toy_double(2)))", "[0.0,1.0]"},
                  {"print(toy_double(2) / 3)", "double(2) [0.0, 0.333333]"},
                  {"a = toy_double(3) - 1; a[0] = 1.0 / 0; a[1] = 0.0 / 0; print(a)", "double(3) [inf, nan, 1.0]"}});
}

TEST(ArrayText, BreaksWideMatricesIntoRows) {
  EXPECT_EQ(output_of("print(toy_double(2, 12))"),
            "double(2, 12)\n[[0.0, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0, 10.0, 11.0],\n"
            " [12.0, 13.0, 14.0, 15.0, 16.0, 17.0, 18.0, 19.0, 20.0, 21.0, 22.0, 23.0]]");
}

TEST(ArrayText, BeyondAThousandElements_ShowsHeadAndTail) {
  EXPECT_EQ(output_of("print(toy_int(1000))").find("..."), std::string::npos);
  const std::string short_text = "int(1001) [0, 1, 2, ..., 998, 999, 1000]";
  EXPECT_EQ(output_of("print(toy_int(1001))"), short_text);
  EXPECT_EQ(output_of("toy_serve_elements(0); print(toy_int(1001)); toy_serve_elements(1)"), short_text);
  EXPECT_EQ(output_of("print(toy_int(2, 1000))"),
            "int(2, 1000) [[0, 1, 2, ..., 997, 998, 999], [1000, 1001, 1002, ..., 1997, 1998, 1999]]");
  EXPECT_EQ(output_of("print(toy_bool(1001))"), "bool(1001) [false, true, true, ..., true, true, true]");
  const std::string eight = output_of("print(toy_int(3, 3, 3, 3, 3, 3, 3, 3))");
  EXPECT_LT(eight.size(), 6000u);
  EXPECT_NE(eight.find("6560"), std::string::npos);
}

}  // namespace
}  // namespace hvm::testing
