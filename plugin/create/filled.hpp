// create/filled.hpp: arrays of doubles made from extents alone
//
// An extent is the 32-bit integer that the host reads in a number. A negative extent is far too large: std::bad_alloc
// is thrown before memory is allocated.

#pragma once

#include "array/boxing.hpp"
#include "array/storage.hpp"
#include "host/entry.hpp"

namespace arrayfold {

/// Appends the extent in argument `n`. False when it is no number.
inline bool read_extent(const Call& call, int n, Shape& extents) {
  if (!is_number(call, n)) return false;
  extents.push_back(extent_of(int_argument(call, n)));
  return true;
}

/// Appends an extent for each argument. False when one is no number.
inline bool read_extents(const Call& call, Shape& extents) {
  for (int n = 0; n < call.nargs; ++n)
    if (!read_extent(call, n, extents)) return false;
  return true;
}

/// Gives a new array with one extent per argument, its elements written by `fill(first, count)`. Fails when an argument
/// is no number.
template <class Fill>
Outcome make_filled(const Call& call, Fill fill) {
  Shape extents;
  if (!read_extents(call, extents)) return Outcome::failed;
  auto array = make_array<XTDouble>(extents);
  auto& storage = array->array->storage();
  fill(storage.data(), storage.size());
  give_array(call, std::move(array));
  return Outcome::handled;
}

}  // namespace arrayfold
