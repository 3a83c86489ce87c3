// bench/reductions.cpp: arrays folded into one number, of doubles and of integers
//
// Products are over numbers close to 1, so that they neither underflow nor overflow. Counts are over elements other
// than 0: the module counts without branches, and a library with branches predicts all of them.

#include <cmath>
#include <string>

#include "array/boxing.hpp"
#include "arrays.hpp"
#include "families.hpp"
#include "module.hpp"

namespace arrayfold::bench {
namespace {

using Extents = std::vector<std::size_t>;

Extents extent(int n) { return {static_cast<std::size_t>(n)}; }
/// The square of about `n` elements.
Extents square(int n) { return Extents(2, static_cast<std::size_t>(std::sqrt(static_cast<double>(n)))); }

std::vector<Value> doubles(int n) { return {normal_doubles(extent(n))}; }
std::vector<Value> ints(int n) { return {small_ints(extent(n))}; }
std::vector<Value> long_ints(int n) { return {small_long_ints(extent(n))}; }
std::vector<Value> factors(int n) { return {doubles_beside_one(extent(n))}; }
std::vector<Value> double_square(int n) { return {normal_doubles(square(n))}; }
std::vector<Value> factor_square(int n) { return {doubles_beside_one(square(n))}; }

/// The minimum cost of a sum from left to right: each addition depends on the one before.
void time_additions(benchmark::State& state, std::vector<Value>& arguments) {
  const auto* array = unbox_array<XTDouble>(hvm::object_of(arguments.at(0).record()));
  for (auto _ : state) {
    double sum = 0;
    for (const double x : array->array->storage()) sum += x;
    benchmark::DoNotOptimize(sum);
  }
}

void add_reduction(const std::string& label, const std::string& function, const RecordsOf& arguments) {
  add_call("reductions/" + label, function, four_sizes, arguments);
}

}  // namespace

void add_reductions() {
  for (const std::string name : {"xsum", "xamin", "xamax", "xmedian", "xcount_nonzero"}) {
    add_reduction(name, name, doubles);
    add_reduction(name + "_int", name, ints);
    add_reduction(name + "_int64", name, long_ints);
  }
  for (const std::string name : {"xmean", "xvariance", "xstddev", "xtrapz"}) add_reduction(name, name, doubles);
  add_case("reductions/add_chain", four_sizes, doubles, time_additions);
  add_reduction("xprod", "xprod", factors);
  add_reduction("xmean_2d", "xmean", double_square);
  add_reduction("xvariance_2d", "xvariance", double_square);
  add_reduction("xprod_2d", "xprod", factor_square);
}

}  // namespace arrayfold::bench
