// script/library/range.hpp: the numbers of a `range`

#pragma once

#include <cstdint>
#include <vector>

#include "kernel/kernel.hpp"

namespace hvm {

/// Walks the numbers of a range, without making a table of them.
class Range {
 public:
  /// The range that `range(arguments)` means. Throws `Failure`.
  explicit Range(const std::vector<Value>& arguments);

  bool has_more() const { return step_ > 0 ? start_ < stop_ : start_ > stop_; }
  /// How many numbers are left.
  std::int64_t count() const;
  /// The current number: an `int64` when one of the arguments is, otherwise an `int`.
  Value value() const { return is_short_ ? Value(static_cast<int>(start_)) : Value(start_); }
  void advance();

 private:
  std::int64_t number(const Value& argument);

  std::int64_t start_ = 0;
  std::int64_t stop_ = 0;
  std::int64_t step_ = 1;
  bool is_short_ = true;
};

}  // namespace hvm
