// order/differences.cpp: xdiff

#include "array/arguments.hpp"
#include "array/rows.hpp"
#include "array/storage.hpp"

namespace arrayfold {
namespace {

template <class T>
void subtract_neighbours(const T* elements, std::size_t count, T* __restrict out) {
  for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<T>(elements[i + 1] - elements[i]);
}

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
  for_each_row(array.shape(), elements.size(), [&](std::size_t first, std::size_t) {
    subtract_neighbours(elements.data() + first, length - 1, out);
    out += length - 1;
  });
  return made;
};

}  // namespace

Outcome xdiff(const Call& call) { return give_made(double_first{}, call, differences); }

}  // namespace arrayfold
