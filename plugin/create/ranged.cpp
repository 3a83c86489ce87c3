// create/ranged.cpp: xarange, xlinspace, xlogspace
//
// One-dimensional arrays of evenly spaced numbers, or of powers of ten with evenly spaced exponents. xarange counts in
// 32-bit integers and gives doubles; the other two take their kind from the tag of the first argument.

#include <algorithm>
#include <cmath>

#include "array/boxing.hpp"
#include "array/conversion.hpp"
#include "array/storage.hpp"
#include "host/entry.hpp"

// The processor's division fault is what a zero step ends in: sanitizers are not to get ahead of it.
#if defined(__clang__)
#define FAULTING_DIVISION __attribute__((no_sanitize("integer-divide-by-zero")))
#else
#define FAULTING_DIVISION
#endif

namespace arrayfold {
namespace {

// ---- xarange ----

struct IntRange {
  int start = 0;
  int stop = 0;
  int step = 1;
};

/// The count of start, start + step, ... before stop, in wrapping 32-bit arithmetic.
/// required: a step of 0 is the processor's division fault, and a count that wraps below zero no array at all.
FAULTING_DIVISION int count_of(const IntRange& range) {
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

/// How a kind reads the two ends, and how far they are apart: integers wrap in their own width.
template <class Kind>
struct Ends;

template <>
struct Ends<XTInt> {
  static int read(HostValue* value) { return HVM_AsInt(value); }
};
template <>
struct Ends<XTInt64> {
  static std::int64_t read(HostValue* value) { return HVM_AsInt64(value); }
};
template <>
struct Ends<XTDouble> {
  static double read(HostValue* value) { return HVM_AsDouble(value); }
};

double rounded_to(XTDouble, double x) { return x; }
template <class Kind>
typename Kind::element rounded_to(Kind, double x) {
  return truncated<typename Kind::element>(x);
}

/// Writes `count` numbers from `start` to `stop`, both included, as `write(i, number)`. One number alone is `start`.
template <class Kind, class Write>
void space_evenly(typename Kind::element start, typename Kind::element stop, std::size_t count, Write write) {
  const double first = static_cast<double>(start);
  const double step = static_cast<double>(stop - start) / std::max(1.0, static_cast<double>(count) - 1.0);
  // Indices below 2^31 convert in registers; the base is exact, and so is its sum with them.
  constexpr std::size_t block = std::size_t{1} << 30;
  for (std::size_t base = 0; base < count; base += block) {
    const int in_block = static_cast<int>(std::min(block, count - base));
    for (int i = 0; i < in_block; ++i) {
      const double index = static_cast<double>(base) + i;
      write(base + static_cast<std::size_t>(i), rounded_to(Kind{}, first + index * step));
    }
  }
  if (count >= 2) write(count - 1, stop);
}

constexpr auto as_they_are = [](auto number) { return number; };

/// required: in the integer forms the exponent is an integer already, and the power loses its fraction once more.
constexpr auto powers_of_ten = [](auto exponent) { return std::pow(10.0, static_cast<double>(exponent)); };

template <class Kind, class Map>
Outcome make_spaced(const Call& call, std::size_t count, Map map) {
  if (!is_number(call, 0) || !is_number(call, 1)) return Outcome::failed;
  const auto start = Ends<Kind>::read(call.args);
  const auto stop = Ends<Kind>::read(call.args + 1);
  Shape extents;
  extents.push_back(count);
  auto array = make_array<Kind>(extents);
  auto* elements = array->array->storage().data();
  space_evenly<Kind>(start, stop, count, [elements, map](std::size_t i, typename Kind::element number) {
    const auto mapped = map(number);
    if constexpr (std::is_same_v<decltype(mapped), const typename Kind::element>)
      elements[i] = mapped;
    else
      elements[i] = rounded_to(Kind{}, mapped);
  });
  give_array<Kind>(call.ctx, call.result, std::move(array));
  return Outcome::handled;
}

/// Two ends and a count, 50 unless given. The first argument's tag alone decides the kind.
template <class Map>
Outcome make_spaced(const Call& call, Map map) {
  std::size_t count = 50;
  if (call.nargs >= 3) {
    if (!is_number(call, 2)) return Outcome::failed;
    count = extent_of(int_argument(call, 2));
  }
  switch (call.args[0].tag) {
    case ValueTag::integer:
      return make_spaced<XTInt>(call, count, map);
    case ValueTag::real:
      return make_spaced<XTDouble>(call, count, map);
    case ValueTag::integer64:
      return make_spaced<XTInt64>(call, count, map);
    default:
      return Outcome::failed;
  }
}

}  // namespace

Outcome xarange(const Call& call) {
  // required: with four arguments or more nothing is read, and the script gets an object without a container.
  if (call.nargs >= 4) {
    give_array<XTDouble>(call.ctx, call.result, std::make_unique<ArrayOf<XTDouble>>());
    return Outcome::handled;
  }
  IntRange range;
  if (!read_range(call, range)) return Outcome::failed;
  Shape extents;
  extents.push_back(extent_of(count_of(range)));
  auto array = make_array<XTDouble>(extents);
  count_up(array->array->storage().data(), extents[0], range);
  give_array<XTDouble>(call.ctx, call.result, std::move(array));
  return Outcome::handled;
}

Outcome xlinspace(const Call& call) { return make_spaced(call, as_they_are); }
Outcome xlogspace(const Call& call) { return make_spaced(call, powers_of_ten); }

}  // namespace arrayfold
