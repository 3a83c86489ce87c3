// second_host/operations.cpp: the 44 operations of the second host

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include <malloc.h>

#include "second_host/disguises.hpp"
#include "second_host/tables.hpp"
#include "second_host/values.hpp"

namespace second_host {

using arrayfold::store;

namespace {

/// Never ended: objects may outlive whatever ends with the library.
std::map<std::string, Manager*>& managers = *new std::map<std::string, Manager*>;
/// How many records a block from HVM_NewObjects has.
std::map<const HostValue*, std::int64_t> record_counts;

Table* own(HostHash* hash) { return static_cast<Table*>(hash); }

HostValue* new_records(std::int64_t count) {
  if (count < 0 || count > INT64_MAX / 18) return nullptr;
  auto* first = static_cast<HostValue*>(take(static_cast<std::size_t>(count) * sizeof(HostValue)));
  if (first == nullptr) return nullptr;
  --live.blocks;
  live.records += count;
  for (std::int64_t n = 0; n < count; ++n) first[n] = nil(by_chance() ? Lifetime::temporary : Lifetime::none);
  record_counts[first] = count;
  return first;
}

/// The records own what they hold, whatever their lifetime says: a module stores tables in them.
void free_records(HostValue* first) {
  if (first == nullptr) return;
  const auto known = record_counts.find(first);
  if (known == record_counts.end()) give_up("a record is freed that is none");
  for (std::int64_t n = 0; n < known->second; ++n) release(first[n]);
  live.records -= known->second;
  record_counts.erase(known);
  ++live.blocks;
  give_back(first);
}

std::string_view characters(const char* text, int length) {
  return text == nullptr || length <= 0 ? std::string_view() : std::string_view(text, static_cast<std::size_t>(length));
}
std::u16string_view characters(const char16_t* text, int length) {
  if (text == nullptr || length <= 0) return {};
  return {text, static_cast<std::size_t>(length)};
}

HostValue stored_text(std::string_view characters) {
  return text(characters, by_chance() ? TextForm::string : TextForm::converted);
}

HostValue* absent_value() { return by_chance() ? nullptr : arrayfold::HVM_GetGlobalNilObj(); }

}  // namespace

Manager* manager_named(const char* name) {
  const auto found = managers.find(name);
  return found == managers.end() ? nullptr : found->second;
}

}  // namespace second_host

