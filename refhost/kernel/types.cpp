// kernel/types.cpp: managers, and the register of types by name
//
// A name is registered once; registering it again puts the new manager in the old one's place, and objects of
// the old one keep it. Managers live as long as the library, since objects point at them.

#include <cstdlib>
#include <cstring>

#include "kernel/objects.hpp"
#include "kernel/recorder.hpp"

namespace hvm {
namespace kernel {
namespace {

// The name is known by the pointer that was registered, which is what a module passes again, and by its own copy.
struct Registration {
  const char* passed;
  char* name;
  AnyMan* man;
};

Registration* registrations = nullptr;
std::size_t registration_count = 0;
Manager* youngest_manager = nullptr;

Registration* registrations_end() noexcept { return registrations + registration_count; }

Registration* registration_of(const char* name) noexcept {
  if (!name) return nullptr;
  for (Registration* known = registrations_end(); known != registrations; --known)
    if (known[-1].passed == name && std::strcmp(known[-1].name, name) == 0) return known - 1;
  for (Registration* known = registrations; known != registrations_end(); ++known)
    if (std::strcmp(known->name, name) == 0) return known;
  return nullptr;
}

char* copy_of_name(const char* name) noexcept {
  const std::size_t size = std::strlen(name) + 1;
  auto* copy = static_cast<char*>(std::malloc(size));
  return copy ? static_cast<char*>(std::memcpy(copy, name, size)) : nullptr;
}

void add_registration(const char* name, AnyMan* man) noexcept {
  void* grown = std::realloc(registrations, (registration_count + 1) * sizeof(Registration));
  if (!grown) return;
  registrations = static_cast<Registration*>(grown);
  char* own_name = copy_of_name(name);
  if (own_name) registrations[registration_count++] = {name, own_name, man};
}

}  // namespace
}  // namespace kernel

using namespace kernel;

TypeCallbacks callbacks_of(const AnyMan* man) noexcept {
  return man ? static_cast<const Manager*>(man)->callbacks : TypeCallbacks{};
}

TypeCallbacks callbacks_of(const HostAny* any) noexcept {
  return callbacks_of(any ? any->manager.get() : static_cast<const AnyMan*>(nullptr));
}

const char* type_name_of(const AnyMan* man) noexcept {
  const char* name = man ? man->name.get() : nullptr;
  return name ? name : "";
}

const char* type_name_of(const HostAny* any) noexcept {
  return type_name_of(any ? any->manager.get() : static_cast<const AnyMan*>(nullptr));
}

AnyMan* type_named(const char* name) noexcept {
  const Registration* known = registration_of(name);
  return known ? known->man : nullptr;
}

std::vector<RegisteredType> registered_types() {
  std::vector<RegisteredType> types;
  for (const Registration* known = registrations; known != registrations_end(); ++known)
    types.push_back({known->name, known->man});
  return types;
}

void forget_type(const char* name) noexcept {
  Registration* known = registration_of(name);
  if (!known) return;
  std::free(known->name);
  std::memmove(known, known + 1, static_cast<std::size_t>(registrations_end() - known - 1) * sizeof(Registration));
  --registration_count;
}

}  // namespace hvm

// ---- Operations

namespace arrayfold {

using namespace hvm::kernel;

// The name stays the caller's pointer: modules compare it with their own before they compare the text.
AnyMan* HVM_NewAnyMan(const char* name, CreateCallback create, DestroyCallback destroy, MethodCallback method,
                      OperatorCallback op, void* null) {
  const auto make = [=]() -> AnyMan* {
    if (objects_are_withheld()) return nullptr;
    void* place = std::malloc(sizeof(Manager));
    if (!place) return nullptr;
    auto* man = new (place) Manager{};
    man->name = name;
    man->callbacks = {create, destroy, method, op};
    man->older = youngest_manager;
    youngest_manager = man;
    return man;
  };
  return noted("HVM_NewAnyMan", make, name, int{null != nullptr});
}

void HVM_RegisterAnyMan(const char* name, AnyMan* man) {
  const auto put = [=] {
    if (!name || !man) return;
    if (Registration* known = registration_of(name)) {
      known->passed = name;
      known->man = man;
    } else {
      add_registration(name, man);
    }
  };
  noted("HVM_RegisterAnyMan", put, name, man);
}

}  // namespace arrayfold
