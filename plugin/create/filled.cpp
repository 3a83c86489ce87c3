// create/filled.cpp: xzeros, xones, xempty, xeye
//
// Arrays of doubles made from extents alone, each filled in its own way.

#include "create/filled.hpp"

#include <algorithm>

#include "kernels/sequences.hpp"

namespace arrayfold {
namespace {

constexpr auto ones = [](double* first, std::size_t count) { fill(first, count, 1.0); };
constexpr auto nothing = [](double*, std::size_t) {};

}  // namespace

Outcome xzeros(const Call& call) {
  Shape extents;
  if (!read_extents(call, extents)) return Outcome::failed;
  give_array(call, make_array_of_zeros<XTDouble>(extents));
  return Outcome::handled;
}
Outcome xones(const Call& call) { return make_filled(call, ones); }
Outcome xempty(const Call& call) { return make_filled(call, nothing); }

Outcome xeye(const Call& call) {
  Shape extents;
  if (!read_extent(call, 0, extents)) return Outcome::failed;
  if (call.nargs == 1)
    extents.push_back(extents[0]);
  else if (!read_extent(call, 1, extents))
    return Outcome::failed;
  auto array = make_array_of_zeros<XTDouble>(extents);
  auto& storage = array->array->storage();
  for (std::size_t i = 0; i < std::min(extents[0], extents[1]); ++i) storage[i * extents[1] + i] = 1.0;
  give_array(call, std::move(array));
  return Outcome::handled;
}

}  // namespace arrayfold
