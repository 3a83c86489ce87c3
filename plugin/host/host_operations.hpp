// host/host_operations.hpp: the functions that pass between the host and a module, both ways
//
// The host's kernel library provides the 44 HVM_ operations, its interpreter library `lgamma` and `erf` under the
// symbol version HVMINTERP_1. A module exports PKG_Init and hands over everything else through it.

#pragma once

#include "host/host_value.hpp"

#pragma GCC visibility push(default)

namespace arrayfold {

/// A truth value of the host: eight bits, true when any of them is set.
using HostBool = std::uint8_t;

/// A script-callable function. `args` are `nargs` records side by side; 0: the call failed, 1: it was handled.
using EntryFunction = int (*)(HostContext ctx, HostValue* args, int nargs, HostValue* result);

/// A row of the table that a module hands to the host.
struct FunctionRow {
  const char* name;
  EntryFunction function;
};
static_assert(sizeof(FunctionRow) == 16, "the host fixes the layout");
static_assert(offsetof(FunctionRow, name) == 0 && offsetof(FunctionRow, function) == 8, "the host fixes the layout");

/// The host's callback that takes a module's functions. Its result is ignored.
using RegisterFunctions = int (*)(void* host, int count, const FunctionRow* table);
/// The one function that a module exports.
using PackageInit = int (*)(void* host, RegisterFunctions register_functions);

/// Makes the content of a new object; null when out of memory.
using CreateCallback = void* (*)();
/// Ends the content of a dying object; it may be null.
using DestroyCallback = void (*)(HostContext ctx, void* content);
/// A method call. `args` points at pointers, unlike the records of an entry function. Returns false for an
/// unknown method, and for arguments that it cannot use.
using MethodCallback = HostBool (*)(HostContext ctx, HostValue* self, const char* name, HostValue** args, int nargs,
                                    HostValue* result, int flag);
/// An operator with an object among its operands, either of which may be null. Returns false for operands that the type
/// does not combine.
using OperatorCallback = HostBool (*)(HostContext ctx, int opcode, HostValue* left, HostValue* right,
                                      HostValue* result);

extern "C" {

// Objects and their types.
HostBool HVM_AnyCheck(HostValue* value);
HostAny* HVM_GetAny(HostValue* value);
HostAny* HVM_NewAny(HostContext ctx, const char* type_name, std::int64_t zero_1, std::int64_t zero_2);
void HVM_SetTypeAny(HostContext ctx, HostValue* value, HostAny* any);
AnyMan* HVM_NewAnyMan(const char* name, CreateCallback create, DestroyCallback destroy, MethodCallback method,
                      OperatorCallback op, void* null);
void HVM_RegisterAnyMan(const char* name, AnyMan* man);

// Reading numbers and text.
HostBool HVM_NumberCheck(HostValue* value);
int HVM_AsInt(HostValue* value);
std::int64_t HVM_AsInt64(HostValue* value);
double HVM_AsDouble(HostValue* value);
HostBool HVM_AsBool(HostValue* value);
const char* HVM_AsString(HostValue* value);
HostBool HVM_StringCheckAll(HostValue* value);
int HVM_StringLen(HostValue* value);

// Writing numbers and text.
void HVM_SetInt(HostContext ctx, HostValue* value, int x);
void HVM_SetInt64(HostContext ctx, HostValue* value, std::int64_t x);
void HVM_SetReal(HostContext ctx, HostValue* value, double x);
void HVM_SetString(HostContext ctx, HostValue* value, const char* text);
void HVM_SetStringEx(HostContext ctx, HostValue* value, const char* text, int length);
void HVM_SetWString(HostContext ctx, HostValue* value, const char16_t* text);
void HVM_SetWStringEx(HostContext ctx, HostValue* value, const char16_t* text, int length);
void HVM_SetConstStringEx(HostContext null, HostValue* value, const char* text, int length);
void HVM_SetConstWStringEx(HostContext null, HostValue* value, const char16_t* text, int length);

// Tables.
void HVM_ForceTable(HostContext ctx, HostValue* value, int capacity);
HostHash* HVM_NewHash(HostContext ctx, int capacity);
HostValue* HVM_HashSetInt(HostContext ctx, HostHash* hash, int key);
HostValue* HVM_HashSet(HostContext ctx, HostHash* hash, HostValue* key);
HostValue* HVM_HashGetInt(HostHash* hash, int key);
HostValue* HVM_HashGet(HostContext null, HostHash* hash, HostValue* key);
void HVM_HashGetBounds(HostHash* hash, int* low, int* high);
HostValue* HVM_GetGlobalNilObj();

// Records.
HostValue* HVM_NewObject();
HostValue* HVM_NewObjects(std::int64_t count);
void HVM_FreeObj(HostContext ctx, HostValue* object);
void HVM_FreeObjs(HostContext ctx, HostValue* objects, std::int64_t count);
void HVM_FreeObjectContent(HostContext ctx, HostValue* value);
void HVM_DupObject(HostContext ctx, HostValue* destination, HostValue* source, std::uint8_t one);

// Memory and what is counted by references.
void* HVM_Malloc(std::int64_t size);
void HVM_Free(void* pointer);
void* HVM_Realloc2(void* pointer, std::int64_t new_size, std::int64_t old_size);
void* HVM_ReallocNoLeak(void* pointer, std::int64_t new_size);
void HVM_GCFreeTable(HostHash* hash);
void HVM_FreeMatrix(void* matrix);
void HVM_DelStrm(void* stream);

}  // extern "C"

}  // namespace arrayfold

// The interpreter library's two, with the meaning of the C library's functions of these names.
extern "C" {
double lgamma(double x) noexcept;
double erf(double x) noexcept;
}

#pragma GCC visibility pop
