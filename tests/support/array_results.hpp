// support/array_results.hpp: the arrays that functions give, bit for bit

#pragma once

#include <string>
#include <vector>

#include "support/hand_made.hpp"

namespace arrayfold::test {

class ArrayResultTest : public ModuleTest {
 protected:
  /// The array of a kind that a function gives, as a new object in the result.
  static TestArray given(const Answer& answer, Kind kind) {
    EXPECT_EQ(answer.returned, 1);
    if (!holds_array(answer.result)) {
      ADD_FAILURE() << "no array of " << dtype_of(kind) << " but " << type_of(answer.result);
      return TestArray(kind, {}, {});
    }
    TestArray array = from_host(answer.result);
    EXPECT_EQ(dtype_of(array.kind()), std::string(dtype_of(kind)));
    EXPECT_EQ(hvm::references(hvm::object_of(answer.result.record())), 1u);
    return array;
  }

  /// An array of this kind whose elements are all 2.
  Value twos(Kind kind = Kind::float64, const Extents& extents = {3}) const {
    return to_host(ctx(), TestArray(kind, extents, Numbers(size_of(extents), 2)));
  }
  Value twos(const Extents& extents) const { return twos(Kind::float64, extents); }
};

/// Values that no function of arrays accepts where it wants an object: one of every tag, and those of a script.
inline std::vector<Value> no_objects() {
  std::vector<Value> values = {Value(3),        Value(2.5), Value(std::int64_t{3}), Value("text"), Value(u"text"),
                               Value::table(2), Value()};
  for (int tag = 0; tag < 256; ++tag)
    if (tag != static_cast<int>(ValueTag::object)) values.push_back(raw(static_cast<ValueTag>(tag)));
  return values;
}

}  // namespace arrayfold::test
