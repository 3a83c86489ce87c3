// probe/mutants.cpp: operations that stand before those of the reference host, each with a fault of its own
//
// The library is loaded with LD_PRELOAD. The environment variable MUTANT names the fault; the other operations pass
// their calls on.

#include <arrayfold/host.h>
#include <dlfcn.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

#pragma GCC visibility push(default)

namespace {

bool is(const char* fault) {
  static const std::string name = std::getenv("MUTANT") ? std::getenv("MUTANT") : "";
  return name == fault;
}

template <class Function>
Function* real(const char* name) {
  static void* const library = dlopen("libHVMkrnl.so", RTLD_LAZY | RTLD_LOCAL);
  void* const symbol = library ? dlsym(library, name) : nullptr;
  if (!symbol) std::abort();
  Function* function;
  std::memcpy(&function, &symbol, sizeof function);
  return function;
}
#define REAL(name) real<decltype(name)>(#name)

void* make_no_content() { return nullptr; }
void destroy_nothing(HostContext, void*) {}

DestroyCallback destroy_of_probe;
void destroy_twice(HostContext ctx, void* content) { destroy_of_probe(ctx, content), destroy_of_probe(ctx, content); }

// Not what the sanitizers look for: the next byte may be outside of all objects.
__attribute__((no_sanitize("address", "undefined"))) void write_behind(HostValue* value) {
  *(reinterpret_cast<volatile std::uint8_t*>(value) + sizeof(HostValue)) = 0;
}

}  // namespace

