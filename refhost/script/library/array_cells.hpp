// script/library/array_cells.hpp: the elements of an array of one or two axes, one after the other

#pragma once

#include <utility>
#include <vector>

#include "script/library/builtins.hpp"

namespace hvm {

/// Reads elements by row and column. The elements of an array of one axis are rows of one column.
class ArrayCells {
 public:
  /// The call must outlive this. Requires: `axes` is 1 or 2.
  ArrayCells(const BuiltinCall& call, Value array, std::size_t axes)
      : call_(call), array_(std::move(array)), place_(axes) {}

  /// An element, valid until the next call. Throws `Failure` when the array gives none.
  const HostValue& at(std::size_t row, std::size_t column);

 private:
  const BuiltinCall& call_;
  Value array_;
  std::vector<Value> place_;
  Value element_;
};

}  // namespace hvm
