// refhost/script/explain/result_rows.cpp: warnings about functions without a result

#include "explain/warning_rows.hpp"

namespace hvm::testing {

const std::vector<WarnedScript>& result_rows() {
  static const std::vector<WarnedScript> rows = {
      {"unused-order",
       "a = xones(3)\nxsort(a)",
       "xsort gives a new array and does not change a; write a = xsort(a)",
       {"a = xones(3); b = xsort(a); print(xunique(a))", "fn f(a)\n return xsort(a)\nend\nf(xones(2))",
        "a = xones(3); xshuffle(a); xabs(a)", "xsort(xones(3)); t = [xones(2)]; xsort(t[0])"}},
      {"unused-order",
       "a = xones(3)\nfn f(a)\n xpartition(a, 1)\nend\nf(a)",
       "xpartition gives a new array and does not change a; write a = xpartition(a, 1)",
       {}},
      {"rows-beyond-the-matrix",
       "b = xones(3); xsolve(xeye(2), b)",
       "xsolve solves for 2 of 3 rows and leaves the last ones of b as they are; give 2 rows",
       {"b = xones(2); xsolve(xeye(2), b); xsolve(xeye(2), xones(2, 5))"}},
      {"rows-beyond-the-matrix",
       "xsolve(xeye(2), xones(5, 2))",
       "xsolve solves for 2 of 5 rows and leaves the last ones of b as they are; give 2 rows",
       {}},
      {"order-with-nan",
       "a = xarray(@double, [2, 0.0 / 0, 1]); b = xsort(a)",
       "xsort gives no defined order, since a holds NaN; mask(a, xisnan(a) < 1) of use \"arrays\" leaves "
       "NaN out",
       {"a = xarray(@double, [2, 0.0 / 0, 1]); use \"arrays\"; b = xsort(mask(a, xisnan(a) < 1))",
        "b = xsort(xarray(@double, [1 / 0.0, -1 / 0.0, 2]))", "b = xsort(xones(0)); c = xsort(xarray(@int, [2, 1]))"}},
      {"order-with-nan",
       "a = xarray(@double, [[1, 2], [3, 1]]); a[1, 1] = 0.0 / 0; m = xmedian(a)",
       "xmedian gives no defined number, since a holds NaN; mask(a, xisnan(a) < 1) of use \"arrays\" leaves "
       "NaN out",
       {"m = xmedian(xones(2)); m = xmean(xones(2) * (0.0 / 0))"}},
      {"position-with-nan",
       "a = xarray(@double, [0.0 / 0, 1, 2]); i = xargmax(a)",
       "xargmax gives 0, since the first element is NaN; mask(a, xisnan(a) < 1) of use \"arrays\" leaves NaN out",
       {"i = xargmax(xarray(@double, [1, 0.0 / 0, 2]))", "i = xargmax(xarray(@double, [0.0 / 0]))",
        "i = xargmin(xarray(@int, [1, 0]))"}},
      {"value-of-shuffle",
       "a = xones(4); b = xshuffle(a)",
       "xshuffle changes a itself and gives 0; write xshuffle(a) on a line of its own and then use a",
       {"a = xones(4); xshuffle(a)"}},
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
      {"two-kinds",
       "j = xlinspace(1L, 3, 3); d = xones(3); xminimum(d, j)",
       "xminimum gives nothing for arrays of two kinds, double and int64; make one kind of them: xminimum(j, j) has "
       "the elements of j as doubles",
       {}},
      {"integers-without-result",
       "i = xlinspace(1, 3, 3); xsign(i)",
       "xsign gives nothing for an int array; write xsign(xminimum(i, i))",
       {"xsign(xones(3))"}},
      {"no-diagonal",
       "xtrace(xones(3))",
       "xtrace gives nothing for an array of fewer than two dimensions, which has no diagonal; give a matrix",
       {"xtrace(xones(3, 3))", "xtrace(xeye(2))"}},
  };
  return rows;
}

}  // namespace hvm::testing
