// order/differences.cpp: xdiff

#include "kernels/differences.hpp"
#include "array/arguments.hpp"
#include "array/rows.hpp"
#include "array/storage.hpp"

namespace arrayfold {
namespace {

/// Each element of a row but the first, minus the one before it. Integers wrap. The last extent shrinks by one, and is
/// 0 where there is no element; a zero-dimensional array gives one dimension without elements.
constexpr auto between_neighbours = [](auto kind, const auto& array) {
  check_extents(array);
  const auto& elements = array.storage();
  Shape extents = array.shape();
  const std::size_t length = row_length(extents);
  if (extents.empty()) extents.push_back(1);
  extents.back() = elements.empty() ? 0 : length - 1;
  auto made = make_array<decltype(kind)>(extents);
  if (!elements.empty())
    differences<typename decltype(kind)::element>().of_rows(elements.data(), made->array->storage().data(), length,
                                                            elements.size() / length);
  return made;
};

}  // namespace

Outcome xdiff(const Call& call) { return give_made(double_first{}, call, between_neighbours); }

}  // namespace arrayfold
