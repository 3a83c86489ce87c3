// refhost/script/module/array_module_test.cpp: what the host checks because the module does not

#include "script_run.hpp"

namespace hvm::testing {
namespace {

TEST(ArrayChecks, Indices_MustLieWithinTheAlignedExtents) {
  expect_outputs(
      {{"a = toy_int(2, 3); print(a[2, 0])", "!index 2 is outside of axis 0, which has 2 elements (shape (2, 3))"},
       {"a = toy_int(2, 3); a[0, -1] = 1", "!index -1 is outside of axis 1, which has 3 elements (shape (2, 3))"},
       {"a = toy_int(2, 3); print(a[3])", "!index 3 is outside of axis 1, which has 3 elements (shape (2, 3))"},
       {"a = toy_int(3); a[toy_bool(3)]",
        "!an index must be a number, not $xboolarray; mask(a, m) gives the elements where m is true, after use "
        "\"arrays\""},
       {"a = toy_int(3); a[toy_int(2)] = 1",
        "!an index must be a number, not $xintarray; take(a, positions) gives several elements, after use \"arrays\""},
       {"a = toy_int(2, 3); print(a[\"x\"])", "!an index must be a number, not a string"},
       {"a = toy_int(0, 3); print(a[1])", "!the array has no elements (shape (0, 3))"},
       {"a = toy_int(2); print(a[1.9])", "1"}});
}

TEST(ArrayChecks, Reshape_MayNotNeedMoreElementsThanThereAre) {
  expect_outputs(
      {{"a = toy_int(6); a.reshape(-2, -3)", "!reshape: the extents (-2, -3) are negative"},
       {"a = toy_int(0); a.reshape(65536, 65536, 65536, 65536)",
        "!reshape: the extents (65536, 65536, 65536, 65536) need more elements than the 0 of the array"},
       {"a = toy_int(0); a.reshape(2000000000, 0)", "!reshape: an array cannot have the extents (2000000000, 0)"},
       {"a = toy_int(0); a.reshape(2, 0); print(a)", "int(2, 0) [[], []]"}});
  const char* unsound = "a = toy_int(6); a.reshape(-2, -3); print(a.shape())";
  EXPECT_EQ(output_of(unsound, false), "[-2, -3]");
}

TEST(ArrayChecks, ExtentsBeyondEveryArray_AreNotWalked) {
  expect_outputs({{"a = toy_int(2000000000, 0); a.dump()", "!an array cannot have the extents (2000000000, 0)"},
                  {"a = toy_int(2000000000, 0); print(a)", "!an array cannot have the extents (2000000000, 0)"},
                  {"a = toy_int(2000000000, 0); b = a + 1", "!an array cannot have the extents (2000000000, 0)"},
                  {"a = toy_int(2000000000, 0); print(a.shape())", "[2000000000, 0]"}});
}

TEST(ArrayChecks, IntegerDivisionByAZeroNumber_FailsOnEitherSide) {
  expect_outputs({{"a = toy_int(2) / 0", "!'/' of an integer array with zero"},
                  {"a = toy_int(2) % 0", "!'%' of an integer array with zero"},
                  {"a = toy_int(2) / 0.5", "!'/' of an integer array with zero: 0.5 is read as 0"},
                  {"a = 0 / toy_int(2)", "!'/' of an integer array with zero: 0 / a computes a / 0"},
                  {"a = toy_int(2); a /= 0", "!'/' of an integer array with zero"},
                  {"a = toy_double(2) / 0; print(type(a))", "$xdoublearray"},
                  {"print((toy_int(2) * 0).dump())", "[0,0]"}});
  EXPECT_EQ(output_of("a = toy_int(2) % 0", false), "");
}

TEST(ArrayChecks, Xarange_TakesThreeArgumentsAndAStep) {
  expect_outputs(
      {{"print(xarange(1), xarange(1, 2), xarange(1, 2, 3))", "1 2 3"},
       {"xarange(1, 2, 3, 4)", "!xarange: it takes at most three arguments (start, stop, step)"},
       {"xarange(1, 2, 0)", "!xarange: the step is zero as an integer"},
       {"xarange(1, 2, 0.5)", "!xarange: the step is zero as an integer"},
       {"xarange(0, -2147483648, -1)", "!xarange: argument 1 and argument 2 are more than 2147483647 apart"},
       {"xarange(-1073741825, 1073741825, -1)", "!xarange: argument 1 and argument 2 are more than 2147483647 apart"},
       {"xarange(1073741825, -1073741825, 1)", "!xarange: argument 1 and argument 2 are more than 2147483647 apart"}});
  EXPECT_EQ(output_of("print(xarange(1, 2, 3, 4), xarange(1, 2, 0))", false), "4 3");
}

}  // namespace
}  // namespace hvm::testing
