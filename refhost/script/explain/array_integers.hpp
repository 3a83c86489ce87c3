// script/explain/array_integers.hpp: integers and arrays of integers, told without a call

#pragma once

#include <cstdint>

#include "kernel/kernel.hpp"
#include "script/module/array_module.hpp"

namespace hvm {

/// The object of a value, null when it holds none.
inline const HostAny* object_in(const Value& value) noexcept {
  return value.is_object() ? arrayfold::load<const HostAny*>(value.record().payload) : nullptr;
}

/// The integers of 32 bits and of 64 that the module reads in a value.
inline std::int32_t as_int(const Value& value) noexcept {
  if (value.tag() == ValueTag::integer) return arrayfold::load<std::int32_t>(value.record().payload);
  HostValue record = value.record();
  return HVM_AsInt(&record);
}
inline std::int64_t as_int64(const Value& value) noexcept {
  if (value.tag() == ValueTag::integer) return arrayfold::load<std::int32_t>(value.record().payload);
  HostValue record = value.record();
  return HVM_AsInt64(&record);
}

/// What an array of integers keeps of a number.
enum class Kept : std::uint8_t {
  all,
  whole_part,  // of a fraction
  another,     // another number: it is NaN, or beyond the 32 or 64 bits of an element
};
inline Kept kept_by(bool is_narrow, const HostValue& number) noexcept {
  if (number.tag == ValueTag::integer64) {
    const auto wide = arrayfold::load<std::int64_t>(number.payload);
    return !is_narrow || wide == static_cast<std::int32_t>(wide) ? Kept::all : Kept::another;
  }
  if (number.tag != ValueTag::real) return Kept::all;
  const auto x = arrayfold::load<double>(number.payload);
  const double end = is_narrow ? 0x1p31 : 0x1p63;
  if (!(x >= -end && x < end)) return Kept::another;
  return x == static_cast<double>(static_cast<std::int64_t>(x)) ? Kept::all : Kept::whole_part;
}

/// Tells arrays of integers from all other values by the managers of their types, not by the names of these. The module
/// has registered its types before.
class IntegerArrays {
 public:
  IntegerArrays() noexcept : narrow_(type_named(int_array_type.data())), wide_(type_named(int64_array_type.data())) {}

  bool have(const Value& value) const noexcept {
    const HostAny* object = object_in(value);
    if (!object) return false;
    const AnyMan* manager = object->manager;
    return manager == narrow_ || manager == wide_;
  }
  bool have_narrow(const Value& value) const noexcept {
    const HostAny* object = object_in(value);
    return object && object->manager == narrow_;
  }

 private:
  const AnyMan* narrow_;
  const AnyMan* wide_;
};

}  // namespace hvm
