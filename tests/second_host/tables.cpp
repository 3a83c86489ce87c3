// second_host/tables.cpp: the two parts of a table, and where its slots are

#include "second_host/tables.hpp"

#include <algorithm>
#include <cmath>
#include <optional>
#include <tuple>

namespace second_host {

using arrayfold::load;
using arrayfold::store;

namespace {

constexpr std::size_t most_that_move = 32;

/// An item that is no entry, with a value that must not be read.
HostHashItem dead_item() {
  HostHashItem item;
  spoil(&item, sizeof item);
  const bool is_text = by_chance();
  item.key.tag = is_text ? ValueTag::string_record : ValueTag::nil;
  if (is_text) store<void*>(item.key.payload, nullptr);
  item.value.tag = by_chance() ? ValueTag::table : ValueTag::object;
  item.value.lifetime = Lifetime::temporary;
  return item;
}

void give_back_storage(Table& table) {
  for (std::int32_t n = 0; n < table.ordered_entries; ++n) give_back(table.entries[static_cast<std::size_t>(n)]);
  give_back(table.index);
  give_back(table.items);
}

/// The number of entries at the front that the ordered part takes: by choice none, some, or all that it may have.
std::size_t ordered_count(const std::vector<HostHashItem>& entries) {
  const auto is_text = [](const HostHashItem& entry) { return entry.key.tag == ValueTag::string_record; };
  const auto end = std::find_if(entries.begin(), entries.end(), is_text);
  const auto most = static_cast<unsigned>(end - entries.begin());
  const unsigned way = choice(3);
  return way == 0 ? 0 : way == 1 ? most : choice(most + 1);
}

void write_index(Table& table, const std::vector<HostHashItem>& entries, std::size_t count) {
  std::vector<HostHashItem*> index;
  for (std::size_t n = 0; n < count; ++n) {
    auto* item = static_cast<HostHashItem*>(take(sizeof(HostHashItem)));
    *item = entries[n];
    table.entries.push_back(item);
    index.push_back(item);
  }
  const std::size_t bytes = index.size() * sizeof(HostHashItem*);
  table.index = index.empty() && by_chance() ? nullptr : static_cast<HostHashItem**>(take(bytes));
  if (bytes > 0) std::memcpy(table.index, index.data(), bytes);
  table.index_count = static_cast<std::int32_t>(index.size());
  table.ordered_entries = static_cast<std::int32_t>(count);
}

void write_items(Table& table, const std::vector<HostHashItem>& entries, std::size_t from) {
  std::vector<HostHashItem> items;
  std::vector<std::size_t> places;
  for (std::size_t n = from; n < entries.size(); ++n) {
    if (choice(4) == 0) items.push_back(dead_item());
    places.push_back(items.size());
    items.push_back(entries[n]);
  }
  if (choice(4) == 0) items.push_back(dead_item());
  const std::size_t capacity = entries.size() < most_that_move ? items.size() : 2 * items.size();
  auto* first = static_cast<HostHashItem*>(take(capacity * sizeof(HostHashItem)));
  std::copy(items.begin(), items.end(), first);
  for (const std::size_t place : places) table.entries.push_back(first + place);
  table.items = first;
  table.item_count = static_cast<std::int32_t>(items.size());
  table.item_capacity = static_cast<std::int32_t>(capacity);
}

std::vector<HostHashItem> entries_of(const Table& table) {
  std::vector<HostHashItem> entries;
  entries.reserve(table.entries.size() + 1);
  for (const HostHashItem* entry : table.entries) entries.push_back(*entry);
  return entries;
}

/// Puts all entries into new blocks.
void arrange(Table& table, const std::vector<HostHashItem>& entries) {
  give_back_storage(table);
  table.entries.clear();
  const std::size_t ordered = ordered_count(entries);
  write_index(table, entries, ordered);
  write_items(table, entries, ordered);
  spoil(table.host_word, sizeof table.host_word);
}

HostValue record_of(const Key& key) {
  if (key.kind == Key::Kind::text) return text(key.text, TextForm::string_record);
  if (key.kind == Key::Kind::real) return real(load<double>(&key.bits));
  const auto narrow = static_cast<std::int32_t>(key.bits);
  return narrow == key.bits ? integer(narrow) : integer64(key.bits);
}

HostHashItem new_entry(const Key& key) {
  HostHashItem entry;
  spoil(&entry, sizeof entry);
  entry.key = record_of(key);
  entry.key.lifetime = static_cast<Lifetime>(choice(3));
  entry.value = nil();
  return entry;
}

}  // namespace

bool Key::operator<(const Key& other) const {
  return std::tie(kind, bits, text) < std::tie(other.kind, other.bits, other.text);
}

Key key_of(std::int32_t number) { return {Key::Kind::whole, number, {}}; }

Key key_of(const HostValue& record) {
  if (is_text(record)) return {Key::Kind::text, 0, utf8_of(record)};
  if (!is_number(record)) return {};
  const ValueTag tag = native_tag(record);
  if (tag != ValueTag::real && tag != single_tag) return {Key::Kind::whole, as_integer64(record), {}};
  double x = as_real(record);
  if (x == 0) x = 0.0;  // one key of both zeros
  if (std::isnan(x)) x = std::nan("");
  return {Key::Kind::real, load<std::int64_t>(&x), {}};
}

Table* new_table() {
  auto* table = new Table();
  arrange(*table, {});
  ++live.tables;
  return table;
}

Table* table_in(const HostValue& value) {
  return value.tag == ValueTag::table ? static_cast<Table*>(load<HostHash*>(value.payload)) : nullptr;
}

HostValue table_record(Table* table) {
  HostValue record = nil();
  if (table == nullptr) return record;
  record.tag = ValueTag::table;
  store<HostHash*>(record.payload, table);
  return record;
}

void fill(Table& table, const std::vector<HostHashItem>& entries) {
  for (const HostHashItem& entry : entries) table.places.emplace(key_of(entry.key), table.places.size());
  arrange(table, entries);
}

HostValue* find(const Table& table, const Key& key) {
  const auto place = table.places.find(key);
  return place == table.places.end() ? nullptr : &table.entries[place->second]->value;
}

HostValue* slot(Table& table, const Key& key) {
  if (key.kind == Key::Kind::none) return nullptr;
  if (HostValue* known = find(table, key)) return known;
  const HostHashItem entry = new_entry(key);
  table.places.emplace(key, table.entries.size());
  if (table.entries.size() >= most_that_move && table.item_count < table.item_capacity) {
    HostHashItem* place = table.items.get() + table.item_count;
    *place = entry;
    table.item_count = table.item_count + 1;
    table.entries.push_back(place);
  } else {
    std::vector<HostHashItem> entries = entries_of(table);
    entries.push_back(entry);
    arrange(table, entries);
  }
  return &table.entries.back()->value;
}

std::int32_t highest_key(const Table& table) {
  std::optional<std::int64_t> highest;
  for (const auto& [key, place] : table.places) {
    const bool is_key = key.kind == Key::Kind::whole && key.bits == static_cast<std::int32_t>(key.bits);
    if (is_key) highest = std::max(highest.value_or(key.bits), key.bits);
  }
  const std::int64_t without_keys = by_chance() ? -1 : INT32_MIN;
  return static_cast<std::int32_t>(highest.value_or(without_keys));
}

void drop(Table* table) {
  std::vector<Table*> dying;
  const auto unhold = [&](Table* one) {
    if (one != nullptr && --one->references == 0) dying.push_back(one);
  };
  unhold(table);
  while (!dying.empty()) {
    Table* const last = dying.back();
    dying.pop_back();
    for (const HostHashItem* entry : last->entries) {
      if (last->is_view) break;
      release(entry->key);
      if (entry->value.tag == ValueTag::table)
        unhold(table_in(entry->value));
      else
        release(entry->value);
    }
    give_back_storage(*last);
    spoil(static_cast<HostHash*>(last), sizeof(HostHash));
    delete last;
    --live.tables;
  }
}

Table* copy_of_table(const Table& table) {
  std::map<const Table*, Table*> copies;
  std::vector<const Table*> open;
  const auto copied = [&](const Table* source) {
    const auto [place, is_new] = copies.emplace(source, nullptr);
    if (!is_new) {
      ++place->second->references;
      return place->second;
    }
    place->second = new_table();
    open.push_back(source);
    return place->second;
  };
  Table* const copy = copied(&table);
  while (!open.empty()) {
    const Table* const source = open.back();
    open.pop_back();
    std::vector<HostHashItem> entries = entries_of(*source);
    for (HostHashItem& entry : entries) {
      entry.key = record_of(key_of(entry.key));
      const Table* inner = table_in(entry.value);
      entry.value = inner != nullptr ? table_record(copied(inner)) : copy_of(entry.value);
    }
    fill(*copies[source], entries);
  }
  return copy;
}

}  // namespace second_host
