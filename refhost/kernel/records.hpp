// kernel/records.hpp: what records hold: replacing, releasing, copying

#pragma once

#include <cstring>

#include "kernel/kernel.hpp"
#include "kernel/state.hpp"

namespace hvm::kernel {

/// Records from HVM_NewObject and HVM_NewObjects, minus those that were freed.
extern HVM_STATE std::int64_t live_records;

/// A record of a tag whose payload is the bytes of a T; the rest is zero.
template <class T>
HostValue record_of(ValueTag tag, std::common_type_t<T> payload) noexcept {
  static_assert(sizeof(T) <= sizeof(HostValue::payload), "the payload holds it");
  const T given = payload;
  std::uint64_t bits = 0;
  std::memcpy(&bits, &given, sizeof given);
  return record_of_bits(tag, bits);
}

template <class T>
T payload_of(const HostValue& value) noexcept {
  return arrayfold::load<T>(value.payload);
}

/// Releases what `value` holds, and leaves the bytes of the record as they are.
void release_content(const HostValue& value, HostContext ctx) noexcept;

/// Writes `fresh` over `value` and releases what was there. With a null `value`, `fresh` is released.
inline void replace(HostContext ctx, HostValue* value, const HostValue& fresh) noexcept {
  if (!value) return release_content(fresh, ctx);
  if (__builtin_expect(!holds_content(*value), true)) {
    *value = fresh;
    return;
  }
  const HostValue old = *value;
  *value = fresh;
  release_content(old, ctx);
}

/// A record of its own with the same content: texts and tables copied, objects shared.
HostValue deep_copy(const HostValue& value) noexcept;

}  // namespace hvm::kernel
