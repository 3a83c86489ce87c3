// refhost/script/explain/warnings_test.cpp: every warning comes where it should, and not beside it

#include "script/explain/warnings.hpp"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>

#include "script/run/interpreter.hpp"
#include "script_run.hpp"

namespace hvm::testing {
namespace {

using ::testing::HasSubstr;

/// The module of arrays, loaded once.
const ModuleFunctions& arrays() {
  static const ModuleFunctions functions = [] {
    ModuleFunctions made;
    void* library = dlopen(MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
    if (!library) throw std::runtime_error(dlerror());
    void* init = dlsym(library, "PKG_Init");
    arrayfold::load<arrayfold::PackageInit> (&init)(&made, &ModuleFunctions::register_rows);
    return made;
  }();
  return functions;
}

/// The greatest numbers of arguments of some functions.
const Description& description() {
  static const Description described = [] {
    Description made;
    for (const auto& [name, most] : std::initializer_list<std::pair<const char*, int>>{
             {"xsum", 1}, {"xmean", 1}, {"xsort", 1}, {"xstddev", 1}, {"xtrapz", 1}, {"xabs", 1}, {"xlinspace", 3}}) {
      FunctionEntry entry;
      entry.name = name;
      entry.most_arguments = most;
      made.functions.push_back(entry);
    }
    made.functions.emplace_back().name = "xzeros";  // any number
    return made;
  }();
  return described;
}

struct Told {
  std::string name;
  std::string message;
  std::string report;
};

struct ToldRun {
  std::vector<Told> warnings;
  std::string output;  // and ` !` with the error that ended it
};

/// Runs a script over the module of arrays.
ToldRun run(const std::string& script, WarningMode mode = WarningMode::on, Origin origin = Origin::script,
            const ModuleFunctions& functions = arrays()) {
  ToldRun result;
  InterpreterOptions options;
  options.print = [&](const std::string& text, const SourceText&, std::size_t) {
    result.output += (result.output.empty() ? "" : "|") + text;
  };
  options.warn = [&](const Warning& warning) {
    result.warnings.push_back({std::string(warning.row.name), warning.message, warning.report()});
  };
  options.warnings = mode;
  options.description = &description();
  const Counts before = counts();
  {
    Interpreter interpreter(functions, options);
    try {
      interpreter.run(interpreter.parse(std::make_shared<SourceText>("test.hvm", script, origin)));
    } catch (const ScriptError& error) {
      result.output += "!" + error.message();
    }
  }
  EXPECT_TRUE(counts() == before) << "left behind by: " << script;
  return result;
}

/// What the script is told, as `name: message` with `|` between.
std::string told(const std::string& script) {
  std::string text;
  for (const Told& warning : run(script).warnings)
    text += (text.empty() ? "" : "|") + warning.name + ": " + warning.message;
  return text;
}

// ---- Every row

/// A script that brings about a warning, its sentence, and scripts beside it that bring about none.
struct Row {
  const char* name;
  const char* script;
  const char* message;
  std::vector<const char*> innocent;
};

const std::vector<Row>& rows() {
  static const std::vector<Row> all = {
      {"number-on-the-left",
       "a = xarange(3); 5 - a",
       "5 - a computes a - 5: with a number the array stands on the left; write a * -1 + 5",
       {"a = xarange(3); 5 + a; 5 * a; a - 5; a / 5; a > 5; a - a; xones(3) * 5 / a", "a = xarange(3) > 1; 5 - 3",
        "5 - 3.5 > 1", "a = xarange(3); a -= 5"}},
      {"number-on-the-left",
       "a = xarange(3); 3 / a",
       "3 / a computes a / 3: with a number the array stands on the left; write xones(3) * 3 / a",
       {}},
      {"number-on-the-left",
       "1 / (xones(2, 3) + 1)",
       "1 / (xones(2, 3) + 1) computes (xones(2, 3) + 1) / 1: with a number the array stands on the left; write "
       "xones(2, 3) * 1 / (xones(2, 3) + 1)",
       {}},
      {"number-on-the-left",
       "3 / xnorm(xarange(3))",
       "3 / xnorm(xarange(3)) computes xnorm(xarange(3)) / 3: with a number the array stands on the left; write 3 / "
       "xnorm(xarange(3))[0]",
       {"3 / xnorm(xarange(3))[0]"}},
      {"number-on-the-left",
       "i = xlinspace(1, 3, 3); 5 % i",
       "5 % i computes i % 5: with a number the array stands on the left; write (i * 0 + 5) % i",
       {"try\n5 % xones(3)\ncatch e\nend"}},
      {"number-on-the-left",
       "a = xarange(3); 5 > a",
       "5 > a computes a > 5: with a number the array stands on the left; write a < 5",
       {}},
      {"number-on-the-left",
       "a = xarange(3); 5 <= a",
       "5 <= a computes a <= 5: with a number the array stands on the left; write a >= 5",
       {}},
      {"number-on-the-left",
       "a = xarange(3); 2 + 3 - a",
       "2 + 3 - a computes a - (2 + 3): with a number the array stands on the left; write a * -1 + (2 + 3)",
       {}},
      {"number-on-the-left",
       "a = xarange(3); (2 + 3) * 2 / a",
       "(2 + 3) * 2 / a computes a / ((2 + 3) * 2): with a number the array stands on the left; write xones(3) * ((2 + "
       "3) * 2) / a",
       {}},
      {"number-on-the-left",
       "a = xarange(3); x = 5; x -= a",
       "x -= a computes a - x: with a number the array stands on the left; write x = a * -1 + x",
       {}},
      {"number-on-the-left",
       "a = xarange(3); t = [5]; t[0] -= a",
       "n - a computes a - n: with a number the array stands on the left; write a * -1 + n",
       {}},
      {"number-on-the-left",
       "a_very_long_name_of_an_array_of_doubles = xarange(3); 5 - a_very_long_name_of_an_array_of_doubles",
       "5 - a computes a - 5: with a number the array stands on the left; write a * -1 + 5",
       {}},
      {"fraction-of-a-number",
       "i = xlinspace(1, 3, 3); i * 2.9",
       "an int array reads 2.9 as 2, an integer; xminimum(i, i) makes doubles of it",
       {"i = xlinspace(1, 3, 3); i * 2.0; i + 2; 3.0 * i", "a = xarange(3); a * 2.9; 2.9 + a",
        "i = xlinspace(1, 3, 3); i /= 2.0"}},
      {"fraction-of-a-number",
       "0.5 + xlinspace(1L, 3, 3)",
       "an int64 array reads 0.5 as 0, an integer; as_double(a) of use \"arrays\" makes doubles of it",
       {}},
      {"remainder-of-doubles",
       "d = xones(3); d % d",
       "d % d gives nothing: doubles have no remainder; make integers of them with as_int(a) of use \"arrays\"",
       {"i = xlinspace(1, 3, 3); i % i; i % 2"}},
      {"remainder-of-doubles",
       "d = xones(3); d %= xlinspace(1, 3, 3)",
       "d %= xlinspace(1, 3, 3) changes nothing: doubles have no remainder; make integers of them with as_int(a) of "
       "use \"arrays\"",
       {}},
      {"bool-product",
       "m = xones(2) > 0; m * 2",
       "a bool array times a number gives nothing; as_int(m) of use \"arrays\" makes integers of it",
       {"m = xones(2) > 0; m *= 0", "a = xones(2); a * 2; 2 * a; a * a"}},
      {"bool-product",
       "m = xones(2) > 0; 2.5 * m",
       "a bool array times a number gives nothing; as_int(m) of use \"arrays\" makes integers of it",
       {}},
      {"fraction-of-an-element",
       "i = xlinspace(1, 3, 3); i[0] = 2.5",
       "an int array stores 2.5 as 2; make doubles of it first: a = xminimum(a, a)",
       {"i = xlinspace(1, 3, 3); i[0] = 2.0; i[1] = 2", "a = xarange(3); a[0] = 2.5",
        "m = xarange(3) > 1; m[0] = 0.5"}},
      {"fewer-indices",
       "m = xones(2, 3); m[1]",
       "[1] of an array of the shape (2, 3) is [0, 1]: indices count from the last dimension, and missing ones are 0; "
       "row(a, i) of use \"arrays\" gives a row",
       {"m = xones(2, 3); m[1, 2]; m[0, 1, 2]", "a = xones(3); a[1]", "m = xones(1, 3); m[1]; m[1] = 2",
        "xnorm(xones(2))[0]"}},
      {"fewer-indices",
       "m = xones(4, 2, 3); m[1, 2] = 5",
       "[1, 2] of an array of the shape (4, 2, 3) is [0, 1, 2]: indices count from the last dimension, and missing "
       "ones are 0; row(a, i) of use \"arrays\" gives a row",
       {}},
      {"value-of-reshape",
       "a = xones(4); b = a.reshape(2, 2)",
       "reshape changes the array itself and gives nothing; write a.reshape(...) on a line of its own and then use a",
       {"a = xones(4); a.reshape(2, 2)", "a = xones(4); print(a.shape())",
        "fn f(a)\n a.reshape(2, 2)\n return a\nend\nf(xones(4))"}},
      {"value-of-reshape",
       "fn f(a)\n return a.reshape(2, 2)\nend\nf(xones(4))",
       "reshape changes the array itself and gives nothing; write a.reshape(...) on a line of its own and then use a",
       {}},
      {"value-of-reshape",
       "a = xones(4); print(a.reshape(2, 2))",
       "reshape changes the array itself and gives nothing; write a.reshape(...) on a line of its own and then use a",
       {}},
      {"value-of-shuffle",
       "a = xones(4); b = xshuffle(a)",
       "xshuffle changes a itself and gives 0; write xshuffle(a) on a line of its own and then use a",
       {"a = xones(4); xshuffle(a)"}},
      {"integer-spacing",
       "xlinspace(0, 1, 5)",
       "xlinspace(0, 1, 5) gives integers, which lose their fractions: the kind is that of its start; write "
       "xlinspace(0.0, 1, 5)",
       {"xlinspace(0, 4, 5); xlinspace(0, 1, 2); xlinspace(0, 1, 1); xlinspace(0, 1, 0); xlinspace(0, 49)",
        "xlinspace(0.0, 1, 5)", "xlinspace(4L, 0, 3)", "xlinspace(5, 5, 100)", "xlinspace(0, 0.5, 1)"}},
      {"integer-spacing",
       "x = 0; xlinspace(x, 1)",
       "xlinspace(x, 1) gives integers, which lose their fractions: the kind is that of its start; write xlinspace(x * "
       "1.0, 1)",
       {}},
      {"integer-spacing",
       "xlinspace(0L, 2.5, 3)",
       "xlinspace(0L, 2.5, 3) gives integers, which lose their fractions: the kind is that of its start; write "
       "xlinspace(0.0, 2.5, 3)",
       {}},
      {"integer-spacing",
       "xlinspace(1 + 1, 3, 5)",
       "xlinspace(1 + 1, 3, 5) gives integers, which lose their fractions: the kind is that of its start; give a real "
       "as its start",
       {}},
      {"integer-powers",
       "xlogspace(-5, 5, 5)",
       "xlogspace(-5, 5, 5) gives integers, which do not hold these powers: the kind is that of its start; write "
       "xlogspace(-5.0, 5, 5)",
       {"xlogspace(0, 4, 5)", "xlogspace(0.0, 1, 5)", "xlogspace(0L, 18, 19)", "xlogspace(0, 9, 10)"}},
      {"integer-powers",
       "xlogspace(0, 10, 11)",
       "xlogspace(0, 10, 11) gives integers, which do not hold these powers: the kind is that of its start; write "
       "xlogspace(0.0, 10, 11)",
       {}},
      {"integer-range",
       "xarange(0, 2.5)",
       "xarange reads 2.5 as 2: it counts in integers; for fractions use xlinspace(start, stop, count)",
       {"xarange(0, 2.0)", "xarange(3)", "xarange(0, 10, 5)"}},
      {"empty-range",
       "xarange(0, 2, 3)",
       "xarange(0, 2, 3) has no elements: with a step beyond the whole range even the start is left out; give a step "
       "of 2",
       {"xarange(0, 3, 3)", "xarange(0, -3, 1)", "xarange(5, 5, 1)", "xarange(3, 0, -3)"}},
      {"empty-range",
       "xarange(2, 0, -3)",
       "xarange(2, 0, -3) has no elements: with a step beyond the whole range even the start is left out; give a step "
       "of -2",
       {}},
      {"fraction-of-an-argument",
       "xzeros(2.5, 2)",
       "xzeros reads 2.5 as 2: it takes an integer here; give one",
       {"xzeros(2.0)", "xzeros(2, 3)", "xhistogram(xarange(3), 2)"}},
      {"largest-of-doubles",
       "a = xarray(@double, [-3, -1]); xamax(a)",
       "xamax gives 2.2250738585072014e-308 of doubles without an element above it; write -xamin(-a)",
       {"xamax(xarray(@double, [-3, 1]))", "xamax(xarray(@int, [-3, -1]))", "xamin(xarray(@double, [-3, -1]))"}},
      {"largest-of-int64",
       "a = xarray(@int64, [3, 1]); xamax(a)",
       "xamax gives the smallest element of an int64 array; write -xamin(-a)",
       {"xamax(xarray(@int64, [3]))", "xamin(xarray(@int64, [3, 1]))"}},
      {"kind-of-product",
       "i = xarray(@int, [1, 2]); d = xones(2) / 2; xdot(i, d)",
       "xdot gives an int array, the kind of its first argument, and drops all fractions; write xdot(xminimum(i, i), "
       "d)",
       {"i = xarray(@int, [1, 2]); d = xones(2); xdot(d, i); xdot(i, i); xdot(d, d); xvdot(d, i)"}},
      {"kind-of-product",
       "xkron(xarray(@int64, [1, 2]), xones(2))",
       "xkron gives an int64 array, the kind of its first argument, and drops all fractions; write "
       "xkron(xminimum(i, i), xones(2))",
       {}},
      {"column",
       "c = xarange(1, 6); c.reshape(5, 1); xsum(c)",
       "xsum of a column (5, 1) counts the first element in place of the last 1 of 5; give it one dimension first: "
       "c.reshape(5)",
       {"c = xarange(1, 6); xsum(c)", "c = xarange(1, 5); c.reshape(4, 1); xsum(c)", "xsum(xones(1, 1))",
        "xsum(xones(1, 5))", "c = xarange(1, 6); c.reshape(5, 1); c.reshape(5); xsum(c)",
        "c = xones(5, 1); xmean(c); xprod(c); xmedian(c)", "c = xones(5, 1); xsum(xdot(xones(3, 5), xones(5)))",
        "xsum(xarray(@int, [[1, 2], [3, 4], [5, 6]]))"}},
      {"column",
       "xamax(xones(7, 1) + 1)",
       "xamax of a column (7, 1) counts the first element in place of the last 3 of 7; give it one dimension first: "
       "a.reshape(7)",
       {}},
      {"column",
       "c = xarray(@int, [[1], [2], [3]]); xamin(c)",
       "xamin of a column (3, 1) counts the first element in place of the last 3 of 3; give it one dimension first: "
       "c.reshape(3)",
       {}},
      {"column",
       "c = xarray(@double, @[[1.0], [2.0], [3.0]]); xsum(xsqrt(c))",
       "xsum of a column (3, 1) counts the first element in place of the last 3 of 3; give it one dimension first: "
       "a.reshape(3)",
       {}},
      {"column",
       "n = 1; c = xarray(@double(5, n)); xsort(-c)",
       "xsort of a column (5, 1) sorts nothing, since each row has one element; give it one dimension first: "
       "a.reshape(5)",
       {"n = 5; c = xarray(@double(5, n)); xsort(c)"}},
      {"column",
       "c = xones(5, 1); xhistogram(c, 2)",
       "xhistogram of a column (5, 1) counts the first element alone, 5 times; give it one dimension first: "
       "c.reshape(5)",
       {}},
      {"column",
       "xsum(xdiff(xones(6, 2)))",
       "xsum of a column (6, 1) counts the first element in place of the last 2 of 6; give it one dimension first: "
       "a.reshape(6)",
       {"xsum(xdiff(xones(6)))", "xsum(xdiff(xones(6, 3)))"}},
      {"column",
       "c = xones(1); c += xones(5, 1); xsum(c)",
       "xsum of a column (5, 1) counts the first element in place of the last 1 of 5; give it one dimension first: "
       "c.reshape(5)",
       {}},
      {"column",
       "t = xsvd(xones(5, 1)); xsum(xqr(xones(5, 1))[0])",
       "xsum of a column (5, 1) counts the first element in place of the last 1 of 5; give it one dimension first: "
       "a.reshape(5)",
       {}},
      {"computes-nothing",
       "xpow(xones(2), 2)",
       "xpow gives nothing, whatever its arguments are; power(a, p) of use \"arrays\" raises elements to a power",
       {"xsquare(xones(2))"}},
      {"computes-nothing",
       "xpermutation(xones(2))",
       "xpermutation gives 0 and no permuted array, whatever its arguments are; write c = a + 0 and then xshuffle(c), "
       "or permutation(n) of use \"arrays\"",
       {}},
      {"computes-nothing",
       "xeig(xeye(2))",
       "xeig gives an empty table, whatever its arguments are; for a symmetric matrix write xeigh(a)",
       {"xeigh(xeye(2)); xeigvalsh(xeye(2))"}},
      {"values-for-positions",
       "xargpartition(xones(2), 1)",
       "xargpartition gives values, not positions; argpartition(a, k) of use \"arrays\" and xargsort(a) give positions",
       {"xargsort(xones(2)); xpartition(xones(2), 1)"}},
      {"unused-argument",
       "m = xones(2, 3); xsum(m, 0)",
       "xsum takes 1 argument and does not look at 0: there is no axis; sum_rows(m) and sum_columns(m) of use "
       "\"arrays\" sum rows and columns",
       {"xsum(xones(2, 3))", "xlinspace(0.0, 1, 3)", "xzeros(1, 2, 3, 4)", "xprod(xones(2), 0)"}},
      {"unused-argument",
       "xsort(xones(2, 3), 0)",
       "xsort takes 1 argument and does not look at 0: there is no axis, and each row is sorted; transpose(a) of use "
       "\"arrays\" makes rows of columns",
       {}},
      {"unused-argument",
       "xstddev(xones(3), 1)",
       "xstddev takes 1 argument and does not look at 1: there is no axis and no degree of freedom; for a "
       "sample of n multiply by sqrt(n / (n - 1.0))",
       {}},
      {"unused-argument",
       "xtrapz(xones(3), 0.1)",
       "xtrapz takes 1 argument and does not look at 0.1: there is no spacing; multiply the result by it",
       {}},
      {"unused-argument", "xabs(xones(3), 1, 2)", "xabs takes 1 argument and does not look at 1: leave it out", {}},
      {"data-that-end-early",
       "a = xones(2); xarray(@double, [a, a])",
       "xarray stops reading its data at a double array; stack(rows) of use \"arrays\" makes a matrix of arrays",
       {"xarray(@double, [1, 2.5, 3L])", "xarray(@double, [])", "xarray(@double, [[]])",
        "xarray(@int, [[[1, 2]], [[3, 4]]])"}},
      {"data-that-end-early",
       "xarray(@double, [1, \"x\", 3])",
       "xarray stops reading its data at the string \"x\"; make numbers of all entries first",
       {}},
      {"data-that-end-early",
       "xarray(@int, [[1, 2], [3, nil]])",
       "xarray stops reading its data at nil; make numbers of all entries first",
       {}},
      {"ragged-rows",
       "xarray(@double, [[1, 2], [3]])",
       "the data have rows of 2 and 1: xarray takes the shape of the last ones, cuts elements off or adds zeros; make "
       "all rows of one length",
       {"xarray(@double, [[1, 2], [3, 4]])"}},
      {"ragged-rows",
       "xarray(@double, [1, [2, 3]])",
       "the data have a row and a number: xarray takes the shape of the last ones, cuts elements off or adds zeros; "
       "make all rows of one length",
       {}},
      {"ragged-rows",
       "xarray(@double, [[1, 2], [[3], [4]]])",
       "the data have rows of numbers and of rows: xarray takes the shape of the last ones, cuts elements off or adds "
       "zeros; make all rows of one length",
       {}},
      {"named-entries",
       "xarray(@int, [\"a\": 1, \"b\": 2])",
       "xarray passes over entries under names, and there are no others: the first is under \"a\"; give entries "
       "without "
       "names",
       {"xarray(@int, [1, 2, \"unit\": \"m\"])"}},
      {"dropped-element",
       "xarray(@double, @[[1.0, 2.0], [3.0]])",
       "the data literal has rows of 2 and 1: xarray drops elements or adds zeros; make all rows of one length",
       {"xarray(@double, @[[1.0, 2.0], [3.0, 4.0]])", "xarray(@double, @[[[1.0], [2.0]], [[3.0], [4.0]]])"}},
      {"dropped-element",
       "xarray(@double, @[1, 2.5])",
       "a data literal of reals drops the integer 1; write 1.0 or use a table",
       {"xarray(@double, @[1.0, 2.5])", "xarray(@int, @[1, 2])", "x = 1; xarray(@int, @[x, 2])",
        "xarray(@double, [1, 2])"}},
      {"dropped-element", "xarray(@int, @[1, 2.5])", "a data literal of the kind int drops 2.5; use a table", {}},
      {"dropped-element", "xarray(@int64, @[1, 2])", "a data literal of the kind int64 drops 1; use a table", {}},
      {"dropped-element",
       "xarray(@double, @[1.0, \"s\"])",
       "a data literal of the kind double drops \"s\"; use a table",
       {}},
      {"dtype-that-is-a-variable",
       "double = 3; xarray(@double, [1, 2])",
       "'double' is a variable here, and @double its value instead of a kind: xarray gives nothing; give the variable "
       "another name",
       {"doubles = 3; xarray(@double, [1, 2])", "double = 3; xarray(@double(2))"}},
      {"dtype-that-is-a-variable",
       "fn f(int)\n xarray(@int, [1, 2])\nend\nf(3)",
       "'int' is a variable here, and @int its value instead of a kind: xarray gives nothing; give the variable "
       "another "
       "name",
       {"fn f(int)\n return int\nend\nf(3); xarray(@int, [1, 2])"}},
      {"float-dtype",
       "xarray(@float, [1, 2])",
       "xarray gives nothing for the kind float, of which there are no arrays; write @double",
       {}},
      {"unknown-dtype",
       "xarray(@real, [1, 2])",
       "xarray gives nothing, since 'real' is no kind of array; write @int, @int64, @double or @bool",
       {"xarray(@bool, [1, 2]); xarray(@int64, [1])"}},
      {"data-that-are-no-table",
       "a = xones(2); xarray(@double, a)",
       "xarray gives nothing for a double array, since its data are a table or a data literal; a + 0 copies it",
       {"a = [1, 2]; xarray(@double, a)"}},
      {"data-that-are-no-table",
       "xarray(@double, xlinspace(1, 3, 3))",
       "xarray gives nothing for an int array, since its data are a table or a data literal; xminimum(a, a) makes "
       "doubles of it",
       {}},
      {"data-that-are-no-table",
       "xarray(@double, 5)",
       "xarray gives nothing for an int, since its data are a table or a data literal; write a table of numbers",
       {}},
      {"bool-array",
       "a = xarange(5); xsum(a > 3)",
       "xsum gives nothing for a bool array; count(a > 3) of use \"arrays\" counts its true elements",
       {"a = xarange(5); xsum(a)", "a = xarange(5); m = a > 3; m[0]; print(m)"}},
      {"bool-array",
       "m = xarange(5) > 3; xsort(m)",
       "xsort gives nothing for a bool array; as_double(m) of use \"arrays\" makes 0.0 and 1.0 of its elements",
       {}},
      {"bool-array",
       "xsqrt(xarange(5) > 3)",
       "xsqrt gives nothing for a bool array; as_double(xarange(5) > 3) of use \"arrays\" makes 0.0 and 1.0 of its "
       "elements",
       {}},
      {"two-kinds",
       "i = xlinspace(1, 3, 3); xmaximum(i, xones(3))",
       "xmaximum gives nothing for arrays of two kinds, int and double; make one kind of them: xminimum(i, i) has the "
       "elements of i as doubles",
       {"i = xlinspace(1, 3, 3); xmaximum(i, i); xminimum(xones(2), xones(2))"}},
      {"integers-without-result",
       "i = xlinspace(1, 3, 3); xsign(i)",
       "xsign gives nothing for an int array; write xsign(xminimum(i, i))",
       {"xsign(xones(3))"}},
      {"no-diagonal",
       "xtrace(xones(3))",
       "xtrace gives nothing for an array of fewer than two dimensions, which has no diagonal; give a matrix",
       {"xtrace(xones(3, 3))", "xtrace(xeye(2))"}},
  };
  return all;
}

TEST(WarningRows, BringAboutTheirSentence) {
  for (const Row& row : rows()) EXPECT_EQ(told(row.script), std::string(row.name) + ": " + row.message) << row.script;
}

TEST(WarningRows, AreSilentAboutInnocentNeighbours) {
  for (const Row& row : rows())
    for (const char* script : row.innocent) EXPECT_EQ(told(script), "") << script;
}

TEST(WarningRows, HaveATestEach_AndNamesOfTheirOwn) {
  std::set<std::string_view> tested, named;
  for (const Row& row : rows()) tested.insert(row.name);
  for (const WarningRow& row : warning_table()) {
    EXPECT_TRUE(named.insert(row.name).second) << row.name;
    EXPECT_EQ(tested.count(row.name), 1u) << row.name;
  }
  EXPECT_EQ(tested, named);
  EXPECT_LE(named.size(), 64u) << "a row is a bit of 64";
}

/// The headings of a page, as links name them.
std::set<std::string> sections_of(const std::string& path) {
  std::set<std::string> sections;
  std::ifstream file(path);
  EXPECT_TRUE(file.is_open()) << path;
  for (std::string line; std::getline(file, line);) {
    if (line.compare(0, 3, "## ") != 0) continue;
    std::string section = line.substr(3);
    for (char& c : section) c = c == ' ' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    sections.insert(section);
  }
  return sections;
}

TEST(WarningRows, LeadToASectionThatIsThere) {
  for (const Row& row : rows()) {
    const ToldRun result = run(row.script);
    ASSERT_EQ(result.warnings.size(), 1u) << row.script;
    const std::string& report = result.warnings[0].report;
    const std::size_t at = report.find("  page: ");
    ASSERT_NE(at, std::string::npos) << report;
    const std::string page = report.substr(at + 8, report.find('\n', at) - at - 8);
    const std::size_t mark = page.find('#');
    EXPECT_EQ(sections_of(SOURCE_DIR "/" + page.substr(0, mark)).count(page.substr(mark + 1)), 1u) << page;
  }
}

TEST(WarningRows, ChangeNoOutput) {
  for (const Row& row : rows()) {
    const std::string script = std::string(row.script) + "\nprint(1)";
    EXPECT_EQ(run(script, WarningMode::on).output, run(script, WarningMode::off).output) << script;
  }
}

// ---- How warnings are told

TEST(Warnings, HaveALineACaretAPageAndAWayBack) {
  const ToldRun result = run("a = xarange(3)\n  b = 5 - a");
  ASSERT_EQ(result.warnings.size(), 1u);
  EXPECT_EQ(result.warnings[0].report,
            "test.hvm:2:9: warning: 5 - a computes a - 5: with a number the array stands on the left; write a * -1 + "
            "5\n      b = 5 - a\n            ^\n  page: docs/functions/operator-subtract.md#result\n"
            "  allow: # allow: number-on-the-left\n");
}

TEST(Warnings, ComeOnceALine) {
  EXPECT_EQ(run("a = xarange(3)\nfor k in range(9)\n5 - a\nend").warnings.size(), 1u);
  EXPECT_EQ(run("a = xarange(3); 5 - a; 6 - a").warnings.size(), 1u);
  EXPECT_EQ(run("a = xarange(3)\n5 - a\n6 - a").warnings.size(), 2u);
  EXPECT_EQ(run("a = xarange(3); 5 - a; xpow(a, 2)").warnings.size(), 2u) << "two warnings on a line";
  EXPECT_EQ(run("a = xarange(3)\nfn f(a)\nreturn 5 - a\nend\nf(a)\nf(a)").warnings.size(), 1u);
}

TEST(Warnings, OfManyPlaces_ComeForEach) {
  std::string script = "a = xarange(3)\nfor k in range(3)\n";
  for (int i = 0; i < 500; ++i) script += "5 - a\n";
  EXPECT_EQ(run(script + "end").warnings.size(), 500u);
}

TEST(Warnings, AreTakenBackByACommentOnTheirLine) {
  const auto count = [](const std::string& comment) {
    return run("a = xarange(3)\n5 - a " + comment + "\n").warnings.size();
  };
  EXPECT_EQ(count("# allow: number-on-the-left"), 0u);
  EXPECT_EQ(count("# allow: column, number-on-the-left"), 0u);
  EXPECT_EQ(count("# expect: 5  # allow: column number-on-the-left # why"), 0u);
  EXPECT_EQ(count("# allow: column  # allow: number-on-the-left"), 0u);
  EXPECT_EQ(count("# allow: column"), 1u);
  EXPECT_EQ(count("# number-on-the-left"), 1u);
  EXPECT_EQ(count("# allow: number-on-the-left-side"), 1u);
  EXPECT_EQ(count("; \"# allow: number-on-the-left\""), 1u) << "a string is no comment";
  EXPECT_EQ(run("# allow: number-on-the-left\na = xarange(3)\n5 - a").warnings.size(), 1u) << "another line";
  EXPECT_EQ(run("a = xarange(3)\n5 - a # allow: number-on-the-left\n6 - a").warnings.size(), 1u);
}

TEST(Warnings, SwitchedOff_AreNotLookedFor) {
  for (const Row& row : rows()) EXPECT_TRUE(run(row.script, WarningMode::off).warnings.empty()) << row.script;
}

TEST(Warnings, AsErrors_AreCaughtAtTheirPlace) {
  for (const Row& row : rows())
    EXPECT_EQ(run(row.script, WarningMode::error).output, std::string("!") + row.message) << row.script;
  const ToldRun caught =
      run("a = xarange(3)\nfor k in range(2)\ntry\n5 - a\ncatch e\nprint(e)\nend\nend", WarningMode::error);
  const std::string words = "5 - a computes a - 5: with a number the array stands on the left; write a * -1 + 5";
  EXPECT_EQ(caught.output, words + "|" + words) << "as often as its cause";
  EXPECT_EQ(run("a = xarange(3)\n5 - a # allow: number-on-the-left\nprint(1)", WarningMode::error).output, "1");
}

TEST(Warnings, AsErrors_NameTheLine) {
  InterpreterOptions options;
  options.warnings = WarningMode::error;
  Interpreter interpreter(arrays(), options);
  try {
    interpreter.run(interpreter.parse(std::make_shared<SourceText>("test.hvm", "a = xarange(3)\nb = 5 - a")));
    FAIL() << "there was no error";
  } catch (const ScriptError& error) {
    EXPECT_EQ(error.line(), 2u);
    EXPECT_THAT(error.report(), HasSubstr("test.hvm:2:7: error: 5 - a computes a - 5"));
    EXPECT_THAT(error.report(), HasSubstr("  page: docs/functions/operator-subtract.md#result\n"
                                          "  allow: # allow: number-on-the-left\n"));
  }
}

TEST(Warnings, OfWhatALibraryDoes_DoNotCome) {
  const std::string script = "a = xarange(3); 5 - a; xpow(a, 2); a.reshape(3, 1); xsum(a); b = xshuffle(a)";
  EXPECT_EQ(run(script).warnings.size(), 4u);
  EXPECT_TRUE(run(script, WarningMode::on, Origin::library).warnings.empty());
  EXPECT_EQ(run(script + "; print(1)", WarningMode::error, Origin::library).output, "1");
}

TEST(Warnings, OfColumnsThatALibraryMade_ComeInTheScript) {
  ToldRun result;
  InterpreterOptions options;
  options.warn = [&](const Warning& warning) { result.output += warning.message; };
  Interpreter interpreter(arrays(), options);
  interpreter.run(interpreter.parse(
      std::make_shared<SourceText>("library.hvm", "fn made()\nreturn xones(3, 1)\nend", Origin::library)));
  interpreter.run(interpreter.parse(std::make_shared<SourceText>("test.hvm", "xsum(made())")));
  EXPECT_THAT(result.output, HasSubstr("xsum of a column (3, 1)"));
}

TEST(Warnings, OfAnotherModule_DoNotCome) {
  ModuleFunctions without_xarray;
  for (const std::string& name : arrays().names())
    if (name != "xarray") without_xarray.add(name, arrays().find(name));
  const ToldRun result = run("a = xarange(3); 5 - a; xpow(a, 2)", WarningMode::error, Origin::script, without_xarray);
  EXPECT_EQ(result.output, "");
  EXPECT_TRUE(result.warnings.empty());
}

TEST(Warnings, OfReplacedSources_ComeForEachInput) {
  int warnings = 0;
  InterpreterOptions options;
  options.warn = [&](const Warning&) { ++warnings; };
  Interpreter interpreter(arrays(), options);
  for (int i = 0; i < 50; ++i)
    interpreter.run(interpreter.parse(std::make_shared<SourceText>("<input>", "a = xarange(3); 5 - a")));
  EXPECT_EQ(warnings, 50);
}

// ---- Hostile scripts

TEST(Warnings, OfAnyArguments_DoNotCrash) {
  const std::vector<std::string> values = {"nil",
                                           "1",
                                           "-1",
                                           "2.5",
                                           "1e308",
                                           "0.0 / 0",
                                           "1.0 / 0",
                                           "5L",
                                           "-9223372036854775808L",
                                           "\"s\"",
                                           "w\"w\"",
                                           "[]",
                                           "[[1], [2]]",
                                           "[\"a\": 1]",
                                           "@x",
                                           "@double",
                                           "@[1, 2.5]",
                                           "@double(2, 1)",
                                           "xones(3)",
                                           "xones(3, 1)",
                                           "xlinspace(1, 3, 3)",
                                           "xones(3) > 0",
                                           "xarray(@int64, [3, 1])",
                                           "xzeros(0)",
                                           "xzeros(0, 1)",
                                           "xnorm(xones(2))"};
  int calls = 0;
  for (const std::string& name : arrays().names()) {
    if (name == "xarange" || name.compare(0, 5, "xrand") == 0) continue;
    for (const std::string& first : values) {
      const bool is_extent = name == "xzeros" || name == "xones" || name == "xempty" || name == "xeye" ||
                             name == "xlinspace" || name == "xlogspace" || name == "xhistogram";
      for (const std::string& second : values) {
        if (is_extent &&
            (first == "1e308" || second == "1e308" || first == "1.0 / 0" || second == "1.0 / 0" || second == "5L"))
          continue;
        const std::string call = name + "(" + first + ", " + second + ")";
        run("try\nx = " + call + "\ncatch e\nend");
        ++calls;
      }
    }
  }
  EXPECT_GT(calls, 10000);
}

TEST(Warnings, OfTablesSharedManyTimesOver_EndSoon) {
  // The module reads 0 of 2^40 rows, since the table below is a row of nil.
  EXPECT_THAT(told("t = [nil]\nfor k in range(40)\nt = [t, t]\nend\nxarray(@double, t)"), HasSubstr("at nil"));
  EXPECT_THAT(told("t = [1, 2]\nfor k in range(10)\nt = [t, t]\nend\nxarray(@double, [t, 1])"), HasSubstr("ragged"));
  EXPECT_EQ(told("t = [1]\nfor k in range(2000)\nt = [t]\nend\na = xarray(@double, t)"), "");
}

TEST(Warnings, OfHugeAndOddNumbers_AreQuiet) {
  EXPECT_EQ(told("xlinspace(-9223372036854775807L, 9223372036854775807L, 3)"), "");
  EXPECT_EQ(told("xarange(2147483647, -2147483647, 1)"), "");
  EXPECT_EQ(told("a = xones(2); a * (0.0 / 0); a + 1.0 / 0; a[0] = 0.0 / 0"), "");
  EXPECT_THAT(told("i = xlinspace(1, 2, 2); i * (0.0 / 0)"), HasSubstr("reads nan as "));
}

TEST(Warnings, OfLongLines_KeepTheirSentencesShort) {
  std::string sum = "1";
  for (int i = 0; i < 5000; ++i) sum += " + 1";
  const ToldRun result = run("a = xarange(3); (" + sum + ") - a; " + sum + " - a");
  ASSERT_EQ(result.warnings.size(), 1u);
  EXPECT_EQ(result.warnings[0].message,
            "n - a computes a - n: with a number the array stands on the left; write a * -1 + n");
}

TEST(Warnings, ForgetAColumnWhoseAddressIsUsedAgain) {
  EXPECT_EQ(told("for k in range(1000)\nc = xones(5, 1)\nc = nil\nv = xones(5)\nxsum(v)\nend"), "");
  EXPECT_EQ(told("for k in range(5000)\nc = xones(4, 1)\nxsum(c)\nend"), "");
}

}  // namespace
}  // namespace hvm::testing
