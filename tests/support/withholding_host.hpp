// support/withholding_host.hpp: a host that withholds what it is asked for, and one that does something else meanwhile
//
// The reference host always gives a slot, though it may be a lost one, and no table changes while a module asks for a
// value. A program with withholding_host.cpp among its sources puts operations of its own in front of the host's, for
// itself and for the loaded module.

#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "host/host_value.hpp"

namespace arrayfold::test {

enum class Withheld { table, hash, slot_by_number, slot_by_key, record, records, block, larger_block, object };

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

/// While this lives, the n-th call of an operation does something else before it returns, once. Operations that this
/// calls itself do not count. The operations are those that read numbers and text, find or make slots, and copy.
class Meanwhile {
 public:
  Meanwhile(std::string operation, std::int64_t nth, std::function<void()> act);
  ~Meanwhile();
  Meanwhile(const Meanwhile&) = delete;
  Meanwhile& operator=(const Meanwhile&) = delete;

  static bool has_come() noexcept;
};

/// While this lives, a value of the tag is a number, too, and reads as 5 or true: a host may have more kinds of numbers
/// than the contract names.
class NumberTag {
 public:
  explicit NumberTag(ValueTag tag) noexcept;
  ~NumberTag();
  NumberTag(const NumberTag&) = delete;
  NumberTag& operator=(const NumberTag&) = delete;
};

}  // namespace arrayfold::test
