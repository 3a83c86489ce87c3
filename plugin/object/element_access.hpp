// object/element_access.hpp: reading and writing single elements
//
// Fewer indices than axes align with the last ones, surplus leading indices are dropped, and an axis of extent 1 has a
// stride of 0: an index there has no effect.
// required: nothing is checked. An index is multiplied by its stride whatever it is; a host that wants bounds checks
// them before it calls.

#pragma once

#include <algorithm>

#include "array/xt_object.hpp"

namespace arrayfold {

inline constexpr std::size_t most_indices = 8;

/// The indices of an access: 32-bit numbers, sign-extended.
struct Indices {
  std::int64_t at[most_indices];
  std::size_t count = 0;
};

/// The index list that a host passes in place of a right operand.
inline const HostIndexList* index_list_in(const HostValue* right) {
  return static_cast<const HostIndexList*>(static_cast<const void*>(right));
}

/// False for no list and for a list without indices.
inline bool has_indices(const HostIndexList* list) { return list != nullptr && list->packed_size >= 2; }

/// Reads every index of the list, unchecked. False for more than eight indices, all of which are read, and at the first
/// that is missing.
bool read_indices(const HostIndexList& list, Indices& indices);

/// The offset of an element from the first one in the storage.
template <class T>
std::ptrdiff_t offset_of(const xarray_of<T>& array, const std::int64_t* indices, std::size_t count) {
  const auto& strides = array.strides();
  const std::size_t used = std::min<std::size_t>(count, strides.size());
  std::ptrdiff_t offset = 0;
  for (std::size_t back = 1; back <= used; ++back) offset += indices[count - back] * strides[strides.size() - back];
  return offset;
}

/// Gives the element at one index to `result`. False when `index` is no number.
template <class Kind>
bool read_at_index(Kind, const ArrayOf<Kind>& array, HostContext ctx, HostValue* index, HostValue* result) {
  if (index == nullptr || !HVM_NumberCheck(index)) return false;
  const std::int64_t at = HVM_AsInt(index);
  Kind::give(ctx, result, array.array->storage().data() + offset_of(*array.array, &at, 1));
  return true;
}

/// Gives the element at one to eight indices to `result`. False for none, and for more.
template <class Kind>
bool read_element(Kind, const ArrayOf<Kind>& array, HostContext ctx, const HostIndexList* list, HostValue* result) {
  if (!has_indices(list)) return false;
  Indices indices;
  if (!read_indices(*list, indices)) return false;
  Kind::give(ctx, result, array.array->storage().data() + offset_of(*array.array, indices.at, indices.count));
  return true;
}

/// Stores the number in `value` as the element at one to eight indices. False when it is no number, for no index, and
/// for more than eight.
template <class Kind>
bool write_element(Kind, ArrayOf<Kind>& array, const HostIndexList* list, HostValue* value) {
  if (!has_indices(list)) return false;
  // The value is checked and read before any index is.
  if (value == nullptr || !HVM_NumberCheck(value)) return false;
  const auto number = Kind::read(value);
  Indices indices;
  if (!read_indices(*list, indices)) return false;
  array.array->storage().data()[offset_of(*array.array, indices.at, indices.count)] = number;
  return true;
}

}  // namespace arrayfold
