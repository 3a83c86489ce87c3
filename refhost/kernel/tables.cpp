// kernel/tables.cpp: the two parts of a table and their slots

#include "kernel/tables.hpp"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "kernel/memory.hpp"
#include "kernel/records.hpp"
#include "kernel/strings.hpp"

namespace hvm {
namespace kernel {
namespace {

constexpr std::uint32_t empty_place = 0;
constexpr std::uint32_t left_place = 0xFFFFFFFF;  // its item moved away; a search continues behind it
constexpr std::int32_t most_items = 1 << 29;

std::int32_t first_capacity(const Table& table) noexcept { return std::clamp(table.capacity_hint, 4, 1024); }

HostHashItem& item_at(const Table& table, std::int32_t n) noexcept { return table.items.get()[n]; }
std::uint32_t hash_of(const HostHashItem& item) noexcept { return arrayfold::load<std::uint32_t>(item.host_words); }

HostHashItem new_item(const HostValue& key, std::uint32_t hash) noexcept {
  HostHashItem item{key, nil_record(), {}};
  arrayfold::store<std::uint32_t>(item.host_words, hash);
  return item;
}

void* new_piece(std::size_t size) noexcept { return allocate(size, BlockKind::piece); }

// ---- The ordered part

bool index_has_room(Table& table) noexcept {
  const std::int32_t count = table.index_count;
  if (count < table.index_capacity) return true;
  if (count >= most_items) return false;
  const std::int32_t capacity = count ? 2 * count : first_capacity(table);
  const std::size_t bytes = static_cast<std::size_t>(capacity) * sizeof(HostHashItem*);
  void* grown = count ? reallocate(table.index.get(), bytes) : new_piece(bytes);
  if (!grown) return false;
  table.index = static_cast<HostHashItem**>(grown);
  table.index_capacity = capacity;
  return true;
}

// A piece is as large as all earlier ones together.
bool pieces_have_room(Table& table) noexcept {
  if (table.spare_count > 0) return true;
  const std::int32_t count = std::max<std::int32_t>(table.index_count, first_capacity(table));
  void* piece = new_piece(sizeof(void*) + static_cast<std::size_t>(count) * sizeof(HostHashItem));
  if (!piece) return false;
  std::memcpy(piece, &table.pieces, sizeof(void*));
  table.pieces = piece;
  table.spare_items = static_cast<HostHashItem*>(static_cast<void*>(static_cast<std::byte*>(piece) + sizeof(void*)));
  table.spare_count = count;
  return true;
}

bool next_item_is_made(Table& table) noexcept {
  if (table.index_count < table.made_items) return true;
  if (!index_has_room(table) || !pieces_have_room(table)) return false;
  table.index.get()[table.made_items++] = table.spare_items++;
  --table.spare_count;
  return true;
}

HostHashItem* append_ordered(Table& table) noexcept {
  if (!next_item_is_made(table)) return nullptr;
  const std::int32_t key = table.index_count;
  HostHashItem* item = table.index.get()[key];
  table.index_count = key + 1;
  *item = new_item(record_of<std::int32_t>(ValueTag::integer, key), 0);
  return item;
}

// The values move, not the items, so the slots of the remaining keys stay where they are.
HostValue take_ordered(Table& table, std::int32_t key) noexcept {
  HostHashItem** items = table.index.get();
  const HostValue value = items[key]->value;
  const std::int32_t last = table.index_count - 1;
  table.index_count = last;
  for (std::int32_t n = key; n < last; ++n) items[n]->value = items[n + 1]->value;
  items[last]->value = nil_record();
  return value;
}

// ---- The hashed part

std::uint32_t* find_place(const Table& table, const Key& key) noexcept {
  if (table.live_items == 0) return nullptr;
  const std::uint32_t mask = table.place_count - 1;
  for (std::uint32_t n = key.hash & mask;; n = (n + 1) & mask) {
    std::uint32_t& place = table.places[n];
    if (place == empty_place) return nullptr;
    if (place == left_place) continue;
    const HostHashItem& item = item_at(table, static_cast<std::int32_t>(place - 1));
    if (hash_of(item) == key.hash && is_same(item.key, key)) return &place;
  }
}

HostHashItem* find_hashed(const Table& table, const Key& key) noexcept {
  const std::uint32_t* place = find_place(table, key);
  return place ? &item_at(table, static_cast<std::int32_t>(*place - 1)) : nullptr;
}

void take_place(std::uint32_t* places, std::uint32_t place_count, std::uint32_t hash, std::int32_t item) noexcept {
  const std::uint32_t mask = place_count - 1;
  std::uint32_t n = hash & mask;
  while (places[n] != empty_place) n = (n + 1) & mask;
  places[n] = static_cast<std::uint32_t>(item) + 1;
}

void drop_hashed_storage(Table& table) noexcept {
  give_back(table.items.get());
  give_back(table.places);
  table.items = nullptr;
  table.item_count = 0;
  table.item_capacity = 0;
  table.places = nullptr;
  table.place_count = 0;
}

std::uint32_t places_for(std::int32_t items) noexcept {
  std::uint32_t places = 8;
  while (places < 2 * static_cast<std::uint32_t>(items)) places *= 2;
  return places;
}

// Moves the living items into storage for `capacity` of them. Every item, also a dead one, takes at
// most one place, so with twice as many places a search always finds an empty one.
bool rebuild_hashed(Table& table, std::int32_t capacity) noexcept {
  const std::uint32_t place_count = places_for(capacity);
  auto* items = static_cast<HostHashItem*>(new_piece(static_cast<std::size_t>(capacity) * sizeof(HostHashItem)));
  auto* places = static_cast<std::uint32_t*>(items ? new_piece(place_count * sizeof(std::uint32_t)) : nullptr);
  if (!places) {
    give_back(items);
    return false;
  }
  std::fill_n(places, place_count, empty_place);
  std::int32_t count = 0;
  for (std::int32_t n = 0; n < table.item_count; ++n) {
    if (item_at(table, n).key.tag == ValueTag::nil) continue;
    take_place(places, place_count, hash_of(item_at(table, n)), count);
    items[count++] = item_at(table, n);
  }
  drop_hashed_storage(table);
  table.items = items;
  table.item_count = count;
  table.item_capacity = capacity;
  table.places = places;
  table.place_count = place_count;
  return true;
}

bool items_have_room(Table& table) noexcept {
  if (table.item_count < table.item_capacity) return true;
  if (table.live_items >= most_items) return false;
  return rebuild_hashed(table, std::max(2 * table.live_items, first_capacity(table)));
}

HostHashItem* append_hashed(Table& table, const Key& key) noexcept {
  if (!items_have_room(table)) return nullptr;
  const HostValue stored = key_record(key);
  if (stored.tag == ValueTag::nil) return nullptr;
  const std::int32_t n = table.item_count;
  item_at(table, n) = new_item(stored, key.hash);
  take_place(table.places, table.place_count, key.hash, n);
  table.item_count = n + 1;
  ++table.live_items;
  table.integer_items += key.is_integer();
  return &item_at(table, n);
}

// Takes the value of a key out of the hashed part. Its item is no longer an entry.
HostValue take_hashed(Table& table, std::uint32_t* place) noexcept {
  HostHashItem& item = item_at(table, static_cast<std::int32_t>(*place - 1));
  *place = left_place;
  table.integer_items -= item.key.tag == ValueTag::integer;
  --table.live_items;
  hvm::release(item.key);
  const HostValue value = std::exchange(item.value, nil_record());
  if (table.live_items == 0) drop_hashed_storage(table);
  return value;
}

// Moves the keys that now follow the ordered part over from the hashed one. They stay there when memory is missing.
void draw_in_followers(Table& table) noexcept {
  while (table.integer_items > 0) {
    std::uint32_t* place = find_place(table, key_of(std::int64_t{table.index_count}));
    if (!place) return;
    HostHashItem* item = append_ordered(table);
    if (!item) return;
    item->value = take_hashed(table, place);
  }
}

// ---- Both parts

bool is_ordered(const Table& table, const Key& key) noexcept {
  return key.is_integer() && key.integer() >= 0 && key.integer() < table.index_count;
}

void widen_bounds(Table& table, std::int32_t key) noexcept {
  table.lowest_key = table.has_integer_key ? std::min(table.lowest_key, key) : key;
  table.highest_key = table.has_integer_key ? std::max(table.highest_key, key) : key;
  table.has_integer_key = true;
}

HostHashItem* append_item(Table& table, const Key& key) noexcept {
  if (!key.is_integer() || key.integer() != table.index_count) return append_hashed(table, key);
  HostHashItem* item = append_ordered(table);
  if (item) draw_in_followers(table);
  return item;
}

void find_bounds_again(Table& table) noexcept {
  table.has_stale_bounds = table.has_integer_key = false;
  if (table.index_count > 0) widen_bounds(table, 0), widen_bounds(table, table.index_count - 1);
  if (table.integer_items == 0) return;
  for (std::int32_t n = 0; n < table.item_count; ++n) {
    const HostValue& key = item_at(table, n).key;
    if (key.tag == ValueTag::integer) widen_bounds(table, payload_of<std::int32_t>(key));
  }
}

}  // namespace

HVM_STATE HostValue lost_record = nil_record();

HostValue* global_nil() noexcept {
  static HostValue nil = nil_record();
  return &nil;
}

Table* new_table(std::int32_t capacity_hint) noexcept {
  void* place = allocate(sizeof(Table), BlockKind::table);
  if (!place) return nullptr;
  auto* table = new (place) Table{};
  table->references = 1;
  table->capacity_hint = capacity_hint;
  return table;
}

HostValue table_record(HostHash* table) noexcept {
  return table ? record_of<HostHash*>(ValueTag::table, table) : nil_record();
}

HostValue* find_value(const Table& table, const Key& key) noexcept {
  if (is_ordered(table, key)) return &table.index.get()[key.integer()]->value;
  if (!key.exists() || (key.is_integer() && table.integer_items == 0)) return nullptr;
  HostHashItem* item = find_hashed(table, key);
  return item ? &item->value : nullptr;
}

HostValue* make_slot(Table& table, const Key& key) noexcept {
  if (HostValue* known = find_value(table, key)) return known;
  HostHashItem* item = key.exists() ? append_item(table, key) : nullptr;
  if (!item) return nullptr;
  if (key.is_integer()) widen_bounds(table, key.integer());
  return &item->value;
}

HostValue take_entry(Table& table, const Key& key) noexcept {
  if (key.is_integer()) table.has_stale_bounds = true;
  if (is_ordered(table, key)) return take_ordered(table, key.integer());
  std::uint32_t* place = key.exists() ? find_place(table, key) : nullptr;
  return place ? take_hashed(table, place) : nil_record();
}

KeyBounds bounds_of(Table& table) noexcept {
  if (table.has_stale_bounds) find_bounds_again(table);
  return table.has_integer_key ? KeyBounds{table.lowest_key, table.highest_key} : KeyBounds{};
}

}  // namespace kernel

using namespace kernel;

HostHash* table_of(const HostValue& value) noexcept {
  return value.tag == ValueTag::table ? payload_of<HostHash*>(value) : nullptr;
}

HostHash* hold(HostHash* table) noexcept {
  if (table) ++own(table)->references;
  return table;
}

std::uint32_t references(const HostHash* table) noexcept { return table ? own(table)->references : 0; }

std::int32_t entry_count(const HostHash* table) noexcept {
  return table ? table->index_count + own(table)->live_items : 0;
}

bool is_key(const HostValue& key) {
  if (key_of(key).exists()) return true;
  if (is_text(key)) throw std::bad_alloc();
  return false;
}

namespace {

HostValue* find_in(const HostHash* table, const Key& key) noexcept {
  return table ? find_value(*own(table), key) : nullptr;
}

HostValue* slot_in(HostHash* table, const Key& key) noexcept { return table ? make_slot(*own(table), key) : nullptr; }

void set_in(HostHash* table, const Key& key, const HostValue& value) {
  Value entry = Value::sharing(value);
  HostValue* place = slot_in(table, key);
  if (!place) throw std::bad_alloc();
  replace(nullptr, place, entry.give_up());
}

}  // namespace

HostValue* find(const HostHash* table, const HostValue& key) noexcept { return find_in(table, key_of(key)); }
HostValue* find(const HostHash* table, int key) noexcept { return find_in(table, key_of(std::int64_t{key})); }
HostValue* find(const HostHash* table, std::string_view key) noexcept { return find_in(table, key_of(key)); }
HostValue* slot(HostHash* table, const HostValue& key) noexcept { return slot_in(table, key_of(key)); }
HostValue* slot(HostHash* table, int key) noexcept { return slot_in(table, key_of(std::int64_t{key})); }
HostValue* slot(HostHash* table, std::string_view key) noexcept { return slot_in(table, key_of(key)); }
void set_entry(HostHash* table, const HostValue& key, const HostValue& value) { set_in(table, key_of(key), value); }
void set_entry(HostHash* table, int key, const HostValue& value) { set_in(table, key_of(std::int64_t{key}), value); }
void set_entry(HostHash* table, std::string_view key, const HostValue& value) { set_in(table, key_of(key), value); }
void append_entry(HostHash* table, const HostValue& value) { set_entry(table, next_position(table), value); }

Value key_value(const HostValue& key) {
  return key.tag == ValueTag::string_record ? Value(text_of(key)) : Value::sharing(key);
}

Value remove(HostHash* table, const HostValue& key) noexcept {
  HostValue taken = table ? take_entry(*own(table), key_of(key)) : nil_record();
  return Value::taking(taken);
}

// A key from there on is hashed only after memory was missing.
std::int32_t next_position(const HostHash* table) noexcept {
  std::int32_t position = table ? table->index_count : 0;
  while (find(table, position)) ++position;
  return position;
}

Entry TableWalk::next() noexcept {
  if (!table_) return {};
  if (ordered_ < table_->index_count) {
    HostHashItem* item = table_->index.get()[ordered_++];
    return {&item->key, &item->value};
  }
  while (hashed_ < table_->item_count) {
    HostHashItem& item = item_at(*own(table_), hashed_++);
    if (item.key.tag != ValueTag::nil) return {&item.key, &item.value};
  }
  return {};
}

}  // namespace hvm
