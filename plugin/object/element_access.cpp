// object/element_access.cpp: from indices to an element
//
// Fewer indices than dimensions align with the last ones, surplus leading ones are dropped, and a dimension of extent 1
// has a stride of 0: an index there has no effect.

#include "object/element_access.hpp"

#include <algorithm>

namespace arrayfold {
namespace {

constexpr std::size_t most_indices = 8;

/// The indices of an access: 32-bit numbers, sign-extended.
struct Indices {
  std::int64_t at[most_indices];
  std::size_t count = 0;
};

/// Reads every index of the list, unchecked. False when there are none, or more than eight: those are read all the
/// same.
bool read_indices(const HostIndexList& list, Indices& indices) {
  const std::uint64_t packed = list.packed_size;
  indices.count = packed >> 1;
  const void* entries = (packed & 1) != 0 ? load<const void*>(list.entries) : list.entries;
  const auto* entry = static_cast<const HostIndexEntry*>(entries);
  for (std::size_t i = 0; i < indices.count; ++i) {
    const std::int64_t index = HVM_AsInt(entry[i].value);
    if (i < most_indices) indices.at[i] = index;
  }
  return indices.count <= most_indices;
}

bool has_indices(const HostIndexList* list) { return list != nullptr && list->packed_size >= 2; }

/// The place of an element in the storage, counted from its first.
template <class T>
std::ptrdiff_t offset_of(const xarray_of<T>& array, const std::int64_t* indices, std::size_t count) {
  const auto& strides = array.strides();
  const std::size_t used = std::min<std::size_t>(count, strides.size());
  std::ptrdiff_t offset = 0;
  for (std::size_t back = 1; back <= used; ++back) offset += indices[count - back] * strides[strides.size() - back];
  return offset;
}

void give_element(HostContext ctx, HostValue* result, std::int32_t x) { HVM_SetInt(ctx, result, x); }
void give_element(HostContext ctx, HostValue* result, std::int64_t x) { HVM_SetInt64(ctx, result, x); }
void give_element(HostContext ctx, HostValue* result, double x) { HVM_SetReal(ctx, result, x); }

template <class T>
void give_at(const xarray_of<T>& array, std::ptrdiff_t offset, HostContext ctx, HostValue* result) {
  give_element(ctx, result, array.storage().data()[offset]);
}
/// required: a truth is given as its stored byte, an integer.
void give_at(const xarray_of<bool>& array, std::ptrdiff_t offset, HostContext ctx, HostValue* result) {
  const void* bytes = array.storage().data() + offset;
  give_element(ctx, result, std::int32_t{*static_cast<const std::uint8_t*>(bytes)});
}

bool read_number(XTBool, HostValue* value) { return HVM_AsBool(value) != 0; }
std::int32_t read_number(XTInt, HostValue* value) { return HVM_AsInt(value); }
std::int64_t read_number(XTInt64, HostValue* value) { return HVM_AsInt64(value); }
double read_number(XTDouble, HostValue* value) { return HVM_AsDouble(value); }

}  // namespace

template <class Array>
bool read_at_index(const Array& array, HostContext ctx, HostValue* index, HostValue* result) {
  if (index == nullptr || !HVM_NumberCheck(index)) return false;
  const std::int64_t at = HVM_AsInt(index);
  give_at(*array.array, offset_of(*array.array, &at, 1), ctx, result);
  return true;
}

template <class Array>
bool read_element(const Array& array, HostContext ctx, const HostIndexList* list, HostValue* result) {
  if (!has_indices(list)) return false;
  Indices indices;
  if (!read_indices(*list, indices)) return false;
  give_at(*array.array, offset_of(*array.array, indices.at, indices.count), ctx, result);
  return true;
}

template <class Array>
bool write_element(Array& array, const HostIndexList* list, HostValue* value) {
  if (!has_indices(list)) return false;
  // The value is checked and read before any index is.
  if (!HVM_NumberCheck(value)) return false;
  const auto number = read_number(typename Array::tag{}, value);
  Indices indices;
  if (!read_indices(*list, indices)) return false;
  array.array->storage().data()[offset_of(*array.array, indices.at, indices.count)] = number;
  return true;
}

#define ARRAYFOLD_ELEMENT_ACCESS(Kind)                                                             \
  template bool read_at_index(const ArrayOf<Kind>&, HostContext, HostValue*, HostValue*);          \
  template bool read_element(const ArrayOf<Kind>&, HostContext, const HostIndexList*, HostValue*); \
  template bool write_element(ArrayOf<Kind>&, const HostIndexList*, HostValue*);
ARRAYFOLD_ELEMENT_ACCESS(XTBool)
ARRAYFOLD_ELEMENT_ACCESS(XTInt)
ARRAYFOLD_ELEMENT_ACCESS(XTInt64)
ARRAYFOLD_ELEMENT_ACCESS(XTDouble)

}  // namespace arrayfold
