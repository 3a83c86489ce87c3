// probe/table_promises.c: tables, their slots and the walk through them

#include "fixture.h"

#include <limits.h>
#include <string.h>

static void tables_are_made(void) {
  HostValue value = nil();
  HOST(HVM_ForceTable)(context, &value, 4);
  expect_tag("HVM_ForceTable", &value, HOST_TAG_TABLE);
  if (value.table == NULL) broken("the payload is null");
  set_entry(value.table, 0, 5);
  if (is_absent(HOST(HVM_HashGetInt)(value.table, 0))) broken("an entry of the table at the payload is not found");
}

static void capacity_is_a_hint(void) {
  static const int capacities[] = {0, 1, 4, 1000};
  for (int i = 0; i < COUNT(capacities); ++i) {
    HostValue value = nil();
    HOST(HVM_ForceTable)(context, &value, capacities[i]);
    if (value.tag != HOST_TAG_TABLE || value.table == NULL) broken("there is no table of capacity %d", capacities[i]);
    for (int key = 0; key < 300; ++key) set_entry(value.table, key, key);
    for (int key = 0; key < 300; ++key) {
      HostValue* slot = HOST(HVM_HashGetInt)(value.table, key);
      if (is_absent(slot) || slot->integer != key)
        broken("the entry %d of 300 is lost in a table of capacity %d", key, capacities[i]);
    }
    HOST(HVM_FreeObjectContent)(context, &value);
  }
}

static const int keys[] = {0, 1, 2, 7, -1, 100000, INT_MAX, INT_MIN};

static void keys_have_one_slot(void) {
  HostValue value = nil();
  HostHash* table = table_in(&value);
  for (int i = 0; i < COUNT(keys); ++i) set_entry(table, keys[i], i);
  for (int i = 0; i < COUNT(keys); ++i) {
    HostValue key = integer(keys[i]);
    HostValue* slot = HOST(HVM_HashSet)(context, table, &key);
    if (slot == NULL) broken("HVM_HashSet returned null for the key %d", keys[i]);
    if (slot->integer != i || slot_of(table, keys[i]) != slot)
      broken("HVM_HashSet and HVM_HashSetInt return different slots for the key %d", keys[i]);
  }
}

static void text_is_a_key(void) {
  HostValue value = nil(), key = nil(), same = nil();
  HostHash* table = table_in(&value);
  HOST(HVM_SetString)(context, &key, "key");
  HOST(HVM_SetString)(context, &same, "key");
  HostValue* slot = HOST(HVM_HashSet)(context, table, &key);
  if (slot == NULL) broken("HVM_HashSet returned null for a text");
  HOST(HVM_SetInt)(context, slot, 42);
  slot = HOST(HVM_HashGet)(NULL, table, &same);
  if (is_absent(slot) || slot->integer != 42) broken("HVM_HashGet does not find the entry of a text by an equal text");
}

static void expect_new(const HostValue* slot, const char* of) {
  if (slot->tag != HOST_TAG_NIL) broken("the new slot of %s has tag %d", of, slot->tag);
  if (slot->lifetime != HOST_LIFETIME_TEMPORARY) broken("the new slot of %s has lifetime %d", of, slot->lifetime);
}

static void new_slots_hold_nil(void) {
  HostValue value = nil(), key = integer(-2);
  HostHash* table = table_in(&value);
  expect_new(slot_of(table, 0), "the key 0");
  expect_new(slot_of(table, 5), "the key 5");
  HostValue* slot = HOST(HVM_HashSet)(context, table, &key);
  if (slot == NULL) broken("HVM_HashSet returned null");
  expect_new(slot, "HVM_HashSet");
}

static void present_keys_are_found(void) {
  HostValue value = nil();
  HostHash* table = table_in(&value);
  for (int i = 0; i < COUNT(keys); ++i) slot_of(table, keys[i]);  // all hold nil
  for (int i = 0; i < COUNT(keys); ++i) {
    HostValue key = integer(keys[i]);
    HostValue* const slot = slot_of(table, keys[i]);
    if (HOST(HVM_HashGetInt)(table, keys[i]) != slot) broken("HVM_HashGetInt does not return the slot of %d", keys[i]);
    if (HOST(HVM_HashGet)(NULL, table, &key) != slot) broken("HVM_HashGet does not return the slot of %d", keys[i]);
  }
}

