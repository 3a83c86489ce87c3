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
#include "support/plain_reductions.hpp"

namespace arrayfold::test {

inline constexpr auto largest = std::numeric_limits<std::int32_t>::max();
inline constexpr auto smallest = std::numeric_limits<std::int32_t>::min();
inline constexpr auto largest64 = std::numeric_limits<std::int64_t>::max();
inline constexpr auto smallest64 = std::numeric_limits<std::int64_t>::min();
inline constexpr double infinity = std::numeric_limits<double>::infinity();

inline const std::vector<std::string> reductions = functions_of("reduce");

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
