// create/ranged.cpp: xarange, xlinspace, xlogspace
//
// One-dimensional arrays of evenly spaced numbers, or of powers of ten with evenly spaced exponents. xarange counts in
// 32-bit integers and gives doubles; the other two take their kind from the tag of the first argument.

#include <algorithm>
#include <cmath>

#include "array/boxing.hpp"
#include "kernels/spacing.hpp"
#include "array/storage.hpp"
#include "host/entry.hpp"

namespace arrayfold {
namespace {

// ---- xarange ----

struct IntRange {
  int start = 0;
  int stop = 0;
  int step = 1;
};

/// The count of start, start + step, ... before stop, in wrapping 32-bit arithmetic.
/// required: a step of 0 is the processor's division fault, which no sanitizer is to get ahead of, and a count that
/// wraps below zero no array at all.
__attribute__((no_sanitize("integer-divide-by-zero"))) int count_of(const IntRange& range) {
  const auto [start, stop, step] = range;
  if ((stop - start) / step <= 0) return 0;
  if (stop > start) return (stop - start + step - 1) / step;
  return (start - stop - step - 1) / -step;
}

/// Reads one to three numbers. Every argument is checked before the outcome counts.
bool read_range(const Call& call, IntRange& range) {
  bool numbers = true;
  for (int n = 0; n < call.nargs; ++n) numbers &= is_number(call, n);
  if (!numbers) return false;
  if (call.nargs >= 2) range.start = int_argument(call, 0);
  range.stop = int_argument(call, call.nargs >= 2 ? 1 : 0);
  if (call.nargs >= 3) range.step = int_argument(call, 2);
  return true;
}

/// Writes start, start + step, ... in wrapping 32-bit arithmetic. Adding the step keeps eight numbers in one register.
void count_up(double* elements, std::size_t count, const IntRange& range) {
  auto number = static_cast<unsigned>(range.start);
  const auto step = static_cast<unsigned>(range.step);
  for (std::size_t i = 0; i < count; ++i, number += step) elements[i] = static_cast<int>(number);
}

// ---- xlinspace and xlogspace ----

int read_end(XTInt, HostValue* value) { return HVM_AsInt(value); }
std::int64_t read_end(XTInt64, HostValue* value) { return HVM_AsInt64(value); }
double read_end(XTDouble, HostValue* value) { return HVM_AsDouble(value); }

constexpr auto as_it_is = [](auto number) { return number; };

/// required: in the integer forms the exponent is an integer already, and the power loses its fraction once more.
constexpr auto power_of_ten = [](auto exponent) {
  return stored_as<decltype(exponent)>(std::pow(10.0, static_cast<double>(exponent)));
};

/// Writes `map` of `count` evenly spaced numbers.
template <class T, class Map>
void space_evenly(T start, T stop, int count, Map map, T* elements) {
  const Spacing<T> spacing(start, stop, extent_of(count));
  for (int i = 0; i < count; ++i) elements[i] = map(spacing[i]);
  if (count >= 2) elements[count - 1] = map(stop);
}

template <class Kind, class Map>
Outcome make_spaced(Kind kind, const Call& call, int count, Map map) {
  if (!is_number(call, 0) || !is_number(call, 1)) return Outcome::failed;
  const auto start = read_end(kind, call.args);
  const auto stop = read_end(kind, call.args + 1);
  auto array = make_row<Kind>(extent_of(count));
  space_evenly(start, stop, count, map, array->array->storage().data());
  give_array<Kind>(call.ctx, call.result, std::move(array));
  return Outcome::handled;
}

/// Two ends and a count, 50 unless given. The first argument's tag alone decides the kind.
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
    extents.push_back(extent_of(count_of(range)));
    array->array = make_container<double>(extents);
    count_up(array->array->storage().data(), extents[0], range);
  }
  give_array<XTDouble>(call.ctx, call.result, std::move(array));
  return Outcome::handled;
}

Outcome xlinspace(const Call& call) { return make_spaced(call, as_it_is); }
Outcome xlogspace(const Call& call) { return make_spaced(call, power_of_ten); }

}  // namespace arrayfold
