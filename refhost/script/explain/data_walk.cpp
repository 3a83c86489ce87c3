// script/explain/data_walk.cpp: a look at a table of data as xarray reads it

#include "script/explain/data_walk.hpp"

namespace hvm {
namespace {

/// The entries of a table that stays as it is: those of the ordered part are read in place, without a call for each.
class Entries {
 public:
  explicit Entries(const HostHash* table) noexcept
      : item_(table->index), end_(item_ + table->index_count), others_(table), has_others_(table->item_count != 0) {}

  Entry next() noexcept {
    if (has_others_) return others_.next();
    if (item_ == end_) return {};
    arrayfold::HostHashItem* item = *item_++;
    return {&item->key, &item->value};
  }

 private:
  arrayfold::HostHashItem** item_;
  arrayfold::HostHashItem** end_;
  TableWalk others_;  // of all entries
  bool has_others_;
};

class DataWalk {
 public:
  DataLook of(const HostHash* table) noexcept {
    const bool is_whole = walk(table, 0);
    return {fault_, !is_whole || has_rows_of_one()};
  }

 private:
  static constexpr std::int32_t most_levels = 64;
  static constexpr std::int64_t most_entries = std::int64_t{1} << 24;

  /// The first row of a depth that has been read.
  struct Row {
    std::int32_t count;
    bool has_rows;
  };

  /// Whether the walk goes on behind this row.
  bool walk(const HostHash* table, std::int32_t depth) noexcept {
    if (depth == most_levels) return false;
    if (depth == depth_count_) rows_[depth_count_++].count = -1;
    Row row{0, false};
    const HostValue* first_name = nullptr;
    Entries entries(table);
    for (Entry entry = entries.next(); entry; entry = entries.next()) {
      if (++entry_count_ > most_entries) return false;
      if (!is_number(*entry.key)) {
        first_name = first_name ? first_name : entry.key;
        continue;
      }
      const bool is_row = entry.value->tag == ValueTag::table;
      if (!is_row && !is_number(*entry.value)) return stop({DataFault::Form::no_number, entry.value});
      if (row.count > 0 && row.has_rows != is_row) return stop({DataFault::Form::row_and_number});
      ++row.count;
      row.has_rows = is_row;
      if (is_row && !walk(arrayfold::load<HostHash*>(entry.value->payload), depth + 1)) return false;
    }
    if (row.count == 0 && first_name) return stop({DataFault::Form::named, first_name});
    Row& first = rows_[depth];
    if (first.count < 0) first = row;
    if (first.count != row.count) return stop({DataFault::Form::row_lengths, nullptr, first.count, row.count});
    return first.has_rows == row.has_rows || stop({DataFault::Form::row_contents});
  }

  bool stop(const DataFault& fault) noexcept {
    fault_ = fault;
    return false;
  }

  bool has_rows_of_one() const noexcept { return depth_count_ > 1 && rows_[depth_count_ - 1].count == 1; }

  Row rows_[most_levels];
  std::int32_t depth_count_ = 0;
  std::int64_t entry_count_ = 0;
  DataFault fault_;
};

}  // namespace

DataLook look_at_data(const HostHash* table) noexcept { return DataWalk().of(table); }

}  // namespace hvm
