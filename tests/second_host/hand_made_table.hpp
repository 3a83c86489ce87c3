// second_host/hand_made_table.hpp: a table of numbers whose parts a test changes as it likes
//
// Every block has the size of what is in it, so that the sanitizers see each step beside it.

#pragma once

#include <memory>
#include <vector>

#include "kernel/tables.hpp"
#include "support/module_test.hpp"

namespace arrayfold::test {

inline std::vector<Value> numbers(const std::vector<int>& numbers) {
  std::vector<Value> values;
  for (const int number : numbers) values.emplace_back(number);
  return values;
}

/// A value of tag 5 that shares a table.
inline Value value_over(hvm::kernel::Table& table) {
  hvm::hold(&table);
  return raw(ValueTag::table, reinterpret_cast<std::uintptr_t>(static_cast<HostHash*>(&table)));
}

/// The part of a table in which its entries are.
enum class Part { ordered, items };

class HandMadeTable {
 public:
  HandMadeTable(Part part, const std::vector<Value>& values) : part_(part) {
    hash_.references = 1;  // its own: the host never ends it
    set(values);
  }
  HandMadeTable(const HandMadeTable&) = delete;
  HandMadeTable& operator=(const HandMadeTable&) = delete;

  HostHash* hash() { return &hash_; }
  Value value() { return value_over(hash_); }

  /// Puts other entries into new blocks. What was there before ends at once, or with the table.
  enum class Old { ends, lasts };
  void set(const std::vector<Value>& values, Old old = Old::ends) {
    if (old == Old::lasts) {
      kept_.push_back(std::move(entries_));
      kept_items_.push_back(std::move(items_));
    }
    entries_.clear();
    values_ = values;
    const std::size_t count = values.size();
    items_ = std::make_unique<HostHashItem[]>(part_ == Part::items ? count : 0);
    index_ = std::make_unique<HostHashItem*[]>(part_ == Part::ordered ? count : 0);
    for (std::size_t n = 0; n < count; ++n) {
      HostHashItem item{};
      item.key = Value(static_cast<int>(n)).record();
      item.value = values[n].record();
      if (part_ == Part::items) {
        items_[n] = item;
      } else {
        entries_.push_back(std::make_unique<HostHashItem>(item));
        index_[n] = entries_.back().get();
      }
    }
    hash_.index = index_.get();
    hash_.items = items_.get();
    hash_.index_count = part_ == Part::ordered ? static_cast<int>(count) : 0;
    hash_.item_count = part_ == Part::items ? static_cast<int>(count) : 0;
  }

 private:
  using Entries = std::vector<std::unique_ptr<HostHashItem>>;
  using Items = std::unique_ptr<HostHashItem[]>;

  Part part_;
  hvm::kernel::Table hash_{};
  std::vector<Value> values_;
  std::unique_ptr<HostHashItem*[]> index_;
  Entries entries_;
  Items items_;
  std::vector<Entries> kept_;
  std::vector<Items> kept_items_;
};

}  // namespace arrayfold::test
