// script/data/cell_number.hpp: the number that a cell of a table of data spells

#pragma once

#include <cstdint>
#include <string_view>

namespace hvm {

struct CellNumber {
  enum class Kind {
    missing,       // the cell is empty
    integer,       // it fits into 64 bits
    real,          // also nan and inf, and integers that need more than 64 bits
    beyond_range,  // it is a number, but larger than any double
    none           // it is text
  };
  Kind kind = Kind::none;
  std::int64_t integer = 0;
  double real = 0;  // also the value of an integer; infinite beyond the range
};

/// The number in a cell: decimal, with a sign and blanks around it or without.
CellNumber number_in(std::string_view cell);

}  // namespace hvm
