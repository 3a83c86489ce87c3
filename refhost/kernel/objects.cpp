// kernel/objects.cpp: making and ending objects
//
// An object counts its references in its first word, which is the host's. A new one has none
// until a record takes it through HVM_SetTypeAny; each record that takes it adds one.

#include "kernel/objects.hpp"

#include <new>

#include "kernel/memory.hpp"
#include "kernel/recorder.hpp"
#include "kernel/records.hpp"
#include "kernel/state.hpp"

namespace hvm {
namespace kernel {
namespace {

/// An object as the host keeps it: others see the record at its front.
struct Object : HostAny {
  std::uint64_t number;
};

HVM_STATE bool objects_withheld = false;
HVM_STATE std::uint64_t made_objects = 0;

void count_references(HostAny* any, std::uint32_t count) noexcept {
  arrayfold::store<std::uint32_t>(any->host_word, count);
}

Manager* manager_of(const HostAny* any) noexcept { return static_cast<Manager*>(any->manager.get()); }

void end_object(HostAny* any, HostContext ctx) noexcept {
  const auto destroy = manager_of(any)->callbacks.destroy;
  if (destroy) destroy(ctx ? ctx : youngest_context(), any->content);
  give_back(any);
}

}  // namespace

bool objects_are_withheld() noexcept { return objects_withheld; }

// The content is made last, so that it need not be destroyed when memory for the object is missing.
HostAny* new_object(AnyMan* man) noexcept {
  const auto create = callbacks_of(man).create;
  if (!create || objects_withheld) return nullptr;
  void* place = allocate(sizeof(Object), BlockKind::object);
  if (!place) return nullptr;
  auto* object = new (place) Object{};
  object->manager = man;
  object->content = create();
  object->number = object->content ? ++made_objects : 0;
  if (object->content) return object;
  give_back(object);
  return nullptr;
}

void hold_object(HostAny* any) noexcept {
  if (any) count_references(any, references(any) + 1);
}

void drop_object(HostAny* any, HostContext ctx) noexcept {
  if (!any) return;
  const std::uint32_t left = references(any) - 1;
  count_references(any, left);
  if (left == 0) end_object(any, ctx);
}

}  // namespace kernel

using namespace kernel;

void withhold_objects(bool withhold) noexcept { objects_withheld = withhold; }

HostAny* object_of(const HostValue& value) noexcept {
  return value.tag == ValueTag::object ? payload_of<HostAny*>(value) : nullptr;
}

std::uint32_t references(const HostAny* any) noexcept {
  return any ? arrayfold::load<std::uint32_t>(any->host_word) : 0;
}

std::uint64_t number_of(const HostAny* any) noexcept { return any ? static_cast<const Object*>(any)->number : 0; }

}  // namespace hvm

// ---- Operations

namespace arrayfold {

using namespace hvm::kernel;

HostBool HVM_AnyCheck(HostValue* value) {
  return noted(
      "HVM_AnyCheck", [=] { return HostBool{value && hvm::object_of(*value)}; }, value);
}

HostAny* HVM_GetAny(HostValue* value) {
  return noted(
      "HVM_GetAny", [=] { return value ? hvm::object_of(*value) : nullptr; }, value);
}

HostAny* HVM_NewAny(HostContext, const char* type_name, std::int64_t zero_1, std::int64_t zero_2) {
  const auto make = [=] { return new_object(hvm::type_named(type_name)); };
  return noted("HVM_NewAny", make, type_name, zero_1, zero_2);
}

// The new object is held before the old one is released: they may be the same.
void HVM_SetTypeAny(HostContext ctx, HostValue* value, HostAny* any) {
  const auto set = [=] {
    hold_object(any);
    replace(ctx, value, any ? record_of<HostAny*>(ValueTag::object, any) : hvm::nil_record());
  };
  noted("HVM_SetTypeAny", set, value, any);
}

}  // namespace arrayfold
