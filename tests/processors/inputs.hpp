// processors/inputs.hpp: the fixed input of the digests

#pragma once

#include <vector>

#include "support/test_array.hpp"

namespace arrayfold::test {

/// What the elements of an array are.
enum class Content {
  random,   // of all sizes
  special,  // random, and every third one NaN, an infinity, a zero of either sign, or an end of the range
  few,      // whole numbers from -3 to 3: many equal ones and zeros
};
inline const std::vector<Content> all_contents = {Content::random, Content::special, Content::few};

/// An array of any kind; equal arguments give equal arrays.
TestArray fixed_array(Kind kind, const Extents& extents, Content content, unsigned seed = 1);

/// Lengths of rows: all up to 70, and those around the blocks of loops.
const std::vector<std::size_t>& lengths();
/// Extents of arrays: a vector of each length, and arrays of up to six dimensions.
const std::vector<Extents>& shapes();
/// Pairs of extents that broadcast, and some that do not.
const std::vector<std::pair<Extents, Extents>>& broadcast_shapes();

}  // namespace arrayfold::test
