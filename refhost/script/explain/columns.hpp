// script/explain/columns.hpp: objects that may be columns: arrays of two axes or more whose last extent is 1

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "script/explain/array_integers.hpp"

namespace hvm {

/// Remembers objects that may be columns, from how they were made, so that only their shapes are asked for. It holds no
/// references. An object that came to the address of one that has died is asked once too often, and no harm is done.
/// There is room for a few hundred objects; beyond that, older ones are forgotten, and with them their warnings.
class Columns {
 public:
  bool is_empty() const noexcept { return count_ == 0; }
  bool has(const HostAny* object) const noexcept {
    if (!object || is_empty()) return false;
    const Set& set = sets_[number_of_set(object)];
    return std::find(set.begin(), set.end(), object) != set.end();
  }
  bool has(const Value& value) const noexcept { return has(object_in(value)); }
  bool has_any(const std::vector<Value>& values) const noexcept {
    for (const Value& value : values)
      if (has(value)) return true;
    return false;
  }

  void mark(const HostAny* object) noexcept {
    if (!object || has(object)) return;
    Set& set = sets_[number_of_set(object)];
    if (set.back()) remove(set, set.begin());
    *std::find(set.begin(), set.end(), nullptr) = object;
    ++count_;
  }
  void forget(const HostAny* object) noexcept {
    if (!has(object)) return;
    Set& set = sets_[number_of_set(object)];
    remove(set, std::find(set.begin(), set.end(), object));
  }
  /// Marks an object, or forgets what was at its address.
  void note(const Value& value, bool may_be_column) noexcept {
    const HostAny* object = object_in(value);
    if (!object) return;
    may_be_column ? mark(object) : forget(object);
  }

 private:
  /// Objects whose addresses have the same bits, older ones first, and null behind the last. Addresses differ from run
  /// to run: without company in a set, two columns of a small script would now and then displace each other.
  using Set = std::array<const HostAny*, 8>;

  static std::size_t number_of_set(const HostAny* object) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(object);
    return (address >> 4 ^ address >> 12) % set_count;
  }
  void remove(Set& set, Set::iterator place) noexcept {
    std::move(place + 1, set.end(), place);
    set.back() = nullptr;
    --count_;
  }

  static constexpr std::size_t set_count = 64;
  std::array<Set, set_count> sets_ = {};
  std::size_t count_ = 0;
};

}  // namespace hvm
