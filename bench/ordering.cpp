// bench/ordering.cpp: sorting, partitions, distinct elements, extremes and differences
//
// Sorts are measured over random data, and over data for which a sort may take another path: NaN, zeros of both signs,
// few distinct numbers, sorted numbers, and an order in which each step of a quicksort splits off almost nothing.

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <string>

#include "array/boxing.hpp"
#include "arrays.hpp"
#include "families.hpp"
#include "module.hpp"

namespace arrayfold::bench {
namespace {

using Extents = std::vector<std::size_t>;

const std::vector<int> row_sizes{10, 1'000, 100'000, 1'000'000};

Extents extent(int n) { return {static_cast<std::size_t>(n)}; }
/// The square of about `n` elements: 3, 31, 316, 1000 or 3162 rows.
Extents square(int n) { return Extents(2, static_cast<std::size_t>(std::sqrt(static_cast<double>(n)))); }

std::vector<Value> doubles(int n) { return {normal_doubles(extent(n))}; }
std::vector<Value> ints(int n) { return {small_ints(extent(n))}; }
std::vector<Value> long_ints(int n) { return {small_long_ints(extent(n))}; }
std::vector<Value> double_square(int n) { return {normal_doubles(square(n))}; }

// ---- Partitions, at the middle of a row

std::vector<Value> doubles_and_middle(int n) { return {normal_doubles(extent(n)), Value(n / 2)}; }
std::vector<Value> ints_and_middle(int n) { return {small_ints(extent(n)), Value(n / 2)}; }
std::vector<Value> square_and_middle(int n) {
  return {normal_doubles(square(n)), Value(static_cast<int>(square(n).back() / 2))};
}

// ---- Data of special kinds

/// `n` doubles of the normal distribution, changed by `change(elements)`.
template <class Change>
std::vector<Value> changed_doubles(int n, Change change) {
  std::vector<Value> records = doubles(n);
  change(unbox_array<XTDouble>(hvm::object_of(records[0].record()))->array->storage());
  return records;
}

/// Normal doubles in which about one element of a hundred is `first`, and as many are `second`.
std::vector<Value> doubles_among_which(int n, double first, double second) {
  return changed_doubles(n, [&](auto& elements) {
    std::mt19937_64 engine(2);
    for (double& x : elements) {
      const auto drawn = engine() % 100;
      if (drawn < 2) x = drawn == 0 ? first : second;
    }
  });
}

std::vector<Value> with_nan(int n) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  return doubles_among_which(n, nan, nan);
}
std::vector<Value> with_both_zeros(int n) { return doubles_among_which(n, 0.0, -0.0); }

std::vector<Value> few_distinct(int n) {
  return changed_doubles(n, [](auto& elements) {
    std::mt19937_64 engine(2);
    for (double& x : elements) x = static_cast<double>(engine() % 10);
  });
}

std::vector<Value> sorted(int n) {
  return changed_doubles(n, [](auto& elements) { std::sort(elements.begin(), elements.end()); });
}

/// Numbers in the worst order for std::sort. Their values are chosen while it compares them: of two numbers without a
/// value yet, the likely pivot gets the next smallest value. The last number is NaN, with which the module uses
/// std::sort and no other algorithm.
std::vector<double> killer_of_quicksorts(std::size_t count) {
  const double open = static_cast<double>(count);
  std::vector<double> numbers(count, open);
  numbers.back() = std::numeric_limits<double>::quiet_NaN();
  std::vector<std::size_t> positions(count);
  std::iota(positions.begin(), positions.end(), std::size_t{0});
  double settled = 0;
  std::size_t pivot = 0;
  std::sort(positions.begin(), positions.end(), [&](std::size_t a, std::size_t b) {
    if (numbers[a] == open && numbers[b] == open) numbers[a == pivot ? a : b] = settled++;
    if (numbers[a] == open) pivot = a;
    if (numbers[b] == open) pivot = b;
    return numbers[a] < numbers[b];
  });
  return numbers;
}

std::vector<Value> adversarial(int n) {
  return changed_doubles(n, [](auto& elements) {
    const std::vector<double> numbers = killer_of_quicksorts(elements.size());
    std::copy(numbers.begin(), numbers.end(), elements.begin());
  });
}

/// The function over data of each special kind.
void add_special_kinds(const std::string& function) {
  const auto add = [&](const std::string& kind, const RecordsOf& arguments) {
    add_call("ordering/" + function + "_" + kind, function, {100'000}, arguments);
  };
  add("nan", with_nan);
  add("both_zeros", with_both_zeros);
  add("few_distinct", few_distinct);
  add("sorted", sorted);
  add("adversarial", adversarial);
}

void add_ordering(const std::string& label, const std::string& function, const RecordsOf& arguments) {
  add_call("ordering/" + label, function, four_sizes, arguments);
}

void add_rows(const std::string& function, const std::vector<int>& sizes, const RecordsOf& arguments) {
  add_call("ordering/" + function + "_rows", function, sizes, arguments);
}

}  // namespace

void add_ordering() {
  for (const std::string name : {"xsort", "xunique", "xargsort", "xargmin", "xargmax"}) {
    add_ordering(name, name, doubles);
    add_ordering(name + "_int", name, ints);
    add_ordering(name + "_int64", name, long_ints);
  }
  for (const std::string name : {"xsort", "xargsort"}) {
    add_rows(name, row_sizes, double_square);
    add_special_kinds(name);
  }
  add_ordering("xpartition", "xpartition", doubles_and_middle);
  add_ordering("xpartition_int", "xpartition", ints_and_middle);
  add_rows("xpartition", row_sizes, square_and_middle);
  add_ordering("xargpartition", "xargpartition", doubles_and_middle);
  add_ordering("xargpartition_int", "xargpartition", ints_and_middle);
  add_ordering("xdiff", "xdiff", doubles);
  add_ordering("xdiff_int", "xdiff", ints);
  add_rows("xdiff", four_sizes, double_square);
}

}  // namespace arrayfold::bench
