// support/array_results.hpp: the arrays that functions give, bit for bit

#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "support/elements.hpp"
#include "support/hand_made.hpp"

namespace arrayfold::test {

/// The extents and the elements of an array. Two are equal where their elements have the same bits.
template <class T>
struct Elements {
  Extents extents;
  std::vector<T> elements;

  bool operator==(const Elements& other) const {
    return extents == other.extents && elements.size() == other.elements.size() &&
           (elements.empty() || std::memcmp(elements.data(), other.elements.data(), sizeof(T) * elements.size()) == 0);
  }
};

/// Shows the extents, and the first elements.
template <class T>
void PrintTo(const Elements<T>& array, std::ostream* out) {
  *out << ::testing::PrintToString(array.extents) << ' ' << ::testing::PrintToString(array.elements);
}

/// What a container of the array library's holds, converted element by element.
template <class T, class Container>
Elements<T> elements_in(const Container& container) {
  Elements<T> all;
  all.extents.assign(container.shape().begin(), container.shape().end());
  for (const auto x : container.storage()) all.elements.push_back(static_cast<T>(x));
  return all;
}

/// The first place where two differ, for long arrays; nothing where they are equal.
template <class T>
std::string difference(const Elements<T>& found, const Elements<T>& expected) {
  if (found == expected) return "";
  if (found.extents != expected.extents)
    return "extents " + ::testing::PrintToString(found.extents) + ", not " + ::testing::PrintToString(expected.extents);
  if (found.elements.size() != expected.elements.size()) return "another number of elements";
  std::size_t i = 0;
  while (std::memcmp(&found.elements[i], &expected.elements[i], sizeof(T)) == 0) ++i;
  return "element " + std::to_string(i) + " of " + ::testing::PrintToString(found.extents) + " is " +
         ::testing::PrintToString(found.elements[i]) + ", not " + ::testing::PrintToString(expected.elements[i]);
}

class ArrayResultTest : public ModuleTest {
 protected:
  /// The array of `Kind` that a function gives, as a new object in the result.
  template <class Kind>
  Elements<typename Kind::element> given(const Answer& answer) const {
    EXPECT_EQ(answer.returned, 1);
    const auto* container = container_of<Kind>(answer.result);
    if (container == nullptr) {
      ADD_FAILURE() << "no array of " << Kind::dtype << " but " << type_of(answer.result);
      return {{}, {}};
    }
    EXPECT_EQ(hvm::references(hvm::object_of(answer.result.record())), 1u);
    return elements_in<typename Kind::element>(*container);
  }

  void expect_nothing(const Answer& answer, int returned, const Words& operations, const std::string& what) const {
    EXPECT_EQ(answer.returned, returned) << what;
    EXPECT_TRUE(answer.untouched) << what;
    EXPECT_EQ(answer.operations, operations) << what;
  }

  /// An array of this kind whose elements are all 2.
  template <class Kind = XTDouble>
  Value twos(const Extents& extents = {3}) const {
    return array_of<Kind>(ctx(), extents, std::vector<typename Kind::element>(size_of(extents), 2));
  }
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
