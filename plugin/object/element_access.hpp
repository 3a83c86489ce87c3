// object/element_access.hpp: reading and writing single elements
//
// required: nothing is checked. An index is multiplied by its stride whatever it is; a host that wants bounds checks
// them before it calls.

#pragma once

#include "array/xt_object.hpp"
#include "host/host_operations.hpp"

namespace arrayfold {

/// The index list that a host hands over in the place of a right operand.
inline const HostIndexList* index_list_in(const HostValue* right) {
  return static_cast<const HostIndexList*>(static_cast<const void*>(right));
}

/// Stores the element at one index in `result`. False when `index` is no number.
template <class Array>
bool read_at_index(const Array& array, HostContext ctx, HostValue* index, HostValue* result);

/// Stores the element at one to eight indices in `result`. False for none, and for more.
template <class Array>
bool read_element(const Array& array, HostContext ctx, const HostIndexList* indices, HostValue* result);

/// Stores the number in `value` as the element at one to eight indices. False when it is no number, for no index, and
/// for more than eight.
template <class Array>
bool write_element(Array& array, const HostIndexList* indices, HostValue* value);

}  // namespace arrayfold
