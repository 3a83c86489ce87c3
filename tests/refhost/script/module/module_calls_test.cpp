// refhost/script/module/module_calls_test.cpp: what scripts do with a module's functions and objects

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
                   "!'==' is not defined for $xintarray (2) and an int: it compares whole arrays of one kind"},
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

}  // namespace
}  // namespace hvm::testing