namespace arrayfold {

using namespace second_host;

// ---- Objects

HostBool HVM_AnyCheck(HostValue* value) {
  const bool is_object = object_in(*value) != nullptr;
  return static_cast<HostBool>(is_object ? 1 + choice(255) : 0);
}

HostAny* HVM_GetAny(HostValue* value) { return object_in(*value); }

HostAny* HVM_NewAny(HostContext, const char* type_name, std::int64_t, std::int64_t) {
  Manager* const manager = manager_named(type_name);
  if (manager == nullptr || withholds(Withheld::object)) return nullptr;
  void* const content = manager->create();
  if (content == nullptr) return nullptr;
  auto* object = static_cast<Object*>(take(sizeof(Object)));
  object->manager = manager;
  object->content = content;
  object->references = 0;
  object->companion = nullptr;
  --live.blocks;
  ++live.objects;
  return object;
}

void HVM_SetTypeAny(HostContext, HostValue* value, HostAny* any) {
  auto* object = static_cast<Object*>(any);
  second_host::hold(object);
  HostValue fresh = nil();
  if (object != nullptr || by_chance()) {
    fresh.tag = ValueTag::object;
    store<HostAny*>(fresh.payload, any);
  }
  replace(value, fresh);
}

AnyMan* HVM_NewAnyMan(const char* name, CreateCallback create, DestroyCallback destroy, MethodCallback method,
                      OperatorCallback op, void*) {
  auto* manager = static_cast<Manager*>(std::malloc(sizeof(Manager)));
  spoil(manager, sizeof *manager);
  manager->name = strdup(name);
  manager->create = create;
  manager->destroy = destroy;
  manager->method = method;
  manager->op = op;
  return manager;
}

void HVM_RegisterAnyMan(const char* name, AnyMan* man) { managers[name] = static_cast<Manager*>(man); }

// ---- Reading

HostBool HVM_NumberCheck(HostValue* value) { return static_cast<HostBool>(is_number(*value) ? 1 + choice(255) : 0); }
int HVM_AsInt(HostValue* value) { return as_integer(*value); }
std::int64_t HVM_AsInt64(HostValue* value) { return as_integer64(*value); }
double HVM_AsDouble(HostValue* value) { return as_real(*value); }
HostBool HVM_AsBool(HostValue* value) { return static_cast<HostBool>(as_real(*value) != 0 ? 1 + choice(255) : 0); }

const char* HVM_AsString(HostValue* value) {
  if (!is_text(*value)) return nullptr;
  if (value->tag != ValueTag::wide_string) return narrow_characters(*value).data();
  static std::string converted[8];
  static unsigned next = 0;
  std::string& place = converted[next++ % 8];
  place = utf8_of(*value);
  return place.c_str();
}

HostBool HVM_StringCheckAll(HostValue* value) { return static_cast<HostBool>(is_text(*value) ? 128 : 0); }
int HVM_StringLen(HostValue* value) { return is_text(*value) ? text_length(*value) : -1; }

// ---- Writing

void HVM_SetInt(HostContext, HostValue* value, int x) { replace(value, integer(x)); }
void HVM_SetInt64(HostContext, HostValue* value, std::int64_t x) { replace(value, integer64(x)); }
void HVM_SetReal(HostContext, HostValue* value, double x) { replace(value, real(x)); }

void HVM_SetString(HostContext, HostValue* value, const char* text) {
  replace(value, stored_text(text == nullptr ? "" : text));
}
void HVM_SetStringEx(HostContext, HostValue* value, const char* text, int length) {
  replace(value, stored_text(characters(text, length)));
}
void HVM_SetWString(HostContext, HostValue* value, const char16_t* text) {
  replace(value, wide_text(text == nullptr ? u"" : text, is_disguise(text)));
}
void HVM_SetWStringEx(HostContext, HostValue* value, const char16_t* text, int length) {
  replace(value, wide_text(characters(text, length), is_disguise(text)));
}
void HVM_SetConstStringEx(HostContext, HostValue* value, const char* text, int length) {
  replace(value, literal(characters(text, length)));
}
void HVM_SetConstWStringEx(HostContext, HostValue* value, const char16_t* text, int length) {
  replace(value, wide_literal(characters(text, length), is_disguise(text)));
}

// ---- Tables

void HVM_ForceTable(HostContext, HostValue* value, int) {
  replace(value, table_record(withholds(Withheld::table) ? nullptr : new_table()));
}

HostHash* HVM_NewHash(HostContext, int) { return withholds(Withheld::hash) ? nullptr : new_table(); }

HostValue* HVM_HashSetInt(HostContext, HostHash* hash, int key) {
  return withholds(Withheld::slot_by_number) ? nullptr : second_host::slot(*own(hash), key_of(key));
}

/// The slot of what is no key belongs to no table.
HostValue* HVM_HashSet(HostContext, HostHash* hash, HostValue* key) {
  if (withholds(Withheld::slot_by_key)) return nullptr;
  if (HostValue* slot = second_host::slot(*own(hash), key_of(*key))) return slot;
  static HostValue lost = nil();
  replace(&lost, nil());
  return &lost;
}

HostValue* HVM_HashGetInt(HostHash* hash, int key) {
  HostValue* found = find(*own(hash), key_of(key));
  return found != nullptr ? found : absent_value();
}

HostValue* HVM_HashGet(HostContext, HostHash* hash, HostValue* key) {
  HostValue* found = find(*own(hash), key_of(*key));
  return found != nullptr ? found : absent_value();
}

void HVM_HashGetBounds(HostHash* hash, int* low, int* high) {
  *low = static_cast<int>(choice(UINT32_MAX));
  *high = highest_key(*own(hash));
}

HostValue* HVM_GetGlobalNilObj() {
  static HostValue global = nil(Lifetime::plain);
  return &global;
}

// ---- Records

HostValue* HVM_NewObject() { return withholds(Withheld::record) ? nullptr : new_records(1); }
HostValue* HVM_NewObjects(std::int64_t count) { return withholds(Withheld::records) ? nullptr : new_records(count); }
void HVM_FreeObj(HostContext, HostValue* object) { free_records(object); }
void HVM_FreeObjs(HostContext, HostValue* objects, std::int64_t count) {
  const auto known = record_counts.find(objects);
  if (objects != nullptr && (known == record_counts.end() || known->second != count))
    give_up("records are freed by another count than they were made with");
  free_records(objects);
}

/// The tag stays: the caller overwrites the record.
void HVM_FreeObjectContent(HostContext, HostValue* value) {
  if (value->lifetime == Lifetime::temporary) release(*value);
  HostValue fresh = nil();
  fresh.tag = value->tag;
  *value = fresh;
}

void HVM_DupObject(HostContext, HostValue* destination, HostValue* source, std::uint8_t) {
  if (destination != source) replace(destination, copy_of(*source));
}

// ---- Memory

void* HVM_Malloc(std::int64_t size) {
  return size < 0 || withholds(Withheld::block) ? nullptr : take(static_cast<std::size_t>(size));
}

void HVM_Free(void* pointer) { give_back(pointer); }

void* HVM_Realloc2(void* pointer, std::int64_t new_size, std::int64_t) {
  if (new_size < 0 || withholds(Withheld::larger_block)) return nullptr;
  void* const moved = take(static_cast<std::size_t>(new_size));
  if (moved == nullptr || pointer == nullptr) return moved;
  std::memcpy(moved, pointer, std::min(malloc_usable_size(pointer), static_cast<std::size_t>(new_size)));
  give_back(pointer);
  return moved;
}

void* HVM_ReallocNoLeak(void* pointer, std::int64_t new_size) {
  void* const moved = HVM_Realloc2(pointer, new_size, 0);
  if (moved == nullptr) give_back(pointer);
  return moved;
}

void HVM_GCFreeTable(HostHash* hash) { second_host::drop(own(hash)); }
void HVM_FreeMatrix(void*) {}
void HVM_DelStrm(void*) {}

}  // namespace arrayfold
