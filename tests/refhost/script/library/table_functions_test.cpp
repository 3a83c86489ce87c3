// refhost/script/library/table_functions_test.cpp: entries that come and go, and sorting

#include "script_run.hpp"

namespace hvm::testing {
namespace {

TEST(TableFunctions, Append_AddsBehindTheLastPosition) {
  expect_outputs({{"t = []; append(t, 1); append(t, \"a\", [2]); print(t, len(t))", "[1, \"a\", [2]] 3"},
                  {"t = [1, \"k\": 2, 5: 3]; append(t, 4); print(t)", "[1, 4, \"k\": 2, 5: 3]"},
                  {"t = [1: \"b\"]; append(t, \"a\", \"c\"); print(t)", "[\"a\", \"b\", \"c\"]"},
                  {"t = [1]; append(t, nil); append(t, 2); print(t, type(append(t, 3)))", "[1, nil, 2, 3] nil"},
                  {"t = [1]; u = t; append(u, 2); print(t)", "[1, 2]"},
                  {"t = [-1: 0, 1.0: 5]; append(t, 1); print(t)", "[1, -1: 0, 1.0: 5]"},
                  {"append([])", "!append: it takes at least 2 arguments, not 1"},
                  {"append(5, 1)", "!append: it takes a table, not an int"},
                  {"append(nil, 1)", "!append: it takes a table, not nil"}});
}

TEST(TableFunctions, Append_OfATableIntoItself_Fails) {
  expect_outputs(
      {{"t = [1]; append(t, t)", "!append: a table cannot hold itself"},
       {"t = [1]; append(t, 2, [[\"k\": t]])", "!append: a table cannot hold itself"},
       {"t = [1]; u = [t]; try; append(t, 5, u); catch e; print(e, t); end", "append: a table cannot hold itself [1]"},
       {"u = [[]]; append(u[0], u)", "!append: a table cannot hold itself"},
       {"t = [1]; u = [2]; append(t, u, u); append(u, 3); print(t)", "[1, [2, 3], [2, 3]]"}});
}

TEST(TableFunctions, Remove_TakesAnEntryOut) {
  expect_outputs(
      {{"t = [10, 20, 30, \"k\": 40]; print(remove(t, 1), t, remove(t, \"k\"), t)", "20 [10, 30] 40 [10, 30]"},
       {"t = [10, 20]; print(remove(t, 2), remove(t, \"x\"), remove(t, -1), remove(t, 0.0), t)",
        "nil nil nil nil [10, 20]"},
       {"t = [1.5: 1, 5: 2, w\"w\": 3]; print(remove(t, 1.5), remove(t, 5L), remove(t, \"w\"), t, len(t))",
        "1 2 3 [] 0"},
       {"t = [1, 2, 3]; for v in t do remove(t, 0); print(v, t) end", "1 [2, 3]|2 [3]|3 []"},
       {"t = [1]; remove(t, 0); append(t, 2); print(t, has(t, 1))", "[2] 0"},
       {"t = [toy_int(2)]; a = remove(t, 0); print(len(a), t)", "2 []"},
       {"remove([1], nil)", "!remove: nil is not a key of a table"},
       {"remove([1], [])", "!remove: a table is not a key of a table"},
       {"remove(\"a\", 0)", "!remove: it takes a table, not a string"}});
}

TEST(TableFunctions, KeysAndValues_AreInTheOrderOfALoop) {
  expect_outputs(
      {{"t = [\"b\": 1, 5, 2.5: [6], -1: 7]; print(keys(t), values(t))", "[0, \"b\", 2.5, -1] [5, 1, [6], 7]"},
       {"print(keys([]), values([]), type(keys([1])[0]), type(keys([\"a\": 1])[0]))", "[] [] int string"},
       {"t = [1, 2]; v = values(t); v[0] = 9; print(t, v)", "[1, 2] [9, 2]"},
       {"t = [nil, 1]; print(values(t), len(values(t)))", "[nil, 1] 2"},
       {"t = [\"a\": 1, \"b\": 2]; for k in keys(t) do remove(t, k) end; print(len(t))", "0"},
       {"keys(5)", "!keys: it takes a table, not an int"},
       {"values(nil)", "!values: it takes a table, not nil"}});
}

TEST(TableFunctions, Has_TellsAnAbsentKeyFromNil) {
  expect_outputs({{"t = [nil, \"k\": 1, 2.0: 2]; print(has(t, 0), has(t, 1), has(t, w\"k\"), has(t, 2), has(t, 2.0))",
                   "1 0 1 0 1"},
                  {"has([], nil)", "!has: nil is not a key of a table"},
                  {"has(5, 1)", "!has: it takes a table, not an int"}});
}

TEST(TableFunctions, Sort_OfNumbers_IsExactAndPutsNaNLast) {
  expect_outputs(
      {{"t = [3, 1, 2]; print(sort(t), t)", "[1, 2, 3] [3, 1, 2]"},
       {"print(sort([2.5, 1L, 2, -0.5]), sort([\"k\": 5, 4]), sort([]))", "[-0.5, 1, 2, 2.5] [4, 5] []"},
       {"nan = 0.0 / 0; print(sort([nan, 1, -nan, 0.5, 1.0 / 0, nan, -1.0 / 0]))",
        "[-inf, 0.5, 1, inf, nan, nan, nan]"},
       {"t = sort([9007199254740993L, 9007199254740992.0, 9007199254740992L]); print(type(t[0]), t[1], t[2])",
        "real 9007199254740992 9007199254740993"},
       {"print(sort([9223372036854775807L, 9223372036854775808.0, -9223372036854775807L - 1]))",
        "[-9223372036854775808, 9223372036854775807, 9.22337e+18]"},
       {"print(sort([0.0, -0.0, 0]), sort([1.0, 1, 1L]))", "[0.0, -0.0, 0] [1.0, 1, 1]"}});
}

TEST(TableFunctions, Sort_OfStrings_IsByTheirCharacters) {
  expect_outputs(
      {{R"(print(sort(["b", "", "a", "ab", "B", "ä", "≈"])))", R"(["", "B", "a", "ab", "b", "ä", "≈"])"},
       {R"(print(sort([w"b", "a", w"a"])))", R"(["a", "a", "b"])"},
       {R"(t = []; for i in range(30) do append(t, w"k" + str(99 - i)) end; t = sort(t); print(t[0], t[29]))",
        "k70 k99"}});
}

TEST(TableFunctions, Sort_IsStable) {
  expect_outputs(
      {{"t = []; for i in range(2000) do append(t, [i % 7, i]) end; t = sort(t, 0)\n"
        "for i in range(1999) do\n"
        "  assert(t[i][0] < t[i + 1][0] or (t[i][0] == t[i + 1][0] and t[i][1] < t[i + 1][1]))\n"
        "end\n"
        "print(t[0], t[1999])",
        "[0, 0] [6, 1994]"}});
}

TEST(TableFunctions, Sort_ByAKey_OrdersTables) {
  expect_outputs(
      {{R"(t = [["n": "b", "x": 2], ["n": "a", "x": 3]]; print(sort(t, "n")[0]["x"], sort(t, "x")[0]["x"]))", "3 2"},
       {R"(print(sort([[2, "b"], [1, "a"]], 1), sort([], "n")))", R"([[1, "a"], [2, "b"]] [])"},
       {R"(t = [[1]]; u = sort(t, 0); append(u[0], 2); print(t))", "[[1, 2]]"},
       {R"(sort([["n": 1], ["m": 1]], "n"))", R"(!sort: the table at 1 has no entry "n")"},
       {R"(sort(["k": [1], "l": []], 0))", R"(!sort: the table at "l" has no entry 0)"},
       {R"(sort([1, 2], "n"))", "!sort: with a key it takes a table of tables, not of an int"},
       {R"(sort([["n": 1], ["n": "a"]], "n"))", "!sort: an int and a string have no order"},
       {R"(sort([["n": []]], "n"))", "!sort: it takes numbers or strings, not a table"},
       {R"(sort([[1]], []))", "!sort: a table is not a key of a table"}});
}

TEST(TableFunctions, Sort_OfMixedOrOtherKinds_Fails) {
  expect_outputs({{R"(sort([1, "a"]))", "!sort: an int and a string have no order"},
                  {R"(sort(["a", 1.5]))", "!sort: a string and a real have no order"},
                  {R"(sort([[1], [2]]))", "!sort: it takes numbers or strings, not a table"},
                  {R"(sort([nil]))", "!sort: it takes numbers or strings, not nil"},
                  {R"(sort([1, toy_int(2)]))", "!sort: it takes numbers or strings, not $xintarray"},
                  {"sort(5)", "!sort: it takes a table, not an int"},
                  {"sort()", "!sort: it takes 1 to 2 arguments, not 0"}});
}

}  // namespace
}  // namespace hvm::testing
