// support/withholding_host.hpp: a host that withholds a table, slot or record on demand
//
// The reference host always gives a slot, though it may be a lost one. A program with withholding_host.cpp among its
// sources puts operations of its own in front of the host's, for itself and for the loaded module.

#pragma once

#include <cstdint>

namespace arrayfold::test {

enum class Withheld { table, hash, slot_by_number, slot_by_key, record };

/// While this lives, the operation gives no value from its n-th call on: with `table`, HVM_ForceTable leaves the value
/// alone; the others return null.
class Withholding {
 public:
  explicit Withholding(Withheld what, std::int64_t nth = 1) noexcept;
  ~Withholding();
  Withholding(const Withholding&) = delete;
  Withholding& operator=(const Withholding&) = delete;

  /// True when the operation was asked for and gave no value.
  static bool has_come() noexcept;
};

}  // namespace arrayfold::test
