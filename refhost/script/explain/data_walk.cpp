// script/explain/data_walk.cpp: a look at a table of data as xarray reads it

#include "script/explain/data_walk.hpp"

#include "script/explain/array_integers.hpp"

namespace hvm {
namespace {

template <DataElements elements>
class DataWalk {
 public:
  DataLook of(const HostHash* table) noexcept {
    const bool is_whole = walk(table, 0);
    return {fault_.form == DataFault::Form::none ? loss_ : fault_, !is_whole || has_rows_of_one()};
  }

 private:
  static constexpr std::int32_t most_levels = 64;
  static constexpr std::int64_t most_entries = std::int64_t{1} << 24;

  /// The first row of a depth that has been read.
  struct Row {
    std::int32_t count;
    bool has_rows;
  };

  /// Reads a table as a row of its depth. Whether the walk goes on behind it.
  bool walk(const HostHash* table, std::int32_t depth) noexcept {
    const std::int32_t ordered = table->index_count;
    entry_count_ += ordered + table->item_count;
    if (depth == most_levels || entry_count_ > most_entries) return false;
    if (depth == depth_count_) rows_[depth_count_++].count = -1;
    // The keys of the ordered part are numbers. Its values are read in place, without a call for each, and mostly they
    // are numbers, too.
    arrayfold::HostHashItem** const items = table->index;
    Row row{0, false};
    while (row.count < ordered && is_number(items[row.count]->value)) note_loss(items[row.count++]->value);
    for (std::int32_t i = row.count; i < ordered; ++i)
      if (!take(items[i]->value, row, depth)) return false;
    const bool has_others = table->item_count > 0;
    return (!has_others || take_others(table, row, depth)) && close(row, depth);
  }

  /// Reads the next entry of a row.
  bool take(const HostValue& value, Row& row, std::int32_t depth) noexcept {
    const bool is_row = value.tag == ValueTag::table;
    if (!is_row && !is_number(value)) return stop({DataFault::Form::no_number, &value});
    if (row.count++ == 0) row.has_rows = is_row;
    if (row.has_rows != is_row) return stop({DataFault::Form::row_and_number});
    if (!is_row) note_loss(value);
    return !is_row || walk(arrayfold::load<HostHash*>(value.payload), depth + 1);
  }

  /// Reads the entries behind the ordered part. Those under names are passed over.
  bool take_others(const HostHash* table, Row& row, std::int32_t depth) noexcept {
    const HostValue* first_name = nullptr;
    TableWalk walk(table);
    for (std::int32_t i = 0; i < table->index_count; ++i) walk.next();
    while (const Entry entry = walk.next()) {
      if (is_number(*entry.key)) {
        if (!take(*entry.value, row, depth)) return false;
      } else if (!first_name) {
        first_name = entry.key;
      }
    }
    return row.count > 0 || !first_name || stop({DataFault::Form::named, first_name});
  }

  /// Ends a row; stops where it differs from the first one of its depth.
  bool close(const Row& row, std::int32_t depth) noexcept {
    Row& first = rows_[depth];
    if (first.count < 0) first = row;
    if (first.count != row.count) return stop({DataFault::Form::row_lengths, nullptr, first.count, row.count});
    return first.has_rows == row.has_rows || stop({DataFault::Form::row_contents});
  }

  void note_loss(const HostValue& number) noexcept {
    if constexpr (elements != DataElements::others) {
      const Kept kept = kept_by(elements == DataElements::narrow_integers, number);
      if (kept == Kept::whole_part && !loss_.culprit) loss_ = {DataFault::Form::fraction, &number};
      if (kept == Kept::another && loss_.form != DataFault::Form::another_number)
        loss_ = {DataFault::Form::another_number, &number};
    }
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
  DataFault loss_;
};

template <DataElements elements>
DataLook looked_at(const HostHash* table) noexcept {
  DataWalk<elements> walk;  // without parentheses, which would fill its rows with zeros
  return walk.of(table);
}

}  // namespace

DataLook look_at_data(const HostHash* table, DataElements elements) noexcept {
  switch (elements) {
    case DataElements::narrow_integers:
      return looked_at<DataElements::narrow_integers>(table);
    case DataElements::wide_integers:
      return looked_at<DataElements::wide_integers>(table);
    default:
      return looked_at<DataElements::others>(table);
  }
}

}  // namespace hvm
