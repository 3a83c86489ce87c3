// support/withholding_host.hpp: a host that gives no table, slot or record where it is told so
//
// The reference host always gives a slot, though it may be a lost one. A program with withholding_host.cpp among its
// sources puts operations of its own in front of the host's, for itself and for the loaded module.

#pragma once

#include <cstdint>

namespace arrayfold::test {

enum class Withheld { table, hash, slot_by_number, slot_by_key, record };

/// From the n-th call on, the operation gives nothing: `table` leaves the value of HVM_ForceTable alone, the others are
/// null. Until the end of this object.
class Withholding {
 public:
  explicit Withholding(Withheld what, std::int64_t nth = 1) noexcept;
  ~Withholding();
  Withholding(const Withholding&) = delete;
  Withholding& operator=(const Withholding&) = delete;

  /// True when the operation was asked for and gave nothing.
  static bool has_come() noexcept;
};

}  // namespace arrayfold::test
