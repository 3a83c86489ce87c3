// bench/arrays.cpp: elements from a fixed seed, boxed as the module boxes them

#include "arrays.hpp"

#include <algorithm>
#include <cmath>
#include <list>
#include <random>
#include <string>

#include "array/boxing.hpp"
#include "array/storage.hpp"
#include "module.hpp"

namespace arrayfold::bench {
namespace {

/// The element sequences drawn last, so that cases in a row that ask for the same one do not draw it again. A sequence
/// is the same for every length, hence a long one also holds the shorter ones. Integers up to 2^53 are exact as
/// doubles.
class DrawnSequences {
 public:
  /// At least `count` elements of the sequence `name` with `seed`. `start(engine)` returns the function that draws
  /// them.
  template <class Start>
  const std::vector<double>& elements(const std::string& name, unsigned seed, std::size_t count, Start start) {
    auto found = std::find_if(kept_.begin(), kept_.end(),
                              [&](const Sequence& one) { return one.name == name && one.seed == seed; });
    if (found == kept_.end()) {
      if (kept_.size() == most_kept) kept_.pop_back();
      found = kept_.insert(kept_.begin(), {name, seed, {}});
    }
    if (found->elements.size() < count) {
      found->elements.resize(count);
      std::mt19937_64 engine(seed);
      std::generate(found->elements.begin(), found->elements.end(), start(engine));
    }
    kept_.splice(kept_.begin(), kept_, found);  // the one used last comes first
    return kept_.front().elements;
  }

 private:
  struct Sequence {
    std::string name;
    unsigned seed;
    std::vector<double> elements;
  };
  static constexpr std::size_t most_kept = 4;
  std::list<Sequence> kept_;
};

DrawnSequences& sequences() {
  static DrawnSequences kept;
  return kept;
}

/// An array of `extents` whose elements `element` makes of the sequence `name` with `seed`.
template <class Kind, class Start, class Element>
hvm::Value array_of(const std::vector<std::size_t>& extents, const std::string& name, unsigned seed, Start start,
                    Element element) {
  auto array = make_array<Kind>(Shape(extents.begin(), extents.end()));
  auto& storage = array->array->storage();
  const double* next = sequences().elements(name, seed, storage.size(), start).data();
  for (auto& x : storage) x = static_cast<typename Kind::element>(element(*next++));
  return hvm::Value::object(box_array<Kind>(context(), array));
}

double unchanged(double x) { return x; }

/// An array of `extents` whose elements `element` makes of numbers of the normal distribution.
template <class Element>
hvm::Value array_of_normal(const std::vector<std::size_t>& extents, unsigned seed, Element element) {
  return array_of<XTDouble>(
      extents, "normal", seed,
      [](std::mt19937_64& engine) {
        return [&engine, normal = std::normal_distribution<double>()]() mutable { return normal(engine); };
      },
      element);
}

/// Integers, uniform from `low` to `high`.
template <class Kind>
hvm::Value uniform_ints(const std::vector<std::size_t>& extents, int low, int high, unsigned seed) {
  return array_of<Kind>(
      extents, std::to_string(low) + " to " + std::to_string(high), seed,
      [=](std::mt19937_64& engine) {
        return [&engine, uniform = std::uniform_int_distribution<int>(low, high)]() mutable { return uniform(engine); };
      },
      unchanged);
}

}  // namespace

hvm::Value normal_doubles(const std::vector<std::size_t>& extents, unsigned seed) {
  return array_of_normal(extents, seed, unchanged);
}

hvm::Value dominant_square(std::size_t n) {
  std::size_t next = 0;
  return array_of_normal({n, n}, 1, [&](double x) {
    const bool on_diagonal = next++ % (n + 1) == 0;
    return x + (on_diagonal ? 2.0 * static_cast<double>(n) : 0.0);
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

hvm::Value positive_doubles(const std::vector<std::size_t>& extents) {
  return array_of_normal(extents, 1, [](double x) { return std::abs(x); });
}

hvm::Value doubles_beside_one(const std::vector<std::size_t>& extents) {
  return array_of_normal(extents, 1, [](double x) { return std::exp(0.001 * x); });
}

hvm::Value ints_to_100(const std::vector<std::size_t>& extents) { return uniform_ints<XTInt>(extents, 1, 100, 1); }

hvm::Value long_ints_to_100(const std::vector<std::size_t>& extents) {
  return uniform_ints<XTInt64>(extents, 1, 100, 1);
}

}  // namespace arrayfold::bench
