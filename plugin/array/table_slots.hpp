// array/table_slots.hpp: from results to host tables
//
// Tables of results are filled under keys counted up from 0.

#pragma once

#include <new>

#include "host/host_operations.hpp"

namespace arrayfold {

/// Makes `value` a new table and returns the table. Throws std::bad_alloc when the host makes none.
inline HostHash* force_table(HostContext ctx, HostValue* value, int capacity) {
  HVM_ForceTable(ctx, value, capacity);
  auto* table = load<HostHash*>(value->payload);
  if (value->tag != ValueTag::table || table == nullptr) throw std::bad_alloc();
  return table;
}

/// Fills a table under the keys 0, 1, 2 and so on.
struct KeySequence {
  std::uint32_t next_key;
  HostHash* hash;
  HostContext ctx;

  /// The slot of the next key. Throws std::bad_alloc when the host gives none.
  HostValue* next_slot() {
    HostValue* slot = HVM_HashSetInt(ctx, hash, static_cast<int>(next_key++));
    if (slot == nullptr) throw std::bad_alloc();
    return slot;
  }
  /// Stores a number under the next key, each kind by its own operation.
  void add(int x) { HVM_SetInt(ctx, next_slot(), x); }
  void add(std::int64_t x) { HVM_SetInt64(ctx, next_slot(), x); }
  void add(double x) { HVM_SetReal(ctx, next_slot(), x); }
};

}  // namespace arrayfold
