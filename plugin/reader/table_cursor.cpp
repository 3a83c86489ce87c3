// reader/table_cursor.cpp: the modes of a walk

#include "reader/table_cursor.hpp"

namespace arrayfold {
namespace {

bool is_nil(const HostValue* value) { return value != nullptr && value->tag == ValueTag::nil; }
bool is_number(HostValue* value) { return value != nullptr && HVM_NumberCheck(value) != 0; }
bool is_text(HostValue* value) { return value != nullptr && HVM_StringCheckAll(value) != 0; }

/// An empty table in place of a missing one. It is never passed to the host, whose tables are longer than this head.
HostHash no_table{};

HostHash* table_or_none(HostHash* hash) { return hash == nullptr ? &no_table : hash; }

int highest_key(HostHash* hash) {
  int low = 0, high = -1;
  if (hash != &no_table) HVM_HashGetBounds(hash, &low, &high);
  return high;
}

}  // namespace

HostHashItem* item_of(HostValue* found) {
  if (found == nullptr || found == HVM_GetGlobalNilObj()) return nullptr;
  auto* bytes = static_cast<std::byte*>(static_cast<void*>(found));
  return static_cast<HostHashItem*>(static_cast<void*>(bytes - offsetof(HostHashItem, value)));
}

// The order of the checks is fixed: a text is asked for only when no range fits.
TableCursor::TableCursor(HostHash* hash, HostValue* first, HostValue* second)
    : hash_(table_or_none(hash)), key_(first) {
  if ((first == nullptr && second == nullptr) || (is_nil(first) && is_nil(second))) {
    mode_ = Mode::everything;
  } else if (is_nil(first) && is_number(second)) {
    mode_ = Mode::range;
    high_ = HVM_AsInt(second);
  } else if (is_number(first) && is_nil(second)) {
    mode_ = Mode::range;
    low_ = HVM_AsInt(first);
    high_ = highest_key(hash_);
  } else if (is_number(first) && is_number(second)) {
    mode_ = Mode::range;
    low_ = HVM_AsInt(first);
    high_ = HVM_AsInt(second);
  } else if (is_text(first)) {
    mode_ = Mode::text_key;
  } else if (is_number(first)) {
    mode_ = Mode::number_key;
  } else if (first != nullptr && first->tag == ValueTag::table) {
    // required: the entries of the selector come out as they are; the table that it selects from is not asked.
    mode_ = Mode::selector_table;
    hash_ = table_or_none(load<HostHash*>(first->payload));
  }
}

int TableCursor::capacity() const {
  if (mode_ == Mode::range) return static_cast<int>(high_ - low_);
  return hash_->item_count;
}

bool TableCursor::next_item() {
  const int count = other_count();
  while (other_ < count) {
    HostHashItem* item = hash_->items.get() + other_++;
    if (item->key.tag == ValueTag::string_record || item->key.tag == ValueTag::nil) continue;
    item_ = item;
    return true;
  }
  return false;
}

bool TableCursor::next_in_range() {
  if (hash_ == &no_table) return false;
  while (low_ <= high_) {
    item_ = item_of(HVM_HashGetInt(hash_, static_cast<int>(low_++)));
    if (item_ != nullptr) return true;
  }
  return false;
}

bool TableCursor::next_selected() {
  if (mode_ == Mode::range) return next_in_range();
  if (key_ == nullptr || !selects_one_key()) return false;
  item_ = hash_ == &no_table ? nullptr : item_of(HVM_HashGet(nullptr, hash_, key_));
  key_ = nullptr;  // one match, be it null
  return true;
}

}  // namespace arrayfold
