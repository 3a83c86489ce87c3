// create/random.cpp: xrand, xrandn, xrandint, xchoice, xshuffle, xpermutation
//
// All draw from one engine, MT19937 with its default seed, made at the first draw and kept as long as the process.
// Every process sees the same numbers, and each draw advances the engine for all scripts. Nothing seeds it again.

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "array/arguments.hpp"
#include "create/filled.hpp"
#include "kernels/mersenne_twister.hpp"

namespace arrayfold {
namespace {

MersenneTwister& engine() {
  static MersenneTwister only;
  return only;
}

// ---- xrand and xrandn
//
// The elements are the deviates of the standard library's distributions, in storage order.

void fill_uniform(double* first, std::size_t count) {
  MersenneTwister& drawn_from = engine();
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  std::generate_n(first, count, [&] { return uniform(drawn_from); });
}

/// Points inside the unit circle but for its centre, as the polar method draws them, and their squared radii.
struct CirclePoints {
  static constexpr std::size_t most = 128;
  double x[most];
  double y[most];
  double square[most];

  void draw(std::size_t count) {
    MersenneTwister& drawn_from = engine();
    const auto coordinate = [&] {
      return 2.0 * std::generate_canonical<double, std::numeric_limits<double>::digits>(drawn_from) - 1.0;
    };
    // A point that is not accepted is overwritten by the next.
    for (std::size_t n = 0; n < count;) {
      x[n] = coordinate();
      y[n] = coordinate();
      square[n] = x[n] * x[n] + y[n] * y[n];
      n += (square[n] <= 1.0) & (square[n] != 0.0);
    }
  }
};

/// The deviates of std::normal_distribution as libstdc++ computes them: its polar method gives two for each point, the
/// one from y first. A block of points is drawn before roots and logarithms are taken, so that the processor computes
/// several of these at once.
void fill_normal(double* first, std::size_t count) {
  CirclePoints points;
  while (count > 0) {
    const std::size_t pairs = std::min(CirclePoints::most, (count + 1) / 2);
    points.draw(pairs);
    for (std::size_t n = 0; n < pairs; ++n) {
      const double scale = std::sqrt(-2.0 * std::log(points.square[n]) / points.square[n]);
      // The distribution adds its mean of 0, which makes a negative zero positive.
      first[0] = points.y[n] * scale + 0.0;
      // required: the second deviate of an odd count is lost, a later call draws afresh.
      if (2 * n + 1 < count) first[1] = points.x[n] * scale + 0.0;
      first += 2;
    }
    count -= std::min(count, 2 * pairs);
  }
}

// ---- xshuffle and xpermutation

/// Calls `exchange(i, j)` for the draws of a shuffle of `rows` rows: from the last row down, each with one of those up
/// to itself.
template <class Exchange>
void shuffle_rows(std::size_t rows, Exchange exchange) {
  MersenneTwister& drawn_from = engine();
  for (std::size_t i = rows; i-- > 1;) exchange(i, std::uniform_int_distribution<std::size_t>(0, i)(drawn_from));
}

/// The number of rows that a shuffle exchanges: the first extent, and 1 for a zero-dimensional array. Here a row is
/// everything under one first index.
template <class T>
std::size_t rows_of(const xarray_of<T>& array) {
  check_extents(array);
  return array.dimension() == 0 ? 1 : array.shape()[0];
}

}  // namespace

Outcome xrand(const Call& call) { return make_filled(call, fill_uniform); }
Outcome xrandn(const Call& call) { return make_filled(call, fill_normal); }

// required: with any argument it succeeds and gives no value.
Outcome xrandint(const Call&) { return Outcome::handled; }

// required: it also succeeds without arguments.
Outcome xchoice(const Call&) { return Outcome::handled; }

Outcome xshuffle(const Call& call) {
  return visit_first(double_first{}, call, [&](auto, auto& array) {
    auto& elements = array.storage();
    const std::size_t rows = rows_of(array);
    const std::size_t length = rows == 0 ? 0 : elements.size() / rows;
    const auto row = [&](std::size_t n) { return elements.data() + n * length; };
    shuffle_rows(rows, [&](std::size_t i, std::size_t j) {
      if (i != j) std::swap_ranges(row(i), row(i) + length, row(j));
    });
    give(call, 0);
  });
}

// required: the script gets 0 and no permuted array, and its own array stays as it was. All that can be seen of the
// permutation of a copy is the engine's advance, so no copy is made.
Outcome xpermutation(const Call& call) {
  return visit_first(double_first{}, call, [&](auto, const auto& array) {
    shuffle_rows(rows_of(array), [](std::size_t, std::size_t) {});
    give(call, 0);
  });
}

}  // namespace arrayfold