extern "C" {

HostBool HVM_AnyCheck(HostValue* value) {
  return REAL(HVM_AnyCheck)(value) || (is("text is an object") && value->tag == HOST_TAG_STRING);
}

HostAny* HVM_NewAny(HostContext ctx, const char* type_name, int64_t zero_1, int64_t zero_2) {
  HostAny* any = REAL(HVM_NewAny)(ctx, type_name, zero_1, zero_2);
  const bool is_barren = std::strcmp(type_name, "$probebarren") == 0;
  if (!any && (is_barren ? is("object needs no content") : is("unknown type has objects")))
    return REAL(HVM_NewAny)(ctx, "$probe", zero_1, zero_2);
  return any;
}

HostAny* HVM_GetAny(HostValue* value) { return is("object is not given") ? nullptr : REAL(HVM_GetAny)(value); }

void HVM_SetTypeAny(HostContext ctx, HostValue* value, HostAny* any) {
  if (is("null object crashes") && reinterpret_cast<volatile HostAny*>(any)->state == 1) return;
  REAL(HVM_SetTypeAny)(ctx, value, is("record takes no object") ? nullptr : any);
}

AnyMan* HVM_NewAnyMan(const char* name, CreateCallback create, DestroyCallback destroy, MethodCallback method,
                      OperatorCallback op, void* null) {
  if (is("types cannot be made")) return nullptr;
  if (is("types crash")) std::raise(SIGSEGV);
  const auto own_create = is("create is not called") ? make_no_content : create;
  auto own_destroy = is("destroy is not called") ? destroy_nothing : destroy;
  if (is("destroy is called twice") && std::strcmp(name, "$probe") == 0) {
    destroy_of_probe = destroy;
    own_destroy = destroy_twice;
  }
  AnyMan* man = REAL(HVM_NewAnyMan)(name, own_create, own_destroy, method, op, null);
  if (is("name is copied")) man->name = strdup(name);
  if (is("name is cut")) man->name = name + 1;
  return man;
}

HostBool HVM_NumberCheck(HostValue* value) {
  return REAL(HVM_NumberCheck)(value) && !(is("integer of 64 bits is no number") && value->tag == HOST_TAG_INTEGER64);
}

int HVM_AsInt(HostValue* value) {
  if (is("text has no number") && value->tag == HOST_TAG_STRING) std::abort();
  return is("integer of 64 bits reads as zero") && value->tag == HOST_TAG_INTEGER64 ? 0 : REAL(HVM_AsInt)(value);
}

int64_t HVM_AsInt64(HostValue* value) {
  const int64_t x = REAL(HVM_AsInt64)(value);
  return is("integer of 64 bits is cut") ? static_cast<std::int32_t>(x) : x;
}

double HVM_AsDouble(HostValue* value) {
  const double x = REAL(HVM_AsDouble)(value);
  return is("double reads as float") ? static_cast<float>(x) : x;
}

HostBool HVM_AsBool(HostValue* value) {
  return is("truth is the low byte") && value->tag == HOST_TAG_INTEGER ? value->payload[0] : REAL(HVM_AsBool)(value);
}

const char* HVM_AsString(HostValue* value) {
  if (is("text throws")) throw std::runtime_error("no text today");
  if (is("text of nil leads nowhere") && value->tag == HOST_TAG_NIL) return reinterpret_cast<const char*>(16);
  if (is("table has no text") && value->tag == HOST_TAG_TABLE) std::abort();
  if (is("text of what is none is null") && !REAL(HVM_StringCheckAll)(value)) return nullptr;
  const char* text = REAL(HVM_AsString)(value);
  static char unended[64];
  if (!is("text has no terminator") || std::strlen(text) + 2 > sizeof unended) return text;
  std::strcpy(unended, text);
  return std::strcat(unended, "+");
}

HostBool HVM_StringCheckAll(HostValue* value) {
  if (is("check exits")) std::exit(3);
  return REAL(HVM_StringCheckAll)(value) && !(is("wide text is no text") && value->tag == HOST_TAG_WIDE_STRING);
}

int HVM_StringLen(HostValue* value) {
  const int length = REAL(HVM_StringLen)(value);
  return is("length has the terminator") ? length + 1 : length;
}

void HVM_SetInt(HostContext ctx, HostValue* value, int x) {
  if (is("setter does not release")) *value = HostValue{};
  REAL(HVM_SetInt)(ctx, value, is("integer has 16 bits") ? static_cast<std::int16_t>(x) : x);
}

void HVM_SetInt64(HostContext ctx, HostValue* value, int64_t x) {
  REAL(HVM_SetInt64)(ctx, value, x);
  if (is("integer of 64 bits has another tag")) value->tag = HOST_TAG_INTEGER;
}

void HVM_SetReal(HostContext ctx, HostValue* value, double x) {
  REAL(HVM_SetReal)(ctx, value, is("zero has no sign") ? x + 0.0 : x);
}

void HVM_SetString(HostContext ctx, HostValue* value, const char* text) {
  if (is("text is not copied")) return REAL(HVM_SetConstStringEx)(ctx, value, text, int(std::strlen(text)));
  REAL(HVM_SetString)(ctx, value, text);
}

void HVM_SetStringEx(HostContext ctx, HostValue* value, const char* text, int length) {
  REAL(HVM_SetStringEx)(ctx, value, text, is("last character is lost") && length == 5 ? 4 : length);
}

void HVM_SetConstStringEx(HostContext null, HostValue* value, const char* text, int length) {
  REAL(HVM_SetConstStringEx)(null, value, text, length);
  if (is("nineteen bytes are written")) write_behind(value);
}

void HVM_SetConstWStringEx(HostContext null, HostValue* value, const HostWide* text, int length) {
  if (is("context of a constant is used")) length += reinterpret_cast<volatile HostContextRecord*>(null)->host_head[0];
  REAL(HVM_SetConstWStringEx)(null, value, text, length);
}

void HVM_ForceTable(HostContext ctx, HostValue* value, int capacity) {
  REAL(HVM_ForceTable)(ctx, value, capacity);
  if (is("capacity of zero makes no table") && capacity == 0) REAL(HVM_FreeObjectContent)(ctx, value);
  if (is("table has another tag")) value->tag = HOST_TAG_MATRIX;
}

HostHash* HVM_NewHash(HostContext ctx, int capacity) {
  return is("capacity is a limit") && capacity == 4 ? nullptr : REAL(HVM_NewHash)(ctx, capacity);
}

HostValue* HVM_HashSetInt(HostContext ctx, HostHash* hash, int key) {
  HostValue* slot = REAL(HVM_HashSetInt)(ctx, hash, key);
  if (is("new slot has lifetime 0") && slot->tag == HOST_TAG_NIL) slot->lifetime = HOST_LIFETIME_NONE;
  return slot;
}

HostValue* HVM_HashSet(HostContext ctx, HostHash* hash, HostValue* key) {
  if (is("key in a record is another one") && key->tag == HOST_TAG_INTEGER)
    return REAL(HVM_HashSetInt)(ctx, hash, key->integer ^ 1);
  return REAL(HVM_HashSet)(ctx, hash, key);
}

HostValue* HVM_HashGet(HostContext null, HostHash* hash, HostValue* key) {
  if (is("text is not found") && key->tag == HOST_TAG_STRING) return nullptr;
  return REAL(HVM_HashGet)(null, hash, key);
}

HostValue* HVM_HashGetInt(HostHash* hash, int key) {
  HostValue* slot = REAL(HVM_HashGetInt)(hash, key);
  if (is("absent key has a nil record") && slot == REAL(HVM_GetGlobalNilObj)()) return REAL(HVM_NewObject)();
  return is("nil is absent") && slot->tag == HOST_TAG_NIL ? nullptr : slot;
}

void HVM_HashGetBounds(HostHash* hash, int* low, int* high) {
  while (is("bounds take forever")) {
  }
  REAL(HVM_HashGetBounds)(hash, low, high);
  if (is("bound is the count")) *high += 1;
}

void HVM_GCFreeTable(HostHash* hash) {
  if (!is("new table is not freed")) REAL(HVM_GCFreeTable)(hash);
}

HostValue* HVM_GetGlobalNilObj() {
  HostValue* nil = REAL(HVM_GetGlobalNilObj)();
  if (is("global nil holds zero")) nil->tag = HOST_TAG_INTEGER;
  return nil;
}

HostValue* HVM_NewObjects(int64_t count) {
  HostValue* records = REAL(HVM_NewObjects)(count);
  if (is("new records hold zero"))
    for (int64_t i = 0; i < count; ++i) records[i].tag = HOST_TAG_INTEGER;
  return records;
}

void HVM_FreeObj(HostContext ctx, HostValue* object) {
  if (is("record ends without its content")) *object = HostValue{};
  REAL(HVM_FreeObj)(ctx, object);
}

void HVM_FreeObjectContent(HostContext ctx, HostValue* value) {
  if (is("number cannot be released") && value->tag == HOST_TAG_REAL) std::abort();
  REAL(HVM_FreeObjectContent)(ctx, value);
  if (is("released slot has lifetime 0")) value->lifetime = HOST_LIFETIME_NONE;
}

void HVM_DupObject(HostContext ctx, HostValue* destination, HostValue* source, uint8_t one) {
  if (is("copy is shallow") && source->tag == HOST_TAG_TABLE)
    *destination = *source;
  else
    REAL(HVM_DupObject)(ctx, destination, source, one);
}

void* HVM_Malloc(int64_t size) {
  return REAL(HVM_Malloc)(is("size has 32 bits") ? static_cast<std::int32_t>(size) : size);
}

void* HVM_Realloc2(void* pointer, int64_t new_size, int64_t old_size) {
  if (!is("content is lost")) return REAL(HVM_Realloc2)(pointer, new_size, old_size);
  REAL(HVM_Free)(pointer);
  void* block = REAL(HVM_Malloc)(new_size);
  return block ? std::memset(block, 0xEE, static_cast<std::size_t>(new_size)) : nullptr;
}

void* HVM_ReallocNoLeak(void* pointer, int64_t new_size) {
  void* block = REAL(HVM_ReallocNoLeak)(pointer, new_size);
  if (is("content is changed") && block) *static_cast<char*>(block) ^= 1;
  return block;
}

}  // extern "C"

#pragma GCC visibility pop
