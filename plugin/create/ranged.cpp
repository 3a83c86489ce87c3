// create/ranged.cpp: xarange, xlinspace, xlogspace
//
// One-dimensional arrays of evenly spaced numbers, or of powers of ten with evenly spaced exponents. xarange counts in
// 32-bit integers and gives doubles; the other two take their kind from the tag of the first argument.

#include <algorithm>
#include <iterator>
#include <type_traits>

#include "array/boxing.hpp"
#include "array/spacing.hpp"
#include "array/storage.hpp"
#include "kernels/conversion.hpp"
#include "kernels/division_fault.hpp"
#include "kernels/sequences.hpp"
#include "kernels/vector_math.hpp"

namespace arrayfold {
namespace {

// ---- xarange

struct IntRange {
  int start = 0;
  int stop = 0;
  int step = 1;
};

/// How many of start, start + step and so on come before stop, in wrapping 32-bit arithmetic.
/// required: a step of 0 is the division fault, and so is each division of the smallest integer by -1; a count that
/// wraps below zero ends in std::bad_alloc.
int range_length(const IntRange& range) {
  const auto [start, stop, step] = range;
  if (quotient_or_fault(stop - start, step) <= 0) return 0;
  if (stop > start) return quotient_or_fault(stop - start + step - 1, step);
  return quotient_or_fault(start - stop - step - 1, -step);
}

/// Reads one to three numbers. False when one of them is no number; all of them are checked first.
bool read_range(const Call& call, IntRange& range) {
  bool numbers = true;
  for (int n = 0; n < call.nargs; ++n) numbers &= is_number(call, n);
  if (!numbers) return false;
  if (call.nargs >= 2) range.start = int_argument(call, 0);
  range.stop = int_argument(call, call.nargs >= 2 ? 1 : 0);
  if (call.nargs >= 3) range.step = int_argument(call, 2);
  return true;
}

// ---- xlinspace and xlogspace

constexpr auto unchanged = [](auto, auto*, std::size_t) {};

/// required: in the integer forms the exponent is an integer already, and the power is truncated once more.
constexpr auto powers_of_ten = [](auto kind, auto* numbers, std::size_t count) {
  const VectorFunctions& exp10 = vector_math().exp10;
  if constexpr (std::is_same_v<decltype(kind), XTDouble>) {
    exp10(numbers, numbers, count);
  } else {
    double powers[256];
    for (std::size_t first = 0, length; first < count; first += length) {
      length = std::min(count - first, std::size(powers));
      exp10(numbers + first, powers, length);
      convert(powers, numbers + first, length);
    }
  }
};

/// Gives `count` evenly spaced numbers, changed by `map(kind, numbers, count)`.
template <class Kind, class Map>
Outcome make_spaced(Kind kind, const Call& call, int count, Map map) {
  if (!is_number(call, 0) || !is_number(call, 1)) return Outcome::failed;
  const auto start = Kind::read(call.args);
  const auto stop = Kind::read(call.args + 1);
  auto array = make_vector<Kind>(extent_of(count));
  auto& numbers = array->array->storage();
  Spacing<Kind>(start, stop, numbers.size()).write(numbers.data(), numbers.size());
  if (numbers.size() >= 2) numbers.back() = stop;
  map(kind, numbers.data(), numbers.size());
  give_array(call, std::move(array));
  return Outcome::handled;
}

/// Gives evenly spaced numbers between two ends: a count of 50 unless it is given. The tag of the first argument
/// decides the kind.
template <class Map>
Outcome make_spaced(const Call& call, Map map) {
  int count = 50;
  if (call.nargs >= 3) {
    if (!is_number(call, 2)) return Outcome::failed;
    count = int_argument(call, 2);
  }
  switch (call.args[0].tag) {
    case ValueTag::integer:
      return make_spaced(XTInt{}, call, count, map);
    case ValueTag::real:
      return make_spaced(XTDouble{}, call, count, map);
    case ValueTag::integer64:
      return make_spaced(XTInt64{}, call, count, map);
    default:
      return Outcome::failed;
  }
}

}  // namespace

Outcome xarange(const Call& call) {
  auto array = std::make_unique<ArrayOf<XTDouble>>();
  // required: with four arguments or more nothing is read, and the script gets an object without a container.
  if (call.nargs < 4) {
    IntRange range;
    if (!read_range(call, range)) return Outcome::failed;
    Shape extents;
    extents.push_back(extent_of(range_length(range)));
    array->array = make_container<double>(extents);
    count_up(array->array->storage().data(), extents[0], range.start, range.step);
  }
  give_array(call, std::move(array));
  return Outcome::handled;
}

Outcome xlinspace(const Call& call) { return make_spaced(call, unchanged); }
Outcome xlogspace(const Call& call) { return make_spaced(call, powers_of_ten); }

}  // namespace arrayfold
