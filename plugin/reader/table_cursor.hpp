// reader/table_cursor.hpp: walking a host table, whole or under a selector

#pragma once

#include <algorithm>

#include "host/host_operations.hpp"

namespace arrayfold {

/// Walks the entries of a table that a pair of selectors chooses. The table may change between two steps, since the
/// host is asked for values there: each step looks anew where the entries are and how many. No item is read after the
/// host has been asked for its value.
///
/// A walk over everything gives the ordered part first, then the other items, passing over keys of tag 6 and 10. A
/// range asks for each integer key and passes over those that are absent. A single key gives its entry, or one null.
class TableCursor {
 public:
  /// How the selectors are understood: the numbers are those of the modes.
  enum class Mode { nothing = 0, everything = 1, range = 2, text_key = 3, number_key = 4, selector_table = 5 };

  /// Everything in `hash`; a null table is empty.
  explicit TableCursor(HostHash* hash) : TableCursor(hash, nullptr, nullptr) {}
  /// What `first` and `second` choose in `hash`; either may be null.
  TableCursor(HostHash* hash, HostValue* first, HostValue* second);

  Mode mode() const { return mode_; }
  bool selects_one_key() const { return mode_ == Mode::text_key || mode_ == Mode::number_key; }
  /// How many entries a table for the matches is made for.
  int capacity() const;

  /// Steps to the next match. False: there is none. After it `item` is the match.
  bool next() {
    if (mode_ == Mode::everything || mode_ == Mode::selector_table) return next_entry();
    return next_selected();
  }
  /// The same for a walk over everything. A null pointer in the ordered part is no entry.
  bool next_entry() {
    while (ordered_ < ordered_count()) {
      item_ = hash_->index.get()[ordered_++];
      if (item_ != nullptr) return true;
    }
    return next_item();
  }
  /// An upper bound of the entries that a walk over everything has left.
  std::size_t most_left() const {
    return static_cast<std::size_t>(std::max(0, ordered_count() - ordered_)) +
           static_cast<std::size_t>(std::max(0, other_count() - other_));
  }
  /// The match; null when a single key is absent.
  HostHashItem* item() const { return item_; }

 private:
  int ordered_count() const { return hash_->index.get() == nullptr ? 0 : hash_->index_count; }
  int other_count() const { return hash_->items.get() == nullptr ? 0 : hash_->item_count; }
  bool next_item();
  bool next_selected();
  bool next_in_range();

  Mode mode_ = Mode::nothing;
  HostHash* hash_;
  HostValue* key_ = nullptr;
  HostHashItem* item_ = nullptr;
  int ordered_ = 0;  // place in the ordered part
  int other_ = 0;    // place among the other items
  std::int64_t low_ = 0, high_ = -1;
};

/// The value that a read of a table gave, as its item; null when the read found nothing, which a host tells by null or
/// by its one shared nil.
HostHashItem* item_of(HostValue* found);

}  // namespace arrayfold