static void absent_keys_are_not_found(void) {
  HostValue value = nil();
  HostHash* table = table_in(&value);
  for (int round = 0; round < 2; ++round)  // once in an empty table
    for (int again = 0; again < 2; ++again) {
      HostValue key = integer(9);
      if (!is_absent(HOST(HVM_HashGetInt)(table, 9)) || !is_absent(HOST(HVM_HashGet)(NULL, table, &key)))
        broken("%s returned another record for an absent key",
               is_absent(HOST(HVM_HashGetInt)(table, 9)) ? "HVM_HashGet" : "HVM_HashGetInt");
      if (again) set_entry(table, 3, 3);
    }
}

static void largest_key_is_given(void) {
  static const int steps[] = {0, 5, 3, 40, -7};
  HostValue value = nil();
  HostHash* table = table_in(&value);
  for (int i = 0, largest = 0; i < COUNT(steps); ++i) {
    int low = 12345, high = 12345;
    set_entry(table, steps[i], 0);
    largest = steps[i] > largest ? steps[i] : largest;
    HOST(HVM_HashGetBounds)(table, &low, &high);
    if (high != largest) broken("HVM_HashGetBounds gives %d where the largest key is %d", high, largest);
  }
  HostValue negative = nil();
  table = table_in(&negative);
  set_entry(table, -9, 0);
  set_entry(table, -4, 0);
  int low = 0, high = 0;
  HOST(HVM_HashGetBounds)(table, &low, &high);
  if (high != -4) broken("HVM_HashGetBounds gives %d where the largest key is -4", high);
}

static void count_entry(const HostHashItem* item, int* seen) {
  for (int i = 0; i < COUNT(keys); ++i)
    if ((item->key.tag == HOST_TAG_INTEGER && item->key.integer == keys[i]) ||
        (item->key.tag == HOST_TAG_INTEGER64 && item->key.integer64 == keys[i])) {
      if (item->value.integer != 10 * i) broken("the item of the key %d has another value", keys[i]);
      ++seen[i];
      return;
    }
  broken("the walk meets an item of tag %d that is no entry", item->key.tag);
}

static void walk_meets_every_entry(void) {
  HostValue value = nil();
  HostHash* table = table_in(&value);
  int seen[COUNT(keys)] = {0};
  for (int i = 0; i < COUNT(keys); ++i) set_entry(table, keys[i], 10 * i);
  for (int i = 0; i < table->index_count; ++i) count_entry(table->index[i], seen);
  for (int i = 0; i < table->item_count; ++i)
    if (table->items[i].key.tag != HOST_TAG_NIL && table->items[i].key.tag != HOST_TAG_STRING_RECORD)
      count_entry(&table->items[i], seen);
  for (int i = 0; i < COUNT(keys); ++i)
    if (seen[i] != 1) broken("the walk meets the entry of the key %d %d times", keys[i], seen[i]);
}

static void key_is_before_its_value(void) {
  HostValue value = nil();
  HostHash* table = table_in(&value);
  for (int i = 0; i < COUNT(keys); ++i) {
    const HostValue* slot = slot_of(table, keys[i]);
    HostValue key;
    memcpy(&key, (const char*)slot - 18, sizeof key);
    if (HOST(HVM_AsInt)(&key) != keys[i]) broken("the key %d is not 18 bytes before its value", keys[i]);
  }
}

static HostHash* new_table(void) {
  HostHash* table = HOST(HVM_NewHash)(context, 4);
  if (table == NULL) broken("HVM_NewHash returned null");
  return table;
}

