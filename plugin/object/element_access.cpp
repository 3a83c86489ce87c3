// object/element_access.cpp: the indices of an element access

#include "object/element_access.hpp"

namespace arrayfold {

bool read_indices(const HostIndexList& list, Indices& indices) {
  const std::uint64_t packed = list.packed_size;
  indices.count = packed >> 1;
  const void* entries = (packed & 1) != 0 ? load<const void*>(list.entries) : list.entries;
  if (entries == nullptr) return false;
  const auto* entry = static_cast<const HostIndexEntry*>(entries);
  for (std::size_t i = 0; i < indices.count; ++i) {
    HostValue* const value = entry[i].value;
    if (value == nullptr) return false;
    const std::int64_t index = HVM_AsInt(value);
    if (i < most_indices) indices.at[i] = index;
  }
  return indices.count <= most_indices;
}

}  // namespace arrayfold
