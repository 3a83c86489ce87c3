// script/explain/warning_table.cpp: every warning there is: its name, when it comes, what it says, and its page

#include "script/explain/warning_table.hpp"

#include "script/explain/creation_conditions.hpp"
#include "script/explain/data_conditions.hpp"
#include "script/explain/operator_conditions.hpp"
#include "script/explain/reduction_conditions.hpp"
#include "script/explain/result_conditions.hpp"

namespace hvm {
namespace {

constexpr std::string_view result_section = "docs/functions/NAME.md#result";
constexpr std::string_view arguments_section = "docs/functions/NAME.md#arguments";

}  // namespace

const std::vector<WarningRow>& warning_table() {
  static const std::vector<WarningRow> rows = {
      {"number-on-the-left", "n - a computes a - n: with a number the array stands on the left; write a * -1 + n",
       "docs/functions/operator-subtract.md#result", OperationCondition{number_on_the_left}},
      {"fraction-of-a-number", "a * 0.5 computes a * 0 where a has integers; xminimum(a, a) makes doubles of them",
       "docs/functions/operator-multiply.md#result", OperationCondition{fraction_of_a_number}},
      {"range-of-a-number", "i * 1e300 computes i * 2147483647 where i has ints; xminimum(i, i) makes doubles of them",
       "docs/functions/operator-multiply.md#result", OperationCondition{range_of_a_number}},
      {"remainder-of-doubles", "a % b of doubles gives nothing; as_int(a) of use \"arrays\" makes integers of them",
       "docs/functions/operator-remainder.md#result", OperationCondition{remainder_of_doubles}},
      {"bool-product", "m * 2 of a bool array gives nothing; as_int(m) of use \"arrays\" makes integers of it",
       "docs/functions/operator-multiply.md#result", OperationCondition{bool_product}},
      {"fraction-of-an-element", "a[i] = 2.5 stores 2 where a has integers; a = xminimum(a, a) makes doubles of them",
       "docs/functions/element-access.md#result", ElementCondition{fraction_of_an_element}},
      {"range-of-an-element",
       "a[i] = 1e300 stores 2147483647 where a has ints; a = xminimum(a, a) makes doubles of them",
       "docs/functions/element-access.md#result", ElementCondition{range_of_an_element}},
      {"fewer-indices", "m[i] of a matrix is m[0, i]; row(m, i) of use \"arrays\" gives a row",
       "docs/functions/element-access.md#arguments", ElementCondition{fewer_indices}},
      {"value-of-reshape", "a.reshape(...) changes a itself and gives nothing; write it on a line of its own",
       "docs/functions/method-reshape.md#result", MethodCondition{value_of_reshape}},
      {"value-of-shuffle", "xshuffle(a) changes a itself and gives 0; write it on a line of its own",
       "docs/functions/xshuffle.md#result", CallCondition{Sign::used_value, {"xshuffle"}, value_of_shuffle}},
      {"integer-spacing", "xlinspace(0, 1, 5) gives integers, which lose their fractions; write xlinspace(0.0, 1, 5)",
       "docs/functions/xlinspace.md#result", CallCondition{Sign::cut_integers, {"xlinspace"}, integer_spacing}},
      {"integer-powers",
       "xlogspace(-2, 2, 5) gives integers, which do not hold the powers; write xlogspace(-2.0, 2, 5)",
       "docs/functions/xlogspace.md#result", CallCondition{Sign::odd_powers, {"xlogspace"}, integer_powers}},
      {"integer-range", "xarange(0, 1.5) counts in integers; for fractions write xlinspace(start, stop, count)",
       "docs/functions/xarange.md#arguments", CallCondition{Sign::real_argument, {"xarange"}, integer_range}},
      {"empty-range", "xarange(0, 2, 3) has no elements; give a step that is not beyond the range",
       "docs/functions/xarange.md#result", CallCondition{Sign::three_arguments, {"xarange"}, empty_range}},
      {"draws-without-elements", "xrand(0, 1) has no elements: its arguments are extents; write xrand(n)",
       "docs/functions/NAME.md#arguments",
       CallCondition{Sign::zero_extent, {"xrand", "xrandn"}, draws_without_elements}},
      {"fraction-of-an-argument", "xzeros(2.5) reads 2; give an integer", arguments_section,
       CallCondition{Sign::real_argument,
                     {"xzeros", "xones", "xempty", "xrand", "xrandn", "xeye", "xhistogram", "xpartition"},
                     fraction_of_an_argument}},
      {"largest-of-doubles", "xamax(a) gives 2.2250738585072014e-308 without an element above it; write -xamin(-a)",
       "docs/functions/xamax.md#result", CallCondition{Sign::odd_extreme, {"xamax"}, largest_of_doubles}},
      {"largest-of-int64", "xamax(a) of int64 gives the smallest element; write -xamin(-a)",
       "docs/functions/xamax.md#result", CallCondition{Sign::odd_extreme, {"xamax"}, largest_of_int64}},
      {"kind-of-product", "xdot(i, d) of integers with doubles drops all fractions; write xdot(xminimum(i, i), d)",
       result_section, CallCondition{Sign::integer_array, {"xdot", "xvdot", "xouter", "xkron"}, kind_of_product}},
      {"rows-beyond-the-matrix", "xsolve(a, b) leaves rows of b beyond those of a as they are; give as many as a has",
       "docs/functions/xsolve.md#result", CallCondition{Sign::call, {"xsolve"}, rows_beyond_the_matrix}},
      {"column", "xsum(c) of a column counts the first element in place of the last ones; write c.reshape(n) first",
       result_section, CallCondition{Sign::column, functions_odd_on_columns(), column}},
      {"computes-nothing", "xpow and others give nothing, whatever their arguments are; the page names what does",
       result_section, CallCondition{Sign::call, functions_without_result(), nothing_computed}},
      {"values-for-positions", "xargpartition(a, k) gives values, not positions; write xargsort(a)",
       "docs/functions/xargpartition.md#result", CallCondition{Sign::call, {"xargpartition"}, values_for_positions}},
      {"unused-argument", "xsum(a, 0) ignores 0: there is no axis argument; sum_rows(a) of use \"arrays\" sums rows",
       arguments_section, CallCondition{Sign::more_arguments, {}, unused_argument}},
      {"data-that-end-early",
       "xarray(@double, [1, \"x\"]) stops at what is no number; stack(rows) of use \"arrays\" "
       "joins arrays",
       "docs/functions/xarray.md#result", CallCondition{Sign::table_data, {"xarray"}, data_that_ends_early}},
      {"ragged-rows", "xarray(@int, [[1, 2], [3]]) cuts elements off; make all rows of one length",
       "docs/functions/xarray.md#result", CallCondition{Sign::table_data, {"xarray"}, ragged_rows}},
      {"named-entries",
       "xarray(@int, [\"a\": 1]) skips entries under names, so that it is empty; give entries without names",
       "docs/functions/xarray.md#result", CallCondition{Sign::table_data, {"xarray"}, named_entries}},
      {"fraction-of-an-entry", "xarray(@int, [1.5]) stores 1; write xarray(@double, [1.5])",
       "docs/functions/xarray.md#result", CallCondition{Sign::table_data, {"xarray"}, fraction_of_an_entry}},
      {"range-of-an-entry", "xarray(@int, [1e300]) stores 2147483647; write xarray(@double, [1e300])",
       "docs/functions/xarray.md#result", CallCondition{Sign::table_data, {"xarray"}, range_of_an_entry}},
      {"extents-beside-data",
       "xarray(@double(2, 3), t) ignores 2 and 3; give rows, or write a.reshape(2, 3) on the next line",
       "docs/functions/xarray.md#arguments", CallCondition{Sign::data, {"xarray"}, extents_beside_data}},
      {"dropped-element", "xarray(@double, @[1, 2.5]) drops the integer; write 1.0 or use a table",
       "docs/functions/xarray.md#result", CallCondition{Sign::quoted_data, {"xarray"}, dropped_element}},
      {"dtype-that-is-a-variable", "with a variable double, xarray(@double, t) gives nothing; rename the variable",
       "docs/functions/xarray.md#result", CallCondition{Sign::nothing, {"xarray"}, dtype_that_is_a_variable}},
      {"float-dtype", "xarray(@float, t) gives nothing; write @double", "docs/functions/xarray.md#result",
       CallCondition{Sign::nothing, {"xarray"}, float_dtype}},
      {"unknown-dtype", "xarray(@real, t) gives nothing; write @int, @int64, @double or @bool",
       "docs/functions/xarray.md#result", CallCondition{Sign::nothing, {"xarray"}, unknown_dtype}},
      {"data-that-are-no-table", "xarray(@double, a) of an array gives nothing; a + 0 copies it",
       "docs/functions/xarray.md#result", CallCondition{Sign::nothing, {"xarray"}, data_that_are_no_table}},
      {"bool-array", "xsum(a > 3) of a bool array gives nothing; count(a > 3) of use \"arrays\" counts", result_section,
       CallCondition{Sign::nothing, {}, bool_array}},
      {"two-kinds", "xmaximum(i, d) of two kinds gives nothing; xminimum(i, i) makes doubles of integers",
       result_section, CallCondition{Sign::nothing, {"xmaximum", "xminimum"}, two_kinds}},
      {"integers-without-result", "xsign(i) of integers gives nothing; write xsign(xminimum(i, i))", result_section,
       CallCondition{Sign::nothing, {"xsign", "xcond"}, integers_without_result}},
      {"no-diagonal", "xtrace(v) of fewer than two dimensions gives nothing; give a matrix",
       "docs/functions/xtrace.md#result", CallCondition{Sign::nothing, {"xtrace"}, no_diagonal}},
      {"unused-order", "xsort(a) gives a new array and does not change a; write a = xsort(a)", result_section,
       CallCondition{Sign::unused_value, {"xsort", "xpartition", "xunique"}, unused_order}},
      {"order-with-nan",
       "xsort(a) with NaN in a has no defined order; mask(a, xisnan(a) < 1) of use \"arrays\" leaves NaN out",
       result_section, CallCondition{Sign::call, functions_that_order_elements(), order_with_nan}},
      {"position-with-nan",
       "xargmax(a) gives 0 where the first element is NaN; mask(a, xisnan(a) < 1) of use \"arrays\" leaves NaN out",
       result_section, CallCondition{Sign::call, {"xargmin", "xargmax"}, position_with_nan}},
  };
  return rows;
}

}  // namespace hvm
