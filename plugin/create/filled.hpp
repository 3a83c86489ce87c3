// create/filled.hpp: arrays of doubles made from extents alone
//
// An extent is the 32-bit integer that the host reads in a number; a negative one is far too large and ends in
// std::bad_alloc before anything is claimed.

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

/// A new array with one dimension for each argument, its elements written by `fill(first, count)`.
template <class Fill>
Outcome make_filled(const Call& call, Fill fill) {
  Shape extents;
  for (int n = 0; n < call.nargs; ++n)
    if (!read_extent(call, n, extents)) return Outcome::failed;
  auto array = make_array<XTDouble>(extents);
  auto& storage = array->array->storage();
  fill(storage.data(), storage.size());
  give_array<XTDouble>(call.ctx, call.result, std::move(array));
  return Outcome::handled;
}

}  // namespace arrayfold
