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
  const auto make = [=] {
    if (value) replace(ctx, value, table_record(new_table(capacity)));
  };
  noted("HVM_ForceTable", make, value, capacity);
}

HostHash* HVM_NewHash(HostContext, int capacity) {
  return noted(
      "HVM_NewHash", [=]() -> HostHash* { return new_table(capacity); }, capacity);
}

HostValue* HVM_HashSetInt(HostContext, HostHash* hash, int key) {
  return noted(
      "HVM_HashSetInt", [=] { return or_lost(hvm::slot(hash, key)); }, hash, key);
}

HostValue* HVM_HashSet(HostContext, HostHash* hash, HostValue* key) {
  const auto set = [=] { return or_lost(key ? hvm::slot(hash, *key) : nullptr); };
  return noted("HVM_HashSet", set, hash, KeyOperand{key});
}

HostValue* HVM_HashGetInt(HostHash* hash, int key) {
  return noted(
      "HVM_HashGetInt", [=] { return or_nil(hvm::find(hash, key)); }, hash, key);
}

HostValue* HVM_HashGet(HostContext, HostHash* hash, HostValue* key) {
  const auto get = [=] { return or_nil(key ? hvm::find(hash, *key) : nullptr); };
  return noted("HVM_HashGet", get, hash, KeyOperand{key});
}

// Without an integer key a walk between the bounds visits nothing.
void HVM_HashGetBounds(HostHash* hash, int* low, int* high) {
  const auto get = [=] {
    const KeyBounds bounds = hash ? bounds_of(*own(hash)) : KeyBounds{};
    if (low) *low = bounds.lowest;
    if (high) *high = bounds.highest;
    return BoundsResult{bounds.lowest, bounds.highest};
  };
  noted("HVM_HashGetBounds", get, hash);
}

HostValue* HVM_GetGlobalNilObj() {
  return noted("HVM_GetGlobalNilObj", [] { return global_nil(); });
}

// Drops the caller's reference, and destroys the table with the last one.
void HVM_GCFreeTable(HostHash* hash) {
  noted(
      "HVM_GCFreeTable", [=] { drop_table(hash ? own(hash) : nullptr, nullptr); }, hash);
}

}  // namespace arrayfold
