// script/explain/columns.hpp: objects that may be columns: arrays of two axes or more whose last extent is 1

#pragma once

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
    return object && !is_empty() && places_[place_of(object)] == object;
  }
  bool has(const Value& value) const noexcept { return has(object_in(value)); }
  bool has_any(const std::vector<Value>& values) const noexcept {
    for (const Value& value : values)
      if (has(value)) return true;
    return false;
  }

  void mark(const HostAny* object) noexcept {
    const HostAny*& place = places_[place_of(object)];
    count_ += place ? 0 : 1;
    place = object;
  }
  void forget(const HostAny* object) noexcept {
    if (!has(object)) return;
    places_[place_of(object)] = nullptr;
    --count_;
  }
  /// Marks an object, or forgets what was at its address.
  void note(const Value& value, bool may_be_column) noexcept {
    const HostAny* object = object_in(value);
    if (!object) return;
    may_be_column ? mark(object) : forget(object);
  }

 private:
  static std::size_t place_of(const HostAny* object) noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(object);
    return (address >> 4 ^ address >> 12) % place_count;
  }

  static constexpr std::size_t place_count = 512;
  std::array<const HostAny*, place_count> places_ = {};
  std::size_t count_ = 0;
};

}  // namespace hvm
