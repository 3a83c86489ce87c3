// embedding/kernel.c: libHVMkrnl.so, the 44 operations, of which those that the program needs are implemented
// Each text, table and object belongs to one record, and is freed with it.

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include "host.h"

// Blocks of memory are counted, so that the program can check at its end that all of them were freed.
static int blocks;
int host_blocks(void) { return blocks; }

static void* resize(void* block, size_t size) {
  blocks += block == NULL;
  void* memory = realloc(block, size);
  return memory != NULL ? memory : (abort(), NULL);
}

static void release(void* block) {
  blocks -= block != NULL;
  free(block);
}

void HVM_FreeObjectContent(HostContext* ctx, HostValue* value) {
  const HostValue old = *value;
  *value = NOTHING;
  if (old.lifetime != 1 || (old.tag != STRING && old.tag != TABLE && old.tag != OBJECT)) return;
  if (old.tag == OBJECT) old.any->manager->destroy(ctx, old.any->content);
  for (int i = 0; old.tag == TABLE && i < old.table->item_count; ++i)
    HVM_FreeObjectContent(ctx, &old.table->items[i].value);
  if (old.tag == TABLE) release(old.table->items);
  release(old.text);  // the block itself, which all pointers of the union share
}

// All setters end here: the old content of the record is released first.
static void put(HostContext* ctx, HostValue* value, HostValue content) {
  HVM_FreeObjectContent(ctx, value);
  *value = content;
}

void HVM_SetInt64(HostContext* c, HostValue* v, int64_t x) { put(c, v, (HostValue){.tag = INTEGER64, .integer64 = x}); }

void HVM_SetStringEx(HostContext* ctx, HostValue* value, const char* text, int length) {
  char* copy = memcpy(resize(NULL, (size_t)length + 1), text, (size_t)length);
  copy[length] = '\0';
  put(ctx, value, (HostValue){.tag = STRING, .text = copy, .owned = 1, .lifetime = 1});
}

// Numbers have three tags. A host decides which integer a huge real becomes; here no huge real occurs.
uint8_t HVM_NumberCheck(HostValue* v) { return v->tag == INTEGER || v->tag == REAL || v->tag == INTEGER64; }
int64_t HVM_AsInt64(HostValue* v) {
  return v->tag == INTEGER ? v->integer : v->tag == REAL ? (int64_t)v->real : v->integer64;
}
int HVM_AsInt(HostValue* v) { return (int)HVM_AsInt64(v); }
double HVM_AsDouble(HostValue* v) { return v->tag == REAL ? v->real : (double)HVM_AsInt64(v); }

// A table has integer keys only. A search starts at the first item, and memory grows by one item at a time.
void HVM_ForceTable(HostContext* ctx, HostValue* value, int capacity) {
  HostHash* hash = memset(resize(NULL, sizeof(HostHash)), 0, sizeof(HostHash));
  put(ctx, value, (HostValue){.tag = TABLE, .table = hash, .lifetime = 1});
}

HostValue* HVM_HashSetInt(HostContext* ctx, HostHash* hash, int key) {
  for (int i = 0; i < hash->item_count; ++i)
    if (hash->items[i].key.integer == key) return &hash->items[i].value;
  hash->items = resize(hash->items, (size_t)(hash->item_count + 1) * sizeof(HostHashItem));
  hash->items[hash->item_count] = (HostHashItem){.key = {.tag = INTEGER, .integer = key}, .value = NOTHING};
  return &hash->items[hash->item_count++].value;
}

// Object types. The next one is made behind the registered ones, among which an object finds its type by name.
static AnyMan types[8];
static int type_count;
int host_types(void) { return type_count; }

AnyMan* HVM_NewAnyMan(const char* name, Create* create, Destroy* destroy, Method* method, Operator* op, void* null) {
  if (null != NULL || type_count == 8) abort();
  types[type_count] = (AnyMan){name, create, destroy, method, op};
  return &types[type_count];
}
void HVM_RegisterAnyMan(const char* name, AnyMan* man) { type_count += strcmp(name, man->name) == 0; }

HostAny* HVM_NewAny(HostContext* ctx, const char* type_name, int64_t zero_1, int64_t zero_2) {
  int i = 0;
  while (i < type_count && strcmp(types[i].name, type_name) != 0) ++i;
  void* content = i < type_count ? types[i].create() : NULL;
  if (content == NULL) return NULL;
  HostAny* any = resize(NULL, sizeof(HostAny));
  *any = (HostAny){.manager = &types[i], .content = content};
  return any;
}

void HVM_SetTypeAny(HostContext* ctx, HostValue* value, HostAny* any) {
  put(ctx, value, any != NULL ? (HostValue){.tag = OBJECT, .any = any, .lifetime = 1} : NOTHING);
}
uint8_t HVM_AnyCheck(HostValue* value) { return value->tag == OBJECT; }
HostAny* HVM_GetAny(HostValue* value) { return value->any; }

// The rest: a module loads only if all 44 symbols exist. A call of one of these prints its name and aborts.
// clang-format off
#define UNSERVED(name) void name(void) { fputs(#name " is not served by this host\n", stderr), abort(); }
UNSERVED(HVM_AsBool) UNSERVED(HVM_AsString) UNSERVED(HVM_StringCheckAll) UNSERVED(HVM_StringLen) UNSERVED(HVM_SetInt)
UNSERVED(HVM_SetReal) UNSERVED(HVM_SetString) UNSERVED(HVM_SetWString) UNSERVED(HVM_SetWStringEx)
UNSERVED(HVM_SetConstStringEx) UNSERVED(HVM_SetConstWStringEx) UNSERVED(HVM_NewHash) UNSERVED(HVM_HashSet)
UNSERVED(HVM_HashGet) UNSERVED(HVM_HashGetInt) UNSERVED(HVM_HashGetBounds) UNSERVED(HVM_GetGlobalNilObj)
UNSERVED(HVM_NewObject) UNSERVED(HVM_NewObjects) UNSERVED(HVM_FreeObj) UNSERVED(HVM_FreeObjs) UNSERVED(HVM_DupObject)
UNSERVED(HVM_Malloc) UNSERVED(HVM_Free) UNSERVED(HVM_Realloc2) UNSERVED(HVM_ReallocNoLeak) UNSERVED(HVM_GCFreeTable)
UNSERVED(HVM_FreeMatrix) UNSERVED(HVM_DelStrm)
