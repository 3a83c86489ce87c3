// kernel/tables.hpp: the host's table
//
// The ordered part holds the keys 0 to n - 1. Its items lie in pieces that never move, so their slots last as long as
// the table; `index` points at them. The hashed part holds all other keys in the array `items`, in the order in
// which they came, with an index of places beside it. An integer key that extends the ordered part moves there with all
// keys that follow it. It leaves an item with a nil key, which is not an entry, and so does a removed key. A table
// counts its references and starts with one.

#pragma once

#include "kernel/kernel.hpp"
#include "kernel/keys.hpp"
#include "kernel/state.hpp"

namespace hvm::kernel {

/// A table as the host keeps it: others see the record at its front.
struct Table : HostHash {
  std::uint32_t references;
  std::int32_t capacity_hint;

  // Ordered part: `index` has room for `index_capacity` and points at `made_items` items, of which those from
  // `index_count` on were removed and serve the next keys. The youngest piece has room for `spare_count` more items.
  std::int32_t index_capacity;
  std::int32_t made_items;
  std::int32_t spare_count;
  HostHashItem* spare_items;
  void* pieces;  // each begins with a pointer to the one before it

  // Hashed part: `items` has room for `item_capacity`; `places`, a power of two, hold the number of an item plus one.
  std::int32_t item_capacity;
  std::int32_t live_items;
  std::int32_t integer_items;
  std::uint32_t place_count;
  std::uint32_t* places;

  // The bounds of the integer keys. After a removal they are found again when somebody asks for them.
  bool has_stale_bounds;
  bool has_integer_key;
  std::int32_t lowest_key;
  std::int32_t highest_key;

  // For the walks that do not recurse: the next table of a list, and the copy that a deep copy made.
  Table* link;
  Table* twin;
  bool is_shown;  // it is being printed
};

inline Table* own(HostHash* table) noexcept { return static_cast<Table*>(table); }
inline const Table* own(const HostHash* table) noexcept { return static_cast<const Table*>(table); }
/// The table behind a record of tag 5.
inline Table* table_in(const HostValue& value) noexcept { return own(table_of(value)); }

/// A new table with one reference; null when memory is missing.
Table* new_table(std::int32_t capacity_hint) noexcept;
/// A record that owns a reference to `table`; nil for null.
HostValue table_record(HostHash* table) noexcept;
/// The value under a key, null when absent.
HostValue* find_value(const Table& table, const Key& key) noexcept;
/// The slot of a key, made when absent; null for what is not a key, or when memory is missing.
HostValue* make_slot(Table& table, const Key& key) noexcept;

/// Takes an entry out and gives its value, nil when there is none. The values behind a key of the ordered part move
/// down by one key.
HostValue take_entry(Table& table, const Key& key) noexcept;

/// The lowest and the highest integer key; 0 and -1 when there is none.
struct KeyBounds {
  std::int32_t lowest = 0;
  std::int32_t highest = -1;
};
KeyBounds bounds_of(Table& table) noexcept;

/// Drops a reference; with the last one the table is destroyed, with everything that it alone held. Does not recurse.
/// Null is allowed.
void drop_table(Table* table, HostContext ctx) noexcept;
/// A deep copy. A table that the source holds twice, or that holds itself, does so in the copy. Does not recurse.
HostValue copy_of_table(const HostValue& value) noexcept;

/// The shared nil record.
HostValue* global_nil() noexcept;
/// The lost slot, for callers whose slot could not be made. It belongs to no table, and is emptied when it is next
/// handed out.
extern HVM_STATE HostValue lost_record;

}  // namespace hvm::kernel
