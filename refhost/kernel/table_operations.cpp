// kernel/table_operations.cpp: the operations on tables

#include "kernel/recorder.hpp"
#include "kernel/records.hpp"
#include "kernel/tables.hpp"

namespace arrayfold {
namespace {

using namespace hvm::kernel;

// Callers write into a slot without a check, so there is always one to write into.
HostValue* or_lost(HostValue* slot) noexcept {
  if (slot) return slot;
  hvm::release(lost_record);
  return &lost_record;
}

HostValue* or_nil(HostValue* value) noexcept { return value ? value : global_nil(); }

}  // namespace

// Always a new, empty table, so that a result has no entries of an older table.
void HVM_ForceTable(HostContext ctx, HostValue* value, int capacity) {
  note("HVM_ForceTable", value, capacity);
  if (value) replace(ctx, value, table_record(new_table(capacity)));
}

HostHash* HVM_NewHash(HostContext, int capacity) {
  note("HVM_NewHash", nullptr, capacity);
  return new_table(capacity);
}

HostValue* HVM_HashSetInt(HostContext, HostHash* hash, int key) {
  note("HVM_HashSetInt", hash, key);
  return or_lost(hvm::slot(hash, key));
}

HostValue* HVM_HashSet(HostContext, HostHash* hash, HostValue* key) {
  note("HVM_HashSet", hash);
  return or_lost(key ? hvm::slot(hash, *key) : nullptr);
}

HostValue* HVM_HashGetInt(HostHash* hash, int key) {
  note("HVM_HashGetInt", hash, key);
  return or_nil(hvm::find(hash, key));
}

HostValue* HVM_HashGet(HostContext, HostHash* hash, HostValue* key) {
  note("HVM_HashGet", hash);
  return or_nil(key ? hvm::find(hash, *key) : nullptr);
}

// Without an integer key a walk between the bounds visits nothing.
void HVM_HashGetBounds(HostHash* hash, int* low, int* high) {
  note("HVM_HashGetBounds", hash);
  const KeyBounds bounds = hash ? bounds_of(*own(hash)) : KeyBounds{};
  if (low) *low = bounds.lowest;
  if (high) *high = bounds.highest;
}

HostValue* HVM_GetGlobalNilObj() {
  note("HVM_GetGlobalNilObj");
  return global_nil();
}

// Drops the caller's reference, and destroys the table with the last one.
void HVM_GCFreeTable(HostHash* hash) {
  note("HVM_GCFreeTable", hash);
  drop_table(hash ? own(hash) : nullptr, nullptr);
}

}  // namespace arrayfold
