// order/differences.cpp: xdiff

#include "array/arguments.hpp"
#include "array/rows.hpp"
#include "array/storage.hpp"
#include "kernels/arithmetic.hpp"

namespace arrayfold {
namespace {

/// Each element of a row but the first, minus the one before it. Integers wrap. The last extent shrinks by one, and is
/// 0 where there is no element; a zero-dimensional array gives one dimension without elements.
constexpr auto differences = [](auto kind, const auto& array) {
  check_extents(array);
  const auto& elements = array.storage();
  Shape extents = array.shape();
  const std::size_t length = row_length(extents);
  if (extents.empty()) extents.push_back(1);
  extents.back() = elements.empty() ? 0 : length - 1;
  auto made = make_array<decltype(kind)>(extents);
  auto* out = made->array->storage().data();
  const auto subtract = arithmetic<typename decltype(kind)::element>().difference.both_advance;
  for_each_row(array.shape(), elements.size(), [&](std::size_t first, std::size_t) {
    const auto* row = elements.data() + first;
    subtract(row + 1, row, out, length - 1);
    out += length - 1;
  });
  return made;
};

}  // namespace

Outcome xdiff(const Call& call) { return give_made(double_first{}, call, differences); }

}  // namespace arrayfold
