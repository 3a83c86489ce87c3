// bench/ordering.cpp: arrays sorted, partitioned, and searched for what is distinct or extreme
//
// Beside random data stand the kinds of data that a sort may take otherwise: NaN, zeros of both signs, few distinct
// numbers, sorted ones, and an order that makes a quicksort split off next to nothing.

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

std::vector<Value> reals(int n) { return {normal_reals(extent(n))}; }
std::vector<Value> ints(int n) { return {small_ints(extent(n))}; }
std::vector<Value> long_ints(int n) { return {small_long_ints(extent(n))}; }
std::vector<Value> real_square(int n) { return {normal_reals(square(n))}; }

// ---- Partitions, at the middle of a run

std::vector<Value> reals_and_middle(int n) { return {normal_reals(extent(n)), Value(n / 2)}; }
std::vector<Value> ints_and_middle(int n) { return {small_ints(extent(n)), Value(n / 2)}; }
std::vector<Value> square_and_middle(int n) {
  return {normal_reals(square(n)), Value(static_cast<int>(square(n).back() / 2))};
}

// ---- Data of special kinds

/// `n` doubles of the normal distribution, changed by `change(elements)`.
template <class Change>
std::vector<Value> changed_reals(int n, Change change) {
  std::vector<Value> records = reals(n);
  change(unbox_array<XTDouble>(hvm::object_of(records[0].record()))->array->storage());
  return records;
}

/// One element of a hundred is `first`, and another one `second`.
std::vector<Value> reals_among_which(int n, double first, double second) {
  return changed_reals(n, [&](auto& elements) {
    std::mt19937_64 engine(2);
    for (double& x : elements) {
      const auto drawn = engine() % 100;
      if (drawn < 2) x = drawn == 0 ? first : second;
    }
  });
}

std::vector<Value> with_nan(int n) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  return reals_among_which(n, nan, nan);
}
std::vector<Value> with_both_zeros(int n) { return reals_among_which(n, 0.0, -0.0); }

std::vector<Value> few_distinct(int n) {
  return changed_reals(n, [](auto& elements) {
    std::mt19937_64 engine(2);
    for (double& x : elements) x = static_cast<double>(engine() % 10);
  });
}

std::vector<Value> sorted(int n) {
  return changed_reals(n, [](auto& elements) { std::sort(elements.begin(), elements.end()); });
}

/// Numbers that the standard library's sort finds in the worst order it can. They are chosen while it looks at them: of
/// two that are open, the likely pivot becomes the smallest of all that are. Behind them stands a NaN, so that no other
/// sort takes them.
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
  return changed_reals(n, [](auto& elements) {
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
    add_ordering(name, name, reals);
    add_ordering(name + "_int", name, ints);
    add_ordering(name + "_int64", name, long_ints);
  }
  for (const std::string name : {"xsort", "xargsort"}) {
    add_rows(name, row_sizes, real_square);
    add_special_kinds(name);
  }
  add_ordering("xpartition", "xpartition", reals_and_middle);
  add_ordering("xpartition_int", "xpartition", ints_and_middle);
  add_rows("xpartition", row_sizes, square_and_middle);
  add_ordering("xargpartition", "xargpartition", reals_and_middle);
  add_ordering("xargpartition_int", "xargpartition", ints_and_middle);
  add_ordering("xdiff", "xdiff", reals);
  add_ordering("xdiff_int", "xdiff", ints);
  add_rows("xdiff", four_sizes, real_square);
}

}  // namespace arrayfold::bench
