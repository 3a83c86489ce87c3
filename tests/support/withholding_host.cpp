// support/withholding_host.cpp: operations of this program in front of the host's

#include "support/withholding_host.hpp"

#include <dlfcn.h>

#include <stdexcept>
#include <utility>

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

std::string interrupted;
std::function<void()> act_meanwhile;
std::int64_t calls_until_act;
bool has_acted = false;

void called(const char* operation) {
  if (!act_meanwhile || interrupted != operation || --calls_until_act > 0) return;
  has_acted = true;
  std::exchange(act_meanwhile, nullptr)();
}

constexpr int other_number = 5;
bool has_number_tag = false;
ValueTag number_tag;

bool is_other_number(const HostValue* value) noexcept { return has_number_tag && value->tag == number_tag; }

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

Meanwhile::Meanwhile(std::string operation, std::int64_t nth, std::function<void()> act) {
  interrupted = std::move(operation);
  calls_until_act = nth;
  has_acted = false;
  act_meanwhile = std::move(act);
}
Meanwhile::~Meanwhile() { act_meanwhile = nullptr; }

bool Meanwhile::has_come() noexcept { return has_acted; }

NumberTag::NumberTag(ValueTag tag) noexcept {
  number_tag = tag;
  has_number_tag = true;
}
NumberTag::~NumberTag() { has_number_tag = false; }

}  // namespace arrayfold::test

namespace arrayfold {

using test::called;
using test::host_operation;
using test::is_other_number;
using test::other_number;
using test::Withheld;
using test::withholds;

// An operation gives what the host's own gives, unless it is withheld, and is told before it returns.
#define IN_FRONT(name, ...)                                             \
  static const auto operation = host_operation<decltype(&name)>(#name); \
  const auto given = operation(__VA_ARGS__);                            \
  called(#name);                                                        \
  return given
#define IN_FRONT_UNLESS(withheld, name, ...)                                 \
  static const auto operation = host_operation<decltype(&name)>(#name);      \
  const auto given = withholds(withheld) ? nullptr : operation(__VA_ARGS__); \
  called(#name);                                                             \
  return given

extern "C" {

HostBool HVM_NumberCheck(HostValue* value) {
  if (is_other_number(value)) return HostBool{true};
  IN_FRONT(HVM_NumberCheck, value);
}
int HVM_AsInt(HostValue* value) {
  if (is_other_number(value)) return other_number;
  IN_FRONT(HVM_AsInt, value);
}
std::int64_t HVM_AsInt64(HostValue* value) {
  if (is_other_number(value)) return other_number;
  IN_FRONT(HVM_AsInt64, value);
}
double HVM_AsDouble(HostValue* value) {
  if (is_other_number(value)) return other_number;
  IN_FRONT(HVM_AsDouble, value);
}
HostBool HVM_AsBool(HostValue* value) {
  if (is_other_number(value)) return HostBool{true};
  IN_FRONT(HVM_AsBool, value);
}
HostBool HVM_StringCheckAll(HostValue* value) { IN_FRONT(HVM_StringCheckAll, value); }
int HVM_StringLen(HostValue* value) { IN_FRONT(HVM_StringLen, value); }

HostAny* HVM_NewAny(HostContext ctx, const char* type_name, std::int64_t zero_1, std::int64_t zero_2) {
  IN_FRONT_UNLESS(Withheld::object, HVM_NewAny, ctx, type_name, zero_1, zero_2);
}

void HVM_ForceTable(HostContext ctx, HostValue* value, int capacity) {
  static const auto operation = host_operation<decltype(&HVM_ForceTable)>("HVM_ForceTable");
  if (!withholds(Withheld::table)) operation(ctx, value, capacity);
  called("HVM_ForceTable");
}

HostHash* HVM_NewHash(HostContext ctx, int capacity) { IN_FRONT_UNLESS(Withheld::hash, HVM_NewHash, ctx, capacity); }

HostValue* HVM_HashSetInt(HostContext ctx, HostHash* hash, int key) {
  IN_FRONT_UNLESS(Withheld::slot_by_number, HVM_HashSetInt, ctx, hash, key);
}

HostValue* HVM_HashSet(HostContext ctx, HostHash* hash, HostValue* key) {
  IN_FRONT_UNLESS(Withheld::slot_by_key, HVM_HashSet, ctx, hash, key);
}

HostValue* HVM_HashGetInt(HostHash* hash, int key) { IN_FRONT(HVM_HashGetInt, hash, key); }
HostValue* HVM_HashGet(HostContext null, HostHash* hash, HostValue* key) { IN_FRONT(HVM_HashGet, null, hash, key); }

void HVM_HashGetBounds(HostHash* hash, int* low, int* high) {
  static const auto operation = host_operation<decltype(&HVM_HashGetBounds)>("HVM_HashGetBounds");
  operation(hash, low, high);
  called("HVM_HashGetBounds");
}

void HVM_DupObject(HostContext ctx, HostValue* destination, HostValue* source, std::uint8_t one) {
  static const auto operation = host_operation<decltype(&HVM_DupObject)>("HVM_DupObject");
  operation(ctx, destination, source, one);
  called("HVM_DupObject");
}

HostValue* HVM_NewObject() { IN_FRONT_UNLESS(Withheld::record, HVM_NewObject, ); }
HostValue* HVM_NewObjects(std::int64_t count) { IN_FRONT_UNLESS(Withheld::records, HVM_NewObjects, count); }

void* HVM_Malloc(std::int64_t size) { IN_FRONT_UNLESS(Withheld::block, HVM_Malloc, size); }
void* HVM_Realloc2(void* pointer, std::int64_t new_size, std::int64_t old_size) {
  IN_FRONT_UNLESS(Withheld::larger_block, HVM_Realloc2, pointer, new_size, old_size);
}

}  // extern "C"

#undef IN_FRONT
#undef IN_FRONT_UNLESS

}  // namespace arrayfold