static void new_tables_are_stored(void) {
  HostValue value = nil();
  HostHash* table = new_table();
  value.tag = HOST_TAG_TABLE;
  value.table = table;
  HostValue* slot = slot_of(table, 0);
  const Content* content = put_object(slot);
  if (HOST(HVM_HashGetInt)(table, 0) != slot) broken("the table does not keep an entry");
  HOST(HVM_FreeObjectContent)(context, &value);
  expect_destroyed(content, "with the record of its table");
}

static void tables_own_their_entries(void) {
  HostValue value = nil();
  HostHash* table = table_in(&value);
  const Content* in_order = put_object(slot_of(table, 0));
  const Content* elsewhere = put_object(slot_of(table, 77));
  HostHash* inner = new_table();
  HostValue* slot = slot_of(table, 1);
  slot->tag = HOST_TAG_TABLE;
  slot->table = inner;
  const Content* nested = put_object(slot_of(inner, 0));
  if (destroyed > 0) broken("an object was destroyed in a living table");
  HOST(HVM_FreeObjectContent)(context, &value);
  expect_destroyed(in_order, "with its table");
  expect_destroyed(elsewhere, "with its table");
  expect_destroyed(nested, "with the table around its table");
}

static void new_tables_are_freed(void) {
  HOST(HVM_GCFreeTable)(new_table());  // without an entry
  HostHash* table = new_table();
  const Content* in_order = put_object(slot_of(table, 0));
  const Content* elsewhere = put_object(slot_of(table, 77));
  HOST(HVM_GCFreeTable)(table);
  expect_destroyed(in_order, "by HVM_GCFreeTable");
  expect_destroyed(elsewhere, "by HVM_GCFreeTable");
}

static void global_nil_is_one_record(void) {
  HostValue* first = HOST(HVM_GetGlobalNilObj)();
  if (first == NULL) broken("HVM_GetGlobalNilObj returned null");
  if (first->tag != HOST_TAG_NIL) broken("the global nil object has tag %d", first->tag);
  HostValue other = nil();
  HOST(HVM_SetInt)(context, &other, 1);
  if (HOST(HVM_GetGlobalNilObj)() != first) broken("HVM_GetGlobalNilObj returned another record the second time");
}

// clang-format off
static const Promise promises[] = {
    {"`HVM_ForceTable` makes a record of tag 5 with the table in its payload.", tables_are_made, OWN_LAYOUT},
    {"The capacity of a table is a hint.", capacity_is_a_hint, OWN_LAYOUT},
    {"`HVM_HashSetInt` and `HVM_HashSet` return one slot for an integer key.", keys_have_one_slot, OWN_LAYOUT},
    {"`HVM_HashSet` and `HVM_HashGet` know text by its characters.", text_is_a_key, OWN_LAYOUT},
    {"A new slot holds nil, with lifetime 1.", new_slots_hold_nil, OWN_LAYOUT},
    {"`HVM_HashGetInt` and `HVM_HashGet` return the slot of a key that is present, also if it holds nil.",
     present_keys_are_found, OWN_LAYOUT},
    {"`HVM_HashGetInt` and `HVM_HashGet` return null or the global nil object for an absent key.",
     absent_keys_are_not_found, OWN_LAYOUT},
    {"`HVM_HashGetBounds` writes the largest integer key to `*high`.", largest_key_is_given, OWN_LAYOUT},
    {"A walk of `index` and `items` meets every entry once.", walk_meets_every_entry, OWN_LAYOUT},
    {"A slot is the value in its item, with the key 18 bytes before it.", key_is_before_its_value, OWN_LAYOUT},
    {"`HVM_NewHash` returns a table that a module stores in a record of tag 5.", new_tables_are_stored, OWN_LAYOUT},
    {"A table owns what its slots hold, also a table that a module has stored there.",
     tables_own_their_entries, OWN_LAYOUT},
    {"`HVM_GCFreeTable` frees a new table that no record holds, and what its slots hold.",
     new_tables_are_freed, OWN_LAYOUT},
    {"`HVM_GetGlobalNilObj` always returns the same record, which holds nil.", global_nil_is_one_record, OWN_LAYOUT},
};
// clang-format on
const PromiseGroup table_promises = {promises, COUNT(promises)};
