// bench/binning.cpp: doubles counted in bins or placed between edges, and integers counted

#include <algorithm>

#include "array/boxing.hpp"
#include "arrays.hpp"
#include "families.hpp"
#include "module.hpp"

namespace arrayfold::bench {
namespace {

using Extents = std::vector<std::size_t>;

Extents extent(int n) { return {static_cast<std::size_t>(n)}; }

std::vector<Value> doubles(int n) { return {normal_doubles(extent(n))}; }
std::vector<Value> doubles_and_100(int n) { return {normal_doubles(extent(n)), Value(100)}; }
std::vector<Value> doubles_twice(int n) { return {normal_doubles(extent(n)), normal_doubles({10})}; }
std::vector<Value> to_100(int n) { return {ints_to_100(extent(n))}; }
std::vector<Value> long_to_100(int n) { return {long_ints_to_100(extent(n))}; }
std::vector<Value> all_alike(int n) {
  std::vector<Value> records = to_100(n);
  auto& elements = unbox_array<XTInt>(hvm::object_of(records[0].record()))->array->storage();
  std::fill(elements.begin(), elements.end(), 100);
  return records;
}

/// Doubles of the normal distribution, and as many edges evenly spaced from -3 to 3.
std::vector<Value> doubles_and_edges(int n, int edges) {
  std::vector<Value> spacing{Value(-3.0), Value(3.0), Value(edges)};
  Value made;
  entry_named("xlinspace")(context(), hvm::records_of(spacing), 3, made.address());
  return {normal_doubles(extent(n)), made};
}

std::vector<Value> doubles_and_10_edges(int n) { return doubles_and_edges(n, 10); }
std::vector<Value> doubles_and_1000_edges(int n) { return doubles_and_edges(n, 1000); }

}  // namespace

void add_binning() {
  add_call("binning/xhistogram", "xhistogram", four_sizes, doubles);
  add_call("binning/xhistogram_100", "xhistogram", four_sizes, doubles_and_100);
  add_call("binning/xhistogram_bin_edges", "xhistogram_bin_edges", four_sizes, doubles_twice);
  add_call("binning/xbincount", "xbincount", four_sizes, to_100);
  add_call("binning/xbincount_int64", "xbincount", four_sizes, long_to_100);
  add_call("binning/xbincount_alike", "xbincount", four_sizes, all_alike);
  add_call("binning/xdigitize_10", "xdigitize", four_sizes, doubles_and_10_edges);
  add_call("binning/xdigitize_1000", "xdigitize", four_sizes, doubles_and_1000_edges);
}

}  // namespace arrayfold::bench
