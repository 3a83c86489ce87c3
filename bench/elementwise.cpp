// bench/elementwise.cpp: the functions of one array and of two, of doubles and of 32-bit integers
//
// Arguments lie in the domain of the function: positive numbers for roots and logarithms, and integers from 1 to 100
// where larger ones would overflow.

#include <string>

#include "arrays.hpp"
#include "families.hpp"
#include "module.hpp"

namespace arrayfold::bench {
namespace {

constexpr const char* of_any_sign[] = {"xabs",    "xsign",  "xrad2deg", "xdegrees", "xdeg2rad", "xradians",
                                       "xsquare", "xcube",  "xcbrt",    "xexp",     "xexpm1",   "xsin",
                                       "xcos",    "xtan",   "xsinh",    "xcosh",    "xtanh",    "xerf",
                                       "xtgamma", "xisnan", "xisinf",   "xisfinite"};
constexpr const char* of_positive[] = {"xlog", "xlog1p", "xsqrt", "xlgamma"};

std::vector<std::size_t> extent(int n) { return {static_cast<std::size_t>(n)}; }
std::vector<Value> doubles(int n) { return {normal_doubles(extent(n))}; }
std::vector<Value> positive(int n) { return {positive_doubles(extent(n))}; }
std::vector<Value> ints(int n) { return {small_ints(extent(n))}; }
std::vector<Value> hundred(int n) { return {ints_to_100(extent(n))}; }

std::vector<Value> two_doubles(int n) { return {normal_doubles(extent(n)), normal_doubles(extent(n), 2)}; }
std::vector<Value> two_ints(int n) { return {small_ints(extent(n)), small_ints(extent(n), 2)}; }

bool works_in_integers(const std::string& name) { return name == "xabs" || name == "xsquare" || name == "xcube"; }

void add_both(const std::string& name, const RecordsOf& operands) {
  add_call("elementwise/" + name, name, four_sizes, operands);
  if (name == "xsign") return;  // xsign accepts no integers
  add_call("elementwise/" + name + "_int", name, four_sizes, works_in_integers(name) ? ints : hundred);
}

}  // namespace

void add_elementwise() {
  for (const char* name : of_any_sign) add_both(name, doubles);
  for (const char* name : of_positive) add_both(name, positive);
  for (const char* name : {"xminimum", "xmaximum"}) {
    add_call(std::string("elementwise/") + name, name, four_sizes, two_doubles);
    add_call(std::string("elementwise/") + name + "_int", name, four_sizes, two_ints);
  }
}

}  // namespace arrayfold::bench
