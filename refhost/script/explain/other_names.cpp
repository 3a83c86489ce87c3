// script/explain/other_names.cpp: what the names of other languages and of NumPy are here

#include "script/explain/other_names.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace hvm {
namespace {

constexpr std::string_view end_to_end =
    "append the elements of both to a table t, and write xarray(@double, t); stack(arrays), after use \"arrays\", "
    "makes rows of them";

// Names that differ from ours by a leading x or by a letter or two are found without this table. Sorted by name.
constexpr OtherName other_functions[] = {
    {"False", "write false"},
    {"Infinity", "write 1.0 / 0"},
    {"Math", "write functions alone: sqrt(x)"},
    {"NaN", "write 0.0 / 0"},
    {"None", "write nil"},
    {"T", "write transpose(a), after use \"arrays\""},
    {"True", "write true"},
    {"absolute", "write abs(x) of a number, xabs(a) of an array"},
    {"all", "write count(m) == len(m) of a bool array, after use \"arrays\""},
    {"allclose", "write xsum(xabs(a - b)) < 1e-9"},
    {"any", "write count(m) > 0 of a bool array, after use \"arrays\""},
    {"arange", "write xarange(n)"},
    {"arccos", "write acos(x) of a number"},
    {"arcsin", "write asin(x) of a number"},
    {"arctan", "write atan(x) of a number"},
    {"arctan2", "write atan2(y, x)"},
    {"argwhere", "write where(m), after use \"arrays\""},
    {"asarray", "write xarray(@double, t)"},
    {"astype", "write as_double(a) or as_int(a), after use \"arrays\""},
    {"average", "write xmean(a)"},
    {"bool", "write @bool for the kind of an array, x != 0 of a number"},
    {"boolean", "write x != 0"},
    {"concat", end_to_end},
    {"concatenate", end_to_end},
    {"console", "write print(x)"},
    {"contains", "write has(t, key) of a table, find(s, part) != nil of a string"},
    {"convolve", "write moving_average(a, n) for equal weights, after use \"arrays\""},
    {"copy", "write a + 0, which is a new array"},
    {"dict", "write [\"key\": value], which is a table"},
    {"digitize", "write xdigitize(a, edges)"},
    {"dot", "write xdot(a, b)"},
    {"double", "write @double for the kind of an array, real(x) of a number"},
    {"dtype", "write type(a)"},
    {"dumps", "write to_json(x)"},
    {"echo", "write print(x)"},
    {"eig", "write xeigh(a) of a symmetric matrix"},
    {"eigvals", "write xeigvalsh(a) of a symmetric matrix"},
    {"enumerate", "write for i, x in t"},
    {"eval", "write the expression itself; a text is never run"},
    {"extend", "write append(t, x) for each value"},
    {"fabs", "write abs(x) of a number, xabs(a) of an array"},
    {"filter", "write mask(a, m) of an array, after use \"arrays\"; of a table, write a for loop"},
    {"flatnonzero", "write where(m), after use \"arrays\""},
    {"flatten", "write a.reshape(n) with the count of elements; it changes the array itself"},
    {"float", "write @double for the kind of an array, real(x) of a number, number(s) of a string"},
    {"float32", "write @double for the kind of an array"},
    {"float64", "write @double for the kind of an array"},
    {"floor_divide", "write a / b of integer arrays, which truncates"},
    {"fma", "write a * b + c"},
    {"full", "write xones(n) * value"},
    {"genfromtxt", "write read_csv_array(path)"},
    {"help", "see docs/language.md and docs/functions"},
    {"histogram_bin_edges", "write xhistogram_bin_edges(a, a)"},
    {"identity", "write xeye(n)"},
    {"import", "write use \"arrays\" for the library; functions of the module need nothing"},
    {"indexOf", "write find(s, part)"},
    {"inf", "write 1.0 / 0"},
    {"infinity", "write 1.0 / 0"},
    {"input", "write read_lines(\"-\"), which reads the standard input"},
    {"insert", "write append(t, x)"},
    {"int32", "write int(x) of a number, as_int(a) of an array after use \"arrays\""},
    {"interp", "write interpolate(x, xp, fp), after use \"arrays\""},
    {"isclose", "write abs(x - y) < 1e-9"},
    {"isfinite", "write xisfinite(a)"},
    {"isinf", "write xisinf(a)"},
    {"isinstance", "write type(x) == \"int\""},
    {"isnan", "write is_nan(x) of a number, xisnan(a) of an array"},
    {"item", "write a[0]"},
    {"json", "write parse_json(text) or to_json(x)"},
    {"kron", "write xkron(a, b)"},
    {"length", "write len(x)"},
    {"linalg", "write functions alone: xinv(a)"},
    {"list", "write values(t), or [1, 2] for a new table"},
    {"ln", "write log(x) of a number, xlog(a) of an array"},
    {"load", "write read_csv_array(path)"},
    {"loads", "write parse_json(text)"},
    {"loadtxt", "write read_csv_array(path)"},
    {"log2", "write log(x) / log(2)"},
    {"logical_not", "write a <= x in place of a > x; a bool array has no negation"},
    {"lstsq", "write xlstsq(a, b)"},
    {"map", "write a for loop"},
    {"math", "write functions alone: sqrt(x)"},
    {"matmul", "write xdot(a, b)"},
    {"matrix_power", "write xdot(a, a), as often as it takes"},
    {"max", "write xamax(a)"},
    {"maximum", "write xmaximum(a, b)"},
    {"min", "write xamin(a)"},
    {"minimum", "write xminimum(a, b)"},
    {"mod", "write a % b of integers"},
    {"nan", "write 0.0 / 0"},
    {"nanmean", "write xmean(mask(a, xisfinite(a))), after use \"arrays\""},
    {"ndim", "write len(a.shape())"},
    {"nonzero", "write where(m), after use \"arrays\""},
    {"normal", "write xrandn(n)"},
    {"now", "write clock()"},
    {"np", "write functions alone: xmean(a)"},
    {"null", "write nil"},
    {"numpy", "write functions alone: xmean(a)"},
    {"open", "write read_text(path) or read_csv(path), write_text(path, text) or write_csv(path, data)"},
    {"outer", "write xouter(a, b)"},
    {"partition", "write xpartition(a, k)"},
    {"percentile", "write quantile(a, p) with p from 0 to 1, after use \"arrays\""},
    {"pi", "write 3.141592653589793"},
    {"polyfit", "write xlstsq(a, b) with the powers in the columns of a"},
    {"pop", "write remove(t, key)"},
    {"pow", "write power(a, p), after use \"arrays\""},
    {"printf", "write print(format(pattern, x))"},
    {"println", "write print(x)"},
    {"push", "write append(t, x)"},
    {"puts", "write print(x)"},
    {"quit", "write exit()"},
    {"randint", "write choice(a, n) for draws from an array, after use \"arrays\""},
    {"random", "write xrand(n)"},
    {"ravel", "write a.reshape(n) with the count of elements; it changes the array itself"},
    {"read", "write read_text(path)"},
    {"readline", "write read_lines(path)"},
    {"readlines", "write read_lines(path)"},
    {"remainder", "write a % b of integers"},
    {"repeat", "write s * n of a string, a for loop of an array"},
    {"require", "write use \"file.hvm\" or use \"arrays\""},
    {"reshape", "write a.reshape(d0, d1), which changes the array itself"},
    {"reversed", "write range(n - 1, -1, -1) for the positions"},
    {"savetxt", "write write_csv(path, data)"},
    {"sd", "write xstddev(a)"},
    {"searchsorted", "write xdigitize(x, a)"},
    {"seed", "leave it out: each process draws the same numbers, and no function changes the seed"},
    {"setdiff1d", "go over the elements of xunique(a) in a loop"},
    {"sign", "write xsign(a) of an array of doubles"},
    {"size", "write len(x), and a.shape() for all extents of an array"},
    {"solve", "write xsolve(a, b)"},
    {"sorted", "write sort(t) of a table, xsort(a) of an array"},
    {"sprintf", "write format(pattern, x)"},
    {"std", "write xstddev(a)"},
    {"stdev", "write xstddev(a)"},
    {"string", "write str(x)"},
    {"strip", "write trim(s)"},
    {"strlen", "write len(s)"},
    {"substr", "write s[0:3]"},
    {"substring", "write s[0:3]"},
    {"tensordot", "write xdot(a, b)"},
    {"time", "write clock()"},
    {"toString", "write str(x)"},
    {"tolist", "write parse_json(a.dump()), which is a table"},
    {"tonumber", "write number(s)"},
    {"tostring", "write str(x)"},
    {"typeof", "write type(x)"},
    {"undefined", "write nil"},
    {"uniform", "write xrand(n)"},
    {"var", "write xvariance(a)"},
    {"vdot", "write xvdot(a, b)"},
    {"vstack", "write stack(arrays), after use \"arrays\""},
    {"write", "write write_text(path, text)"},
    {"xfloor", "write a[i] = floor(a[i]) in a loop over the elements"},
    {"xlog10", "write xlog(a) / log(10)"},
    {"xlog2", "write xlog(a) / log(2)"},
    {"xround", "write a[i] = round(a[i]) in a loop over the elements"},
    {"zip", "write for i in range(len(t)), and t[i], u[i]"},
};

// Functions of the library that scripts call as methods. Sorted by name.
constexpr OtherName methods[] = {
    {"argpartition", "write argpartition(a, k), after use \"arrays\""},
    {"choice", "write choice(a, n), after use \"arrays\""},
    {"clip", "write clip(a, low, high), after use \"arrays\""},
    {"column", "write column(a, j), after use \"arrays\""},
    {"count", "write count(a), after use \"arrays\""},
    {"cumsum", "write cumsum(a), after use \"arrays\""},
    {"mask", "write mask(a, m), after use \"arrays\""},
    {"permutation", "write permutation(n), after use \"arrays\""},
    {"quantile", "write quantile(a, p), after use \"arrays\""},
    {"row", "write row(a, i), after use \"arrays\""},
    {"slice", "write slice(a, from, to), after use \"arrays\""},
    {"take", "write take(a, positions), after use \"arrays\""},
    {"transpose", "write transpose(a), after use \"arrays\""},
    {"where", "write where(m), after use \"arrays\""},
};

template <std::size_t count>
constexpr bool is_sorted_by_name(const OtherName (&rows)[count]) {
  for (std::size_t i = 1; i < count; ++i)
    if (rows[i - 1].name >= rows[i].name) return false;
  return true;
}
static_assert(is_sorted_by_name(other_functions) && is_sorted_by_name(methods), "the tables are searched by halves");

template <std::size_t count>
std::string counterpart_in(const OtherName (&rows)[count], std::string_view name) {
  const auto row =
      std::lower_bound(std::begin(rows), std::end(rows), name,
                       [](const OtherName& other, std::string_view wanted) { return other.name < wanted; });
  return row != std::end(rows) && row->name == name ? fmt::format("; {}", row->instead) : std::string();
}

}  // namespace

OtherNames other_names() { return {std::begin(other_functions), std::end(other_functions)}; }

std::string counterpart(std::string_view name) { return counterpart_in(other_functions, name); }

std::string counterpart_of_function(std::string_view name) {
  std::string known = counterpart(name);
  if (!known.empty() || name.empty() || name.front() != 'x') return known;
  known = counterpart(name.substr(1));
  return known.empty() ? counterpart_in(methods, name.substr(1)) : known;
}

std::string counterpart_for_arrays(std::string_view name, const ModuleFunctions& module) {
  std::string known = counterpart(name);
  if (known.empty()) known = counterpart_in(methods, name);
  const std::string own = fmt::format("x{}", name);
  return known.empty() && module.find(own) ? fmt::format("; write {}(a)", own) : known;
}

}  // namespace hvm
