// script/library/array_cells.cpp: the elements of an array of one or two axes, one after the other

#include "script/library/array_cells.hpp"

#include <utility>

namespace hvm {

const HostValue& ArrayCells::at(std::size_t row, std::size_t column) {
  place_.front() = Value(static_cast<int>(row));
  if (place_.size() == 2) place_.back() = Value(static_cast<int>(column));
  auto read = read_element(call_.caller, array_, place_);
  if (!read) call_.fail("the array gives no elements");
  element_ = std::move(*read);
  return element_.record();
}

}  // namespace hvm
