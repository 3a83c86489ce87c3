// refhost/script/explain/reduction_rows.cpp: warnings about reductions and products

#include "explain/warning_rows.hpp"

namespace hvm::testing {

const std::vector<WarnedScript>& reduction_rows() {
  static const std::vector<WarnedScript> rows = {
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
       {"n = 5; c = xarray(@double(5, n)); x = xsort(c)"}},
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
      {"unused-argument",
       "m = xones(2, 3); xsum(m, 0)",
       "xsum takes 1 argument and ignores 0: there is no axis argument; sum_rows(m) and sum_columns(m) of use "
       "\"arrays\" sum rows and columns",
       {"xsum(xones(2, 3))", "xlinspace(0.0, 1, 3)", "xzeros(1, 2, 3, 4)", "xprod(xones(2), 0)"}},
      {"unused-argument",
       "xsort(xones(2, 3), 0)",
       "xsort takes 1 argument and ignores 0: there is no axis argument, and each row is sorted; transpose(a) of use "
       "\"arrays\" makes rows of columns",
       {}},
      {"unused-argument",
       "xstddev(xones(3), 1)",
       "xstddev takes 1 argument and ignores 1: there is no axis argument and no degree of freedom; for a "
       "sample of n multiply by sqrt(n / (n - 1.0))",
       {}},
      {"unused-argument",
       "xtrapz(xones(3), 0.1)",
       "xtrapz takes 1 argument and ignores 0.1: there is no spacing; multiply the result by it",
       {}},
      {"unused-argument", "xabs(xones(3), 1, 2)", "xabs takes 1 argument and ignores 1: leave it out", {}},
  };
  return rows;
}

}  // namespace hvm::testing
