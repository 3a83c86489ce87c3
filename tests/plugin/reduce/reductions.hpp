// reduce/reductions.hpp: the ten functions from an array to a number

#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "support/functions.hpp"
#include "support/hand_made.hpp"
#include "support/same.hpp"

namespace arrayfold::test {

inline constexpr auto largest = std::numeric_limits<std::int32_t>::max();
inline constexpr auto smallest = std::numeric_limits<std::int32_t>::min();
inline constexpr auto largest64 = std::numeric_limits<std::int64_t>::max();
inline constexpr auto smallest64 = std::numeric_limits<std::int64_t>::min();
inline constexpr double infinity = std::numeric_limits<double>::infinity();

inline const std::vector<std::string> reductions = functions_of("reduce");

/// A number as the host gets it: by one operation of three.
struct HostNumber {
  const char* setter;  // "SetReal result", "SetInt result" or "SetInt64 result"
  Number value;

  /// The operation is the same, and the number to the bit, but for NaN.
  friend bool operator==(const HostNumber& a, const HostNumber& b) {
    if (std::string(a.setter) != b.setter) return false;
    return a.value.is_integer ? a.value == b.value : same(a.value.real, b.value.real);
  }
  friend std::ostream& operator<<(std::ostream& out, const HostNumber& x) {
    return out << x.value << " by " << x.setter;
  }
};

/// The operation through which the host gets a number of this type.
template <class T>
HostNumber host_number(T x) {
  if constexpr (std::is_floating_point_v<T>) return {"SetReal result", static_cast<double>(x)};
  return {sizeof(T) == 4 ? "SetInt result" : "SetInt64 result", x};
}

class ReductionTest : public ModuleTest {
 protected:
  /// The number that a function gives.
  HostNumber number_given(const std::string& name, const Value& operand) const;
  HostNumber number_given(const std::string& name, const TestArray& array) const {
    Operand operand(ctx(), array);
    return number_given(name, operand.value());
  }

  /// The same of a known type: a double, std::int32_t or std::int64_t.
  template <class R>
  R number(const std::string& name, const Value& operand) const {
    const HostNumber found = number_given(name, operand);
    EXPECT_STREQ(found.setter, host_number(R{}).setter) << name;
    return found.value.as<R>();
  }
  template <class R, class Row>
  R number_of(const std::string& name, const Extents& extents,
              const std::vector<typename Row::element>& elements) const {
    Operand operand(ctx(), TestArray(extents, elements));
    return number<R>(name, operand.value());
  }
  template <class R, class Row>
  R number_of(const std::string& name, const std::vector<typename Row::element>& elements) const {
    return number_of<R, Row>(name, {elements.size()}, elements);
  }
};

}  // namespace arrayfold::test
