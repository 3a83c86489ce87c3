// bench/creation.cpp: xzeros, xones, xempty, xeye, xarange, xlinspace, xlogspace, xrand, xrandn, xshuffle, xpermutation

#include <cmath>

#include "arrays.hpp"
#include "families.hpp"
#include "module.hpp"

namespace arrayfold::bench {
namespace {

std::vector<Value> count(int n) { return {Value(n)}; }
/// The side of the square of about `n` elements: 3, 31, 316, 3162.
std::vector<Value> side(int n) { return {Value(static_cast<int>(std::sqrt(static_cast<double>(n))))}; }
std::vector<Value> unit_interval(int n) { return {Value(0.0), Value(1.0), Value(n)}; }
std::vector<Value> doubles(int n) { return {normal_doubles({static_cast<std::size_t>(n)})}; }
std::vector<Value> six_decades(int n) { return {Value(-3.0), Value(3.0), Value(n)}; }

}  // namespace

void add_creation() {
  add_call("creation/xzeros", "xzeros", four_sizes, count);
  add_call("creation/xones", "xones", four_sizes, count);
  add_call("creation/xempty", "xempty", four_sizes, count);
  add_call("creation/xeye", "xeye", four_sizes, side);
  add_call("creation/xarange", "xarange", four_sizes, count);
  add_call("creation/xlinspace", "xlinspace", four_sizes, unit_interval);
  add_call("creation/xlogspace", "xlogspace", four_sizes, six_decades);
  add_call("creation/xrand", "xrand", four_sizes, count);
  add_call("creation/xrandn", "xrandn", four_sizes, count);
  add_call("creation/xshuffle", "xshuffle", four_sizes, doubles);
  add_call("creation/xpermutation", "xpermutation", four_sizes, doubles);
}

}  // namespace arrayfold::bench
