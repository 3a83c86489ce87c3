// support/plain_reductions.hpp: what a slow reading of the rules of the reductions gives
//
// The order in which floating-point numbers are added is part of each result. The formulas take one element after the
// other, so that nothing but that order is in them.

#pragma once

#include <ostream>
#include <string>

#include "support/same.hpp"
#include "support/test_array.hpp"

namespace arrayfold::test {

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

/// The number that the rules of the function give: xsum, xprod, xamin, xamax, xmean, xvariance, xstddev or xtrapz.
HostNumber expected_number(const std::string& name, const TestArray& array);

}  // namespace arrayfold::test
