// bench/reductions.cpp: arrays folded into one number, of doubles and of integers
//
// Products go over numbers beside 1, which neither vanish nor overflow on the way. Counts go over elements that are not
// 0: ours takes no branch, and a library that does then guesses right.

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

std::vector<Value> reals(int n) { return {normal_reals(extent(n))}; }
std::vector<Value> ints(int n) { return {small_ints(extent(n))}; }
std::vector<Value> long_ints(int n) { return {small_long_ints(extent(n))}; }
std::vector<Value> factors(int n) { return {reals_beside_one(extent(n))}; }
std::vector<Value> real_square(int n) { return {normal_reals(square(n))}; }
std::vector<Value> factor_square(int n) { return {reals_beside_one(square(n))}; }

/// What a strict sum from left to right costs whatever is done: each addition waits for the one before.
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
    add_reduction(name, name, reals);
    add_reduction(name + "_int", name, ints);
    add_reduction(name + "_int64", name, long_ints);
  }
  for (const std::string name : {"xmean", "xvariance", "xstddev", "xtrapz"}) add_reduction(name, name, reals);
  add_case("reductions/add_chain", four_sizes, reals, time_additions);
  add_reduction("xprod", "xprod", factors);
  add_reduction("xmean_2d", "xmean", real_square);
  add_reduction("xvariance_2d", "xvariance", real_square);
  add_reduction("xprod_2d", "xprod", factor_square);
}

}  // namespace arrayfold::bench
