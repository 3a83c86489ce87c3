// kernel/records.cpp: releasing, sharing and copying what records hold; records on the host's heap

#include "kernel/records.hpp"

#include <algorithm>
#include <limits>

#include "kernel/memory.hpp"
#include "kernel/objects.hpp"
#include "kernel/recorder.hpp"
#include "kernel/strings.hpp"
#include "kernel/tables.hpp"

namespace hvm {
namespace kernel {

HVM_STATE std::int64_t live_records = 0;

void release_content(const HostValue& value, HostContext ctx) noexcept {
  if (!holds_content(value)) return;
  if (value.tag == ValueTag::table) {
    drop_table(table_in(value), ctx);
  } else if (value.tag == ValueTag::object) {
    drop_object(payload_of<HostAny*>(value), ctx);
  } else {
    drop_text(value);
  }
}

HostValue deep_copy(const HostValue& value) noexcept {
  if (value.tag == ValueTag::table) return copy_of_table(value);
  if (is_text(value)) return copy_of_text(value);
  return hvm::shared(value);
}

}  // namespace kernel

using namespace kernel;

void release(HostValue& value) noexcept { replace(nullptr, &value, nil_record()); }

HostValue shared(const HostValue& value) noexcept {
  if (is_text(value)) return shared_text(value);
  HostValue other = value;
  if (value.tag == ValueTag::table) hold(table_of(value));
  if (value.tag == ValueTag::object) hold_object(object_of(value));
  if (value.tag == ValueTag::table || value.tag == ValueTag::object) other.lifetime = Lifetime::temporary;
  return other;
}

void assign(HostValue& destination, const HostValue& source) noexcept {
  replace(nullptr, &destination, shared(source));
}

}  // namespace hvm

// ---- Operations

namespace arrayfold {
namespace {

using namespace hvm;
using namespace hvm::kernel;

HostValue* new_records(std::int64_t count) noexcept {
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max() / std::int64_t{sizeof(HostValue)};
  if (count < 0 || count > most) return nullptr;
  const auto size = static_cast<std::size_t>(count) * sizeof(HostValue);
  auto* records = static_cast<HostValue*>(allocate(size, BlockKind::records));
  if (!records) return nullptr;
  std::fill_n(records, count, nil_record());
  live_records += count;
  return records;
}

// The block knows how many records it has, so all of them are released. The counter uses the
// caller's count, so that a wrong one shows in the next comparison of counts.
void free_records(HostContext ctx, HostValue* records, std::int64_t named_count) noexcept {
  if (!records) return;
  const std::size_t count = size_of(records) / sizeof(HostValue);
  for (std::size_t n = 0; n < count; ++n) release_content(records[n], ctx);
  live_records -= named_count;
  give_back(records);
}

}  // namespace

HostValue* HVM_NewObject() {
  return noted("HVM_NewObject", [=] { return new_records(1); });
}

HostValue* HVM_NewObjects(std::int64_t count) {
  return noted(
      "HVM_NewObjects", [=] { return new_records(count); }, count);
}

void HVM_FreeObj(HostContext ctx, HostValue* object) {
  noted(
      "HVM_FreeObj", [=] { free_records(ctx, object, 1); }, object);
}

void HVM_FreeObjs(HostContext ctx, HostValue* objects, std::int64_t count) {
  noted(
      "HVM_FreeObjs", [=] { free_records(ctx, objects, count); }, objects, count);
}

void HVM_FreeObjectContent(HostContext ctx, HostValue* value) {
  const auto release = [=] {
    if (value) replace(ctx, value, nil_record());
  };
  noted("HVM_FreeObjectContent", release, value);
}

// The copy is whole before the destination is released: the source may lie inside it.
void HVM_DupObject(HostContext ctx, HostValue* destination, HostValue* source, std::uint8_t) {
  const auto copy = [=] {
    if (!destination || destination == source) return;
    replace(ctx, destination, source ? deep_copy(*source) : nil_record());
  };
  noted("HVM_DupObject", copy, destination, source);
}

// This host makes no matrices and no streams, so these two have nothing to free.
void HVM_FreeMatrix(void* matrix) {
  noted(
      "HVM_FreeMatrix", [] {}, matrix);
}
void HVM_DelStrm(void* stream) {
  noted(
      "HVM_DelStrm", [] {}, stream);
}

}  // namespace arrayfold
