// kernel/objects.hpp: objects, counted by references, and the managers of their types

#pragma once

#include "kernel/kernel.hpp"

namespace hvm::kernel {

/// A manager as the host keeps it: others see the name alone.
struct Manager : AnyMan {
  TypeCallbacks callbacks;
  Manager* older;
};

/// A new object of a type, without a reference; null for null, when memory is missing, and while tests refuse objects.
HostAny* new_object(AnyMan* man) noexcept;
/// True while tests refuse objects and managers.
bool objects_are_withheld() noexcept;
/// Adds a reference; null is allowed.
void hold_object(HostAny* any) noexcept;
/// Drops a reference; with the last one the content and the object are destroyed. Null is allowed.
void drop_object(HostAny* any, HostContext ctx) noexcept;

}  // namespace hvm::kernel
