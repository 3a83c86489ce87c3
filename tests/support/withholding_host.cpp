// support/withholding_host.cpp: operations of this program in front of the host's

#include "support/withholding_host.hpp"

#include <dlfcn.h>

#include <stdexcept>

#include "host/host_operations.hpp"

namespace arrayfold::test {
namespace {

bool armed = false, came = false;
Withheld withheld;
std::int64_t calls_until;

bool withholds(Withheld what) noexcept {
  if (!armed || what != withheld || --calls_until > 0) return false;
  came = true;
  return true;
}

/// The host's own operation of a name.
template <class Operation>
Operation host_operation(const char* name) {
  void* found = dlsym(RTLD_NEXT, name);
  if (found == nullptr) throw std::runtime_error(name);
  return load<Operation>(&found);
}

}  // namespace

Withholding::Withholding(Withheld what, std::int64_t nth) noexcept {
  withheld = what;
  calls_until = nth;
  came = false;
  armed = true;
}
Withholding::~Withholding() { armed = false; }

bool Withholding::has_come() noexcept { return came; }

}  // namespace arrayfold::test

namespace arrayfold {

using test::host_operation;
using test::Withheld;
using test::withholds;

extern "C" {

void HVM_ForceTable(HostContext ctx, HostValue* value, int capacity) {
  static const auto operation = host_operation<decltype(&HVM_ForceTable)>("HVM_ForceTable");
  if (!withholds(Withheld::table)) operation(ctx, value, capacity);
}

HostHash* HVM_NewHash(HostContext ctx, int capacity) {
  static const auto operation = host_operation<decltype(&HVM_NewHash)>("HVM_NewHash");
  return withholds(Withheld::hash) ? nullptr : operation(ctx, capacity);
}

HostValue* HVM_HashSetInt(HostContext ctx, HostHash* hash, int key) {
  static const auto operation = host_operation<decltype(&HVM_HashSetInt)>("HVM_HashSetInt");
  return withholds(Withheld::slot_by_number) ? nullptr : operation(ctx, hash, key);
}

HostValue* HVM_HashSet(HostContext ctx, HostHash* hash, HostValue* key) {
  static const auto operation = host_operation<decltype(&HVM_HashSet)>("HVM_HashSet");
  return withholds(Withheld::slot_by_key) ? nullptr : operation(ctx, hash, key);
}

HostValue* HVM_NewObject() {
  static const auto operation = host_operation<decltype(&HVM_NewObject)>("HVM_NewObject");
  return withholds(Withheld::record) ? nullptr : operation();
}

}  // extern "C"

}  // namespace arrayfold
