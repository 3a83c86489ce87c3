// script/explain/data_walk.hpp: a look at a table of data as xarray reads it

#pragma once

#include <cstdint>

#include "kernel/kernel.hpp"

namespace hvm {

/// The first thing in a table of data that is read in another way than it looks. Words are made of it when it is told.
struct DataFault {
  enum class Form {
    none,
    no_number,       // `culprit` is neither a number nor a row
    row_and_number,  // they stand side by side
    row_lengths,     // `count` and `other_count` entries in rows of one depth
    row_contents,    // numbers in one row, rows in another one of its depth
    named,           // all entries have names; `culprit` is the first of them
    fraction,        // `culprit` is a number that loses its fraction
    another_number,  // `culprit` is a number in whose place the element holds another one
  };
  Form form = Form::none;
  const HostValue* culprit = nullptr;  // lasts as long as the table stays as it is
  std::int32_t count = 0;
  std::int32_t other_count = 0;
};

struct DataLook {
  DataFault fault;
  bool may_be_column = false;  // the innermost rows have one element, as far as can be seen
};

inline bool is_number(const HostValue& record) noexcept {
  return record.tag == ValueTag::integer || record.tag == ValueTag::real || record.tag == ValueTag::integer64;
}

/// What becomes of the numbers of a table.
enum class DataElements { others, narrow_integers, wide_integers };

/// Walks a table as the module does. It takes no memory. Tables may be shared and deep, so that it ends without a fault
/// after some millions of entries and below some tens of levels. A number of which an element keeps a part is a fault
/// where there is no other one, and one that is kept as another number comes before one that loses its fraction.
DataLook look_at_data(const HostHash* table, DataElements elements) noexcept;

}  // namespace hvm
