// bench/arrays.cpp: elements from a fixed seed, boxed as the module boxes them

#include "arrays.hpp"

#include <cmath>
#include <random>

#include "array/boxing.hpp"
#include "array/storage.hpp"
#include "module.hpp"

namespace arrayfold::bench {
namespace {

/// An array of `extents` whose elements are what `draw` gives, one after the other.
template <class Kind, class Draw>
hvm::Value array_of(const std::vector<std::size_t>& extents, Draw draw) {
  auto array = make_array<Kind>(Shape(extents.begin(), extents.end()));
  for (auto& element : array->array->storage()) element = draw();
  return hvm::Value::object(box_array<Kind>(context(), array));
}

/// Integers, uniform from `low` to `high`.
template <class Kind>
hvm::Value uniform_ints(const std::vector<std::size_t>& extents, int low, int high, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::uniform_int_distribution<int> uniform(low, high);
  return array_of<Kind>(extents, [&] { return uniform(engine); });
}

}  // namespace

hvm::Value normal_reals(const std::vector<std::size_t>& extents, unsigned seed) {
  std::mt19937_64 engine(seed);
  std::normal_distribution<double> normal;
  return array_of<XTDouble>(extents, [&] { return normal(engine); });
}

hvm::Value dominant_square(std::size_t n) {
  std::mt19937_64 engine(1);
  std::normal_distribution<double> normal;
  std::size_t next = 0;
  return array_of<XTDouble>({n, n}, [&] {
    const bool on_diagonal = next++ % (n + 1) == 0;
    return normal(engine) + (on_diagonal ? 2.0 * static_cast<double>(n) : 0.0);
  });
}

hvm::Value small_ints(const std::vector<std::size_t>& extents, unsigned seed) {
  return uniform_ints<XTInt>(extents, -999'999, 999'999, seed);
}

hvm::Value small_long_ints(const std::vector<std::size_t>& extents, unsigned seed) {
  return uniform_ints<XTInt64>(extents, -999'999, 999'999, seed);
}

hvm::Value divisors(const std::vector<std::size_t>& extents, unsigned seed) {
  return uniform_ints<XTInt>(extents, 1, 999, seed);
}

hvm::Value positive_reals(const std::vector<std::size_t>& extents) {
  std::mt19937_64 engine(1);
  std::normal_distribution<double> normal;
  return array_of<XTDouble>(extents, [&] { return std::abs(normal(engine)); });
}

hvm::Value reals_beside_one(const std::vector<std::size_t>& extents) {
  std::mt19937_64 engine(1);
  std::normal_distribution<double> normal;
  return array_of<XTDouble>(extents, [&] { return std::exp(0.001 * normal(engine)); });
}

hvm::Value ints_to_100(const std::vector<std::size_t>& extents) { return uniform_ints<XTInt>(extents, 1, 100, 1); }

hvm::Value long_ints_to_100(const std::vector<std::size_t>& extents) {
  return uniform_ints<XTInt64>(extents, 1, 100, 1);
}

}  // namespace arrayfold::bench
