// first_host/kernel.c: libHVMkrnl.so, as far as xarange and xsum need it

#include <arrayfold/host.h>
#include <stdlib.h>
#include <string.h>

// A type begins with the part that modules know, and has room for the callbacks.
// clang-format off
static struct Type { AnyMan known; CreateCallback create; DestroyCallback destroy; } types[4];
// clang-format on
static int type_count;

AnyMan* HVM_NewAnyMan(const char* name, CreateCallback create, DestroyCallback destroy, MethodCallback method,
                      OperatorCallback op, void* null) {
  if (type_count == 4) abort();
  types[type_count] = (struct Type){{name}, create, destroy};
  return &types[type_count].known;
}
void HVM_RegisterAnyMan(const char* name, AnyMan* man) { type_count += strcmp(name, man->name) == 0; }

HostAny* HVM_NewAny(HostContext ctx, const char* type_name, int64_t zero_1, int64_t zero_2) {
  int i = 0;
  while (i < type_count && strcmp(types[i].known.name, type_name) != 0) ++i;
  void* content = i < type_count ? types[i].create() : NULL;
  HostAny* any = content != NULL ? malloc(sizeof *any) : NULL;
  if (any != NULL) *any = (HostAny){.manager = &types[i].known, .content = content};
  return any;
}

void HVM_FreeObjectContent(HostContext ctx, HostValue* value) {
  if (value->tag == HOST_TAG_OBJECT) {
    ((struct Type*)value->object->manager)->destroy(ctx, value->object->content);
    free(value->object);
  }
  *value = (HostValue){.tag = HOST_TAG_NIL, .lifetime = HOST_LIFETIME_TEMPORARY};
}

void HVM_SetTypeAny(HostContext ctx, HostValue* value, HostAny* any) {
  HVM_FreeObjectContent(ctx, value);
  if (any != NULL) *value = (HostValue){.tag = HOST_TAG_OBJECT, .object = any, .lifetime = HOST_LIFETIME_TEMPORARY};
}
HostBool HVM_AnyCheck(HostValue* value) { return value->tag == HOST_TAG_OBJECT; }
HostAny* HVM_GetAny(HostValue* value) { return value->object; }

HostBool HVM_NumberCheck(HostValue* value) { return value->tag == HOST_TAG_INTEGER; }
int HVM_AsInt(HostValue* value) { return value->integer; }
void HVM_SetReal(HostContext ctx, HostValue* value, double x) {
  HVM_FreeObjectContent(ctx, value);
  *value = (HostValue){.tag = HOST_TAG_REAL, .real = x};
}
