// second_host/tables.hpp: tables whose slots move with every new key
//
// The entries lie in both parts of a table, in the order in which they came, with items among them that are no entries.
// Up to 32 entries, each new key moves all of them to new blocks.

#pragma once

#include <map>
#include <vector>

#include "second_host/values.hpp"

namespace second_host {

/// What a key is, whatever its record looks like: a whole number, a real, or text in UTF-8.
struct Key {
  enum class Kind { none, whole, real, text };
  Kind kind = Kind::none;
  std::int64_t bits = 0;
  std::string text;
  bool operator<(const Key& other) const;
};
Key key_of(const HostValue& record);
Key key_of(std::int32_t number);

struct Table : HostHash {
  std::uint32_t references = 1;
  bool is_view = false;  // what the slots hold belongs to somebody else
  std::map<Key, std::size_t> places;
  std::vector<HostHashItem*> entries;
  std::int32_t ordered_entries = 0;
  std::int32_t item_capacity = 0;
};

/// A new table with one reference.
Table* new_table();
Table* table_in(const HostValue& value);
HostValue table_record(Table* table);
/// Gives a new table these entries at once. Their keys are records of tags 0, 1, 6 and 20.
void fill(Table& table, const std::vector<HostHashItem>& entries);
/// The value under a key, null when absent.
HostValue* find(const Table& table, const Key& key);
/// The slot of a key, made when absent; null for what is no key.
HostValue* slot(Table& table, const Key& key);
/// The largest whole key of 32 bits. Without one it is -1 or the smallest integer.
std::int32_t highest_key(const Table& table);
/// Ends a table with the last reference to it, however deep it is.
void drop(Table* table);
Table* copy_of_table(const Table& table);

}  // namespace second_host
